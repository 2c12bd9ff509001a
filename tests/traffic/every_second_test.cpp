#include "sim/sim_ids.h"
#include "traffic_fixture.h"

using namespace tfx;
using tfx::test::TrafficTest;

namespace {

LiveAircraft activeAt(std::uint32_t hexid, std::uint32_t objectid, double lat) {
    LiveAircraft ac;
    ac.hexid = hexid;
    ac.callsign = "ACT";
    ac.simState = SimState::active;
    ac.objectid = objectid;
    ac.lat = lat;
    ac.lon = 8.0;
    return ac;
}

}  // namespace

TEST_F(TrafficTest, ALowerLiveLimitRemovesTheFurthestAircraftWithinTheSecond) {
    for (std::uint32_t i = 0; i < 4; ++i) {
        liveAircraft.push_back(activeAt(0x700000 + i, 300 + i, 50.0 + 0.1 * i));
    }
    setOptions([](Options& o) { o.MAX_LIVE_SEL = 2; });
    gf_setPending(pending.maxLiveChanged);
    gf_trafficEverySecond();
    EXPECT_EQ(live(0x700003)->simState, SimState::removingfromsim);
    EXPECT_EQ(live(0x700002)->simState, SimState::removingfromsim);
    EXPECT_EQ(live(0x700001)->simState, SimState::active);
    EXPECT_EQ(removals.size(), 2u);
    EXPECT_NE(weekNow, 0u);
    EXPECT_GE(gf_slotDay(weekNow), 1u);
    EXPECT_LE(gf_slotHalfHour(weekNow), 47u);
}

TEST_F(TrafficTest, ParkedAircraftFollowTheNavLightsOptionAtOnce) {
    LiveAircraft parked = activeAt(0x700010, 400, 50);
    parked.flightState = FlightState::parked;
    liveAircraft.push_back(parked);
    liveAircraft.push_back(activeAt(0x700011, 401, 50.1));  // flying: not touched
    gf_applyParkedNavLights();
    setOptions([](Options& o) { o.NAV_LIGHTS_WHILE_PARKED = !o.NAV_LIGHTS_WHILE_PARKED; });
    gf_applyParkedNavLights();
    gf_applyParkedNavLights();
    const SimCommands c = takeCommands();
    ASSERT_EQ(c.clientEvents.size(), 1u);
    EXPECT_EQ(c.clientEvents[0].objectid, 400u);
    EXPECT_EQ(c.clientEvents[0].event, EVENT_NAV_LIGHTS_SET);
}

TEST_F(TrafficTest, StaticDataOutsideItsRangeIsReplaced) {
    liveAircraft.push_back(activeAt(0x700020, 500, 50));
    gf_postSimMessage({500, 0, 0, SIM_STATIC_DATA, 12.5, 0.02});
    tick();
    EXPECT_DOUBLE_EQ(live(0x700020)->cgHeight, 12.5);
    EXPECT_DOUBLE_EQ(live(0x700020)->staticPitch, 0.02);
    gf_postSimMessage({500, 0, 0, SIM_STATIC_DATA, 50, 0.05});
    tick();
    EXPECT_DOUBLE_EQ(live(0x700020)->cgHeight, 12.5);
    EXPECT_DOUBLE_EQ(live(0x700020)->staticPitch, 0.012217304763960306);
}
