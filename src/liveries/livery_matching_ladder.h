// The matching ladder over a finished livery index: nine steps, 0 to 8, from
// this very aircraft's registration down to any Boeing. Pure: it reads the
// index and the titles refused so far, and changes nothing.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "liveries/aircraft_category.h"
#include "liveries/livery_index.h"
#include "traffic/aircraft.h"

namespace tfx {

inline constexpr int LADDER_STEPS = 9;
inline constexpr int NO_STEP = -1;

using RefusedTitles = std::unordered_set<std::string, ViewHash, std::equal_to<>>;

struct LadderQuery {
    Aimo key;  // airline, operator, model; cargo is the stand's for a static aircraft
    std::uint8_t ownCargo = 0;  // the aircraft's own cargo flag
    std::string_view regcode;
    AircraftCategory category = AircraftCategory::Light;
    bool cargoOverride = false;  // a static aircraft on a cargo stand
};

struct LadderRules {
    int depth = 4;  // after the TCAS rule: 8 for an aircraft there for TCAS coverage
    bool random = false;
};

struct LadderResult {
    std::string_view title;  // empty: no match
    int step = NO_STEP;
};

LadderResult gf_walkLadder(const LiveryIndex& index, const LadderQuery& query,
                           const LadderRules& rules, const RefusedTitles& refused);

// Light, Bizjet and Rotorcraft go on through steps 5 to 7 from depth 4.
constexpr bool gf_isSmallCategory(AircraftCategory c) {
    return c == AircraftCategory::Light || c == AircraftCategory::Bizjet ||
           c == AircraftCategory::Rotorcraft;
}

// Whether a match at step lies below the depth the user chose: such an
// aircraft is shown for TCAS coverage only. Steps 5 to 7 of a small
// aircraft are within depth 4 and above.
constexpr bool gf_beyondChosenDepth(int step, int chosenDepth, AircraftCategory category) {
    if (step <= chosenDepth) return false;
    return !(gf_isSmallCategory(category) && chosenDepth >= 4 && step <= 7);
}

// 0 when random is off or n is below 2, else uniform in 0 .. n-1, from an
// engine of the calling thread.
std::uint32_t gf_randomBelow(std::uint32_t n, bool random);
// Swaps element i with element gf_randomBelow(i + 1), from the second on.
void gf_shuffleModels(std::vector<std::uint16_t>& models, bool random);

}  // namespace tfx
