// Small text helpers shared by every reader of files and feeds.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tfx {

// UTF-16 (Windows) or UTF-32 (Linux) wide text <-> UTF-8. Invalid input throws
// std::runtime_error "wide_to_utf8: invalid UTF-16" / "utf8_to_wide: invalid UTF-8".
std::string wide_to_utf8(std::wstring_view text);
std::wstring utf8_to_wide(std::string_view text);

// Removes " \t\n\r" from both ends.
std::string gf_trim(std::string_view text);
// "abc" -> abc; a text without '"' stays; anything else quoted badly -> "".
std::string gf_dequote(std::string_view text);
// All pieces, empty ones included.
std::vector<std::string> gf_split(std::string_view text, char separator);
// "a, b ,c" -> "a,b,c" when the text holds any blank, tab or line end.
std::string gf_cleanList(std::string_view text);

}  // namespace tfx
