// The built-in simulator's world from real places: the user aircraft on a
// stand of an airport file, the ground at the airport catalogue's field
// elevation, and a scripted flight from a path file between two airports.
#include <gtest/gtest.h>

#include <string>

#include "airports/airport_catalogue.h"
#include "airports/airport_test_support.h"
#include "sim/builtin/builtin_sim.h"
#include "support/temp_workdir.h"

using namespace tfx;

namespace {

constexpr double PHNL_FT = 13, PHOG_FT = 54;  // the catalogue's field elevations
constexpr double A20N_CG_FT = 8.2;
// The field is tilted and swells a little around the reference point, so a
// stand or a runway end lies a few feet off the catalogue's elevation.
constexpr double RELIEF_FT = 10;

// A program folder with the bundled catalogue sealed in, as the program has it.
class SimPlaces : public ::testing::Test {
protected:
    void SetUp() override {
        gf_clearAirportTable();
        test::sealInto(dir, "input/airports.enc", test::sourceFile("data/airports/airports.xml"));
    }
    void TearDown() override { gf_clearAirportTable(); }

    std::filesystem::path scenario(const std::string& user, const std::string& more = "") {
        return dir.write("scenario.json", R"({"scenery": ")" + std::string(ZEPT_SOURCE_DIR) +
                                              R"(/data/airports/archive/stock", )" + more +
                                              R"("user": {"model": "A20N", )" + user + "}}");
    }
    // Runs the loaded flight on to t_s seconds of flight time.
    static SimObjectView at(BuiltinSim& sim, double t_s) {
        sim.advance(static_cast<std::int64_t>(t_s * 1000) - sim.now_ms());
        return *sim.object(0);
    }
    static void fly(BuiltinSim& sim) {
        sim.setRoughness(SimRoughness::polite());
        sim.run();
        sim.loadFlight();
    }

    test::TempWorkdir dir;
};

TEST_F(SimPlaces, TheUserStandsOnAPhnlStandAtTheCataloguesFieldElevation) {
    BuiltinSim sim;
    ASSERT_TRUE(sim.loadScenario(scenario(R"("parked": {"airport": "PHNL", "stand": "T2-C4"})")));
    fly(sim);
    const SimObjectView u = at(sim, 5);
    // <parkpos id="T2-C4" latitude="21.328867" longitude="-157.923317" heading="319.1">
    EXPECT_NEAR(u.lat_deg, 21.328867, 1e-9);
    EXPECT_NEAR(u.lon_deg, -157.923317, 1e-9);
    EXPECT_NEAR(u.heading_deg, 319.1, 1e-9);
    EXPECT_NEAR(u.ground_ft, PHNL_FT, RELIEF_FT);
    EXPECT_NEAR(u.alt_ft, u.ground_ft + A20N_CG_FT, 1e-9);
    EXPECT_TRUE(u.onGround);

    // What can't be found is said, and a user left without a place refuses the file.
    EXPECT_FALSE(sim.loadScenario(scenario(R"("parked": {"airport": "PHNL", "stand": "Z99"})")));
    EXPECT_FALSE(sim.loadScenario(scenario(R"("parked": {"airport": "KXYZ", "stand": "1"})")));
    ASSERT_TRUE(
        sim.loadScenario(scenario(R"("parked": {"lat": 21.3, "lon": -157.9})",
                                  R"("airports": [{"icao": "ZZZZ"}, {"icao": "PHNL"}], )")));
    EXPECT_NEAR(sim.groundAltitudeFt(21.3194, -157.9213), PHNL_FT, 0.5) << "reference point";
    ASSERT_TRUE(sim.loadScenario(std::string(ZEPT_SOURCE_DIR) + "/data/sim_scenario_bikf.json"));
    const SimObjectView gate3 = at(sim, 10);
    EXPECT_NEAR(gate3.ground_ft, 170, RELIEF_FT) << "Keflavik's gate 3";
    EXPECT_NEAR(gate3.alt_ft, gate3.ground_ft + A20N_CG_FT, 1e-9);
    const std::string log = dir.logText();
    for (const char* expected : {"has no stand \"Z99\"", "KXYZ.xml of the scenery",
                                 "ZZZZ is not in the airport catalogue, left out"})
        EXPECT_NE(log.find(expected), std::string::npos) << expected;
}

// Out of the stand backwards, a taxi, a takeoff, a cruise over the sea and a
// landing at Kahului: heading, on-ground flag, heights and attitude follow the
// simulator's conventions all the way.
TEST_F(SimPlaces, APathFileFliesFromPhnlToKahului) {
    dir.write("flight.json", R"({"airports": ["PHNL", "PHOG"], "heading_deg": 0.2, "points": [
        {"t_s": 0,    "lat": 21.328750, "lon": -157.914300},
        {"t_s": 60,   "lat": 21.328750, "lon": -157.914300},
        {"t_s": 120,  "lat": 21.327750, "lon": -157.914300, "back": true},
        {"t_s": 300,  "lat": 21.325250, "lon": -157.943200},
        {"t_s": 340,  "lat": 21.325250, "lon": -157.930000},
        {"t_s": 400,  "lat": 21.325250, "lon": -157.910000, "alt_ft": 1013},
        {"t_s": 800,  "lat": 21.100000, "lon": -157.000000, "alt_ft": 8000},
        {"t_s": 1400, "lat": 20.850000, "lon": -156.460000, "alt_ft": 1054},
        {"t_s": 1500, "lat": 20.890000, "lon": -156.436000},
        {"t_s": 1560, "lat": 20.900000, "lon": -156.428000}]})");
    BuiltinSim sim;
    ASSERT_TRUE(sim.loadScenario(scenario(R"("path_file": "flight.json")")));
    fly(sim);

    SimObjectView u = at(sim, 30);  // at the gate, nose to the stand's heading
    EXPECT_NEAR(u.heading_deg, 0.2, 1e-9);
    EXPECT_TRUE(u.onGround);
    u = at(sim, 90);  // pushed back south, nose still north
    EXPECT_LT(u.lat_deg, 21.328750);
    EXPECT_NEAR(u.heading_deg, 0, 0.5);
    EXPECT_NEAR(u.alt_ft, u.ground_ft + A20N_CG_FT, 1e-9);

    u = at(sim, 320);  // rolling on 08L
    EXPECT_TRUE(u.onGround);
    EXPECT_NEAR(u.heading_deg, 90, 0.5);
    u = at(sim, 600);  // climbing: nose up is a negative pitch
    EXPECT_FALSE(u.onGround);
    EXPECT_GT(u.alt_ft - u.ground_ft, 3000) << "height above the ground";
    EXPECT_NEAR(u.alt_ft, (1013 + 8000) / 2.0, 1);
    EXPECT_LT(u.pitch_deg, -0.5);
    u = at(sim, 1300);  // descending towards Maui: nose down is positive
    EXPECT_GT(u.pitch_deg, 0.5);
    EXPECT_FALSE(u.onGround);

    u = at(sim, 1530);  // rolled out on Kahului's runway
    EXPECT_TRUE(u.onGround);
    EXPECT_NEAR(u.ground_ft, PHOG_FT, RELIEF_FT);
    EXPECT_NEAR(u.alt_ft, u.ground_ft + A20N_CG_FT, 1e-9);
    EXPECT_EQ(u.bank_deg, 0);
    u = at(sim, 2000);  // stopped at the last point
    EXPECT_DOUBLE_EQ(u.lat_deg, 20.9);
    EXPECT_TRUE(u.onGround);
}

// The bundled demo flights: each starts at a PHNL gate, is in the air for a
// while and ends on the ground of the airport it flew to, never jumping.
TEST_F(SimPlaces, TheDemoFlightsGoFromGroundToAirToGround) {
    struct Demo {
        const char* file;
        double arrival_ft;
    };
    for (const Demo demo : {Demo{"sim_scenario_phnl_circuit.json", PHNL_FT},
                            Demo{"sim_scenario_phnl_phog.json", PHOG_FT}}) {
        SCOPED_TRACE(demo.file);
        BuiltinSim sim;
        ASSERT_TRUE(sim.loadScenario(std::string(ZEPT_SOURCE_DIR) + "/data/" + demo.file));
        fly(sim);
        int changes = 0;
        double airborne_s = 0, fastestStep_kt = 0;
        SimObjectView last = at(sim, 0);
        EXPECT_TRUE(last.onGround);
        for (int t = 1; t < 3000; ++t) {
            const SimObjectView u = at(sim, t);
            changes += u.onGround != last.onGround;
            airborne_s += u.onGround ? 0 : 1;
            const double dLat_nm = (u.lat_deg - last.lat_deg) * 60;
            const double dLon_nm = (u.lon_deg - last.lon_deg) * 60 * 0.93;
            fastestStep_kt = std::max(fastestStep_kt, std::hypot(dLat_nm, dLon_nm) * 3600);
            last = u;
        }
        EXPECT_EQ(changes, 2) << "one takeoff, one landing";
        EXPECT_GT(airborne_s, 300);
        EXPECT_LT(fastestStep_kt, 300);
        EXPECT_TRUE(last.onGround);
        EXPECT_NEAR(last.ground_ft, demo.arrival_ft, RELIEF_FT);
    }
    EXPECT_EQ(dir.logText().find("==>"), std::string::npos) << "every point of the files is good";
}

}  // namespace
