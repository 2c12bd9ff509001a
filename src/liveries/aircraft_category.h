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

constexpr std::string_view gf_categoryWord(AircraftCategory category) {
    return AIRCRAFT_CATEGORY_WORDS[static_cast<std::size_t>(category)];
}

}  // namespace tfx
