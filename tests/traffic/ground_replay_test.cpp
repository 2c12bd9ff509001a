// Ground motion seen through the replay harness at Honolulu: aircraft of the
// bundled scenario on the real taxi network, with the real stands of the
// airport's file loaded through the program's reader, held against what a
// viewer accepts: on the ground, no turning on the spot or sliding, turns and
// speed changes an aircraft can make, no jumps, and parked on the stand.
#include <algorithm>
#include <cmath>
#include <random>
#include <string>
#include <vector>

#include "../../tools/replay_motion_ground.h"
#include "../../tools/replay_motion_lib.h"
#include "traffic_fixture.h"

namespace tfx::test {

namespace {

using replay::GroundFigures;
using replay::Recording;

const std::string SOURCE = ZEPT_SOURCE_DIR;
constexpr std::uint32_t HAL003_HEX = 11377002;

scenario::Scenario lf_phnl() {
    const auto s = scenario::gf_readScenario(SOURCE + "/data/rt_scenario_phnl.csv");
    EXPECT_TRUE(s.has_value());
    return s.value_or(scenario::Scenario{});
}

// The scenario with only the reports of one flight.
scenario::Scenario lf_flight(const scenario::Scenario& all, const std::string& callsign) {
    scenario::Scenario s = all;
    std::erase_if(s.reports, [&](const scenario::Report& r) { return r.callsign != callsign; });
    EXPECT_FALSE(s.reports.empty()) << callsign;
    return s;
}

Recording lf_play(const scenario::Scenario& s) {
    const replay::Setup setup = replay::gf_setupFor(s, SOURCE + "/data/airports/archive/stock");
    EXPECT_FALSE(setup.airportFile.empty());
    Recording rec = replay::gf_replay(s, setup);
    EXPECT_GT(loadedAirport.file.stands.size(), 70u) << "PHNL's stands are loaded";
    return rec;
}

GroundFigures lf_ground(const Recording& rec) {
    const auto all = replay::gf_groundFigures(rec);
    EXPECT_EQ(all.size(), 1u);
    return all.empty() ? GroundFigures{} : all.front();
}

// What any aircraft on the ground must keep to.
void lf_expectOnTheGround(const GroundFigures& f) {
    EXPECT_GT(f.frames, 1000u);
    // The wheels on the simulator's tilted ground at every frame.
    EXPECT_LE(f.maxFloat_m, 0.3);
    EXPECT_GE(f.maxSink_m, -0.3);
    // No frame further than the reported speed nearby allows.
    EXPECT_LE(f.jumpRatio, 1.0);
}

const Stand* lf_standNamed(const std::string& id) {
    for (const Stand& s : loadedAirport.file.stands)
        if (s.id == id) return &s;
    return nullptr;
}

double lf_metresTo(const replay::Sample& s, const Stand& stand) {
    return gf_distanceNm({s.m.lat, s.m.lon}, {stand.latitude, stand.longitude}) * METRES_PER_NM;
}

double lf_degreesOff(const replay::Sample& s, const Stand& stand) {
    return std::abs(gf_foldAngle(stand.heading - s.m.heading)) * DEG_PER_RAD;
}

// Reports of an aircraft standing at a stand from from_s to to_s, every
// 20 s, a metre or two off as a feed has them.
void lf_addStanding(scenario::Scenario& s, std::uint32_t hexid, const std::string& callsign,
                    const Stand& stand, double from_s, double to_s) {
    std::mt19937 rng(hexid);
    std::uniform_real_distribution<double> off(-1.5e-5, 1.5e-5);
    for (double t = from_s; t <= to_s; t += 20) {
        scenario::Report r;
        r.offset_s = t;
        r.hexid = hexid;
        r.lat = stand.latitude + off(rng);
        r.lon = stand.longitude + off(rng);
        r.track_deg = stand.heading * DEG_PER_RAD;
        r.callsign = callsign;
        r.model = "B712";
        r.category = "A3";
        s.reports.push_back(r);
    }
    std::stable_sort(s.reports.begin(), s.reports.end(),
                     [](const auto& a, const auto& b) { return a.offset_s < b.offset_s; });
}

const replay::Sample* lf_lastSampleOf(const Recording& rec, std::uint32_t hexid) {
    const replay::Sample* last = nullptr;
    for (const auto& s : rec.samples)
        if (s.hexid == hexid) last = &s;
    return last;
}

// A static aircraft on the stand, created through the create queue as the
// parking applier creates one.
void lf_placeStatic(std::uint32_t hexid, const std::string& callsign, const Stand& stand) {
    StaticAircraft st;
    st.hexid = hexid;
    st.callsign = callsign;
    st.sid = static_cast<std::int32_t>(stand.number);
    st.standLat = stand.latitude;
    st.standLon = stand.longitude;
    st.standHeading = stand.heading;
    st.simState = SimState::adding2sim;
    staticAircraft.push_back(st);
    CreateRequest r;
    r.lat = stand.latitude;
    r.lon = stand.longitude;
    r.heading = stand.heading * DEG_PER_RAD;
    r.onGround = true;
    r.callsign = callsign;
    r.title = "B712 livery";
    r.hexid = hexid;
    staticCreates.push_back(r);
}

class GroundReplayTest : public TrafficTest {};

}  // namespace

TEST_F(GroundReplayTest, ALandingRollsOutTaxisTheNetworkAndParksOnItsStand) {
    const Recording rec = lf_play(lf_flight(lf_phnl(), "HAL003"));
    const std::vector<std::string> expected = {"flying", "landing", "landing_roll",
                                               "taxi",   "parking", "parked"};
    ASSERT_EQ(rec.states.begin()->second, expected);
    const GroundFigures f = lf_ground(rec);
    lf_expectOnTheGround(f);
    // Turned with its wheels: not on the spot, not sideways, and no tighter
    // than a heavy aircraft turns at taxi speed.
    EXPECT_LE(f.pivot_deg, 2.0);
    EXPECT_LE(f.maxSlide_deg, 10.0);
    EXPECT_LE(f.slideShare, 0.01);
    EXPECT_GE(f.minRadius_m, 15.0);
    // Taxi speed eases in and out: about a knot a second, never a step.
    EXPECT_LE(f.taxiAccel_ktps, 8.0);
    EXPECT_LE(f.taxiDecel_ktps, 10.0);
    // Parked on the stand, lined up.
    EXPECT_LE(f.standDistance_m, 1.0);
    EXPECT_LE(f.standHeading_deg, 2.0);
    // Along the reported track: within a wingspan at worst, a few metres on the whole.
    EXPECT_LE(f.pathMax_m, 30.0);
    EXPECT_LE(f.pathMean_m, 4.0);
}

TEST_F(GroundReplayTest, ADepartureStandsOnItsStandTaxisToTheRunwayRollsAndRotatesAtSpeed) {
    const Recording rec = lf_play(lf_flight(lf_phnl(), "HAL022"));
    const std::vector<std::string> expected = {"parked", "taxi", "takeoff_roll", "takeoff",
                                               "flying"};
    ASSERT_EQ(rec.states.begin()->second, expected);
    // Created on its stand, lined up, however the reports there scatter.
    const Stand* stand = lf_standNamed("T2-D2");
    ASSERT_NE(stand, nullptr);
    const replay::Sample& first = rec.samples.front();
    EXPECT_LE(lf_metresTo(first, *stand), 1.0);
    EXPECT_LE(lf_degreesOff(first, *stand), 2.0);
    const GroundFigures f = lf_ground(rec);
    lf_expectOnTheGround(f);
    EXPECT_LE(f.pathMean_m, 4.0);
    // The nose comes up at flying speed, not at the holding point.
    const replay::Sample* before = nullptr;
    for (const auto& s : rec.samples) {
        if (s.state == FlightState::takeoff) break;
        before = &s;
    }
    ASSERT_NE(before, nullptr);
    const replay::Sample* earlier = nullptr;
    for (const auto& s : rec.samples) {
        if (s.tick == before->tick - 100) earlier = &s;
    }
    ASSERT_NE(earlier, nullptr);
    const double speed_kt =
        gf_distanceNm({earlier->m.lat, earlier->m.lon}, {before->m.lat, before->m.lon}) * 3600;
    EXPECT_GT(speed_kt, 120);
}

TEST_F(GroundReplayTest, SparseNoisyGroundPointsStillGiveASmoothTaxiOntoTheStand) {
    // Two of three ground reports lost, the rest up to 6 m further off.
    scenario::Scenario s = lf_flight(lf_phnl(), "HAL003");
    std::mt19937 rng(11);
    std::uniform_real_distribution<double> off(-6, 6);
    std::vector<scenario::Report> kept;
    int ground = 0;
    for (auto r : s.reports) {
        const bool onGround = r.alt_ft < 200 && r.gs_kt < 100;
        if (onGround && r.gs_kt > 0 && ground++ % 3 != 0) continue;
        if (onGround && r.gs_kt > 0) {
            r.lat += off(rng) / 111133;
            r.lon += off(rng) / 103500;
        }
        kept.push_back(r);
    }
    s.reports = kept;
    const Recording rec = lf_play(s);
    ASSERT_EQ(rec.states.begin()->second.back(), "parked");
    const GroundFigures f = lf_ground(rec);
    lf_expectOnTheGround(f);
    EXPECT_LE(f.pivot_deg, 5.0);
    EXPECT_LE(f.slideShare, 0.03);
    EXPECT_LE(f.taxiAccel_ktps, 8.0);
    EXPECT_LE(f.taxiDecel_ktps, 10.0);
    EXPECT_LE(f.standDistance_m, 1.0);
    EXPECT_LE(f.standHeading_deg, 2.0);
    EXPECT_LE(f.pathMean_m, 10.0);
}

}  // namespace tfx::test

namespace tfx::test {

TEST_F(GroundReplayTest, TwoAircraftForOneStand) {
    // HAL003 lands and taxis to T2-C1. OCC1 stands there, still reported;
    // NEW1 turns up there a minute in. At T2-G10 OCC2 stands, reported only
    // for its first 40 s; NEW2 turns up there four minutes later.
    scenario::Scenario s = lf_flight(lf_phnl(), "HAL003");
    replay::Setup setup = replay::gf_setupFor(s, SOURCE + "/data/airports/archive/stock");
    replay::gf_prepareEngine(setup);
    const Stand c1 = *lf_standNamed("T2-C1");
    const Stand g10 = *lf_standNamed("T2-G10");
    lf_addStanding(s, 0xA00001, "OCC1", c1, 0, s.length_s());
    lf_addStanding(s, 0xA00002, "NEW1", c1, 60, 160);
    lf_addStanding(s, 0xA00003, "OCC2", g10, 0, 40);
    lf_addStanding(s, 0xA00004, "NEW2", g10, 300, 500);
    const Recording rec = replay::gf_replay(s, setup);

    // A newcomer never takes a stand from an aircraft the feed still reports...
    EXPECT_EQ(rec.callsigns.count(0xA00002), 0u) << "NEW1 was never created";
    ASSERT_TRUE(rec.removedAt.count(0xA00001));
    // ...but a landing aircraft that stops there does: the occupant goes
    // before the newcomer drives in, and it parks on the stand.
    const auto& hal = rec.states.at(HAL003_HEX);
    ASSERT_EQ(hal.back(), "parked");
    GroundFigures f;
    for (const GroundFigures& g : replay::gf_groundFigures(rec))
        if (g.hexid == HAL003_HEX) f = g;
    EXPECT_LE(f.standDistance_m, 1.0);
    EXPECT_LE(f.standHeading_deg, 2.0);
    const replay::Sample* occupantLast = lf_lastSampleOf(rec, 0xA00001);
    ASSERT_NE(occupantLast, nullptr);
    EXPECT_LE(occupantLast->tick, rec.removedAt.at(0xA00001));

    // One that left the feed yields to a newcomer at its stand.
    EXPECT_TRUE(rec.removedAt.count(0xA00003));
    ASSERT_TRUE(rec.states.count(0xA00004));
    EXPECT_EQ(rec.states.at(0xA00004).front(), "parked");
    EXPECT_LE(lf_metresTo(*lf_lastSampleOf(rec, 0xA00004), g10), 1.0);
}

TEST_F(GroundReplayTest, ALandingAircraftTakesItsStandFromTheStaticAircraftStandingThere) {
    const scenario::Scenario s = lf_flight(lf_phnl(), "HAL003");
    replay::Setup setup = replay::gf_setupFor(s, SOURCE + "/data/airports/archive/stock");
    setup.atStart = [] {
        lf_placeStatic(101, "HAL111*", *lf_standNamed("T2-C1"));
        lf_placeStatic(102, "HAL222*", *lf_standNamed("T2-C2"));
    };
    const Recording rec = replay::gf_replay(s, setup);
    ASSERT_EQ(rec.states.begin()->second.back(), "parked");
    const GroundFigures f = lf_ground(rec);
    EXPECT_LE(f.standDistance_m, 1.0);
    EXPECT_LE(f.standHeading_deg, 2.0);
    // The one on its stand makes way while the aircraft taxis in; the
    // neighbour, far enough off, stays.
    ASSERT_TRUE(rec.removedAt.count(101));
    EXPECT_FALSE(rec.removedAt.count(102));
    std::int32_t parkingFrom = 0;
    for (const auto& sample : rec.samples) {
        if (sample.state == FlightState::parking) {
            parkingFrom = sample.tick;
            break;
        }
    }
    EXPECT_LE(rec.removedAt.at(101), parkingFrom + 100);
    EXPECT_EQ(gf_findStatic(102)->simState, SimState::active);
}

}  // namespace tfx::test
