#include <gtest/gtest.h>

#include <chrono>
#include <vector>

#include "app/tick_grid.h"

using namespace std::chrono_literals;
using Ms = std::chrono::milliseconds;

namespace {

// A clock that moves only when the loop sleeps or a tick spends time.
struct FakeClock {
    using time_point = std::chrono::steady_clock::time_point;
    time_point t{};
    int sleeps = 0;
    time_point now() const { return t; }
    void sleepUntil(time_point until) {
        ++sleeps;
        if (until > t) t = until;
    }
};

struct GridRun {
    std::vector<Ms> starts;  // tick start times since the clock's zero
    std::vector<Ms> late;    // start minus due time
};

// Runs `ticks` ticks; each tick costs cost(i) and the beat arrives on beat(i).
template <typename Cost, typename BeatAt>
GridRun runGrid(FakeClock& clock, int ticks, Cost cost, BeatAt beatAt) {
    GridRun run;
    int i = 0;
    tfx::gf_runTickGrid(
        clock,
        [&] {
            clock.t += cost(i);
            return ++i < ticks;
        },
        [&] { return beatAt(i); },
        [&](auto due, auto now) {
            run.starts.push_back(std::chrono::duration_cast<Ms>(now.time_since_epoch()));
            run.late.push_back(std::chrono::duration_cast<Ms>(now - due));
        });
    return run;
}

}  // namespace

TEST(TickGrid, KeepsTenMillisecondStepsWithoutDrift) {
    FakeClock clock;
    const GridRun run = runGrid(
        clock, 1000, [](int) { return 2ms; }, [](int) { return false; });
    ASSERT_EQ(run.starts.size(), 1000u);
    EXPECT_EQ(run.starts.back() - run.starts.front(), 9990ms);
    for (Ms late : run.late) EXPECT_EQ(late, 0ms);
}

TEST(TickGrid, BeatReanchorsTheGrid) {
    FakeClock clock;
    // Ticks cost 3 ms; the beat is seen before tick 50, so the next deadline
    // counts from the moment of that tick's start instead of the old grid.
    clock.t += 4ms;  // grid starts off a whole millisecond
    const GridRun run = runGrid(
        clock, 60, [](int) { return 3ms; }, [](int i) { return i == 50; });
    EXPECT_EQ(run.starts[51] - run.starts[50], 10ms);
    EXPECT_EQ(run.starts[52] - run.starts[51], 10ms);
}

TEST(TickGrid, FallingBehindDropsMissedTicks) {
    FakeClock clock;
    // One tick takes 250 ms: the loop restarts its grid rather than firing
    // 25 ticks back to back.
    const GridRun run = runGrid(
        clock, 30, [](int i) { return i == 10 ? 250ms : 1ms; }, [](int) { return false; });
    // A fresh grid: one period after the long tick ended.
    EXPECT_EQ(run.starts[11] - run.starts[10], 260ms);
    EXPECT_EQ(run.starts[12] - run.starts[11], 10ms) << "no burst of catch-up ticks";
}

TEST(TickGrid, SlightlyLateTicksCatchUpWithoutSleeping) {
    FakeClock clock;
    // A 30 ms tick is under the 100 ms limit: the next ticks run at once
    // until the grid is met again.
    const GridRun run = runGrid(
        clock, 20, [](int i) { return i == 5 ? 30ms : 1ms; }, [](int) { return false; });
    EXPECT_EQ(run.starts[6] - run.starts[5], 30ms);
    EXPECT_EQ(run.starts[7] - run.starts[6], 1ms);
    EXPECT_EQ(run.starts[9] - run.starts[0], 90ms) << "back on the original grid";
}
