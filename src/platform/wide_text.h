// Text crosses into the system in two forms: the program keeps UTF-8, and
// Windows takes its paths, command line and environment as UTF-16. A path made
// from a plain std::string on Windows reads the bytes in the C library's
// locale, not as UTF-8, so every path made from text goes through here.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace tfx {

// The path named by UTF-8 text, and the UTF-8 text of a path, on every
// system. Neither throws: bytes that are not UTF-8 (a hand-written file in
// another code page) become U+FFFD on Windows and stay as they are here.
std::filesystem::path pf_pathFromUtf8(std::string_view text);
std::string pf_pathToUtf8(const std::filesystem::path& path);

#ifdef _WIN32
// UTF-8 to UTF-16 and back (MultiByteToWideChar, WideCharToMultiByte). A byte
// sequence that is not UTF-8 becomes U+FFFD, as a lone surrogate does the
// other way.
std::wstring pf_utf8ToWide(std::string_view text);
std::string pf_wideToUtf8(std::wstring_view text);
#endif

}  // namespace tfx
