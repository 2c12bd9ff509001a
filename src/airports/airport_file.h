// The airport file in memory: its stands, who stood at each in which half
// hours of the week, and what a read of the file gives.
#pragma once

#include <array>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "airports/airport_codes.h"
#include "traffic/aircraft.h"
#include "traffic/units.h"

namespace tfx {

// Names of the stand types by number (the scenery's parking type numbers).
inline constexpr std::array<std::string_view, 16> STAND_TYPE_NAMES = {
    "NONE",          "RAMP_GA",     "RAMP_GA_SMALL",  "RAMP_GA_MEDIUM",
    "RAMP_GA_LARGE", "RAMP_CARGO",  "RAMP_MIL_CARGO", "RAMP_MIL_COMBAT",
    "GATE_SMALL",    "GATE_MEDIUM", "GATE_HEAVY",     "DOCK_GA",
    "FUEL",          "VEHICLE",     "RAMP_GA_EXTRA",  "GATE_EXTRA"};
inline constexpr std::uint32_t STAND_TYPE_FUEL = 12;

constexpr bool gf_standTypeIsCargo(std::uint32_t type) {
    return type == 5 || type == 6;
}
constexpr bool gf_standTypeIsRamp(std::uint32_t type) {
    return (type >= 1 && type <= 4) || type == 14;
}

// One aircraft's stay on one day: bit n of hours is half hour n (UTC).
struct StandOption {
    Aimo key;
    std::string reg, cs1, cs2;
    std::uint64_t hours = 0;
    std::uint32_t number = 0;  // 1-based within the stand; 0 marks a dead entry
    std::uint32_t day = 0;     // 1 Monday .. 7 Sunday
    std::int32_t source = 0;   // 1 from the airport or a handmade file, 0 learned
    std::int32_t real = 1;     // 0 for an entry that is no real observation
    bool cpl = false;          // seen leaving: the stay is closed
};

struct Stand {
    std::vector<StandOption> options;
    std::string id;
    std::vector<std::uint32_t> overlaps;  // numbers of stands not usable at the same time
    double latitude = 0, longitude = 0;   // degrees
    double heading = 0;                   // radians
    double radius = 0;                    // nautical miles
    std::uint32_t number = 0;             // 1-based position in the stand list
    std::uint32_t type = 0;
    bool manual = false;  // created by hand in a learned file
    bool cargo = false, ramp = false, heli = false;
};

struct AirportFile {
    std::string airport_name, publisher;
    std::int32_t altitude = 0;  // feet
    std::optional<std::string> version;
    std::int32_t Qf_real = 0, Qf_soft = 0;
    std::vector<Stand> stands;
    std::filesystem::path sourcePath, readPath, learnedPath;
    std::int32_t RT_traffic_week = 0;
    bool fetched = false, cached = false, learned = false, handmade = false;
};

// What gf_writeApf writes.
struct ApfRecord {
    IcaoCode code;
    IataCode iata;
    double latitude = 0, longitude = 0;
    std::string airport_name;
    std::int32_t altitude = 0;
    std::int32_t Qf_real = 0, Qf_soft = 0;
    std::string BGLpath, publisher, version, manufacturer, creator;
    bool hasPackageData = false;
    bool handmade = false;
    std::vector<Stand> stands;
};

// The day (1 Monday .. 7 Sunday) and half hour (0 .. 47) of a moment in UTC.
// The second half hour of an hour begins at hh:29:30, half a minute early, so
// that a report stamped just before the half hour already counts in it.
struct WeekHalfHour {
    std::uint32_t day = 1;
    std::uint32_t hh = 0;
    bool operator==(const WeekHalfHour&) const = default;
};
WeekHalfHour gf_halfHourOf(std::int64_t epochSeconds);
// The week clock's present moment (time shift included).
WeekHalfHour hh_now();

}  // namespace tfx
