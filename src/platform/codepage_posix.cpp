#include "platform/codepage.h"

#include <iconv.h>

#include <array>

namespace tfx {
namespace {

constexpr char32_t UNDEFINED = 0xFFFFFFFF;

// One iconv pass at first use fills a byte -> code point table; conversions
// after that are a lookup and need no iconv state shared across threads.
std::array<char32_t, 256> lf_buildTable() {
    std::array<char32_t, 256> table{};
    iconv_t cd = iconv_open("UTF-32LE", "CP1252");
    for (unsigned b = 0; b < 256; ++b) {
        table[b] = b < 0x80 ? b : UNDEFINED;
        if (b < 0x80 || cd == reinterpret_cast<iconv_t>(-1)) continue;
        char in = static_cast<char>(b);
        unsigned char out[4] = {};
        char* inPtr = &in;
        char* outPtr = reinterpret_cast<char*>(out);
        std::size_t inLeft = 1;
        std::size_t outLeft = sizeof out;
        iconv(cd, nullptr, nullptr, nullptr, nullptr);
        if (iconv(cd, &inPtr, &inLeft, &outPtr, &outLeft) != static_cast<std::size_t>(-1) &&
            outLeft == 0) {
            table[b] = static_cast<char32_t>(out[0] | (out[1] << 8) | (out[2] << 16) |
                                             (static_cast<unsigned>(out[3]) << 24));
        }
    }
    if (cd != reinterpret_cast<iconv_t>(-1)) iconv_close(cd);
    return table;
}

const std::array<char32_t, 256>& lf_table() {
    static const std::array<char32_t, 256> table = lf_buildTable();
    return table;
}

}  // namespace

std::optional<std::wstring> pf_ansiToWide(std::string_view bytes, bool strict) {
    const auto& table = lf_table();
    std::wstring out;
    out.reserve(bytes.size());
    for (char c : bytes) {
        const auto b = static_cast<unsigned char>(c);
        char32_t cp = table[b];
        if (cp == UNDEFINED) {
            if (strict) return std::nullopt;
            cp = b;
        }
        out += static_cast<wchar_t>(cp);
    }
    return out;
}

}  // namespace tfx
