#include "app/text_files.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

#include <fmt/format.h>

#include "app/log.h"
#include "app/text_utils.h"
#include "gui/gui.h"
#include "platform/codepage.h"

namespace fs = std::filesystem;

namespace tfx {
namespace {

constexpr std::size_t SAMPLE_BYTES = 4096;
constexpr std::string_view UTF8_MARK = "\xEF\xBB\xBF";

bool lf_readAll(const fs::path& path, std::string& bytes) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return false;
    bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
    return !in.bad();
}

// Strict UTF-8 check of a sample; a sequence cut by the sample's end fails.
bool lf_isStrictUtf8(std::string_view sample) {
    std::size_t i = 0;
    while (i < sample.size()) {
        const auto b0 = static_cast<unsigned char>(sample[i]);
        if (b0 < 0x80) {
            ++i;
            continue;
        }
        if (b0 < 0xC2 || b0 > 0xF4) return false;
        const std::size_t extra = b0 < 0xE0 ? 1 : b0 < 0xF0 ? 2 : 3;
        if (i + extra >= sample.size()) return false;
        for (std::size_t k = 1; k <= extra; ++k)
            if ((static_cast<unsigned char>(sample[i + k]) & 0xC0) != 0x80) return false;
        const auto b1 = static_cast<unsigned char>(sample[i + 1]);
        if (b0 == 0xE0 && b1 < 0xA0) return false;   // overlong
        if (b0 == 0xF0 && b1 < 0x90) return false;   // overlong
        if (b0 == 0xF4 && b1 >= 0x90) return false;  // beyond U+10FFFF
        i += extra + 1;
    }
    return true;
}

bool lf_readUtf16(const fs::path& path, std::vector<std::string>& lines) {
    std::string bytes;
    if (!lf_readAll(path, bytes)) throw std::runtime_error("read failed");
    if (bytes.size() < 2 || bytes.size() % 2 != 0) return true;
    const auto m0 = static_cast<unsigned char>(bytes[0]);
    const auto m1 = static_cast<unsigned char>(bytes[1]);
    bool little;
    if (m0 == 0xFF && m1 == 0xFE) {
        little = true;
    } else if (m0 == 0xFE && m1 == 0xFF) {
        little = false;
    } else {
        return true;  // no mark: nothing we can trust
    }
    std::wstring wide;
    wide.reserve(bytes.size() / 2);
    for (std::size_t i = 2; i + 1 < bytes.size(); i += 2) {
        const auto lo = static_cast<unsigned char>(bytes[little ? i : i + 1]);
        const auto hi = static_cast<unsigned char>(bytes[little ? i + 1 : i]);
        wide += static_cast<wchar_t>(lo | (hi << 8));
    }
    gf_splitLines(wide_to_utf8(wide), lines);
    return true;
}

}  // namespace

std::string_view gf_charsetName(Charset charset) {
    switch (charset) {
        case Charset::ANSI:
            return "ANSI";
        case Charset::Unicode:
            return "Unicode";
        case Charset::Unicode_big_endian:
            return "Unicode_big_endian";
        case Charset::UTF8_with_BOM:
            return "UTF8_with_BOM";
        case Charset::UTF8_without_BOM:
            return "UTF8_without_BOM";
        case Charset::none_found:
            return "none_found";
    }
    return "unknown";
}

Charset gf_detectCharsetOfBytes(std::string_view head) {
    const std::size_t n = std::min<std::size_t>(head.size(), 4);
    auto b = [&](std::size_t i) { return static_cast<unsigned char>(head[i]); };
    if (n >= 3 && b(0) == 0xEF && b(1) == 0xBB && b(2) == 0xBF) return Charset::UTF8_with_BOM;
    if (n >= 2) {
        if (b(0) == 0xFE && b(1) == 0xFF) return Charset::Unicode_big_endian;
        if (b(0) == 0xFF && b(1) == 0xFE) return Charset::Unicode;
        if (b(1) == 0 && (n < 4 || b(3) == 0)) return Charset::Unicode;
        if (b(0) == 0 && (n < 4 || b(2) == 0)) return Charset::Unicode_big_endian;
    }
    const std::string_view sample = head.substr(0, SAMPLE_BYTES);
    if (sample.empty()) return Charset::UTF8_without_BOM;
    return lf_isStrictUtf8(sample) ? Charset::UTF8_without_BOM : Charset::ANSI;
}

Charset gf_detectCharset(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return Charset::none_found;
    std::string head(SAMPLE_BYTES, '\0');
    in.read(head.data(), static_cast<std::streamsize>(head.size()));
    head.resize(static_cast<std::size_t>(in.gcount()));
    return gf_detectCharsetOfBytes(head);
}

void gf_splitLines(std::string_view text, std::vector<std::string>& lines) {
    if (text.substr(0, 3) == UTF8_MARK) text.remove_prefix(3);
    std::size_t start = 0;
    while (start < text.size()) {
        const auto nl = text.find('\n', start);
        if (nl == std::string_view::npos) {
            lines.emplace_back(text.substr(start));
            return;
        }
        std::size_t end = nl;
        if (end > start && text[end - 1] == '\r') --end;
        lines.emplace_back(text.substr(start, end - start));
        start = nl + 1;
    }
}

bool gf_readTextLines(Charset charset, const fs::path& path, std::vector<std::string>& lines) {
    lines.clear();
    try {
        std::string bytes;
        switch (charset) {
            case Charset::Unicode:
            case Charset::Unicode_big_endian:
                return lf_readUtf16(path, lines);
            case Charset::UTF8_with_BOM:
            case Charset::UTF8_without_BOM:
                if (!lf_readAll(path, bytes)) throw std::runtime_error("read failed");
                gf_splitLines(bytes, lines);
                return true;
            case Charset::ANSI:
                if (!lf_readAll(path, bytes)) throw std::runtime_error("read failed");
                lines.reserve(64);
                gf_splitLines(bytes, lines);
                for (auto& line : lines) line = gf_ansiToUtf8(line);
                return true;
            default:
                throw std::runtime_error(fmt::format("file {} has unknown charset: {}",
                                                     path.string(), gf_charsetName(charset)));
        }
    } catch (const std::exception& e) {
        lines.clear();
        const std::string text = fmt::format("Read failed for '{}': {}", path.string(), e.what());
        gf_showStatus(text);
        gf_logError(text);
        return false;
    }
}

std::variant<std::vector<std::string>, std::string> gf_readFileLines(const fs::path& path,
                                                                     std::size_t reserve) {
    std::string bytes;
    if (!lf_readAll(path, bytes)) return std::string("open_failed");
    std::vector<std::string> lines;
    lines.reserve(reserve);
    gf_splitLines(bytes, lines);
    return lines;
}

std::string gf_ansiToUtf8(std::string_view text) {
    auto wide = pf_ansiToWide(text, true);
    if (!wide) wide = pf_ansiToWide(text, false);
    if (!wide) return {};
    try {
        return wide_to_utf8(*wide);
    } catch (const std::exception&) {
        return {};
    }
}

}  // namespace tfx
