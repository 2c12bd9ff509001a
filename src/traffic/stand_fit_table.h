// Which aircraft categories may use a stand of each type, and how far an
// aircraft's half span may exceed the stand's radius there.
#pragma once

#include <array>
#include <cstdint>

#include "liveries/aircraft_category.h"

namespace tfx {

constexpr std::uint8_t lf_categoryBit(AircraftCategory c) {
    return static_cast<std::uint8_t>(1u << static_cast<unsigned>(c));
}

inline constexpr std::uint8_t CAT_LIGHT = lf_categoryBit(AircraftCategory::Light);
inline constexpr std::uint8_t CAT_BIZJET = lf_categoryBit(AircraftCategory::Bizjet);
inline constexpr std::uint8_t CAT_LARGE = lf_categoryBit(AircraftCategory::Large);
inline constexpr std::uint8_t CAT_HEAVY = lf_categoryBit(AircraftCategory::Heavy);
inline constexpr std::uint8_t CAT_HIGHPERF = lf_categoryBit(AircraftCategory::HighPerf);
inline constexpr std::uint8_t CAT_ROTOR = lf_categoryBit(AircraftCategory::Rotorcraft);
inline constexpr std::uint8_t CAT_ANY = 0x3f;

// No aircraft may overhang a stand by more than 5.4 m.
inline constexpr double STAND_EXCESS_LIMIT_NM = 0.0029157667386609074;

struct StandFitRow {
    std::uint8_t categories;    // bits of AircraftCategory
    double excessLimit_nm;      // half span minus radius, at most
    bool largeWithoutOverhang;  // a Large fits too when it doesn't overhang
};

// Indexed by the stand's type number; types beyond the table use the last row.
inline constexpr std::array<StandFitRow, 16> STAND_FIT_TABLE = {{
    {0, STAND_EXCESS_LIMIT_NM, false},                                   // 0 NONE
    {CAT_LIGHT | CAT_BIZJET | CAT_ROTOR, STAND_EXCESS_LIMIT_NM, false},  // 1 RAMP_GA
    {CAT_LIGHT | CAT_BIZJET | CAT_ROTOR, STAND_EXCESS_LIMIT_NM, false},  // 2 RAMP_GA_SMALL
    {CAT_BIZJET | CAT_LARGE | CAT_ROTOR, STAND_EXCESS_LIMIT_NM, false},  // 3 RAMP_GA_MEDIUM
    {CAT_LARGE | CAT_HEAVY, STAND_EXCESS_LIMIT_NM, false},               // 4 RAMP_GA_LARGE
    {CAT_LARGE | CAT_HEAVY, STAND_EXCESS_LIMIT_NM, false},               // 5 RAMP_CARGO
    {CAT_BIZJET | CAT_LARGE | CAT_HEAVY | CAT_ROTOR, STAND_EXCESS_LIMIT_NM,
     false},                                                             // 6 RAMP_MIL_CARGO
    {CAT_HIGHPERF | CAT_ROTOR, STAND_EXCESS_LIMIT_NM, false},            // 7 RAMP_MIL_COMBAT
    {CAT_LIGHT | CAT_BIZJET, STAND_EXCESS_LIMIT_NM, true},               // 8 GATE_SMALL
    {CAT_BIZJET | CAT_LARGE, STAND_EXCESS_LIMIT_NM, false},              // 9 GATE_MEDIUM
    {CAT_LARGE | CAT_HEAVY, STAND_EXCESS_LIMIT_NM, false},               // 10 GATE_HEAVY
    {CAT_LIGHT | CAT_BIZJET | CAT_ROTOR, STAND_EXCESS_LIMIT_NM, false},  // 11 DOCK_GA
    {CAT_ANY, 0.002699784017278618, false},                              // 12 FUEL (5 m)
    {0, STAND_EXCESS_LIMIT_NM, false},                                   // 13 VEHICLE
    {CAT_ANY, 0.0009719222462203025, false},                             // 14 RAMP_GA_EXTRA (1.8 m)
    {CAT_ANY, 0.0009719222462203025, false},  // 15 GATE_EXTRA, and others
}};

}  // namespace tfx
