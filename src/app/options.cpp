#include "app/options.h"

#include <mutex>
#include <string_view>

#include "app/parameters.h"

namespace tfx {
namespace {

// The snapshot pointer under a mutex held only to copy or swap it. (The
// library's atomic shared pointer of g++ 12 releases its internal lock after
// a load without ordering it before the next exchange, which the thread
// sanitizer rightly reports.) Readers copy the pointer once and then read the
// snapshot without any lock; a snapshot is never changed once published.
std::mutex currentMutex;
OptionsPtr current = std::make_shared<const Options>();

constexpr double NM_TO_M = 1852.0;
constexpr double RT_DIRECT_EXTRA_M = 10000.0;

void lf_fillRange(Options& o) {
    const ParameterStore& p = params;
    o.RANGE = p.RANGE.current;
    o.range_nm = static_cast<double>(o.RANGE);
    o.rangeSquared_nm2 = o.range_nm * o.range_nm;
    o.requestRadius_m = o.range_nm * NM_TO_M;
    if (p.RT_CHOISE.current == "RT Direct") o.requestRadius_m += RT_DIRECT_EXTRA_M;
}

void lf_fillBlock(Options& o) {
    const ParameterStore& p = params;
    o.blockCallsign.clear();
    o.blockRegcode.clear();
    o.blockHexid = 0;
    o.blockTrailing = false;
    if (p.BLOCK_AIRCRAFT.current.empty()) return;
    o.blockCallsign = p.BLOCK_CALLSIGN.current;
    o.blockRegcode = p.BLOCK_REGCODE.current;
    o.blockHexid = static_cast<std::uint32_t>(p.BLOCK_HEXIDDEC.current);
    o.blockTrailing = !o.blockCallsign.empty() && o.blockCallsign.back() == '_';
}

std::int32_t lf_airGround(const std::string& selector) {
    if (selector == "Airborne only") return 1;
    if (selector == "Ground only") return 2;
    return 0;
}

// Which snapshot fields a parameter feeds, one row per parameter.
struct OptionRow {
    std::string_view key;
    void (*fill)(Options&);
};

#define INT_ROW(NAME)                                            \
    {                                                            \
#NAME, [](Options & o) { o.NAME = params.NAME.current; } \
    }
#define BOOL_ROW(NAME)                                           \
    {                                                            \
#NAME, [](Options & o) { o.NAME = params.NAME.current; } \
    }

const OptionRow OPTION_ROWS[] = {
    INT_ROW(HOLDING_THRESHOLD_METERS),
    INT_ROW(MAX_HOLDING_MINUTES),
    INT_ROW(MATCHING_DEPTH),
    INT_ROW(TCAS_FL),
    INT_ROW(AIRP_RANGE),
    INT_ROW(AIRP_HEIGHT),
    INT_ROW(MAX_PARK_SEL),
    INT_ROW(MAX_LIVE_SEL),
    INT_ROW(PARKING_INTERVAL_MINUTES),
    INT_ROW(MAX_FIT),
    INT_ROW(parking_percentage),
    INT_ROW(TIME_SHIFT_DAYS),
    INT_ROW(TIME_SHIFT_HOURS),
    INT_ROW(TIME_SHIFT_MINS),
    BOOL_ROW(SKIP_AIRPORT_SCAN),
    BOOL_ROW(SKIP_LIVERIES_SCAN),
    BOOL_ROW(LIG_PRIORITIZE),
    BOOL_ROW(LIG_AUTOMATIC),
    BOOL_ROW(COLLISION_USER_GND),
    BOOL_ROW(COLLISION_USER_AIR),
    BOOL_ROW(COLLISION_LIVE_PARKED_GND),
    BOOL_ROW(AUTO_RANGE),
    BOOL_ROW(RT_PARKTRAFFIC_ONLY),
    BOOL_ROW(WEEK),
    BOOL_ROW(PARK_SOFT),
    BOOL_ROW(AUTO_PARK),
    BOOL_ROW(RANDOM),
    BOOL_ROW(AEROWINX),
    BOOL_ROW(GUID_CHANGES),
    BOOL_ROW(OBJECTID_LIST),
    BOOL_ROW(NAV_LIGHTS_WHILE_PARKED),
    BOOL_ROW(SIM_TIME),
    BOOL_ROW(KEEP_SIM_TIME_PAR),
    BOOL_ROW(LIGHT_AIRCRAFT),
    BOOL_ROW(HELICOPTERS),
    BOOL_ROW(HIGH_PERF_AIRCRAFT),
    {"RANGE", lf_fillRange},
    {"RT_CHOISE", lf_fillRange},
    {"DESTINATION", [](Options& o) { o.DESTINATION = params.DESTINATION.current; }},
    {"ALL_AIR_GND_SELECTOR",
     [](Options& o) {
         o.ALL_AIR_GND_SELECTOR = lf_airGround(params.ALL_AIR_GND_SELECTOR.current);
     }},
    {"BLOCK_AIRCRAFT", lf_fillBlock},
    {"BLOCK_CALLSIGN", lf_fillBlock},
    {"BLOCK_REGCODE", lf_fillBlock},
    {"BLOCK_HEXIDDEC", lf_fillBlock},
};

#undef INT_ROW
#undef BOOL_ROW

}  // namespace

PendingFlags pending;

OptionsPtr gf_options() {
    std::lock_guard lock(currentMutex);
    return current;
}

void gf_publishOptions(const std::function<void(Options&)>& change) {
    OptionsPtr seen = gf_options();
    while (true) {
        auto copy = std::make_shared<Options>(*seen);
        change(*copy);
        // Another publisher may have come first: redo the change on its snapshot.
        std::lock_guard lock(currentMutex);
        if (current == seen) {
            current = std::move(copy);
            return;
        }
        seen = current;
    }
}

void gf_buildOptions() {
    auto fresh = std::make_shared<Options>();
    for (const OptionRow& row : OPTION_ROWS) row.fill(*fresh);
    std::lock_guard lock(currentMutex);
    current = std::move(fresh);
}

void updateOptions(const Parameter& changed) {
    for (const OptionRow& row : OPTION_ROWS) {
        if (row.key != changed.key) continue;
        gf_publishOptions([&row](Options& o) { row.fill(o); });
        return;
    }
}

void gf_clearPending() {
    for (auto* flag : {&pending.depthRaised, &pending.blockPending, &pending.removeLight,
                       &pending.removeRotorcraft, &pending.removeHighPerf, &pending.maxParkChanged,
                       &pending.maxLiveChanged, &pending.flushPending, &pending.refreshSelector,
                       &pending.unblockPushed})
        flag->store(0);
}

}  // namespace tfx
