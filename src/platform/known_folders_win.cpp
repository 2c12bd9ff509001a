#include "platform/known_folders.h"

#include "platform/windows_headers.h"

#include <knownfolders.h>
#include <objbase.h>
#include <shlobj.h>

namespace tfx {

std::optional<std::filesystem::path> pf_roamingAppData() {
    PWSTR folder = nullptr;
    const HRESULT hr =
        ::SHGetKnownFolderPath(FOLDERID_RoamingAppData, KF_FLAG_DEFAULT, nullptr, &folder);
    std::optional<std::filesystem::path> result;
    if (SUCCEEDED(hr) && folder != nullptr && *folder != L'\0')
        result = std::filesystem::path(folder);
    ::CoTaskMemFree(folder);
    return result;
}

}  // namespace tfx
