// The built-in simulator's scenario: reading the file, the terrain it makes,
// and the user aircraft flying its path.
#include <gtest/gtest.h>

#include <cmath>

#include "sim/builtin/builtin_sim.h"
#include "sim/builtin/builtin_sim_client.h"
#include "sim/builtin/builtin_sim_scenario.h"
#include "support/temp_workdir.h"

using namespace tfx;
using namespace tfx::test;

TEST(BuiltinSimScenario, TheExampleFileReadsWhole) {
    const auto s = gf_readSimScenario(egtkScenarioPath());
    ASSERT_TRUE(s);
    EXPECT_EQ(s->start_utc_s, 1717243200);
    ASSERT_EQ(s->airports.size(), 1u);
    EXPECT_EQ(s->airports[0].icao, "EGTK");
    EXPECT_EQ(s->airports[0].elevation_ft, 270);
    ASSERT_EQ(s->installed.size(), 5u);
    EXPECT_EQ(s->installed[4].static_cg_ft, 3.5);
    EXPECT_FALSE(s->installed[0].static_cg_ft);
    ASSERT_EQ(s->user.path.size(), 8u);
    EXPECT_FALSE(s->user.path[4].alt_ft) << "a point without altitude is on the ground";
    EXPECT_EQ(s->user.path[7].alt_ft, 3000);
    EXPECT_EQ(s->user.heading_deg, 10);
}

TEST(BuiltinSimScenario, BrokenFilesAreRefusedAndBadEntriesSkipped) {
    TempWorkdir dir;
    EXPECT_FALSE(gf_parseSimScenario("{ not json", "a.json"));
    EXPECT_FALSE(gf_parseSimScenario(R"({"airports": []})", "b.json")) << "no user";
    EXPECT_FALSE(
        gf_parseSimScenario(R"({"user": {"path": [{"t_s": 0, "lat": 95, "lon": 0}]}})", "c.json"))
        << "no usable position";

    const auto s = gf_parseSimScenario(R"({
        "start_utc": "yesterday",
        "airports": [{"icao": "XXXX", "lat": 50, "lon": 1},
                     {"icao": "EGLL", "lat": 51.47, "lon": -0.46, "elevation_ft": 83}],
        "installed": ["Plain Title", {"model": "A320"}, 42],
        "user": {"loop": "yes", "path": [{"t_s": 0, "lat": 51.47, "lon": -0.46},
                                         {"t_s": 0, "lat": 51.48, "lon": -0.46},
                                         {"t_s": 10, "lat": 51.49, "lon": "west"},
                                         {"t_s": 20, "lat": 51.50, "lon": -0.46, "alt_ft": 500}]}
    })",
                                       "d.json");
    ASSERT_TRUE(s);
    EXPECT_EQ(s->start_utc_s, Scenario{}.start_utc_s);
    ASSERT_EQ(s->airports.size(), 1u);
    EXPECT_EQ(s->airports[0].icao, "EGLL");
    ASSERT_EQ(s->installed.size(), 1u);
    EXPECT_EQ(s->installed[0].title, "Plain Title");
    ASSERT_EQ(s->user.path.size(), 2u);
    EXPECT_EQ(s->user.path[1].t_s, 20);
    EXPECT_FALSE(s->user.loop);

    const std::string log = dir.logText();
    for (const char* expected : {"a.json: not a JSON object", "b.json: no \"user\"",
                                 "d.json: airport 1 (XXXX) needs", "installed title 2 has no title",
                                 "path point 2: t_s 0 does not follow 0", "\"start_utc\" is not"}) {
        EXPECT_NE(log.find(expected), std::string::npos) << expected;
    }

    BuiltinSim sim;
    EXPECT_FALSE(sim.loadScenario(dir.path() / "missing.json"));
    EXPECT_EQ(sim.object(0)->title, UserScenario{}.title) << "the world stays as it was";
}

TEST(BuiltinSimScenario, GroundFollowsTheLieOfTheFieldAndBlendsAway) {
    BuiltinSim sim;
    ASSERT_TRUE(sim.loadScenario(egtkScenarioPath()));
    const double lat = 51.8369, lon = -1.32;
    const double nmOfLat = 1.0 / 60.04;  // degrees of latitude per nautical mile here
    const auto ground = [&](double north_nm) {
        return sim.groundAltitudeFt(lat + north_nm * nmOfLat, lon);
    };
    EXPECT_NEAR(ground(0), 270, 1e-9) << "the field elevation at the reference point";
    // Tilted: a mile north and a mile south differ by feet, not inches; and
    // smooth: ten metres apart by far less than a foot.
    EXPECT_GT(ground(1) - ground(-1), 10);
    EXPECT_LT(ground(1) - ground(-1), 40);
    EXPECT_LT(std::abs(ground(1) - ground(1 + 10.0 / 1852)), 0.5);
    // Blending away from the field without a step, to the default far out.
    EXPECT_NEAR(ground(2.999), ground(3.001), 0.1);
    EXPECT_NEAR(sim.groundAltitudeFt(lat + 10 * nmOfLat, lon), 250, 1e-9);
}

TEST(BuiltinSimScenario, TheUserAircraftFliesItsPath) {
    BuiltinSim sim;
    ASSERT_TRUE(sim.loadScenario(egtkScenarioPath()));
    sim.setRoughness(SimRoughness::polite());  // frames on the dot
    sim.run();
    sim.loadFlight();
    auto at = [&](std::int64_t t_s) {
        sim.advance(t_s * 1000 - sim.now_ms());
        return *sim.object(0);
    };
    auto u = at(30);
    EXPECT_DOUBLE_EQ(u.lat_deg, 51.8352);
    EXPECT_TRUE(u.onGround);

    u = at(120);  // taxiing south, half way from the stand to the holding point
    EXPECT_NEAR(u.lat_deg, (51.8352 + 51.8300) / 2, 1e-9);
    EXPECT_NEAR(u.heading_deg, 170, 5);
    EXPECT_TRUE(u.onGround);
    EXPECT_NEAR(u.alt_ft, sim.groundAltitudeFt(u.lat_deg, u.lon_deg) + 3.1, 1e-9);

    sim.pause(true);
    sim.advance(100000);
    EXPECT_NEAR(sim.object(0)->lat_deg, u.lat_deg, 1e-12) << "paused: the flight stands still";
    sim.pause(false);

    u = at(100 + 340);  // half way from 700 to 2000 feet
    EXPECT_NEAR(u.alt_ft, 1350, 1e-6);
    EXPECT_FALSE(u.onGround);

    u = at(100 + 900);  // past the last point: it stays there
    EXPECT_DOUBLE_EQ(u.lat_deg, 51.98);
    EXPECT_DOUBLE_EQ(u.alt_ft, 3000);

    sim.teleportUser(51.5, -0.9);
    u = *sim.object(0);
    EXPECT_DOUBLE_EQ(u.lat_deg, 51.5);
    EXPECT_NEAR(u.alt_ft, 250 + 3.1, 1e-9) << "on the ground there";

    sim.endFlight();
    EXPECT_EQ(sim.object(0)->lat_deg, 0.0) << "the menu";
}
