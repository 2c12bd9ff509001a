#include <algorithm>

#include "traffic_fixture.h"

using namespace tfx;
using tfx::test::TrafficTest;

namespace {

AirportRef iata(const char* code) {
    AirportRef ref;
    std::copy(code, code + 3, ref.iata.begin());
    return ref;
}

TrafficMessage routed(TrafficMessage m, const char* orig, const char* dest) {
    m.orig = iata(orig);
    m.dest = iata(dest);
    return m;
}

}  // namespace

TEST_F(TrafficTest, TheRealAircraftPushesItsGhostOutAndTheGhostStaysOut) {
    deliverTrack(0x4C0111, "BAW12_", 6);
    tick();
    makeActive(0x4C0111, 31);

    deliverTrack(0x4C0222, "BAW12", 6);
    tick();
    EXPECT_EQ(live(0x4C0222)->simState, SimState::adding2sim);
    EXPECT_EQ(live(0x4C0111)->simState, SimState::removingfromsim);
    EXPECT_TRUE(logged("          BAW12_   is a ghost and will be removed, continue with BAW12"));
    EXPECT_EQ(ghostList, std::vector<std::string>{"BAW12_"});
    tickUntilMultipleOf(10);
    EXPECT_EQ(takeCommands().removes, std::vector<std::uint32_t>{31});

    // Once its object is gone, a new report of the ghost never spawns.
    reportRemoved(31);
    tick();
    EXPECT_EQ(live(0x4C0111), nullptr);
    deliverTrack(0x4C0111, "BAW12_", 3);
    tick();
    EXPECT_EQ(live(0x4C0111), nullptr);
}

TEST_F(TrafficTest, ACallsignWithUnderscoreOfAFlyingAircraftIsIgnored) {
    deliverTrack(0x4C0333, "DLH4", 6);
    tick();
    makeActive(0x4C0333, 41);
    deliver(airborne(0x4C0333, "DLH4_", 1100, 50.2), gf_simTick() + 3000);
    EXPECT_EQ(live(0x4C0333)->callsign, "DLH4");
    EXPECT_EQ(live(0x4C0333)->simState, SimState::active);
}

TEST_F(TrafficTest, ANewRouteRespawnsTheAircraftWhereItIs) {
    for (int i = 0; i < 6; ++i) {
        deliver(routed(airborne(0x4C0444, "UAL9", 1000.0 + 5 * i, 50.0 + 0.01 * i), "LHR", "JFK"),
                gf_simTick() + 500 * i);
    }
    tick();
    makeActive(0x4C0444, 51);
    LiveAircraft& ac = *live(0x4C0444);
    const double lat = ac.lat;
    const double heading = ac.heading;

    deliver(routed(airborne(0x4C0444, "UAL9", 1100, 50.2), "CDG", "FRA"), gf_simTick() + 3000);
    EXPECT_TRUE(logged("UAL9                  CDG->FRA respawns because of orig-dest change"));
    EXPECT_EQ(ac.simState, SimState::liveryrespawn);
    EXPECT_EQ(ac.stream.front().time, gf_simTick() + 1);
    tickUntilMultipleOf(10);
    EXPECT_EQ(takeCommands().removes, std::vector<std::uint32_t>{51});

    reportRemoved(51);
    tick();  // back in the buffer, then through the gate again at once
    LiveAircraft& again = *live(0x4C0444);
    EXPECT_EQ(again.objectid, 0u);
    EXPECT_EQ(again.throttleIndex, 5u);
    EXPECT_EQ(again.flapsIndex, 4u);
    EXPECT_EQ(again.simState, SimState::adding2sim);
    ASSERT_EQ(liveCreates.size(), 1u);
    EXPECT_NEAR(liveCreates.front().lat, lat, 1e-3);
    EXPECT_NEAR(liveCreates.front().heading, heading * 57.29577951308232, 1e-6);
}

TEST_F(TrafficTest, WithoutGuidChangesTheRouteIsTakenOverQuietly) {
    setOptions([](Options& o) { o.GUID_CHANGES = false; });
    for (int i = 0; i < 6; ++i) {
        deliver(routed(airborne(0x4C0445, "UAL8", 1000.0 + 5 * i, 50.0 + 0.01 * i), "LHR", "JFK"),
                gf_simTick() + 500 * i);
    }
    tick();
    makeActive(0x4C0445, 52);
    deliver(routed(airborne(0x4C0445, "UAL8", 1100, 50.2), "CDG", "FRA"), gf_simTick() + 3000);
    EXPECT_EQ(live(0x4C0445)->simState, SimState::active);
    EXPECT_EQ(live(0x4C0445)->orig, iata("CDG"));
    EXPECT_FALSE(logged("respawns because of"));
}

TEST_F(TrafficTest, ARegcodeOfAnotherModelOfTheSameAirlineRespawnsWithANewLivery) {
    const std::uint16_t baw = gf_airlineIndex("BAW");
    dbaseRecords = {{"G-EUAA", baw, 0, gf_modelIndex("A320"), false, true},
                    {"G-EUBB", baw, 0, gf_modelIndex("A321"), false, true}};
    for (int i = 0; i < 6; ++i) {
        TrafficMessage m =
            airborne(0x4C0555, "BAW77", 1000.0 + 5 * i, 50.0 + 0.01 * i, 5000, "B738");
        m.regcode = "G-EUAA";
        deliver(m, gf_simTick() + 500 * i);
    }
    tick();
    EXPECT_EQ(live(0x4C0555)->livery, "A320 livery");  // the registration knows better
    makeActive(0x4C0555, 61);

    TrafficMessage m = airborne(0x4C0555, "BAW77", 1100, 50.2);
    m.regcode = "G-EUBB";
    deliver(m, gf_simTick() + 3000);
    EXPECT_TRUE(logged("respawns because of regcode change"));
    EXPECT_EQ(live(0x4C0555)->flightState, FlightState::birth);
    EXPECT_EQ(live(0x4C0555)->regcode, "G-EUBB");

    tickUntilMultipleOf(10);
    reportRemoved(61);
    tick();
    EXPECT_EQ(live(0x4C0555)->simState, SimState::adding2sim);
    EXPECT_EQ(live(0x4C0555)->livery, "A321 livery");
    EXPECT_EQ(live(0x4C0555)->flightState, FlightState::flying);
}

TEST_F(TrafficTest, WithoutGuidChangesARegcodeChangeKeepsStateAndLivery) {
    setOptions([](Options& o) { o.GUID_CHANGES = false; });
    const std::uint16_t baw = gf_airlineIndex("BAW");
    dbaseRecords = {{"G-EUAA", baw, 0, gf_modelIndex("A320"), false, true},
                    {"G-EUBB", baw, 0, gf_modelIndex("A321"), false, true}};
    for (int i = 0; i < 6; ++i) {
        TrafficMessage m = airborne(0x4C0556, "BAW78", 1000.0 + 5 * i, 50.0 + 0.01 * i);
        m.regcode = "G-EUAA";
        deliver(m, gf_simTick() + 500 * i);
    }
    tick();
    makeActive(0x4C0556, 62);

    TrafficMessage m = airborne(0x4C0556, "BAW78", 1100, 50.2);
    m.regcode = "G-EUBB";
    deliver(m, gf_simTick() + 3000);
    const LiveAircraft& ac = *live(0x4C0556);
    EXPECT_EQ(ac.regcode, "G-EUBB");
    // The object flies on as what it is: no respawn, so no new livery and
    // no birth, which would end it at the first gap in its data.
    EXPECT_EQ(ac.flightState, FlightState::flying);
    EXPECT_EQ(ac.simState, SimState::active);
    EXPECT_EQ(ac.livery, "A320 livery");
    EXPECT_FALSE(logged("respawns because of"));
}
