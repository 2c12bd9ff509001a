#include "platform/wide_text.h"

#include <climits>

#include "platform/windows_headers.h"

namespace tfx {

std::wstring pf_utf8ToWide(std::string_view text) {
    if (text.empty() || text.size() > static_cast<std::size_t>(INT_MAX)) return std::wstring();
    const int size = static_cast<int>(text.size());
    const int needed = ::MultiByteToWideChar(CP_UTF8, 0, text.data(), size, nullptr, 0);
    if (needed <= 0) return std::wstring();
    std::wstring out(static_cast<std::size_t>(needed), L'\0');
    ::MultiByteToWideChar(CP_UTF8, 0, text.data(), size, out.data(), needed);
    return out;
}

std::filesystem::path pf_pathFromUtf8(std::string_view text) {
    return std::filesystem::path(pf_utf8ToWide(text));
}

std::string pf_pathToUtf8(const std::filesystem::path& path) {
    return pf_wideToUtf8(path.native());
}

std::string pf_wideToUtf8(std::wstring_view text) {
    if (text.empty() || text.size() > static_cast<std::size_t>(INT_MAX)) return std::string();
    const int size = static_cast<int>(text.size());
    const int needed =
        ::WideCharToMultiByte(CP_UTF8, 0, text.data(), size, nullptr, 0, nullptr, nullptr);
    if (needed <= 0) return std::string();
    std::string out(static_cast<std::size_t>(needed), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text.data(), size, out.data(), needed, nullptr, nullptr);
    return out;
}

}  // namespace tfx
