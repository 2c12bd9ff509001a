#include "platform/codepage.h"

#include <climits>

#include "platform/windows_headers.h"

namespace tfx {

std::optional<std::wstring> pf_ansiToWide(std::string_view bytes, bool strict) {
    if (bytes.empty()) return std::wstring();
    if (bytes.size() > static_cast<std::size_t>(INT_MAX)) return std::nullopt;
    const int size = static_cast<int>(bytes.size());
    const DWORD flags = strict ? MB_ERR_INVALID_CHARS : 0;
    const int needed = ::MultiByteToWideChar(CP_ACP, flags, bytes.data(), size, nullptr, 0);
    if (needed <= 0) return std::nullopt;
    std::wstring out(static_cast<std::size_t>(needed), L'\0');
    if (::MultiByteToWideChar(CP_ACP, flags, bytes.data(), size, out.data(), needed) != needed)
        return std::nullopt;
    return out;
}

}  // namespace tfx
