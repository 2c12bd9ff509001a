#include "platform/known_folders.h"

#include "platform/process_inputs.h"
#include "platform/wide_text.h"
#include "platform/windows_headers.h"

#include <knownfolders.h>
#include <objbase.h>
#include <shlobj.h>

namespace tfx {

namespace {

// The folder named by the environment (%APPDATA%, %LOCALAPPDATA%) when it
// names one, as Windows sets them at logon to the known folders; a program
// started with them changed (a portable set-up, a test) finds its files
// there, as the POSIX half does with the XDG variables. Else the known
// folder itself.
std::optional<std::filesystem::path> lf_knownFolder(const char* variable, REFKNOWNFOLDERID id) {
    if (const auto text = pf_environmentText(variable)) {
        std::filesystem::path named = pf_pathFromUtf8(*text);
        if (named.is_absolute()) return named;
    }
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
    return lf_knownFolder("APPDATA", FOLDERID_RoamingAppData);
}

std::optional<std::filesystem::path> pf_localAppData() {
    return lf_knownFolder("LOCALAPPDATA", FOLDERID_LocalAppData);
}

}  // namespace tfx
