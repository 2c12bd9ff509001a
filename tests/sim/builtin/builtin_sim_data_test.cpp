// Data definitions of the built-in simulator: the blocks the client declares
// come back in the declared order, units and types, and request periods.
#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <string>

#include "sim/builtin/builtin_sim_client.h"

using namespace tfx;
using namespace tfx::test;

namespace {

constexpr double kRad = std::numbers::pi / 180.0;

class BuiltinSimData : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(client.sim.loadScenario(egtkScenarioPath()));
        client.sim.setRoughness(SimRoughness::polite());
        client.open();
        client.declareDefinitions();
    }
    Record requestOnce(DWORD requestId, DWORD def, DWORD objectId = 0) {
        EXPECT_EQ(SimConnect_RequestDataOnSimObject(client.handle, requestId, def, objectId,
                                                    SIMCONNECT_PERIOD_ONCE),
                  S_OK);
        auto got = client.dispatch();
        EXPECT_EQ(got.size(), 1u);
        return got.empty() ? Record{} : got.front();
    }
    SimTestClient client;
};

}  // namespace

TEST_F(BuiltinSimData, UserPositionBlockHoldsTheFifteenValuesInOrder) {
    client.sim.loadFlight();
    const Record r = requestOnce(108, DEF_USER_POSITION);
    const auto& head = r.as<SIMCONNECT_RECV_SIMOBJECT_DATA>();
    ASSERT_EQ(head.dwSize, 160u);
    EXPECT_EQ(head.dwID, SIMCONNECT_RECV_ID_SIMOBJECT_DATA);
    EXPECT_EQ(head.dwRequestID, 108u);
    EXPECT_EQ(head.dwObjectID, 1u) << "the user aircraft's own identifier, not 0";
    EXPECT_EQ(head.dwDefineCount, 15u);
    EXPECT_EQ(head.dwentrynumber, 1u);
    EXPECT_EQ(head.dwoutof, 1u);

    // Parked at the first path point, facing the scenario's heading, C172 stance.
    EXPECT_DOUBLE_EQ(r.value<double>(0), 51.8352);
    EXPECT_DOUBLE_EQ(r.value<double>(8), -1.3225);
    EXPECT_NEAR(r.value<double>(16), 1.0 * kRad, 1e-12);                          // pitch
    EXPECT_DOUBLE_EQ(r.value<double>(24), 0.0);                                   // bank
    EXPECT_DOUBLE_EQ(r.value<double>(32), 0.0);                                   // vertical speed
    EXPECT_NEAR(r.value<double>(40), 10.0 * kRad, 1e-12);                         // heading
    const double standing = client.sim.groundAltitudeFt(51.8352, -1.3225) + 3.1;  // CG 3.1
    EXPECT_NEAR(r.value<double>(48), standing, 1e-9);
    EXPECT_NEAR(r.value<double>(56), standing, 1e-9);
    EXPECT_NEAR(r.value<double>(64), 3.1, 1e-9);  // above ground
    EXPECT_DOUBLE_EQ(r.value<double>(72), 0.0);   // ground speed
    EXPECT_EQ(r.value<std::int64_t>(80), 12 * 3600);
    EXPECT_EQ(r.value<std::int64_t>(88), 153) << "1 June of a leap year";
    EXPECT_EQ(r.value<std::int64_t>(96), 2024);
    EXPECT_EQ(r.value<std::int64_t>(104), 3);  // nav and beacon
    EXPECT_NEAR(r.value<double>(112), 10.0, 1e-9);

    client.sim.advance(61000);  // the clock runs with the flight
    EXPECT_EQ(requestOnce(108, DEF_USER_POSITION).value<std::int64_t>(80), 12 * 3600 + 61);
}

TEST_F(BuiltinSimData, TextsEndInsideTheirRecord) {
    client.sim.loadFlight();
    const Record title = requestOnce(105, DEF_USER_TITLE);
    const std::string expected = "Cessna Skyhawk G1000 Asobo";
    ASSERT_EQ(title.bytes.size(), SIMOBJECT_DATA_OFFSET + expected.size() + 1);
    EXPECT_EQ(std::string(reinterpret_cast<const char*>(title.bytes.data()) + 40), expected);
    EXPECT_EQ(title.bytes.back(), std::byte{0});

    const Record model = requestOnce(106, DEF_USER_MODEL);
    ASSERT_EQ(model.bytes.size(), 72u);
    EXPECT_STREQ(reinterpret_cast<const char*>(model.bytes.data()) + 40,
                 "ATCCOM.AC_MODEL_C172.0.text");

    // A text longer than its fixed field is cut, with room left for the zero.
    ASSERT_EQ(SimConnect_AddToDataDefinition(client.handle, 1, "TITLE", nullptr,
                                             SIMCONNECT_DATATYPE_STRING8),
              S_OK);
    const Record cut = requestOnce(1, 1);
    ASSERT_EQ(cut.bytes.size(), 48u);
    EXPECT_STREQ(reinterpret_cast<const char*>(cut.bytes.data()) + 40, "Cessna ");
}

TEST_F(BuiltinSimData, OnGroundComesEverySecondAlsoBeforeAFlight) {
    ASSERT_EQ(SimConnect_RequestDataOnSimObject(client.handle, 107, DEF_USER_ON_GROUND, 0,
                                                SIMCONNECT_PERIOD_SECOND),
              S_OK);
    client.sim.advance(3000);
    const auto ticks = client.dispatchOnly(SIMCONNECT_RECV_ID_SIMOBJECT_DATA);
    ASSERT_EQ(ticks.size(), 3u);
    EXPECT_EQ(ticks[0].bytes.size(), 48u);
    EXPECT_EQ(ticks[0].value<std::int64_t>(0), 1);
    // In the menu the user aircraft stands at (0, 0).
    const Record where = requestOnce(108, DEF_USER_POSITION);
    EXPECT_EQ(where.value<double>(0), 0.0);
    EXPECT_EQ(where.value<double>(8), 0.0);

    ASSERT_EQ(SimConnect_RequestDataOnSimObject(client.handle, 107, DEF_USER_ON_GROUND, 0,
                                                SIMCONNECT_PERIOD_NEVER),
              S_OK);
    client.sim.advance(3000);
    EXPECT_TRUE(client.dispatch().empty());
}

TEST_F(BuiltinSimData, UnitsTypesAndTheChangedFlag) {
    client.sim.loadFlight();
    const HANDLE h = client.handle;
    ASSERT_EQ(SimConnect_AddToDataDefinition(h, 7, "PLANE LATITUDE", "radians",
                                             SIMCONNECT_DATATYPE_FLOAT32),
              S_OK);
    ASSERT_EQ(
        SimConnect_AddToDataDefinition(h, 7, "plane altitude", "meters", SIMCONNECT_DATATYPE_INT32),
        S_OK);
    ASSERT_EQ(
        SimConnect_AddToDataDefinition(h, 7, "LIGHT STATES", "number", SIMCONNECT_DATATYPE_INT32),
        S_OK);
    ASSERT_EQ(SimConnect_RequestDataOnSimObject(h, 70, 7, 0, SIMCONNECT_PERIOD_VISUAL_FRAME,
                                                SIMCONNECT_DATA_REQUEST_FLAG_CHANGED),
              S_OK);
    client.sim.advance(1000);  // 30 frames, parked: one record
    auto got = client.dispatch();
    ASSERT_EQ(got.size(), 1u);
    EXPECT_EQ(got[0].bytes.size(), 52u);
    EXPECT_FLOAT_EQ(got[0].value<float>(0), static_cast<float>(51.8352 * kRad));
    EXPECT_EQ(
        got[0].value<std::int32_t>(4),
        static_cast<std::int32_t>((client.sim.groundAltitudeFt(51.8352, -1.3225) + 3.1) * 0.3048));
    EXPECT_EQ(got[0].value<std::int32_t>(8), 3);

    client.sim.teleportUser(52.0, -1.0);
    client.sim.advance(1000);
    got = client.dispatch();
    ASSERT_EQ(got.size(), 1u) << "one change, one record";
    EXPECT_FLOAT_EQ(got[0].value<float>(0), static_cast<float>(52.0 * kRad));
}
