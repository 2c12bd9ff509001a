// The planner's working state at the park airport: the plan of static
// aircraft still to create, the removals it decided, the aircraft that may
// stay, and the copies of the feed's seen sets and parked list it works from.
// Main thread only.
#pragma once

#include <cstdint>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "airports/airport_file.h"
#include "feeds/decode_context.h"
#include "traffic/aircraft.h"

namespace tfx {

// One static aircraft to create.
struct StaticPlan {
    std::uint32_t rtHexid = 0;          // the real aircraft of a parked record; 0 for an option
    std::uint32_t fromAirportFile = 0;  // 1 an option of the airport file, 0 a parked record
    std::int32_t sid = 0;
    std::int32_t offset = 0;  // half hours since the aircraft came, by the data
    Aimo aimo;
    std::string cs1, cs2;  // callsigns
    std::string reg;
    std::uint8_t useFirst = 1;  // 1: cs1 is shown, 0: cs2
};

struct PlannedRemoval {
    std::string callsign;
    std::int32_t sid = 0;
};

// A live aircraft parked at the airport that may stay.
struct Stayer {
    std::string callsign, regcode;
    std::int32_t zero = 0;
    std::int32_t sid = 0;
    std::int64_t minutesParked = 0;
};

// What one search found, for its report.
struct SearchCounts {
    int rt = 0;
    int stayers = 0;
    int airportFile = 0;
    int lastOffset = 0;
};

// A parked record as the planner works with it: age instead of half hour.
struct RtParked {
    ParkedMessage record;
    std::int32_t age = 0;  // half hours since the record's time
};

struct ParkingState {
    std::vector<StaticPlan> plan;          // taken from the back
    std::vector<PlannedRemoval> removals;  // the planner's, not the tick's
    std::vector<Stayer> stayers;
    std::int32_t wantedParked = -1;  // -1 while no airport is planned
    std::int32_t takenCount = 0;     // stands marked taken in this plan
    std::unordered_set<std::string> seenCallsigns;
    std::unordered_set<std::uint32_t> seenHexids;
    // The latest parked list of the feed as it came, and its working copy.
    std::vector<ParkedMessage> parkedList;
    std::vector<RtParked> rtParked;
    // Stand name to number, for the names the user and the feed give.
    std::unordered_map<std::string, std::int32_t> standNumbers;
    bool searchRunning = false;  // the last search's plan is still being created
    // Off while new parked records are planned: the airport file's static
    // aircraft then stay only where the plan puts them again.
    bool fileStaticsMayStay = true;
};

extern ParkingState parking;

inline constexpr std::size_t PLAN_RESERVE = 512;
inline constexpr std::size_t REMOVALS_RESERVE = 256;
inline constexpr std::size_t MAX_CANDIDATES = 256;
inline constexpr int HALF_HOURS_PER_DAY = 48;
inline constexpr int LAST_OFFSET = 47;  // the widest search, a day back

// The stands of the loaded park airport.
std::vector<Stand>& gf_parkStands();
// The stand with this number, or nullptr.
Stand* gf_standBySid(std::int32_t sid);
// The number of the stand with this name, or 0.
std::int32_t gf_standNumberOf(const std::string& name);

// Marks the stand taken and its overlaps blocked; whether the taken count
// has reached needed. An invalid sid gives false.
bool gf_takeStand(std::int32_t sid, std::int32_t needed);
// a equals b, or b is among a's overlaps.
bool gf_standsAdjacent(std::int32_t a, std::int32_t b);
// Whether another aircraft (a static on another stand, a stayer, a plan
// entry) stands on a stand adjacent to sid.
bool lf_overlapTaken(std::int32_t sid);
// Clears taken and blockedByOverlap on every stand.
void lf_clearStandMarks();
// Every option's number back to its position, so that dead entries live again.
void lf_reviveOptions();

// The wanted parked count of the present settings.
std::int32_t gf_parkedTarget();
// Uniform 0 .. n-1 per thread; 0 without RANDOM, so that a run repeats itself.
std::uint32_t gf_randomBelow(std::uint32_t n);

// The slot offset half hours before (day, hh); day 1 wraps to 7.
std::uint64_t gf_slotBefore(std::uint64_t slot, int offset);
// Whether the aircraft of the option still stands at the stand in the half
// hour after slot (an option of the next day with the same aircraft counts).
bool lf_standsInNextHalfHour(const Stand& stand, const StandOption& option, std::uint64_t slot);

// The aircraft is already there: planned, seen moving, live, staying.
bool lf_aircraftPresent(const std::string& reg, const std::string& cs1, const std::string& cs2);
// A callsign without its trailing "*" and "_".
std::string gf_plainCallsign(std::string_view callsign);

// The seen sets of the road become the planner's (the road's start anew).
void lf_takeSeenSets();

// The passes over the half hours, in their order of reliability.
void lf_searchAll(std::uint64_t slot, std::int32_t needed);
void lf_searchStands(std::uint64_t slot, bool today, bool real, std::int32_t needed);
// The prepared parked records into the plan, youngest first, until the
// target is reached.
void lf_searchRealParked(SearchCounts& counts, std::int32_t needed);
void lf_searchStayers(std::uint64_t slot, int offset, bool weekMode, SearchCounts& counts,
                      std::int32_t needed);

// The parked list made ready for a plan; with RT parked only, also planned.
void lf_prepareParkedList();
void lf_planRealParked(std::int32_t needed);

}  // namespace tfx
