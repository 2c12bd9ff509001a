// A create the simulator refuses, end to end: the exception record names
// only the packet, the simulator thread leads it back to the aircraft, and
// the tick erases the record and puts the title on the failed list, so that
// the aircraft's next spawn does not try it again.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include <fmt/format.h>

#include "liveries/livery_matching.h"
#include "liveries/reference_db.h"
#include "sim_traffic_fixture.h"

using namespace tfx;
using tfx::test::SimTrafficTest;

namespace {

constexpr std::uint32_t REFUSED_A = 0x4C0C01, KNOWN = 0x4C0C02, REFUSED_B = 0x4C0C03,
                        RESPAWNED = 0x4C0C04;

// Refused titles stay refused for the life of the process, and 20 of them end
// the traffic. So that the titles refused here count against no other test,
// the scenario runs in a child process of its own (started afresh, not
// forked, so that no thread an earlier test left behind holds a lock the
// child needs), which ends with its own verdict.
class SimFailedCreateTest : public SimTrafficTest {
public:
    // The scenarios, each run in a child.
    void refuseAndRetry();
    void refuseTheRespawn();

protected:
    [[noreturn]] void runInChild(void (SimFailedCreateTest::*scenario)()) {
        (this->*scenario)();
        const bool failed = HasFailure();
        // The parent shows only what the child wrote to stderr.
        const ::testing::TestResult* result =
            ::testing::UnitTest::GetInstance()->current_test_info()->result();
        for (int i = 0; i < result->total_part_count(); ++i) {
            const ::testing::TestPartResult& part = result->GetTestPartResult(i);
            if (part.failed())
                std::fprintf(stderr, "%s:%d: %s\n", part.file_name() ? part.file_name() : "?",
                             part.line_number(), part.message());
        }
        // The child's fixture is its own: torn down here, folder and all.
        TearDown();
        std::error_code ec;
        std::filesystem::remove_all(dir.path(), ec);
        std::fflush(stdout);
        std::fflush(stderr);
        std::_Exit(failed ? 1 : 0);
    }
};

}  // namespace

TEST_F(SimFailedCreateTest, RefusedCreatesReachTheFailedLiveryPathAndAreNotTriedAgain) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(runInChild(&SimFailedCreateTest::refuseAndRetry), ::testing::ExitedWithCode(0), "");
}

TEST_F(SimFailedCreateTest, ARespawnIntoATitleTheSimulatorRefusesEndsTheAircraft) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(runInChild(&SimFailedCreateTest::refuseTheRespawn), ::testing::ExitedWithCode(0),
                "");
}

void SimFailedCreateTest::refuseAndRetry() {
    // Three creates in a row, the known one between the refused ones, so that
    // the answers overlap and each refusal must find its own aircraft.
    deliverTrack(REFUSED_A, "RFA", 8, 5000, "B738");
    deliverTrack(KNOWN, "BAW1", 8, 5000, "A320");
    deliverTrack(REFUSED_B, "RFB", 8, 5000, "E190");
    run(150);

    EXPECT_EQ(live(REFUSED_A), nullptr) << dir.logText();
    EXPECT_EQ(live(REFUSED_B), nullptr);
    ASSERT_NE(live(KNOWN), nullptr);
    const std::uint32_t oid = live(KNOWN)->objectid;
    ASSERT_NE(oid, 0u) << "a refusal must not be taken for the create next to it";
    EXPECT_EQ(sim.aiObjectIds(), std::vector<std::uint32_t>{oid});
    EXPECT_EQ(sim.object(oid)->title, "A320 livery");

    EXPECT_TRUE(logged(fmt::format("hexid:{:x} callsign:RFA", REFUSED_A)));
    EXPECT_TRUE(logged(fmt::format("hexid:{:x} callsign:RFB", REFUSED_B)));
    EXPECT_TRUE(logged("RFA 'B738 livery' could not be created by your Sim!"));
    EXPECT_TRUE(logged("RFB 'E190 livery' could not be created by your Sim!"));
    EXPECT_TRUE(gf_isFailedTitle("B738 livery"));
    EXPECT_TRUE(gf_isFailedTitle("E190 livery"));
    EXPECT_FALSE(gf_isFailedTitle("A320 livery"));
    EXPECT_TRUE(pendingCreates.empty());
    EXPECT_TRUE(packetRequests.empty());
    EXPECT_EQ(SimRunState.load(), 2) << "a refused create is no failed command";
    EXPECT_FALSE(gf_exitRequest());

    // The same aircraft reported again: no title is left for it, so no create
    // goes out and the simulator is not asked again.
    const std::uint32_t createsSent = requestCounter.load();
    deliverTrack(REFUSED_A, "RFA", 8, 5000, "B738");
    run(100);
    EXPECT_EQ(live(REFUSED_A), nullptr);
    EXPECT_EQ(requestCounter.load(), createsSent);
    EXPECT_EQ(loggedCount("could not be created by your Sim!"), 2u);

    // The known aircraft goes on undisturbed.
    EXPECT_EQ(runUntilActive(KNOWN, 300), oid);
}

void SimFailedCreateTest::refuseTheRespawn() {
    const std::uint16_t baw = gf_airlineIndex("BAW");
    dbaseRecords = {{"G-EUAA", baw, 0, gf_modelIndex("A320"), false, true},
                    {"G-EUBB", baw, 0, gf_modelIndex("A321"), false, true}};
    auto report = [](double time_s, double lat, const char* regcode) {
        TrafficMessage m = airborne(RESPAWNED, "BAW77", time_s, lat, 5000, "B738");
        m.regcode = regcode;
        return m;
    };
    for (int i = 0; i < 8; ++i)
        deliver(report(1000.0 + 5 * i, 50.0 + 0.01 * i, "G-EUAA"), gf_simTick() + 500 * i);
    const std::uint32_t oid = runUntilActive(RESPAWNED, 400);
    ASSERT_NE(oid, 0u) << dir.logText();

    // The new registration needs "A321 livery", which is not installed: the
    // old object goes, the new one is refused, and nothing is left behind.
    deliver(report(1100, 50.2, "G-EUBB"), gf_simTick() + 3000);
    ASSERT_EQ(live(RESPAWNED)->simState, SimState::liveryrespawn);
    run(150);
    EXPECT_FALSE(sim.object(oid));
    EXPECT_TRUE(sim.aiObjectIds().empty());
    EXPECT_EQ(live(RESPAWNED), nullptr) << dir.logText();
    EXPECT_TRUE(logged("BAW77 'A321 livery' could not be created by your Sim!"));
    EXPECT_TRUE(gf_isFailedTitle("A321 livery"));
    EXPECT_FALSE(gf_isFailedTitle("A320 livery"));
    EXPECT_TRUE(pendingCreates.empty() && packetRequests.empty());
    EXPECT_EQ(SimRunState.load(), 2);

    // Reported again under the new registration, it is not tried again.
    const std::uint32_t createsSent = requestCounter.load();
    for (int i = 0; i < 8; ++i)
        deliver(report(1200.0 + 5 * i, 50.3 + 0.01 * i, "G-EUBB"), gf_simTick() + 500 * i);
    run(100);
    EXPECT_EQ(live(RESPAWNED), nullptr);
    EXPECT_EQ(requestCounter.load(), createsSent);
}
