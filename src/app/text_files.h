// Reading text files whose encoding isn't known beforehand.
#pragma once

#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tfx {

enum class Charset : int {
    ANSI = 0,
    Unicode = 1,             // UTF-16 little endian
    Unicode_big_endian = 2,  // UTF-16 big endian
    UTF8_with_BOM = 3,
    UTF8_without_BOM = 4,  // also every empty file
    none_found = 5,        // the file could not be opened
};

std::string_view gf_charsetName(Charset charset);

// Judged from the byte order mark, zero bytes among the first four, and a
// strict UTF-8 walk of the first 4096 bytes.
Charset gf_detectCharset(const std::filesystem::path& path);
Charset gf_detectCharsetOfBytes(std::string_view head);

// Reads a file of a known charset as UTF-8 lines. False (logged) on failure.
bool gf_readTextLines(Charset charset, const std::filesystem::path& path,
                      std::vector<std::string>& lines);

// Lines of a file taken as they are (no detection); the error text
// "open_failed" when it can't be opened.
std::variant<std::vector<std::string>, std::string> gf_readFileLines(
    const std::filesystem::path& path, std::size_t reserve);

// Bytes of the ANSI code page to UTF-8; empty when the conversion fails.
std::string gf_ansiToUtf8(std::string_view text);

// Splits at "\n", dropping a "\r" before it and a leading UTF-8 mark; text
// after the last "\n" is a line when not empty.
void gf_splitLines(std::string_view text, std::vector<std::string>& lines);

}  // namespace tfx
