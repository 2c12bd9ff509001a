// The load scenario's circling aircraft: the stand-in must send each report
// once however its cycles cut the time, spread over the period, on the circle.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <vector>

#include "../../tools/rt_scenario.h"

using namespace tfx::scenario;

TEST(StandinOrbits, EachReportOnceOnTheCircleWhateverTheCycle) {
    int bad = -1;
    const Scenario s = gf_parseScenario(
        "O,10617890,21.3,-157.9,10.00,90.0,1,24000,360,2.0,HAL35,B763,N594HA,PHX,HNL,HAL,A5\n"
        "O,10617891,21.3,-157.9,0,90.0,1,24000,360,2.0,BAD,B763,N1,PHX,HNL,HAL,A5\n",
        &bad);
    ASSERT_EQ(s.orbits.size(), 1u);
    EXPECT_EQ(bad, 1) << "a circle of no radius";
    const Orbit& o = s.orbits[0];

    std::vector<double> times;
    for (double from = 0; from < 120; from += 0.1)  // the load run's 100 ms cycles
        gf_orbitReportTimes(o, from, from + 0.1, [&](double at) { times.push_back(at); });
    std::vector<double> once;
    gf_orbitReportTimes(o, 0, 120.05, [&](double at) { once.push_back(at); });
    EXPECT_EQ(times, once);
    ASSERT_GE(times.size(), 58u);
    for (std::size_t i = 1; i < times.size(); ++i) {
        EXPECT_GE(times[i] - times[i - 1], 0.6 * o.period_s);
        EXPECT_LE(times[i] - times[i - 1], 1.4 * o.period_s);
    }

    // East of the centre at 0, clockwise: heading south; a quarter round
    // (2 pi r / 4 at 360 kt) later south of it, heading west.
    const Report start = gf_orbitReport(o, 0);
    EXPECT_NEAR(start.lat, 21.3, 1e-9);
    EXPECT_NEAR((start.lon + 157.9) * 60 * std::cos(21.3 * std::numbers::pi / 180), 10.0, 1e-6);
    EXPECT_NEAR(start.track_deg, 180.0, 1e-6);
    const Report quarter = gf_orbitReport(o, 2 * std::numbers::pi * 10 / 4 / 360 * 3600);
    EXPECT_NEAR((21.3 - quarter.lat) * 60, 10.0, 1e-6);
    EXPECT_NEAR(quarter.track_deg, 270.0, 1e-6);
    EXPECT_EQ(quarter.callsign, "HAL35");
    EXPECT_EQ(quarter.regcode, "N594HA");
}
