// Corners and stands on the ground, on hand-made streams: which corners get
// a curve, where it begins and ends, and the last stretch onto a stand.
#include <gtest/gtest.h>

#include <cmath>

#include "airports/airport_file.h"
#include "traffic/aircraft_tables.h"
#include "traffic/clock.h"
#include "traffic/flight_motion_internal.h"
#include "traffic/geometry.h"
#include "traffic/ground_curve.h"
#include "traffic/ground_motion.h"
#include "traffic/units.h"

namespace tfx::test {

namespace {

constexpr LatLon ORIGIN{21.32, -157.92};
constexpr double FEET_PER_M = 3.280839895013123;

LatLon lf_at(double east_m, double north_m) {
    const LatLon p = gf_projectPosition(ORIGIN, 0, north_m * FEET_PER_M);
    return gf_projectPosition(p, PI / 2, east_m * FEET_PER_M);
}

StreamPoint lf_point(LatLon at, double speed_kt, std::int32_t time) {
    StreamPoint p;
    p.lat = at.lat;
    p.lon = at.lon;
    p.speed = speed_kt;
    p.time = time;
    return p;
}

// A Large taxiing north at 15 kt: 100 m to the corner, then a leg at angle_deg.
LiveAircraft lf_taxiing(double angle_deg, double toCorner_m = 100) {
    LiveAircraft ac;
    ac.category = AircraftCategory::Large;
    ac.turnRate = ac.turnRateNow = 7 * RAD_PER_DEG / TICKS_PER_SECOND;
    ac.pushbackSpeed = 4;
    ac.flightState = FlightState::taxi;
    ac.onGround = 1;
    const LatLon start = lf_at(0, 0);
    ac.lat = start.lat;
    ac.lon = start.lon;
    const std::int32_t now = gf_simTick();
    ac.stream.push_back(lf_point(start, 15, now));
    ac.stream.push_back(lf_point(lf_at(0, toCorner_m), 15, now + 1300));
    const double a = angle_deg * RAD_PER_DEG;
    ac.stream.push_back(
        lf_point(lf_at(80 * std::sin(a), toCorner_m + 80 * std::cos(a)), 15, now + 2340));
    return ac;
}

double lf_deg(double rad) {
    return rad * DEG_PER_RAD;
}

}  // namespace

TEST(GroundTurns, CornersBetweenThreeAndOneHundredTwentyDegreesAreRounded) {
    for (const double angle : {2.95, 121.0}) {
        LiveAircraft ac = lf_taxiing(angle, 30);
        EXPECT_FALSE(lf_planTurn(ac)) << angle;
        EXPECT_FALSE(ac.curve.valid()) << angle;
        EXPECT_EQ(ac.stream.size(), 3u) << angle;
    }
    for (const double angle : {3.05, 119.0}) {
        LiveAircraft ac = lf_taxiing(angle, 30);
        EXPECT_TRUE(lf_planTurn(ac)) << angle;
        EXPECT_TRUE(ac.curve.valid()) << angle;
        EXPECT_NEAR(ac.turnAngle, angle, 0.01);
    }
}

TEST(GroundTurns, ALongLegGetsTheCurveWhereItBeginsAndTheCurveIsMadeThere) {
    LiveAircraft ac = lf_taxiing(90);
    // 100 m out the turn would begin too early: a point where it is to begin.
    ASSERT_TRUE(lf_planTurn(ac));
    EXPECT_FALSE(ac.curve.valid());
    ASSERT_EQ(ac.stream.size(), 4u);
    const StreamPoint start = ac.stream[1];
    EXPECT_EQ(start.inserted, 1);
    const double lead_m = gf_distanceNm(lf_pos(start), lf_pos(ac.stream[2])) * METRES_PER_NM;
    EXPECT_GT(lead_m, 12);
    EXPECT_LT(lead_m, 75);
    EXPECT_NEAR(start.speed, 15, 1e-9);
    // Arrived there, the corner is rounded from it.
    ac.stream.pop_front();
    ac.lat = start.lat;
    ac.lon = start.lon;
    ASSERT_TRUE(lf_planTurn(ac));
    ASSERT_TRUE(ac.curve.valid());
    // The curve leaves along the leg, comes out along the next one, as far
    // past the corner as it began before it, and has replaced the corner.
    LatLon p;
    double heading = 0;
    ASSERT_TRUE(lf_curveAt(ac.curve, 0, p, heading));
    EXPECT_NEAR(lf_deg(gf_normalizeHeading(heading + 0.1) - 0.1), 0, 0.5);
    ASSERT_TRUE(lf_curveAt(ac.curve, 1, p, heading));
    EXPECT_NEAR(lf_deg(heading), 90, 0.5);
    const LatLon corner = lf_at(0, 100);
    EXPECT_NEAR(gf_distanceNm(corner, p) * METRES_PER_NM, lead_m, 0.5);
    EXPECT_GT(gf_distanceNm(lf_pos(ac.stream[1]), corner) * METRES_PER_NM, 1);
    // Equal steps along it are equal distances.
    LatLon a, b;
    ASSERT_TRUE(lf_curveAt(ac.curve, 0.10, a, heading));
    ASSERT_TRUE(lf_curveAt(ac.curve, 0.15, b, heading));
    const double early = gf_distanceNm(a, b);
    ASSERT_TRUE(lf_curveAt(ac.curve, 0.50, a, heading));
    ASSERT_TRUE(lf_curveAt(ac.curve, 0.55, b, heading));
    EXPECT_NEAR(gf_distanceNm(a, b) / early, 1, 0.02);
}

TEST(GroundTurns, ACurveAcrossTheDateLineStaysShort) {
    const GroundCurve c =
        gf_makeGroundCurve({10.0, 179.9998}, {10.0002, -179.9999}, {10.0004, -179.9997});
    EXPECT_LT(c.length_m, 100);
    LatLon p;
    double heading = 0;
    for (const double t : {0.0, 0.5, 1.0}) {
        ASSERT_TRUE(lf_curveAt(c, t, p, heading));
        EXPECT_GT(std::abs(p.lon), 179.999) << t;
        EXPECT_LT(gf_distanceNm({10.0, 179.9998}, p) * METRES_PER_NM, 100) << t;
    }
    EXPECT_FALSE(lf_curveAt(c, 1.01, p, heading));
}

TEST(GroundTurns, TheLastStretchOntoAStandEndsLinedUpAndAtRest) {
    Stand stand;
    const LatLon at = lf_at(0, 0);
    stand.latitude = at.lat;
    stand.longitude = at.lon;
    stand.heading = 90 * RAD_PER_DEG;  // facing east
    const auto park = [&](double east_m, double north_m, double heading_deg) {
        LiveAircraft ac = lf_taxiing(0);
        const LatLon here = lf_at(east_m, north_m);
        ac.lat = here.lat;
        ac.lon = here.lon;
        ac.heading = heading_deg * RAD_PER_DEG;
        ac.stream.truncate(1);
        ac.stream.front().lat = here.lat;
        ac.stream.front().lon = here.lon;
        drive2Stand(ac, stand);
        return ac;
    };
    const auto metresFromStand = [&](const StreamPoint& p) {
        return gf_distanceNm(lf_pos(p), at) * METRES_PER_NM;
    };
    // Far out and across: a lead-in 10 m out on the axis, the stand, a stop.
    LiveAircraft ac = park(-30, 20, 180);
    ASSERT_EQ(ac.stream.size(), 4u);
    EXPECT_NEAR(metresFromStand(ac.stream[1]), 10, 0.05);
    EXPECT_NEAR(lf_deg(gf_bearing(lf_pos(ac.stream[1]), at)), 90, 0.5);
    EXPECT_LT(metresFromStand(ac.stream[2]), 0.01);
    EXPECT_EQ(ac.stream[3].same, 1);
    EXPECT_EQ(ac.stream[3].time, ac.stream[2].time + 50);
    EXPECT_NEAR(lf_deg(ac.targetHeading), 90, 1e-9);
    // Just short and a little aside: a point on the axis halfway back, then the stand.
    ac = park(-6, 1.5, 80);
    ASSERT_EQ(ac.stream.size(), 4u);
    EXPECT_NEAR(metresFromStand(ac.stream[1]), 3, 0.1);
    EXPECT_LT(metresFromStand(ac.stream[2]), 0.01);
    EXPECT_EQ(ac.stream[3].same, 1);
    // Just past it and lined up: it stays where it stopped.
    ac = park(5, 0.3, 91);
    ASSERT_EQ(ac.stream.size(), 2u);
    EXPECT_EQ(ac.stream[1].same, 1);
    EXPECT_NEAR(metresFromStand(ac.stream[1]), 5, 0.1);
}

}  // namespace tfx::test
