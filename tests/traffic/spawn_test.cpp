#include <algorithm>

#include <fmt/format.h>

#include "app/user_exception.h"
#include "sim/sim_ids.h"
#include "traffic/aircraft_base.h"
#include "traffic/units.h"
#include "traffic_fixture.h"

using namespace tfx;
using tfx::test::TrafficTest;

namespace {

std::size_t countEvents(const SimCommands& c, std::uint32_t objectid, std::uint32_t event) {
    return static_cast<std::size_t>(std::count_if(
        c.clientEvents.begin(), c.clientEvents.end(),
        [&](const ClientEvent& e) { return e.objectid == objectid && e.event == event; }));
}

}  // namespace

TEST_F(TrafficTest, AnAircraftWithOneMessageNeverReachesTheSimulator) {
    deliver(airborne(0x4C00C1, "AFR7", 100, 50), START_TICK + 5);
    tick(5);
    ASSERT_NE(live(0x4C00C1), nullptr);  // not due yet
    tick();
    EXPECT_EQ(live(0x4C00C1), nullptr);
    EXPECT_TRUE(spawnStack.empty());
    EXPECT_TRUE(liveCreates.empty());
}

TEST_F(TrafficTest, FromFirstPointToActiveObject) {
    deliverTrack(0x4C00C2, "BAW123", 4);
    tick();
    LiveAircraft* ac = live(0x4C00C2);
    ASSERT_NE(ac, nullptr);
    EXPECT_EQ(ac->simState, SimState::adding2sim);
    EXPECT_EQ(ac->flightState, FlightState::flying);
    EXPECT_EQ(ac->livery, "A320 livery");
    ASSERT_EQ(liveCreates.size(), 1u);
    const CreateRequest& queued = liveCreates.front();
    EXPECT_EQ(queued.callsign, "BAW123");
    EXPECT_FALSE(queued.onGround);
    EXPECT_NEAR(queued.heading, 0.0, 1e-6);  // north, in degrees
    EXPECT_DOUBLE_EQ(queued.alt, 5000);

    // Creates leave at the 0.2 s pace only.
    tickUntilMultipleOf(20);
    SimCommands commands = takeCommands();
    ASSERT_EQ(commands.creates.size(), 1u);
    EXPECT_EQ(commands.creates[0].hexid, 0x4C00C2u);

    assignObject(0x4C00C2, 4711);
    tick();
    EXPECT_EQ(live(0x4C00C2)->objectid, 4711u);
    bool askedStaticData = false;
    for (const auto& r : gf_peekSimCommands().requests) {
        askedStaticData |= r.kind == REQUEST_STATIC_DATA && r.objectid == 4711;
    }
    EXPECT_TRUE(askedStaticData);
    tick(198);
    EXPECT_EQ(live(0x4C00C2)->simState, SimState::adding2sim);  // two seconds to draw itself
    tick();
    EXPECT_EQ(live(0x4C00C2)->simState, SimState::active);
    commands = takeCommands();
    EXPECT_EQ(countEvents(commands, 4711, EVENT_ALL_LIGHTS_TOGGLE), 2u);
    EXPECT_EQ(countEvents(commands, 4711, EVENT_ENGINE_AUTO_START), 1u);
    // Set up, and set again by the first leg's flight configuration.
    EXPECT_GE(countEvents(commands, 4711, EVENT_STROBES_SET), 1u);

    // From now on its position goes to the simulator's frame every tick.
    tick();
    FrameTable sending;
    ASSERT_TRUE(gf_trySwapFrame(sending));
    ASSERT_NE(sending.find(4711), nullptr);
    EXPECT_NEAR(sending.find(4711)->alt, 5000, 1);
    EXPECT_FALSE(gf_trySwapFrame(sending));  // nothing is sent twice
}

TEST_F(TrafficTest, NearTheFieldOnlyAircraftOnTheGroundOrClearOfItAreShown) {
    parkAirport.icao = 1;
    parkAirport.alt_ft = 300;
    // Within 120 ft of the field: not taken up at all.
    deliver(airborne(0x4C00D1, "KLM1", 100, 50, 350), START_TICK);
    EXPECT_EQ(live(0x4C00D1), nullptr);

    // 800 ft above the field: it loses points until it is 1000 ft above it.
    const double alts[] = {1100, 1200, 1400, 1600};
    for (int i = 0; i < 4; ++i) {
        deliver(airborne(0x4C00D2, "KLM2", 100 + 5 * i, 50 + 0.01 * i, alts[i]),
                START_TICK + 100 * i);
    }
    tick(150);
    ASSERT_NE(live(0x4C00D2), nullptr);
    EXPECT_EQ(live(0x4C00D2)->simState, SimState::buffer);
    EXPECT_EQ(live(0x4C00D2)->stream.size(), 2u);
    tick(60);
    EXPECT_EQ(live(0x4C00D2)->simState, SimState::adding2sim);
    EXPECT_DOUBLE_EQ(live(0x4C00D2)->alt, 1400);

    // One that lands is shown once all its points are on the ground.
    TrafficMessage touchdown = airborne(0x4C00D3, "KLM3", 100, 51, 1000);
    touchdown.point.speed = 140;
    deliver(touchdown, START_TICK + 300);
    deliver(onGround(0x4C00D3, "KLM3", 105, 51.001, 30), START_TICK + 400);
    deliver(onGround(0x4C00D3, "KLM3", 110, 51.002, 30), START_TICK + 500);
    tick(110);
    EXPECT_EQ(live(0x4C00D3)->simState, SimState::buffer);
    tick(90);
    EXPECT_EQ(live(0x4C00D3)->simState, SimState::adding2sim);
    EXPECT_EQ(live(0x4C00D3)->flightState, FlightState::taxi);
}

TEST_F(TrafficTest, MaxLiveSelZeroKeepsTheSkyEmpty) {
    setOptions([](Options& o) { o.MAX_LIVE_SEL = 0; });
    deliverTrack(0x4C00E1, "EZY1", 3);
    tick();
    EXPECT_EQ(live(0x4C00E1), nullptr);
    EXPECT_TRUE(liveCreates.empty());
}

TEST_F(TrafficTest, MaxLiveSel500IsNoLimit) {
    for (std::uint32_t i = 0; i < 500; ++i) {
        LiveAircraft ac;
        ac.hexid = 0x500000 + i;
        ac.callsign = "X";
        ac.simState = SimState::active;
        ac.objectid = 100 + i;
        StreamPoint far;
        far.time = START_TICK + 100000;
        ac.stream.push_back(far);
        liveAircraft.push_back(std::move(ac));
    }
    deliverTrack(0x4C00E2, "EZY2", 3);
    tick();
    EXPECT_EQ(live(0x4C00E2)->simState, SimState::adding2sim);
}

TEST_F(TrafficTest, AtTheLiveLimitANewcomerReplacesOnlyAFurtherAircraft) {
    setOptions([](Options& o) { o.MAX_LIVE_SEL = 2; });
    UserData user;
    user.lat = 50.0;
    user.lon = 8.0;
    gf_storeUserData(user);
    userAircraft = user;
    const double lats[] = {50.5, 51.0};  // 30 and 60 NM north of the user
    for (std::uint32_t i = 0; i < 2; ++i) {
        LiveAircraft ac;
        ac.hexid = 0x600000 + i;
        ac.callsign = "NEAR";
        ac.simState = SimState::active;
        ac.objectid = 200 + i;
        ac.lat = lats[i];
        ac.lon = 8.0;
        StreamPoint far;
        far.time = START_TICK + 100000;
        ac.stream.push_back(far);
        liveAircraft.push_back(std::move(ac));
    }
    // 90 NM away: the furthest of all, so it doesn't come.
    deliver(airborne(0x4C00E3, "FAR", 100, 51.5), START_TICK);
    deliver(airborne(0x4C00E3, "FAR", 105, 51.6), START_TICK + 500);
    // 45 NM away: the aircraft at 60 NM makes room.
    deliver(airborne(0x4C00E4, "MID", 100, 50.75), START_TICK);
    deliver(airborne(0x4C00E4, "MID", 105, 50.76), START_TICK + 500);
    tick();
    EXPECT_EQ(live(0x4C00E3), nullptr);
    EXPECT_EQ(live(0x4C00E4)->simState, SimState::adding2sim);
    EXPECT_EQ(live(0x600001)->simState, SimState::removingfromsim);
    EXPECT_EQ(live(0x600000)->simState, SimState::active);
}

TEST_F(TrafficTest, RefusedCreatesEraseTheAircraftAndTheTwentiethEndsTheTraffic) {
    std::vector<std::string> models;
    for (std::uint32_t i = 0; i < 20; ++i) models.push_back(fmt::format("M{:02}", i));
    test::publishModelLiveries(models);
    for (std::uint32_t i = 0; i < 20; ++i)
        deliverTrack(0x40F00 + i, fmt::format("RF{}", i), 2, 5000, models[i].c_str());
    tick();
    ASSERT_EQ(spawnStack.size() + liveCreates.size(), 20u);
    for (std::uint32_t i = 0; i < 19; ++i) {
        gf_postSimMessage({0, 0x40F00 + i, 0, SIM_CREATE_FAILED, 0, 0});
    }
    tick();
    EXPECT_EQ(liveAircraft.size(), 1u);
    EXPECT_TRUE(logged("RF0 'M00 livery' could not be created by your Sim!"));
    EXPECT_TRUE(logged("RF18 'M18 livery' could not be created by your Sim!"));

    gf_postSimMessage({0, 0x40F00 + 19, 0, SIM_CREATE_FAILED, 0, 0});
    try {
        tick();
        FAIL() << "no escalation";
    } catch (const UserRelatedException& e) {
        EXPECT_EQ(e.code, 81);
        EXPECT_EQ(e.message, "There are too many liveries that could not be created!, see Log.txt");
    }
    EXPECT_TRUE(liveAircraft.empty());
    EXPECT_TRUE(logged("Error 81, There are too many liveries that could not be created!"));
}

TEST_F(TrafficTest, ARegistrationLearnedInTheBufferBringsItsModelsCategoryAndPerformance) {
    setOptions([](Options& o) { o.LIGHT_AIRCRAFT = true; });
    const std::uint16_t c172 = gf_modelIndex("C172");
    const std::uint16_t b744 = gf_modelIndex("B744");
    heavyModels.insert(b744);
    halfWingspan[c172] = 5.5 * NM_PER_METRE;
    halfWingspan[b744] = 32.2 * NM_PER_METRE;
    dbaseRecords = {{"G-CIVA", gf_airlineIndex("BAW"), 0, b744, false, true}};
    // The first report names no registration and a wrong model; the second
    // brings the registration.
    for (int i = 0; i < 3; ++i) {
        TrafficMessage m =
            airborne(0x4007A1, "BAW9", 1000.0 + 5 * i, 50.0 + 0.01 * i, 5000, "C172");
        if (i > 0) m.regcode = "G-CIVA";
        deliver(m, gf_simTick() + 500 * i);
    }
    ASSERT_EQ(live(0x4007A1)->category, AircraftCategory::Light);
    tick();
    const LiveAircraft* ac = live(0x4007A1);
    ASSERT_NE(ac, nullptr);
    ASSERT_EQ(ac->simState, SimState::adding2sim);
    EXPECT_EQ(ac->aimo.model, b744);
    EXPECT_EQ(ac->livery, "B744 livery");

    TrafficMessage heavy;
    heavy.aimo.model = b744;
    const AircraftBase expected = gf_makeAircraftBase(heavy);
    EXPECT_EQ(ac->category, AircraftCategory::Heavy);
    EXPECT_DOUBLE_EQ(ac->halfSpan, expected.halfSpan);
    EXPECT_DOUBLE_EQ(ac->clearance, expected.halfSpan);
    EXPECT_DOUBLE_EQ(ac->standSearchNear, expected.standSearchNear);
    EXPECT_DOUBLE_EQ(ac->turnRateNow, expected.turnRate);
    EXPECT_DOUBLE_EQ(ac->pushbackSpeed, expected.pushbackSpeed);
    EXPECT_EQ(ac->flareTicks, expected.flareTicks);
    // -5 and -12.5 degrees, each spread a little one way or the other.
    EXPECT_NEAR(ac->rotationPitch, -5 * RAD_PER_DEG, 0.026 * 5 * RAD_PER_DEG);
    EXPECT_NEAR(ac->climbPitch, -12.5 * RAD_PER_DEG, 0.051 * 12.5 * RAD_PER_DEG);
}

TEST_F(TrafficTest, ARegistrationOfACategoryThatIsSwitchedOffIsNeverCreated) {
    setOptions([](Options& o) {
        o.LIGHT_AIRCRAFT = true;
        o.HELICOPTERS = false;
    });
    const std::uint16_t h60 = gf_modelIndex("H60");
    rotorcraftModels.insert(h60);
    dbaseRecords = {{"N60HX", 0, 0, h60, false, true}};
    for (int i = 0; i < 3; ++i) {
        TrafficMessage m =
            airborne(0x4007A2, "N60HX", 1000.0 + 5 * i, 50.0 + 0.01 * i, 3000, "C172");
        if (i > 0) m.regcode = "N60HX";
        deliver(m, gf_simTick() + 500 * i);
    }
    tick();
    EXPECT_EQ(live(0x4007A2), nullptr);
    EXPECT_TRUE(liveCreates.empty());
    EXPECT_TRUE(spawnStack.empty());
}
