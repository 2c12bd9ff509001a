// The option snapshot: an immutable copy of the settings that every thread
// but the GUI thread reads, and the pending flags by which the window hands a
// one-time order to the main thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace tfx {

struct Parameter;

struct Options {
    std::int32_t HOLDING_THRESHOLD_METERS = 0;
    std::int32_t MAX_HOLDING_MINUTES = 0;
    std::int32_t MATCHING_DEPTH = 0;
    std::int32_t TCAS_FL = 0;
    std::int32_t AIRP_RANGE = 0;
    std::int32_t AIRP_HEIGHT = 0;
    std::int32_t MAX_PARK_SEL = 0;
    std::int32_t MAX_LIVE_SEL = 0;
    std::int32_t PARKING_INTERVAL_MINUTES = 0;
    std::int32_t MAX_FIT = 0;
    std::int32_t parking_percentage = 0;
    std::int32_t TIME_SHIFT_DAYS = 0;
    std::int32_t TIME_SHIFT_HOURS = 0;
    std::int32_t TIME_SHIFT_MINS = 0;

    bool SKIP_AIRPORT_SCAN = false;
    bool SKIP_LIVERIES_SCAN = false;
    bool LIG_PRIORITIZE = false;
    bool LIG_AUTOMATIC = false;
    bool COLLISION_USER_GND = false;
    bool COLLISION_USER_AIR = false;
    bool COLLISION_LIVE_PARKED_GND = false;
    bool AUTO_RANGE = false;
    bool RT_PARKTRAFFIC_ONLY = false;
    bool WEEK = false;
    bool PARK_SOFT = false;
    bool AUTO_PARK = false;
    bool RANDOM = false;
    bool AEROWINX = false;
    bool GUID_CHANGES = false;
    bool OBJECTID_LIST = false;
    bool NAV_LIGHTS_WHILE_PARKED = false;
    bool SIM_TIME = false;
    bool KEEP_SIM_TIME_PAR = false;
    bool LIGHT_AIRCRAFT = false;
    bool HELICOPTERS = false;
    bool HIGH_PERF_AIRCRAFT = false;

    // The traffic radius in the forms its users need.
    std::int32_t RANGE = 0;
    double range_nm = 0;
    double rangeSquared_nm2 = 0;
    double requestRadius_m = 0;  // RANGE x 1852, plus 10000 on the road "RT Direct"

    std::string DESTINATION;
    std::int32_t ALL_AIR_GND_SELECTOR = 0;  // 0 all, 1 "Airborne only", 2 "Ground only"

    // The blocked aircraft; empty unless BLOCK_AIRCRAFT is set.
    std::string blockCallsign;
    std::string blockRegcode;
    std::uint32_t blockHexid = 0;
    bool blockTrailing = false;  // the block's callsign ended in "_"
};

using OptionsPtr = std::shared_ptr<const Options>;

// The current snapshot; take it once per batch or tick and keep the pointer.
OptionsPtr gf_options();
// The first snapshot of a session, from the current parameter values.
void gf_buildOptions();
// A new snapshot with the changed parameter, published by compare-and-swap.
void updateOptions(const Parameter& changed);
// Copies the current snapshot, lets change() edit the copy and publishes it,
// repeating on a lost race. Safe from any thread; change() may run more than once.
void gf_publishOptions(const std::function<void(Options&)>& change);

// One-time orders from the window to the main thread.
struct PendingFlags {
    std::atomic<std::uint8_t> depthRaised{0};
    std::atomic<std::uint8_t> blockPending{0};
    std::atomic<std::uint8_t> removeLight{0};
    std::atomic<std::uint8_t> removeRotorcraft{0};
    std::atomic<std::uint8_t> removeHighPerf{0};
    std::atomic<std::uint8_t> maxParkChanged{0};
    std::atomic<std::uint8_t> maxLiveChanged{0};
    std::atomic<std::uint8_t> flushPending{0};
    std::atomic<std::uint8_t> refreshSelector{0};
    std::atomic<std::uint8_t> unblockPushed{0};
};

extern PendingFlags pending;

inline void gf_setPending(std::atomic<std::uint8_t>& flag) {
    flag.store(1);
}
// True exactly once per setting: the taker serves the order.
inline bool gf_takePending(std::atomic<std::uint8_t>& flag) {
    return flag.exchange(0) != 0;
}
// All flags down, for a new session.
void gf_clearPending();

}  // namespace tfx
