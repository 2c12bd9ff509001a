// What the traffic engine has done since the process started, for the
// headless status line and the end-to-end checks: plain counters, written by
// the feeds and the tick, read from anywhere.
#pragma once

#include <atomic>
#include <cstdint>

#include "traffic/aircraft.h"

namespace tfx {

struct TrafficCounters {
    std::atomic<std::uint64_t> received{0};      // messages the feeds handed in
    std::atomic<std::uint64_t> created{0};       // live objects the simulator confirmed
    std::atomic<std::uint64_t> createFailed{0};  // live creates the simulator refused
    std::atomic<std::uint64_t> removed{0};       // live objects the simulator took away
    // Live messages a newer batch replaced before the tick took them.
    std::atomic<std::uint64_t> replacedUnread{0};
    // Heap allocations made inside gf_trafficTick, and the ticks that made
    // any; both stay 0 in a build that doesn't count (gf_allocationsCounted).
    std::atomic<std::uint64_t> tickAllocations{0};
    std::atomic<std::uint64_t> allocatingTicks{0};
};
extern TrafficCounters trafficCounters;

// The live records in a state now (tick thread only): buffer for those still
// waiting to be shown, active for those in the simulator and moving.
std::int64_t gf_liveCountIn(SimState state);

}  // namespace tfx
