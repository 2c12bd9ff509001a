#include <cmath>
#include <numbers>

#include <fmt/format.h>
#include "sim/sim_ids.h"

#include "traffic/aircraft_base.h"
#include "traffic/controls.h"
#include "traffic/geometry.h"
#include "traffic_fixture.h"

using namespace tfx;
using tfx::test::TrafficTest;

TEST(Geometry, DistancesBearingsAndProjectionAgree) {
    EXPECT_NEAR(gf_distanceNm({50, 8}, {51, 8}), 60.0, 0.1);
    EXPECT_NEAR(gf_bearing({50, 8}, {50, 7}), 1.5 * std::numbers::pi, 0.01);  // west
    const LatLon start{47.45, 8.56};
    const LatLon there = gf_projectPosition(start, 0.7, 6076.11549 * 12);  // 12 NM
    EXPECT_NEAR(gf_distanceNm(start, there), 12.0, 1e-3);
    EXPECT_NEAR(gf_bearing(start, there), 0.7, 1e-3);
    // Across the date line the longitude comes back into range.
    EXPECT_NEAR(gf_projectPosition({0, 179.99}, std::numbers::pi / 2, 6076.11549 * 6).lon, -179.91,
                1e-3);
}

TEST(Geometry, ClearanceAndRelativePosition) {
    EXPECT_FALSE(gf_withinNm({50, 8}, 0, {50, 8}, 0));  // no radius, no conflict
    EXPECT_TRUE(gf_withinNm({50, 8}, 0.05, {50.001, 8}, 0.02));
    EXPECT_FALSE(gf_withinNm({50, 8}, 0.05, {50.002, 8}, 0.01));
    const RelativePosition behind = gf_relativePosition({50, 8}, 0, {49.999, 8});
    EXPECT_NEAR(behind.along_m, -111.2, 0.5);
    EXPECT_NEAR(behind.cross_m, 0, 0.01);
    const RelativePosition right = gf_relativePosition({50, 8}, 0, {50, 8.001});
    EXPECT_GT(right.cross_m, 70);
    EXPECT_EQ(gf_relativePosition({50, 8}, 1, {50, 8}).relBearing, 0);
    EXPECT_EQ(gf_normalizeHeading(std::nan("")), 0);
    EXPECT_NEAR(gf_normalizeHeading(-0.5), 2 * std::numbers::pi - 0.5, 1e-12);
    EXPECT_NEAR(gf_foldAngle(6.0), 6.0 - 2 * std::numbers::pi, 1e-12);
}

TEST(PointQueue, KeepsItsOrderAcrossWrapAndGrowth) {
    PointQueue q;
    for (int i = 0; i < 10; ++i) {
        StreamPoint p;
        p.time = i;
        q.push_back(p);
        q.pop_front();
        q.push_back(p);
    }
    for (int i = -1; i > -30; --i) {  // grows while the head has wrapped
        StreamPoint p;
        p.time = i;
        q.push_front(p);
    }
    ASSERT_EQ(q.size(), 39u);
    for (std::size_t i = 1; i < q.size(); ++i) EXPECT_LE(q[i - 1].time, q[i].time);
    q.erase(1, 30);
    EXPECT_EQ(q.front().time, -29);
    EXPECT_EQ(q[1].time, 5);
    EXPECT_EQ(q.size(), 10u);
    EXPECT_EQ(q.back().time, 9);
}

TEST_F(TrafficTest, RecordsTakeTheConstantsOfTheirCategory) {
    TrafficMessage m;
    m.aimo.model = gf_modelIndex("ZZ00");
    AircraftBase unknownSpan = gf_makeAircraftBase(m);
    EXPECT_EQ(unknownSpan.category, AircraftCategory::Light);
    EXPECT_DOUBLE_EQ(unknownSpan.standSearchNear, 18 * 0.0005399568034557236);  // span 0: 18 m
    EXPECT_DOUBLE_EQ(unknownSpan.standSearchFar, 1.25 * unknownSpan.standSearchNear);

    const std::uint16_t a388 = gf_modelIndex("A388");
    heavyModels.insert(a388);
    halfWingspan[a388] = 40 * 0.0005399568034557236;
    m.aimo.model = a388;
    const AircraftBase heavy = gf_makeAircraftBase(m);
    EXPECT_EQ(heavy.category, AircraftCategory::Heavy);
    EXPECT_DOUBLE_EQ(heavy.clearance, heavy.halfSpan);
    EXPECT_DOUBLE_EQ(heavy.standSearchNear, 65 * 0.0005399568034557236);  // capped
    EXPECT_DOUBLE_EQ(heavy.turnRateNow, heavy.turnRate);
    EXPECT_NEAR(heavy.turnRate, 5 * 0.017453292519943295 / 100, 1e-15);
    EXPECT_EQ(heavy.flareTicks, 450);
    // -5 degrees, spread by 2.5 percent one way or the other.
    EXPECT_NEAR(std::fabs(heavy.rotationPitch), 5 * 0.017453292519943295, 0.126 * 0.0175);
    EXPECT_NE(std::fabs(heavy.rotationPitch), 5 * 0.017453292519943295);

    m.aimo.model = 2700;  // beyond the span table
    EXPECT_DOUBLE_EQ(gf_makeAircraftBase(m).halfSpan, 35.0);
}

TEST_F(TrafficTest, CategoriesFollowTheirOptions) {
    EXPECT_TRUE(gf_categoryEnabled(AircraftCategory::Heavy));
    setOptions([](Options& o) { o.HELICOPTERS = false; });
    EXPECT_FALSE(gf_categoryEnabled(AircraftCategory::Rotorcraft));
    EXPECT_FALSE(gf_categoryEnabled(static_cast<AircraftCategory>(6)));
    const std::uint16_t h60 = gf_modelIndex("H60");
    rotorcraftModels.insert(h60);
    TrafficMessage m = airborne(0x4C0077, "HELI1", 100, 50, 3000, "H60");
    deliver(m, START_TICK);
    EXPECT_EQ(live(0x4C0077), nullptr);
}

TEST_F(TrafficTest, StateChangesKeepTheirHistory) {
    LiveAircraft ac;
    gf_setFlightState(ac, FlightState::taxi);
    simTick = START_TICK + 5;
    gf_setFlightState(ac, FlightState::takeoff_roll);
    gf_setFlightState(ac, FlightState::takeoff_roll);
    EXPECT_EQ(ac.prevState, FlightState::taxi);
    EXPECT_EQ(ac.prevPrevState, FlightState::birth);
    EXPECT_EQ(ac.stateTick, START_TICK + 5);
    EXPECT_EQ(gf_flightStateName(ac.flightState), "takeoff_roll");
    EXPECT_EQ(gf_simStateName(SimState::liveryrespawn), "liveryrespawn");
}

TEST_F(TrafficTest, ControlsAreSentOnlyWhenTheyChange) {
    StaticAircraft ac;
    ac.objectid = 9;
    gf_setFlaps(ac, 4);  // 4 is also "none commanded yet"
    gf_setFlaps(ac, 2);
    gf_setFlaps(ac, 4);
    gf_setFlaps(ac, 4);
    gf_setThrottle(ac, 2);
    gf_setThrottle(ac, 2);
    gf_setFlaps(ac, 7);
    gf_setGear(ac, true);
    gf_setGear(ac, true);
    ac.category = AircraftCategory::Rotorcraft;
    gf_setFlaps(ac, 1);
    gf_setSpoilers(ac, true);
    const SimCommands c = takeCommands();
    ASSERT_EQ(c.clientEvents.size(), 5u);
    EXPECT_EQ(c.clientEvents[0].value, 10240u);
    EXPECT_EQ(c.clientEvents[1].event, EVENT_FLAPS_SET);
    EXPECT_EQ(c.clientEvents[1].value, 0u);  // index 4 retracts
    EXPECT_EQ(c.clientEvents[2].value, 8191u);
    EXPECT_EQ(c.clientEvents[3].event, EVENT_GEAR_SET);
    EXPECT_EQ(c.clientEvents[4].event, EVENT_GEAR_SET);
    EXPECT_TRUE(logged("gf_setFlaps: invalid flaps index"));
}

TEST_F(TrafficTest, TheTwentiethTrafficExceptionCarriesTheNoticeTheTwentyFirstIsSilent) {
    gf_resetTrafficExceptionCount();
    lf_trafficException("nowhere");
    EXPECT_TRUE(logged("Traffic exception in nowhere: unknown exception"));
    try {
        throw 42;
    } catch (...) {
        lf_trafficException("odd");
    }
    EXPECT_TRUE(logged("Traffic exception in odd: non-standard exception"));
    for (int n = 3; n <= 21; ++n) {
        try {
            throw std::runtime_error(fmt::format("fault {}", n));
        } catch (...) {
            lf_trafficException("updateLiveAc");
        }
    }
    EXPECT_TRUE(logged("Traffic exception in updateLiveAc: fault 19\n"));
    EXPECT_TRUE(
        logged("Traffic exception in updateLiveAc: fault 20 (further traffic exceptions will be "
               "suppressed)\n"));
    EXPECT_FALSE(logged("fault 21"));
    EXPECT_EQ(gf_trafficExceptionCount(), 21);
}
