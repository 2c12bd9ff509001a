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

TEST_F(GroundReplayTest, ADepartureTaxisToTheRunwayRollsAndRotatesAtSpeed) {
    const Recording rec = lf_play(lf_flight(lf_phnl(), "HAL022"));
    const std::vector<std::string> expected = {"taxi", "takeoff_roll", "takeoff", "flying"};
    ASSERT_EQ(rec.states.begin()->second, expected);
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
