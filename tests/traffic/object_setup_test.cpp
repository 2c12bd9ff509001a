// From the simulator's answer to an active object: the two seconds of set-up
// and answers that can't be right.
#include "traffic/traffic_counters.h"
#include "traffic_fixture.h"

using namespace tfx;
using tfx::test::TrafficTest;

TEST_F(TrafficTest, TheSetUpWaitsWhileTheFlightIsPaused) {
    deliverTrack(0x4C0601, "AFR6", 8);
    tick();
    tickUntilMultipleOf(20);
    takeCommands();
    assignObject(0x4C0601, 71);
    // Paused: the simulator's reports are still worked off, but the
    // set-up does not advance and no light toggles go out.
    for (int i = 0; i < 400; ++i) gf_trafficFrozenTick();
    EXPECT_EQ(live(0x4C0601)->objectid, 71u);
    EXPECT_EQ(live(0x4C0601)->simState, SimState::adding2sim);
    EXPECT_TRUE(takeCommands().clientEvents.empty());

    tick(199);
    EXPECT_EQ(live(0x4C0601)->simState, SimState::adding2sim);
    tick();
    EXPECT_EQ(live(0x4C0601)->simState, SimState::active);
}

TEST_F(TrafficTest, AnObjectIdBelowThreeIsAFailedCreate) {
    setOptions([](Options& o) { o.MAX_LIVE_SEL = 1; });
    const auto failedBefore = trafficCounters.createFailed.load();
    // Models of their own: a refused livery stays refused for the process.
    deliverTrack(0x4C0602, "KLM2", 8, 5000, "E170");
    tick();
    tickUntilMultipleOf(20);
    takeCommands();
    assignObject(0x4C0602, 2);
    tick();
    EXPECT_EQ(live(0x4C0602), nullptr);
    EXPECT_EQ(trafficCounters.createFailed.load(), failedBefore + 1);
    EXPECT_TRUE(logged("answered with object id 2"));

    // The place under the live limit is free again for the next aircraft.
    deliverTrack(0x4C0603, "KLM3", 8, 5000, "E175");
    tick();
    ASSERT_NE(live(0x4C0603), nullptr);
    EXPECT_EQ(live(0x4C0603)->simState, SimState::adding2sim);
}
