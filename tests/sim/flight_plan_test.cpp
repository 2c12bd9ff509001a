// The flight plan file of a live aircraft with a known route.
#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include "app/run_state.h"
#include "sim/flight_plan.h"
#include "sim/sim_queues.h"
#include "support/temp_workdir.h"

using namespace tfx;
namespace fs = std::filesystem;

namespace {

LiveAircraft routed(bool withDest) {
    LiveAircraft ac;
    ac.objectid = 4711;
    ac.hexid = 0x400B01;
    ac.callsign = "BAW9";
    ac.category = AircraftCategory::Large;
    ac.orig.iata = {'L', 'H', 'R'};
    if (withDest) ac.dest.iata = {'J', 'F', 'K'};
    return ac;
}

struct FlightPlanTest : ::testing::Test {
    void SetUp() override {
        gf_clearSimBuffers();
        fs::create_directory(dir.path() / "orig_dest");
    }
    void TearDown() override {
        gf_clearSimBuffers();
        runChoice = std::make_shared<const RunChoice>();
    }
    test::TempWorkdir dir;
};

}  // namespace

// The tick only queues; the simulator's thread writes the file, sets the
// plan, and removes the file again when the aircraft goes.
TEST_F(FlightPlanTest, MSFS2020GetsTheFileFromTheSimulatorsThreadAndLosesItWithTheAircraft) {
    runChoice = std::make_shared<const RunChoice>(RunChoice{1, true});
    LiveAircraft ac = routed(true);
    gf_createFlightPlan(ac);
    EXPECT_EQ(ac.hasFlightPlan, 1);
    EXPECT_FALSE(fs::exists(dir.path() / "orig_dest/4711.pln")) << "the tick wrote a file";
    SimCommands queued = gf_peekSimCommands();
    ASSERT_EQ(queued.flightPlans.size(), 1u);
    EXPECT_EQ(queued.flightPlans[0].objectid, 4711u);
    EXPECT_EQ(queued.flightPlans[0].path.filename(), "4711.pln");
    EXPECT_TRUE(gf_carryOutFlightPlan(queued.flightPlans[0]));
    EXPECT_EQ(dir.read("orig_dest/4711.pln"),
              "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
              "<SimBase.Document Type=\"AceXML\" version=\"4,3\">\n"
              "<FlightPlan.FlightPlan>\n"
              "<FPType>IFR</FPType>\n"
              "<DepartureID>LHR</DepartureID>\n"
              "<DestinationID>JFK</DestinationID>\n"
              "</FlightPlan.FlightPlan>\n"
              "</SimBase.Document>\n"
              "\n");

    gf_removeFlightPlan(ac);
    EXPECT_EQ(ac.hasFlightPlan, 0);
    queued = gf_peekSimCommands();
    ASSERT_EQ(queued.flightPlans.size(), 2u);
    EXPECT_TRUE(fs::exists(dir.path() / "orig_dest/4711.pln"));
    EXPECT_FALSE(gf_carryOutFlightPlan(queued.flightPlans[1])) << "a removal sets no plan";
    EXPECT_FALSE(fs::exists(dir.path() / "orig_dest/4711.pln"));
}

TEST_F(FlightPlanTest, NoPlanWithoutBothEndsOnMSFS2024OrWithoutItsFolder) {
    runChoice = std::make_shared<const RunChoice>(RunChoice{1, true});
    LiveAircraft halfRoute = routed(false);
    gf_createFlightPlan(halfRoute);
    EXPECT_EQ(halfRoute.hasFlightPlan, 0);

    runChoice = std::make_shared<const RunChoice>(RunChoice{2, true});
    LiveAircraft on2024 = routed(true);
    on2024.hasFlightPlan = 1;
    gf_createFlightPlan(on2024);
    EXPECT_EQ(on2024.hasFlightPlan, 0);
    EXPECT_TRUE(gf_peekSimCommands().flightPlans.empty());

    runChoice = std::make_shared<const RunChoice>(RunChoice{1, true});
    fs::remove(dir.path() / "orig_dest");
    LiveAircraft noFolder = routed(true);
    gf_createFlightPlan(noFolder);
    const SimCommands queued = gf_peekSimCommands();
    ASSERT_EQ(queued.flightPlans.size(), 1u);
    EXPECT_FALSE(gf_carryOutFlightPlan(queued.flightPlans[0])) << "no plan set without its file";
    EXPECT_NE(dir.logText().find("BAW9 "), std::string::npos);
    EXPECT_NE(dir.logText().find("creating a flight plan failed"), std::string::npos);
}
