// The system's ANSI code page. On Windows that is whatever the machine is set
// to (MultiByteToWideChar); elsewhere it is Windows-1252, through iconv.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace tfx {

// Bytes of the ANSI code page to wide text. With strict set, a byte that the
// code page leaves undefined fails the whole conversion (like
// MB_ERR_INVALID_CHARS); without it such a byte maps to the code point of the
// same value, as Windows does.
std::optional<std::wstring> pf_ansiToWide(std::string_view bytes, bool strict);

}  // namespace tfx
