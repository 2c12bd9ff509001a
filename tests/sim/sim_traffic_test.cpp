// The traffic tick and the simulator thread's handlers together against the
// built-in simulator: an aircraft of the feed becomes an object there, is
// flown by the tick's positions and goes again.
#include <gtest/gtest.h>

#include "app/exit_request.h"
#include "sim/builtin_sim.h"
#include "sim/sim_client.h"
#include "sim/sim_client_internal.h"
#include "traffic/traffic_fixture.h"

using namespace tfx;

namespace {

// The tick takes object identifiers from 3 up; the simulator's own start
// far above that.
BuiltinSimConfig simConfig() {
    BuiltinSimConfig c;
    c.first_ai_object_id = 1000;
    return c;
}

class SimTrafficTest : public test::TrafficTest {
protected:
    void SetUp() override {
        TrafficTest::SetUp();
        gf_resetSimClientState();
        gf_clearExitRequest();
        gf_setSimConnectApi(&sim);
        sim.setKnownTitles({{"A320 livery", "A320", std::nullopt, std::nullopt}});
        sim.run();
        sim.loadFlight();
        ASSERT_EQ(SimConnect_Open(&handle, "ZEPT", nullptr, 0, nullptr, 0), S_OK);
        l_hsimconnect = handle;
        ASSERT_TRUE(lf_setupConnection(handle));
        dispatch();
        ASSERT_EQ(SimRunState.load(), 2);
    }
    void TearDown() override {
        SimConnect_Close(handle);
        l_hsimconnect = nullptr;
        gf_setSimConnectApi(nullptr);
        gf_resetSimClientState();
        gf_clearExitRequest();
        TrafficTest::TearDown();
    }
    void dispatch() { ASSERT_EQ(SimConnect_CallDispatch(handle, &lf_dispatch, &context), S_OK); }
    // Ticks of 10 ms, the simulator's clock and frames going along.
    void run(int ticks) {
        for (int i = 0; i < ticks; ++i) {
            tick();
            sim.advance(10);
            dispatch();
        }
    }

    BuiltinSim sim{simConfig()};
    HANDLE handle = nullptr;
    DispatchContext context;
};

}  // namespace

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
