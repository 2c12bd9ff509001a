// The position stream of one record, driven directly: how points enter it,
// how it is extended when data fail, and the configuration in flight.
#include "parking/park_airport.h"
#include "sim/sim_ids.h"
#include "traffic/aircraft_base.h"
#include "traffic/flight_motion.h"
#include "traffic_fixture.h"

namespace tfx {
void lf_lowConfiguration(LiveAircraft& ac);
}

namespace tfx::test {

namespace {

class PositionStreamTest : public TrafficTest {
protected:
    // An active aircraft in the air at its first point, which is due now.
    static LiveAircraft flyingRecord(AircraftCategory category = AircraftCategory::Large) {
        LiveAircraft ac;
        static_cast<AircraftBase&>(ac) = gf_makeAircraftBase(airborne(0x4CA002, "TST2", 0, 50.0));
        ac.category = category;
        ac.simState = SimState::active;
        ac.objectid = 77;
        ac.flightState = FlightState::flying;
        StreamPoint p = airborne(0x4CA002, "TST2", 0, 50.0).point;
        p.time = gf_simTick();
        ac.stream.push_back(p);
        ac.lat = p.lat;
        ac.lon = p.lon;
        ac.alt = p.alt;
        return ac;
    }
    static StreamPoint pointAt(double lat, std::int32_t time, double alt_ft = 5000) {
        StreamPoint p = airborne(0x4CA002, "TST2", 0, lat, alt_ft).point;
        p.time = time;
        return p;
    }
};

}  // namespace

TEST_F(PositionStreamTest, APointNotLaterThanTheNewestIsPlacedOneTickBehindIt) {
    LiveAircraft ac = flyingRecord();
    StreamPoint p = pointAt(50.01, gf_simTick() + 500);
    decodeExisting(ac, p);
    StreamPoint early = pointAt(50.02, gf_simTick() + 400);
    decodeExisting(ac, early);
    ASSERT_EQ(ac.stream.size(), 3u);
    EXPECT_EQ(ac.stream[2].time, gf_simTick() + 501);
}

TEST_F(PositionStreamTest, AnAirborneAircraftRefusesAPointOnItsOwnPosition) {
    LiveAircraft ac = flyingRecord();
    StreamPoint same = pointAt(50.0, gf_simTick() + 500);
    decodeExisting(ac, same);
    StreamPoint near = pointAt(50.0001, gf_simTick() + 500);
    decodeExisting(ac, near);
    EXPECT_EQ(ac.stream.size(), 1u);
}

TEST_F(PositionStreamTest, ExtensionPointsCarryOnWhatTheAircraftDid) {
    // Landing: 31.6825 feet lower per 3 seconds.
    LiveAircraft landing = flyingRecord();
    landing.flightState = FlightState::landing;
    lf_extendStream(landing, 20);
    ASSERT_EQ(landing.stream.size(), 2u);
    EXPECT_NEAR(landing.stream[1].alt, 5000 - 31.6825, 1e-9);
    EXPECT_DOUBLE_EQ(landing.stream[1].vs, -633.65);
    EXPECT_EQ(landing.stream[1].time - landing.stream[0].time, 300);
    EXPECT_GT(landing.stream[1].lat, landing.stream[0].lat);  // on along the heading (north)

    // Parked: the next point lies a week ahead.
    LiveAircraft parked = flyingRecord();
    parked.flightState = FlightState::parked;
    parked.onGround = 1;
    lf_extendStream(parked, 1);
    EXPECT_EQ(parked.stream[1].time - parked.stream[0].time, 60480000);
    EXPECT_EQ(parked.stream[1].same, 1);

    // Takeoff roll: accelerates, to 180 knots at most, climbing faster above 140.
    LiveAircraft roll = flyingRecord();
    roll.flightState = FlightState::takeoff_roll;
    roll.onGround = 1;
    roll.stream.front().speed = 20;
    for (int i = 0; i < 40; ++i) lf_extendStream(roll, 20);
    EXPECT_DOUBLE_EQ(roll.stream[1].speed, 32);
    EXPECT_DOUBLE_EQ(roll.stream.back().speed, 180);
    EXPECT_DOUBLE_EQ(roll.stream.back().vs, 2400);
}

TEST_F(PositionStreamTest, FlyingAircraftExtendOnlyWellInsideTheRange) {
    setOptions([](Options& o) {
        o.RANGE = 20;
        o.range_nm = 20;
    });
    LiveAircraft ac = flyingRecord();
    EXPECT_EQ(lf_extensionCount(ac), 20);  // user position unknown
    // 1 NM of latitude is 1/60 degree.
    userAircraft.lat = 50.0 - (20 - 0.4) / 60.0;
    userAircraft.lon = 8.0;
    EXPECT_EQ(lf_extensionCount(ac), 0);
    userAircraft.lat = 50.0 - (20 - 0.6) / 60.0;
    EXPECT_EQ(lf_extensionCount(ac), 20);
}

TEST_F(PositionStreamTest, AnAircraftWithoutDataNearTheRangeEdgeIsRemovedAtOnce) {
    setOptions([](Options& o) {
        o.RANGE = 20;
        o.range_nm = 20;
    });
    LiveAircraft ac = flyingRecord();
    userAircraft.lat = 50.0 - (20 - 0.4) / 60.0;
    userAircraft.lon = 8.0;
    nextPosMain(ac);
    EXPECT_EQ(ac.simState, SimState::removingfromsim);
}

TEST_F(PositionStreamTest, TheLandingBandIsWiderForAirlinersThanForLightAircraft) {
    parkAirport.icao = 1;
    parkAirport.lat = 50.0;
    parkAirport.lon = 8.0;
    for (const auto category : {AircraftCategory::Bizjet, AircraftCategory::Light}) {
        LiveAircraft ac = flyingRecord(category);
        ac.stream.front().vs = -700;
        ac.agl = 2050;
        lf_lowConfiguration(ac);
        EXPECT_EQ(ac.flightState,
                  category == AircraftCategory::Light ? FlightState::flying : FlightState::landing)
            << gf_categoryWord(category);
    }
}

TEST_F(PositionStreamTest, ARunawayStreamIsCutByTheGuard) {
    // Every point after the front stands still in the air: each is dropped in
    // turn, then the stream is extended; the guard ends it.
    LiveAircraft ac = flyingRecord();
    for (int i = 1; i <= 40; ++i) {
        StreamPoint p = ac.stream.front();
        p.time += i;
        p.same = 1;
        ac.stream.push_back(p);
    }
    nextPosMain(ac);
    EXPECT_EQ(ac.simState, SimState::removingfromsim);
    EXPECT_TRUE(logged("nextPosMain: guard exceeded"));
}

}  // namespace tfx::test
