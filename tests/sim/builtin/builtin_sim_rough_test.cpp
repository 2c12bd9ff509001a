// The built-in simulator's rough habits: uneven frames and stalls from a
// seed, creates answered late, out of order or never, reused ids, a crash
// without a word, and the scenario's words for all of it.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include <fmt/format.h>
#include "sim/builtin/builtin_sim_client.h"

#include "support/temp_workdir.h"

using namespace tfx;
using namespace tfx::test;

namespace {

// The times of the frames over a span, from a rough simulator.
std::vector<std::int64_t> lf_frameTimes(const SimRoughness& rough, std::int64_t span_ms) {
    SimTestClient client;
    client.sim.setRoughness(rough);
    client.open();
    EXPECT_EQ(SimConnect_SubscribeToSystemEvent(client.handle, TEST_EVENT_FRAME, "Frame"), S_OK);
    std::vector<std::int64_t> times;
    for (std::int64_t t = 0; t < span_ms; ++t) {
        client.sim.advance(1);
        for (const Record& r : client.dispatch()) {
            if (r.id() == SIMCONNECT_RECV_ID_EVENT_FRAME) times.push_back(client.sim.now_ms());
        }
    }
    return times;
}

}  // namespace

TEST(BuiltinSimRough, FramesComeUnevenlyAndStallButKeepTheirRateAndTheirSeed) {
    SimRoughness rough;
    rough.stall_every_s = 5;
    const auto times = lf_frameTimes(rough, 30000);
    ASSERT_GT(times.size(), 10u);
    const double rate = static_cast<double>(times.size()) / 30.0;
    EXPECT_GT(rate, 25.0) << "30 a second, less the stalls";
    EXPECT_LE(rate, 30.1);
    std::int64_t shortest = 1000, longest = 0;
    for (std::size_t i = 1; i < times.size(); ++i) {
        shortest = std::min(shortest, times[i] - times[i - 1]);
        longest = std::max(longest, times[i] - times[i - 1]);
    }
    EXPECT_LT(shortest, 28) << "uneven";
    EXPECT_GE(longest, rough.stall_ms) << "a stall";
    EXPECT_EQ(lf_frameTimes(rough, 30000), times) << "the same seed, the same frames";
}

TEST(BuiltinSimRough, CreatesAreAnsweredLateOutOfOrderOrNeverAndIdsComeBack) {
    SimTestClient client;
    ASSERT_TRUE(client.sim.loadScenario(egtkScenarioPath()));
    SimRoughness rough;
    rough.create_never_every = 4;
    client.sim.setRoughness(rough);
    client.open();
    client.declareDefinitions();
    client.sim.loadFlight();
    client.dispatch();
    for (DWORD request = 1; request <= 24; ++request) {
        const SIMCONNECT_DATA_INITPOSITION init{51.8369, -1.32, 3000, 0, 0, 90, 0, 0};
        ASSERT_EQ(SimConnect_AICreateNonATCAircraft(client.handle, "Airbus A320 Neo Asobo", "RGH1",
                                                    init, request),
                  S_OK);
    }
    client.sim.advance(rough.create_delay_max_ms + 100);
    std::vector<DWORD> answered;
    DWORD firstObject = 0;
    for (const Record& r : client.dispatchOnly(SIMCONNECT_RECV_ID_ASSIGNED_OBJECT_ID)) {
        answered.push_back(r.as<SIMCONNECT_RECV_ASSIGNED_OBJECT_ID>().dwRequestID);
        if (firstObject == 0) firstObject = r.as<SIMCONNECT_RECV_ASSIGNED_OBJECT_ID>().dwObjectID;
    }
    EXPECT_LT(answered.size(), 24u) << "some creates are never answered";
    EXPECT_GT(answered.size(), 12u);
    EXPECT_FALSE(std::is_sorted(answered.begin(), answered.end())) << "answers overtake";
    client.sim.advance(10000);
    EXPECT_TRUE(client.dispatchOnly(SIMCONNECT_RECV_ID_ASSIGNED_OBJECT_ID).empty())
        << "what was lost stays lost";

    ASSERT_EQ(SimConnect_AIRemoveObject(client.handle, firstObject, 104), S_OK);
    DWORD again = 0;
    for (DWORD request = 100; again == 0 && request < 110; ++request) {
        const SIMCONNECT_DATA_INITPOSITION init{51.84, -1.31, 3000, 0, 0, 90, 0, 0};
        ASSERT_EQ(SimConnect_AICreateNonATCAircraft(client.handle, "Airbus A320 Neo Asobo", "RGH2",
                                                    init, request),
                  S_OK);
        client.sim.advance(rough.create_delay_max_ms + 100);
        for (const Record& r : client.dispatchOnly(SIMCONNECT_RECV_ID_ASSIGNED_OBJECT_ID))
            again = r.as<SIMCONNECT_RECV_ASSIGNED_OBJECT_ID>().dwObjectID;
    }
    EXPECT_EQ(again, firstObject) << "the removed object's id goes to the next one";
}

TEST(BuiltinSimRough, ACrashBreaksTheConnectionWithoutAQuitAndTheSimulatorComesBack) {
    SimTestClient client;
    client.open();
    ASSERT_EQ(SimConnect_SubscribeToSystemEvent(client.handle, TEST_EVENT_FRAME, "Frame"), S_OK);
    client.sim.advance(100);
    client.sim.crash();
    std::vector<Record> records;
    EXPECT_EQ(SimConnect_CallDispatch(client.handle, &SimTestClient::collect, &records), E_FAIL);
    EXPECT_TRUE(std::none_of(records.begin(), records.end(), [](const Record& r) {
        return r.id() == SIMCONNECT_RECV_ID_QUIT;
    })) << "no QUIT, not even the frames that were waiting";
    HANDLE second = nullptr;
    EXPECT_EQ(SimConnect_Open(&second, "ZEPT", nullptr, 0, nullptr, 0), E_FAIL);
    SimConnect_Close(client.handle);
    client.open();  // running again: a new connection works
}

TEST(BuiltinSimRough, TheScenarioChoosesTheHabits) {
    TempWorkdir dir;
    const char* user = R"("user": {"parked": {"lat": 51.8, "lon": -1.3}})";
    auto parse = [&](const std::string& rough) {
        return gf_parseSimScenario(fmt::format("{{{}, \"rough\": {}}}", user, rough), "r.json");
    };
    const auto polite = parse("false");
    ASSERT_TRUE(polite);
    EXPECT_EQ(polite->rough.frame_jitter, 0);
    EXPECT_EQ(polite->rough.create_never_every, 0u);

    const auto chosen = parse(
        R"({"seed": 3, "frame_jitter": 2, "create_delay_ms": [10, 20], "reuse_object_ids": false,
            "pressure_offset_ft": -120, "restart_at_s": 60, "restart_crash": false,
            "stall_ms": -5, "create_never_every": "often"})");
    ASSERT_TRUE(chosen);
    const SimRoughness& r = chosen->rough;
    EXPECT_EQ(r.seed, 3u);
    EXPECT_EQ(r.frame_jitter, 0.45) << "at most a frame's share that keeps frames in order";
    EXPECT_EQ(r.create_delay_min_ms, 10);
    EXPECT_EQ(r.create_delay_max_ms, 20);
    EXPECT_FALSE(r.reuse_object_ids);
    EXPECT_EQ(r.pressure_offset_ft, -120);
    EXPECT_EQ(r.restart_at_s, 60.0);
    EXPECT_FALSE(r.restart_crash);
    EXPECT_EQ(r.stall_ms, SimRoughness{}.stall_ms) << "a bad value keeps the default";
    EXPECT_EQ(r.create_never_every, SimRoughness{}.create_never_every);
    const std::string log = dir.logText();
    EXPECT_NE(log.find("r.json: rough: \"stall_ms\" below 0"), std::string::npos) << log;
    EXPECT_NE(log.find("r.json: rough: \"create_never_every\" is not a number"), std::string::npos);

    const auto restart =
        gf_readSimScenario(std::string(ZEPT_SOURCE_DIR) + "/data/sim_scenario_restart.json");
    ASSERT_TRUE(restart);
    EXPECT_EQ(restart->rough.restart_at_s, 120.0);
    EXPECT_TRUE(restart->rough.restart_crash);
}
