// The main loop's 10 ms grid. The simulator's once-a-second beat re-anchors
// it, and a loop that has fallen more than 100 ms behind starts afresh
// instead of making up the missed ticks.
#pragma once

#include <chrono>
#include <thread>

namespace tfx {

inline constexpr std::chrono::milliseconds TICK_PERIOD{10};
inline constexpr std::chrono::milliseconds TICK_BEHIND_LIMIT{100};

struct SteadyLoopClock {
    using time_point = std::chrono::steady_clock::time_point;
    time_point now() const { return std::chrono::steady_clock::now(); }
    void sleepUntil(time_point t) const { std::this_thread::sleep_until(t); }
};

// Runs tick() on the grid until it returns false. beatPending() tells, without
// taking it, whether the simulator's second beat has arrived; the tick itself
// takes the beat. onTickStart(deadline, now) sees each tick's start, for
// measuring how late the grid runs.
template <typename Clock, typename Tick, typename Beat, typename Observe>
void gf_runTickGrid(Clock& clock, Tick&& tick, Beat&& beatPending, Observe&& onTickStart) {
    auto deadline = clock.now() + TICK_PERIOD;
    onTickStart(deadline - TICK_PERIOD, clock.now());
    if (!tick()) return;
    while (true) {
        auto now = clock.now();
        if (deadline + TICK_BEHIND_LIMIT < now) deadline = now + TICK_PERIOD;
        if (std::chrono::duration_cast<std::chrono::milliseconds>(deadline - now).count() >= 1)
            clock.sleepUntil(deadline);
        const auto due = deadline;
        if (beatPending())
            deadline = clock.now() + TICK_PERIOD;
        else
            deadline += TICK_PERIOD;
        onTickStart(due, clock.now());
        if (!tick()) return;
    }
}

}  // namespace tfx
