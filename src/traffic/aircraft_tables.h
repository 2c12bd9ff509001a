// Constant tables of the aircraft records: per-category performance and the
// words of the two state machines.
#pragma once

#include <array>
#include <string_view>

#include "app/options.h"
#include "traffic/aircraft.h"

namespace tfx {

struct CategoryRow {
    bool Options::*enabledBy;  // nullptr: always shown
    double rotationPitch_deg;
    double climbPitch_deg;
    double groundTurnRate_degps;
    double bankLimit_deg;
    double pitchRateLimit_degps;
    double bankRateLimit_degps;
    double maxClimbStep_ftpt;  // feet per tick
    double pushbackSpeed_kt;
    double rotateSpeed_kt;
    int flare_ticks;
    int derotation_ticks;
    int rotation_ticks;
    int climbPitch_ticks;
};

// Indexed by AircraftCategory.
inline constexpr std::array<CategoryRow, 6> CATEGORY_TABLE = {{
    // Light
    {&Options::LIGHT_AIRCRAFT, -9, -15, 15, 40, 1.0, 3.5, 0.5, 5.0, 90, 250, 250, 100, 200},
    // Bizjet
    {nullptr, -8, -18, 9, 35, 0.85, 2.75, 0.75, 4.5, 110, 300, 300, 200, 250},
    // Large
    {nullptr, -6, -16.5, 7, 30, 0.75, 2.0, 0.6, 4.0, 140, 400, 350, 200, 300},
    // Heavy
    {nullptr, -5, -12.5, 5, 20, 0.5, 1.5, 0.5, 3.0, 150, 450, 450, 250, 400},
    // HighPerf
    {&Options::HIGH_PERF_AIRCRAFT, -6, -20, 10, 90, 3.0, 10.0, 1.0, 4.5, 220, 150, 150, 100, 200},
    // Rotorcraft
    {&Options::HELICOPTERS, -20, -30, 20, 75, 3.0, 6.0, 0.75, 5.0, 0, 100, 100, 100, 100},
}};

inline constexpr std::array<std::string_view, FLIGHT_STATE_COUNT> FLIGHT_STATE_WORDS = {
    "pushing_back",  // 0
    "pushed_back",   // 1
    "taxi",          // 2
    "takeoff_roll",  // 3
    "takeoff",       // 4
    "flying",        // 5
    "landing",       // 6
    "landing_roll",  // 7
    "parking",       // 8
    "parked",        // 9
    "birth",         // 10
};

inline constexpr std::array<std::string_view, SIM_STATE_COUNT> SIM_STATE_WORDS = {
    "buffer",           // 0
    "adding2sim",       // 1
    "active",           // 2
    "liveryrespawn",    // 3
    "removingfromsim",  // 4
};

}  // namespace tfx
