// The six kinds of aircraft the engine flies differently. The reference
// database says which model belongs to which.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace tfx {

enum class AircraftCategory : std::int32_t {
    Light = 0,
    Bizjet = 1,
    Large = 2,
    Heavy = 3,
    HighPerf = 4,
    Rotorcraft = 5,
};

inline constexpr std::array<std::string_view, 6> AIRCRAFT_CATEGORY_WORDS = {
    "Light", "Bizjet", "Large", "Heavy", "HighPerf", "Rotorcraft"};

// "?" for a value outside the six, so a damaged record still logs.
constexpr std::string_view gf_categoryWord(AircraftCategory category) {
    const auto i = static_cast<std::size_t>(category);
    return i < AIRCRAFT_CATEGORY_WORDS.size() ? AIRCRAFT_CATEGORY_WORDS[i] : "?";
}

}  // namespace tfx
