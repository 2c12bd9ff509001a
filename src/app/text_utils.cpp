#include "app/text_utils.h"

#include <stdexcept>

namespace tfx {
namespace {

constexpr std::string_view BLANKS = " \t\n\r";

void lf_appendUtf8(std::string& out, char32_t cp) {
    if (cp < 0x80) {
        out += static_cast<char>(cp);
    } else if (cp < 0x800) {
        out += static_cast<char>(0xC0 | (cp >> 6));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else if (cp < 0x10000) {
        out += static_cast<char>(0xE0 | (cp >> 12));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (cp >> 18));
        out += static_cast<char>(0x80 | ((cp >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((cp >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (cp & 0x3F));
    }
}

void lf_appendWide(std::wstring& out, char32_t cp) {
    if constexpr (sizeof(wchar_t) == 2) {
        if (cp >= 0x10000) {
            cp -= 0x10000;
            out += static_cast<wchar_t>(0xD800 + (cp >> 10));
            out += static_cast<wchar_t>(0xDC00 + (cp & 0x3FF));
            return;
        }
    }
    out += static_cast<wchar_t>(cp);
}

}  // namespace

std::string wide_to_utf8(std::wstring_view text) {
    std::string out;
    out.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        auto unit = static_cast<char32_t>(text[i]);
        if (unit >= 0xD800 && unit <= 0xDBFF) {
            // A high surrogate needs its low partner right behind it.
            if (i + 1 >= text.size()) throw std::runtime_error("wide_to_utf8: invalid UTF-16");
            auto low = static_cast<char32_t>(text[i + 1]);
            if (low < 0xDC00 || low > 0xDFFF)
                throw std::runtime_error("wide_to_utf8: invalid UTF-16");
            unit = 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
            ++i;
        } else if ((unit >= 0xDC00 && unit <= 0xDFFF) || unit > 0x10FFFF) {
            throw std::runtime_error("wide_to_utf8: invalid UTF-16");
        }
        lf_appendUtf8(out, unit);
    }
    return out;
}

std::wstring utf8_to_wide(std::string_view text) {
    std::wstring out;
    out.reserve(text.size());
    const auto bad = [] { return std::runtime_error("utf8_to_wide: invalid UTF-8"); };
    std::size_t i = 0;
    while (i < text.size()) {
        const auto b0 = static_cast<unsigned char>(text[i]);
        if (b0 < 0x80) {
            out += static_cast<wchar_t>(b0);
            ++i;
            continue;
        }
        int extra = 0;
        char32_t cp = 0;
        if (b0 >= 0xC2 && b0 <= 0xDF) {
            extra = 1;
            cp = b0 & 0x1F;
        } else if (b0 >= 0xE0 && b0 <= 0xEF) {
            extra = 2;
            cp = b0 & 0x0F;
        } else if (b0 >= 0xF0 && b0 <= 0xF4) {
            extra = 3;
            cp = b0 & 0x07;
        } else {
            throw bad();
        }
        if (i + static_cast<std::size_t>(extra) >= text.size()) throw bad();
        for (int k = 1; k <= extra; ++k) {
            const auto b = static_cast<unsigned char>(text[i + static_cast<std::size_t>(k)]);
            if ((b & 0xC0) != 0x80) throw bad();
            cp = (cp << 6) | (b & 0x3F);
        }
        const bool overlong = (extra == 2 && cp < 0x800) || (extra == 3 && cp < 0x10000);
        if (overlong || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) throw bad();
        lf_appendWide(out, cp);
        i += static_cast<std::size_t>(extra) + 1;
    }
    return out;
}

std::string gf_trim(std::string_view text) {
    const auto first = text.find_first_not_of(BLANKS);
    if (first == std::string_view::npos) return {};
    const auto last = text.find_last_not_of(BLANKS);
    return std::string(text.substr(first, last - first + 1));
}

std::string gf_dequote(std::string_view text) {
    const auto open = text.find('"');
    if (open == std::string_view::npos) return std::string(text);
    const auto close = text.find('"', open + 1);
    if (close == std::string_view::npos || close == open + 1) return {};
    return std::string(text.substr(open + 1, close - open - 1));
}

std::vector<std::string> gf_split(std::string_view text, char separator) {
    std::vector<std::string> pieces;
    std::size_t start = 0;
    while (true) {
        const auto pos = text.find(separator, start);
        if (pos == std::string_view::npos) {
            pieces.emplace_back(text.substr(start));
            return pieces;
        }
        pieces.emplace_back(text.substr(start, pos - start));
        start = pos + 1;
    }
}

std::string gf_cleanList(std::string_view text) {
    if (text.find_first_of(BLANKS) == std::string_view::npos) return std::string(text);
    std::string out;
    bool first = true;
    for (const auto& piece : gf_split(text, ',')) {
        if (!first) out += ',';
        out += gf_trim(piece);
        first = false;
    }
    return out;
}

}  // namespace tfx
