#include "airports/airport_codes.h"

#include <stdexcept>

#include <fmt/format.h>

namespace tfx {
namespace {

// Folds to capitals; false for a character outside A-Z and 0-9.
bool lf_codeChar(char in, char& out) {
    if (in >= 'a' && in <= 'z') in = static_cast<char>(in - 'a' + 'A');
    out = in;
    return (in >= 'A' && in <= 'Z') || (in >= '0' && in <= '9');
}

template <std::size_t N>
bool lf_pack(std::string_view text, std::uint32_t& key, std::array<char, N>& chars) {
    if (text.size() != N) return false;
    std::uint32_t packed = 0;
    for (std::size_t i = 0; i < N; ++i) {
        if (!lf_codeChar(text[i], chars[i])) return false;
        packed = (packed << 8) | static_cast<unsigned char>(chars[i]);
    }
    key = packed;
    return true;
}

}  // namespace

IcaoCode::IcaoCode(std::string_view text) {
    if (!lf_pack(text, key, chars))
        throw std::invalid_argument(fmt::format("'{}' IcaoCode: invalid string", text));
}

IataCode::IataCode(std::string_view text) {
    if (!lf_pack(text, key, chars))
        throw std::invalid_argument(fmt::format("'{}' IataCode: invalid string", text));
}

bool gf_tryIcaoCode(std::string_view text, IcaoCode& code) {
    IcaoCode parsed;
    if (!lf_pack(text, parsed.key, parsed.chars)) return false;
    code = parsed;
    return true;
}

}  // namespace tfx
