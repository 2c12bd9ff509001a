// Flight motion seen through the replay harness: what the simulator receives
// for synthetic report streams, held against the limits of the category.
#include <cmath>
#include <vector>

#include "../../tools/replay_motion_lib.h"
#include "traffic/geometry.h"
#include "traffic_fixture.h"

namespace tfx::test {

namespace {

using replay::Figures;
using replay::Recording;

constexpr std::uint32_t HEX = 0x4CA001;

// A synthetic aircraft moved along by its own speed, track and climb.
struct Mover {
    double lat = 51.5, lon = -1.6, alt_ft = 6000, track_deg = 90, gs_kt = 250, vs_fpm = 0;
    double turn_degps = 0;

    void advance(double dt_s) {
        const LatLon to = gf_projectPosition({lat, lon}, track_deg * RAD_PER_DEG,
                                             gs_kt * dt_s / 3600 * FEET_PER_NM);
        lat = to.lat;
        lon = to.lon;
        alt_ft = std::max(0.0, alt_ft + vs_fpm * dt_s / 60);
        track_deg = std::fmod(track_deg + turn_degps * dt_s + 360, 360);
    }
    scenario::Report report(double t_s, const char* category = "A3") const {
        scenario::Report r;
        r.offset_s = t_s;
        r.hexid = HEX;
        r.lat = lat;
        r.lon = lon;
        r.alt_ft = alt_ft;
        r.vs_fpm = vs_fpm;
        r.track_deg = track_deg;
        r.gs_kt = gs_kt;
        r.tas_kt = gs_kt;
        r.callsign = "TST1";
        r.model = "A320";
        r.category = category;
        return r;
    }
};

scenario::Scenario lf_scenario(std::vector<scenario::Report> reports) {
    scenario::Scenario s;
    s.start_epoch_s = 1732320000;
    s.reports = std::move(reports);
    return s;
}

Figures lf_only(const std::vector<Figures>& all) {
    EXPECT_EQ(all.size(), 1u);
    return all.front();
}

std::vector<const replay::Sample*> lf_inState(const Recording& rec, FlightState state) {
    std::vector<const replay::Sample*> out;
    for (const auto& s : rec.samples) {
        if (s.state == state) out.push_back(&s);
    }
    return out;
}

double lf_deg(double rad) {
    return rad * DEG_PER_RAD;
}

class FlightReplayTest : public TrafficTest {};

}  // namespace

TEST_F(FlightReplayTest, SparseAndIrregularReportsFlySmoothlyWithinTheCategoryLimits) {
    // Gaps of 2 to 12 seconds, a gentle turn and a climb.
    const double gaps_s[] = {2, 7, 3, 12, 5, 9, 4};
    Mover m;
    std::vector<scenario::Report> reports;
    double t = 0;
    for (int i = 0; t < 240; ++i) {
        reports.push_back(m.report(t));
        const double gap = gaps_s[i % 7];
        m.turn_degps = t >= 60 && t < 120 ? 1.0 : 0;
        m.vs_fpm = t >= 130 && t < 180 ? 1500 : 0;
        m.advance(gap);
        t += gap;
    }
    const Recording rec = replay::gf_replay(lf_scenario(reports));
    const Figures f = lf_only(replay::gf_figures(rec));

    EXPECT_GT(f.frames, 20000u);
    EXPECT_LE(f.maxJump_m, replay::gf_allowedJump_m(m.gs_kt));
    EXPECT_LE(f.maxTurnRate_degps, replay::gf_turnRateLimit_degps(f.category, m.gs_kt));
    EXPECT_LE(f.maxBank_deg, f.bankLimit_deg + 1e-9);
    EXPECT_LE(f.maxBankRate_degps, f.bankRateLimit_degps + 1e-6);
    EXPECT_LE(f.maxPitchRate_degps, f.pitchRateLimit_degps + 1e-6);
    // Climb and descent stay within what the data ask for, with no spikes.
    EXPECT_LE(f.maxClimb_fpm, 1500 * 1.5);
    EXPECT_GE(f.maxDescent_fpm, -300);
    // Arrival is re-planned within 9 seconds of the time stamps.
    EXPECT_LT(f.maxTrackError_m, m.gs_kt / KNOTS_PER_MPS * 9);
    EXPECT_GT(f.reportsMatched, reports.size() / 2);
    // The aircraft flew to the end of its data.
    ASSERT_EQ(rec.removedAt.count(HEX), 1u);
    EXPECT_GT(rec.removedAt.at(HEX), rec.reports.back().tick);
}

TEST_F(FlightReplayTest, WithoutDataAnAircraftFliesOnForAMinuteAndIsThenRemoved) {
    Mover m;
    std::vector<scenario::Report> reports;
    for (double t = 0; t <= 60; t += 3) {
        reports.push_back(m.report(t));
        m.advance(3);
    }
    const Recording rec = replay::gf_replay(lf_scenario(reports));
    const std::int32_t lastDue = rec.reports.back().tick;
    ASSERT_EQ(rec.removedAt.count(HEX), 1u);
    // Twenty points of 3 seconds, then the removal; the last leg may run a little late.
    const std::int32_t after = rec.removedAt.at(HEX) - lastDue;
    EXPECT_GE(after, 20 * 300);
    EXPECT_LE(after, 20 * 300 + 950);

    // On the way it keeps its course, slowing down point by point.
    const replay::Sample* atLast = nullptr;
    const replay::Sample* later = nullptr;
    for (const auto& s : rec.samples) {
        if (s.tick == lastDue) atLast = &s;
        if (s.tick == lastDue + 3000) later = &s;
    }
    ASSERT_NE(atLast, nullptr);
    ASSERT_NE(later, nullptr);
    EXPECT_GT(later->m.lon, atLast->m.lon);
    EXPECT_NEAR(later->m.lat, atLast->m.lat, 0.002);
    const Figures f = lf_only(replay::gf_figures(rec));
    EXPECT_LE(f.maxJump_m, replay::gf_allowedJump_m(m.gs_kt));
}

TEST_F(FlightReplayTest, TakeoffRotatesAndClimbsOutWithThePitchAndTimingOfTheCategory) {
    // 40 s of taxi, a roll at 3 knots a second to 150 knots, then a climb.
    Mover m;
    m.lat = 51.8369;
    m.lon = -1.30;
    m.alt_ft = 0;
    m.track_deg = 270;
    m.gs_kt = 12;
    std::vector<scenario::Report> reports;
    double t = 0;
    for (; t < 40; t += 2) {
        reports.push_back(m.report(t));
        m.advance(2);
    }
    for (; m.gs_kt < 150; t += 2) {
        m.gs_kt = std::min(150.0, m.gs_kt + 6);
        m.advance(2);
        reports.push_back(m.report(t));
    }
    m.alt_ft = 320;
    m.vs_fpm = 1800;
    for (const double end = t + 120; t < end; t += 2) {
        m.gs_kt = std::min(200.0, m.gs_kt + 1);
        m.advance(2);
        reports.push_back(m.report(t));
    }
    const Recording rec = replay::gf_replay(lf_scenario(reports));
    const auto& states = rec.states.at(HEX);
    const std::vector<std::string> expected = {"taxi", "takeoff_roll", "takeoff", "flying"};
    ASSERT_EQ(states, expected);

    const CategoryRow& row = CATEGORY_TABLE[static_cast<std::size_t>(AircraftCategory::Large)];
    const auto takeoff = lf_inState(rec, FlightState::takeoff);
    ASSERT_GT(takeoff.size(), static_cast<std::size_t>(row.rotation_ticks + 300));
    const std::int32_t start = takeoff.front()->tick;
    // The nose reaches the rotation pitch (with its spread of 2.5 %) in the rotation
    // ticks; the first sample already carries one step.
    const double atRotation = lf_deg(takeoff[row.rotation_ticks - 2]->m.pitch);
    EXPECT_NEAR(atRotation, row.rotationPitch_deg, std::abs(row.rotationPitch_deg) * 0.025 + 0.05);
    EXPECT_GT(lf_deg(takeoff[row.rotation_ticks / 2]->m.pitch), row.rotationPitch_deg * 0.8);
    // Then on to the climb pitch, never beyond it.
    double highest = 0;
    for (const auto* s : takeoff) highest = std::min(highest, lf_deg(s->m.pitch));
    EXPECT_NEAR(highest, row.climbPitch_deg, std::abs(row.climbPitch_deg) * 0.051);
    // Gear up 3 seconds after the wheels left.
    std::int32_t gearUp = 0;
    for (const auto& e : rec.events) {
        if (e.hexid == HEX && e.event == EVENT_GEAR_SET && e.value == 0 && e.tick >= start) {
            gearUp = e.tick;
            break;
        }
    }
    EXPECT_NEAR(gearUp - start, row.rotation_ticks + 300, 2);
    const Figures f = lf_only(replay::gf_figures(rec));
    EXPECT_LE(f.maxJump_m, replay::gf_allowedJump_m(200));
    EXPECT_LE(f.maxClimb_fpm, row.maxClimbStep_ftpt * 6000 + 1);
}

TEST_F(FlightReplayTest, LandingFlaresTouchesDownSoftlyAndLowersTheNose) {
    // A straight-in approach to the park airport at 700 feet a minute, then the roll.
    Mover m;
    m.lat = 51.8369;
    m.lon = -1.32 - 6.0 / 60 / std::cos(51.8369 * RAD_PER_DEG);
    m.alt_ft = 270 + 2300;
    m.track_deg = 90;
    m.gs_kt = 140;
    m.vs_fpm = -700;
    std::vector<scenario::Report> reports;
    double t = 0;
    for (; m.alt_ft > 300; t += 3) {
        reports.push_back(m.report(t));
        m.advance(3);
    }
    m.alt_ft = 0;
    m.vs_fpm = 0;
    for (; m.gs_kt > 20; t += 3) {
        m.advance(3);
        m.gs_kt -= 12;
        reports.push_back(m.report(t));
    }
    const Recording rec = replay::gf_replay(lf_scenario(reports));
    const auto& states = rec.states.at(HEX);
    ASSERT_GE(states.size(), 3u);
    EXPECT_EQ(states[0], "flying");
    EXPECT_EQ(states[1], "landing");
    EXPECT_EQ(states[2], "landing_roll");

    const CategoryRow& row = CATEGORY_TABLE[static_cast<std::size_t>(AircraftCategory::Large)];
    const auto landing = lf_inState(rec, FlightState::landing);
    ASSERT_FALSE(landing.empty());
    // The flare raises the nose to 4 degrees and no further.
    double highest = 0;
    for (const auto* s : landing) highest = std::min(highest, lf_deg(s->m.pitch));
    EXPECT_NEAR(highest, -4.0, 0.5);
    EXPECT_GE(highest, -4.0 - 1e-9);
    // The last second before touchdown sinks at a flare's rate, not the approach's.
    const auto* before = landing[landing.size() - 100];
    const auto* touch = landing.back();
    EXPECT_LT((before->m.alt - touch->m.alt) * 60, 601);
    // The nose comes down to the parked pitch in the derotation ticks.
    const auto roll = lf_inState(rec, FlightState::landing_roll);
    ASSERT_GT(roll.size(), static_cast<std::size_t>(row.derotation_ticks + 1));
    EXPECT_LT(roll[row.derotation_ticks / 2]->m.pitch, replay::Setup{}.staticPitch);
    EXPECT_NEAR(roll[row.derotation_ticks + 1]->m.pitch, replay::Setup{}.staticPitch, 1e-9);
    const Figures f = lf_only(replay::gf_figures(rec));
    EXPECT_LE(f.maxJump_m, replay::gf_allowedJump_m(140));
    EXPECT_GE(f.maxDescent_fpm, -1000);
}

namespace {

// A straight-in approach from 6 NM west of the park airport at 700 feet a
// minute, down to the given height above the field.
Mover lf_approach(std::vector<scenario::Report>& reports, double& t, double downTo_ft) {
    Mover m;
    m.lat = 51.8369;
    m.lon = -1.32 - 6.0 / 60 / std::cos(51.8369 * RAD_PER_DEG);
    m.alt_ft = 270 + 2300;
    m.track_deg = 90;
    m.gs_kt = 140;
    m.vs_fpm = -700;
    for (; m.alt_ft > 270 + downTo_ft; t += 3) {
        reports.push_back(m.report(t));
        m.advance(3);
    }
    return m;
}

bool lf_sent(const Recording& rec, std::uint32_t event, std::uint32_t value, std::int32_t from) {
    for (const auto& e : rec.events) {
        if (e.hexid == HEX && e.event == event && e.value == value && e.tick >= from) return true;
    }
    return false;
}

}  // namespace

TEST_F(FlightReplayTest, AClimbOnFinalIsAGoAround) {
    std::vector<scenario::Report> reports;
    double t = 0;
    Mover m = lf_approach(reports, t, 400);
    m.vs_fpm = 1500;
    for (const double end = t + 90; t < end; t += 3) {
        m.advance(3);
        reports.push_back(m.report(t));
    }
    const Recording rec = replay::gf_replay(lf_scenario(reports));
    const auto landing = lf_inState(rec, FlightState::landing);
    ASSERT_FALSE(landing.empty());
    const std::int32_t from = landing.front()->tick;
    EXPECT_TRUE(lf_sent(rec, EVENT_THROTTLE_SET, 16383, from));  // full power
    EXPECT_TRUE(lf_sent(rec, EVENT_GEAR_SET, 0, from));
    EXPECT_TRUE(lf_sent(rec, EVENT_FLAPS_SET, 0, from));
    // It never touched down, and it climbs away.
    EXPECT_TRUE(lf_inState(rec, FlightState::landing_roll).empty());
    EXPECT_GT(rec.samples.back().m.alt, 270 + 400);
    const Figures f = lf_only(replay::gf_figures(rec));
    EXPECT_LE(f.maxJump_m, replay::gf_allowedJump_m(140));
}

TEST_F(FlightReplayTest, TouchAndGoRollsAndTakesOffAgain) {
    std::vector<scenario::Report> reports;
    double t = 0;
    Mover m = lf_approach(reports, t, 30);
    m.alt_ft = 0;
    m.vs_fpm = 0;
    for (const double end = t + 15; t < end; t += 3) {
        m.advance(3);
        reports.push_back(m.report(t));
    }
    m.alt_ft = 320;
    m.vs_fpm = 1500;
    for (const double end = t + 90; t < end; t += 3) {
        m.advance(3);
        reports.push_back(m.report(t));
    }
    const Recording rec = replay::gf_replay(lf_scenario(reports));
    const std::vector<std::string> expected = {"flying",       "landing", "landing_roll",
                                               "takeoff_roll", "takeoff", "flying"};
    EXPECT_EQ(rec.states.at(HEX), expected);
    const Figures f = lf_only(replay::gf_figures(rec));
    EXPECT_LE(f.maxJump_m, replay::gf_allowedJump_m(145));

    // The climb-out goes at full throttle (set on the roll or at the
    // rotation) with the spoilers of the landing stowed at the rotation.
    std::int32_t rotation = 0, climbedOut = 0;
    for (const auto& sample : rec.samples) {
        if (sample.state == FlightState::takeoff && rotation == 0) rotation = sample.tick;
        if (sample.state == FlightState::flying && rotation != 0 && climbedOut == 0)
            climbedOut = sample.tick;
    }
    ASSERT_NE(rotation, 0);
    ASSERT_NE(climbedOut, 0);
    std::int64_t throttle = -1, spoilers = -1;
    for (const auto& e : rec.events) {
        if (e.tick >= climbedOut - 1) continue;
        if (e.event == EVENT_THROTTLE_SET) throttle = e.value;
        if (e.event == EVENT_SPOILERS_SET && e.tick >= rotation - 1) spoilers = e.value;
    }
    EXPECT_EQ(throttle, 16383);
    EXPECT_EQ(spoilers, 0);
}

}  // namespace tfx::test
