// Airport codes as compact keys: four ICAO characters or three IATA letters
// packed big-endian into 32 bits, so that key order is alphabetical order.
#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

namespace tfx {

struct IcaoCode {
    std::uint32_t key = 0;
    std::array<char, 4> chars{};

    IcaoCode() = default;
    // Exactly four of A-Z and 0-9, lower case folded; anything else throws
    // std::invalid_argument "'<text>' IcaoCode: invalid string".
    explicit IcaoCode(std::string_view text);

    std::string_view text() const { return {chars.data(), key == 0 ? 0u : chars.size()}; }
    bool empty() const { return key == 0; }
    bool operator==(const IcaoCode&) const = default;
    auto operator<=>(const IcaoCode& other) const {
        if (auto c = key <=> other.key; c != 0) return c;
        return chars <=> other.chars;
    }
};

struct IataCode {
    std::uint32_t key = 0;
    std::array<char, 3> chars{};

    IataCode() = default;
    // Exactly three of A-Z and 0-9; else "'<text>' IataCode: invalid string".
    explicit IataCode(std::string_view text);

    std::string_view text() const { return {chars.data(), key == 0 ? 0u : chars.size()}; }
    // "XXX" (or nothing at all) stands for an airport without an IATA code.
    bool isNone() const { return key == 0 || text() == "XXX"; }
    bool operator==(const IataCode&) const = default;
};

inline const IataCode NO_IATA_CODE{"XXX"};

// The code, or nothing when the text isn't one; never throws.
bool gf_tryIcaoCode(std::string_view text, IcaoCode& code);

}  // namespace tfx
