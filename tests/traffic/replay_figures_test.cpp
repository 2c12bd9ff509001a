// The replay's quality figures measure what a user would see: a pitch rate
// in any state, and a late aircraft's lag apart from its track error.
#include "../../tools/replay_motion_lib.h"
#include "traffic_fixture.h"

namespace tfx::test {

namespace {

constexpr std::uint32_t HEX = 0x4CB001;

// An aircraft flying north at 200 kt, played lag_ticks behind its reports;
// at tick 500 it pitches up 2 degrees in one tick while in the given state.
replay::Recording lf_recording(std::int32_t lag_ticks, FlightState pitchState) {
    replay::Recording rec;
    rec.callsigns[HEX] = "LATE1";
    rec.categories[HEX] = AircraftCategory::Large;
    const double latPerTick = 200.0 / 3600 / 60 / 100;
    for (std::int32_t t = 0; t < 3000; ++t) {
        replay::Sample s;
        s.tick = t;
        s.hexid = HEX;
        s.m.lat = 50.0 + latPerTick * (t - lag_ticks);
        s.m.lon = 8.0;
        s.m.alt = 3000;
        s.m.pitch = t >= 500 ? -0.05 : -0.05 + 2 * RAD_PER_DEG;
        s.state = t >= 495 && t <= 505 ? pitchState : FlightState::flying;
        rec.samples.push_back(s);
    }
    for (std::int32_t t = 200; t < 2500; t += 300) {
        rec.reports.push_back({t, HEX, 50.0 + latPerTick * t, 8.0, 3000, 200, 1});
    }
    return rec;
}

}  // namespace

TEST(ReplayFigures, APitchJumpShowsInEveryState) {
    for (const FlightState state :
         {FlightState::flying, FlightState::takeoff, FlightState::landing, FlightState::taxi}) {
        const auto all = replay::gf_figures(lf_recording(0, state));
        ASSERT_EQ(all.size(), 1u);
        EXPECT_NEAR(all.front().maxPitchRate_degps, 200, 1e-6) << gf_flightStateName(state);
    }
}

TEST(ReplayFigures, ALateStartIsALagNotATrackError) {
    const auto all = replay::gf_figures(lf_recording(700, FlightState::flying));
    ASSERT_EQ(all.size(), 1u);
    const replay::Figures& f = all.front();
    EXPECT_NEAR(f.lag_s, 7.0, 0.011);
    EXPECT_GT(f.meanTrackError_m, 700);  // 7 s at 200 kt
    EXPECT_LT(f.maxLagFreeError_m, 1.0);
}

}  // namespace tfx::test
