// An aircraft that stops on a taxiway without data holds there: it goes when
// its time runs out, when its data come back somewhere else, or when another
// aircraft comes to move through its place; not before.
#include <fmt/format.h>

#include "liveries/reference_db.h"
#include "traffic/aircraft_base.h"
#include "traffic/flight_motion.h"
#include "traffic_fixture.h"

namespace tfx::test {

namespace {

constexpr double DEG_PER_M = 1.0 / (1852.0 * 60.0);  // of latitude
constexpr double HALF_SPAN_M = 18.0;

class HoldingTest : public TrafficTest {
protected:
    void SetUp() override {
        TrafficTest::SetUp();
        halfWingspan[gf_modelIndex("A320")] = HALF_SPAN_M * NM_PER_METRE;
        setOptions([](Options& o) {
            o.MAX_HOLDING_MINUTES = 2;
            o.HOLDING_THRESHOLD_METERS = 100;
        });
    }

    // An active aircraft standing on the ground at one point, due at the
    // given tick; north of 50 N by the given metres.
    static LiveAircraft& standing(std::uint32_t hexid, std::uint32_t objectid, double north_m,
                                  FlightState state, std::int32_t due) {
        LiveAircraft ac;
        TrafficMessage m =
            onGround(hexid, fmt::format("T{}", objectid), 0, 50.0 + north_m * DEG_PER_M, 0);
        static_cast<AircraftBase&>(ac) = gf_makeAircraftBase(m);
        ac.simState = SimState::active;
        ac.objectid = objectid;
        ac.flightState = state;
        ac.onGround = 1;
        m.point.time = due;
        m.point.same = 1;
        ac.stream.push_back(m.point);
        ac.lat = m.point.lat;
        ac.lon = m.point.lon;
        liveAircraft.push_back(std::move(ac));
        return liveAircraft.back();
    }
    // One that has been holding for a while, with extension points to spare.
    static void holding(std::uint32_t hexid, std::uint32_t objectid) {
        LiveAircraft& ac = standing(hexid, objectid, 0, FlightState::taxi, gf_simTick() + 100000);
        ac.holding = 1;
        ac.holdSinceTick = static_cast<std::uint32_t>(gf_simTick() - 3000);
        ac.extensions = 30;
        ac.maxAdvance = 100;
        ac.maxDelay = 100;
    }
    static void expectReleasedAndRemoved(std::uint32_t hexid) {
        const LiveAircraft* ac = gf_findLive(hexid);
        ASSERT_NE(ac, nullptr);
        EXPECT_EQ(ac->holding, 0);
        EXPECT_EQ(ac->holdSinceTick, 0u);
        EXPECT_EQ(ac->extensions, 0);
        EXPECT_EQ(ac->maxAdvance, 2700);
        EXPECT_EQ(ac->maxDelay, 2700);
        EXPECT_EQ(ac->simState, SimState::removingfromsim);
    }
};

}  // namespace

TEST_F(HoldingTest, TheHoldRunsOutAfterTheMaximumMinutesAndNotBefore) {
    standing(0x4CB001, 81, 0, FlightState::taxi, gf_simTick());
    tick();
    const LiveAircraft* ac = live(0x4CB001);
    ASSERT_EQ(ac->holding, 1) << "out of data on a taxiway, the aircraft holds";
    const auto since = static_cast<std::int32_t>(ac->holdSinceTick);
    EXPECT_EQ(since, START_TICK);
    EXPECT_EQ(ac->extensions, 40);  // a point per 3 seconds for 2 minutes

    tick(2 * 6000 - 10);
    ASSERT_EQ(ac->simState, SimState::active) << "at " << gf_simTick() - since;
    EXPECT_EQ(ac->holding, 1);
    EXPECT_DOUBLE_EQ(ac->lat, 50.0) << "it stands still meanwhile";
    tick(20);
    EXPECT_EQ(ac->simState, SimState::removingfromsim) << "at " << gf_simTick() - since;
}

TEST_F(HoldingTest, DataFromBeyondTheThresholdEndTheHoldDataWithinItContinueIt) {
    holding(0x4CB002, 82);
    StreamPoint near = onGround(0x4CB002, "T82", 0, 50.0 + 95 * DEG_PER_M).point;
    near.time = gf_simTick() + 300;
    decodeExisting(*live(0x4CB002), near);
    EXPECT_EQ(live(0x4CB002)->simState, SimState::active) << "95 m: the aircraft taxis on";

    holding(0x4CB003, 83);
    StreamPoint far = onGround(0x4CB003, "T83", 0, 50.0 + 105 * DEG_PER_M).point;
    far.time = gf_simTick() + 300;
    decodeExisting(*live(0x4CB003), far);
    expectReleasedAndRemoved(0x4CB003);
    EXPECT_EQ(live(0x4CB003)->stream.size(), 1u) << "the far point is not taken";
}

TEST_F(HoldingTest, OnlyAnAircraftMovingOnTheGroundThroughItsPlaceReleasesIt) {
    holding(0x4CB004, 84);
    // Clearances touch at twice the half span (36 m).
    standing(0x4CB005, 85, 30, FlightState::parked, gf_simTick() + 100000);
    standing(0x4CB006, 86, 40, FlightState::taxi, gf_simTick() + 100000);
    LiveAircraft& airborneOver =
        standing(0x4CB007, 87, 10, FlightState::landing_roll, gf_simTick() + 100000);
    airborneOver.onGround = 0;
    LiveAircraft& notYetThere =
        standing(0x4CB008, 88, 10, FlightState::taxi, gf_simTick() + 100000);
    notYetThere.simState = SimState::adding2sim;
    tick(45);
    ASSERT_EQ(live(0x4CB004)->holding, 1);
    EXPECT_EQ(live(0x4CB004)->simState, SimState::active);

    // A taxiing aircraft 30 m away does; the release comes on the 0.2 s grid.
    standing(0x4CB00A, 90, 30, FlightState::taxi, gf_simTick() + 100000);
    tickUntilMultipleOf(20);
    expectReleasedAndRemoved(0x4CB004);
    EXPECT_EQ(live(0x4CB00A)->simState, SimState::active) << "the one passing goes on";
    EXPECT_EQ(live(0x4CB00A)->holding, 0);
}

}  // namespace tfx::test
