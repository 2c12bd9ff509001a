// The traffic tick and the simulator thread's handlers together against the
// built-in simulator: an aircraft of the feed becomes an object there, is
// flown by the tick's positions and goes again.
#include <gtest/gtest.h>

#include "sim_traffic_fixture.h"

using namespace tfx;
using tfx::test::SimTrafficTest;

TEST_F(SimTrafficTest, AFeedAircraftBecomesAnActiveObjectFlownEachFrameAndIsRemoved) {
    deliverTrack(0x4C00D1, "BAW9", 8);
    run(60);  // the create leaves at the next 0.2 s mark and is answered
    LiveAircraft* ac = live(0x4C00D1);
    ASSERT_NE(ac, nullptr);
    const std::uint32_t oid = ac->objectid;
    ASSERT_NE(oid, 0u);
    ASSERT_TRUE(sim.object(oid));
    EXPECT_EQ(sim.object(oid)->title, "A320 livery");
    EXPECT_EQ(ac->simState, SimState::adding2sim);

    run(200);
    ASSERT_EQ(live(0x4C00D1)->simState, SimState::active) << "two seconds after its identifier";
    const std::size_t before = sim.recordedPositions(oid).size();
    run(30);
    const auto sent = sim.recordedPositions(oid);
    EXPECT_GE(sent.size(), before + 8) << "about one position per frame";
    EXPECT_GT(sent.back().lat_deg, sent[before].lat_deg) << "flying north";

    gf_queueRemoval(oid);
    run(10);
    EXPECT_FALSE(sim.object(oid));
    EXPECT_EQ(live(0x4C00D1), nullptr) << "the record dies when the object is gone";
}
