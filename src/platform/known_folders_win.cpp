#include "platform/known_folders.h"

#include "platform/windows_headers.h"

#include <knownfolders.h>
#include <objbase.h>
#include <shlobj.h>

namespace tfx {

namespace {

std::optional<std::filesystem::path> lf_knownFolder(REFKNOWNFOLDERID id) {
    PWSTR folder = nullptr;
    const HRESULT hr = ::SHGetKnownFolderPath(id, KF_FLAG_DEFAULT, nullptr, &folder);
    std::optional<std::filesystem::path> result;
    if (SUCCEEDED(hr) && folder != nullptr && *folder != L'\0')
        result = std::filesystem::path(folder);
    ::CoTaskMemFree(folder);
    return result;
}

}  // namespace

std::optional<std::filesystem::path> pf_roamingAppData() {
    return lf_knownFolder(FOLDERID_RoamingAppData);
}

std::optional<std::filesystem::path> pf_localAppData() {
    return lf_knownFolder(FOLDERID_LocalAppData);
}

}  // namespace tfx
