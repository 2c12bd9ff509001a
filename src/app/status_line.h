// The headless program's status line: every few seconds one line on the
// console with the feed's state, what the traffic engine received, created,
// has active and removed, and what the tick cost. Main thread only.
#pragma once

#include <cstdint>
#include <string>

namespace tfx {

struct TickTiming {
    std::uint64_t ticks = 0;
    double total_us = 0;
    double max_us = 0;
    // Heap allocations inside the ticks of this window, and the ticks that made any.
    std::uint64_t allocations = 0;
    std::uint64_t allocatingTicks = 0;
};

// After each tick: its duration.
void gf_noteTickTime(double tick_us);
// Once a second from the main loop; every status_s seconds a line goes out
// and the tick timing starts over.
void gf_statusLineEverySecond(std::int32_t status_s);
// The line itself (without the time stamp), for the console and tests.
std::string gf_statusLineText(const TickTiming& timing);

}  // namespace tfx
