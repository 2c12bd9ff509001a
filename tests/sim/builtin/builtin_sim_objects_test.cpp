// AI objects in the built-in simulator: creates and their failures, control,
// positions and their recording, removal, commands and the ground.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <numbers>

#include <fmt/format.h>

#include "sim/builtin/builtin_sim_client.h"
#include "support/temp_workdir.h"

using namespace tfx;
using namespace tfx::test;

namespace {

constexpr double kRad = std::numbers::pi / 180.0;
constexpr double kEgtkLat = 51.8369, kEgtkLon = -1.3200;

class BuiltinSimObjects : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(client.sim.loadScenario(egtkScenarioPath()));
        client.sim.setRoughness(SimRoughness::polite());
        client.open();
        client.declareDefinitions();
        for (const auto& [id, name] : {std::pair{TEST_EVENT_OBJECT_ADDED, "ObjectAdded"},
                                       std::pair{TEST_EVENT_OBJECT_REMOVED, "ObjectRemoved"}}) {
            ASSERT_EQ(SimConnect_SubscribeToSystemEvent(client.handle, id, name), S_OK);
        }
        client.sim.loadFlight();
        client.dispatch();
    }
    // Sends the eight motion doubles the frame step sends.
    void sendMotion(DWORD objectId, double lat, double lon, double alt_ft, double heading_deg) {
        double motion[8] = {lat, lon, 0, 0, heading_deg * kRad, alt_ft, 0, 140};
        ASSERT_EQ(SimConnect_SetDataOnSimObject(client.handle, DEF_MOTION, objectId, 0, 0,
                                                sizeof motion, motion),
                  S_OK);
    }
    SimTestClient client;
};

}  // namespace

TEST_F(BuiltinSimObjects, AKnownTitleAppearsAfterTheDelayOnTheGround) {
    const SIMCONNECT_DATA_INITPOSITION init{kEgtkLat, kEgtkLon, 0, 0, 0, 180, 1, 0};
    ASSERT_EQ(
        SimConnect_AICreateNonATCAircraft(client.handle, "Airbus A320 Neo Asobo", "EZY12", init, 7),
        S_OK);
    client.sim.advance(200);
    EXPECT_TRUE(client.dispatch().empty()) << "not before the 250 ms delay";
    client.sim.advance(100);
    const auto got = client.dispatch();
    ASSERT_EQ(got.size(), 2u);
    const auto& added = got[0].as<SIMCONNECT_RECV_EVENT_OBJECT_ADDREMOVE>();
    EXPECT_EQ(added.dwID, SIMCONNECT_RECV_ID_EVENT_OBJECT_ADDREMOVE);
    EXPECT_EQ(added.uEventID, TEST_EVENT_OBJECT_ADDED);
    EXPECT_EQ(added.eObjType, SIMCONNECT_SIMOBJECT_TYPE_AIRCRAFT);
    const auto& assigned = got[1].as<SIMCONNECT_RECV_ASSIGNED_OBJECT_ID>();
    EXPECT_EQ(assigned.dwID, SIMCONNECT_RECV_ID_ASSIGNED_OBJECT_ID);
    EXPECT_EQ(assigned.dwRequestID, 7u);
    EXPECT_EQ(assigned.dwObjectID, added.dwData);

    // Set on the ground of the terrain with its model's stance.
    const auto object = client.sim.object(assigned.dwObjectID);
    ASSERT_TRUE(object);
    EXPECT_TRUE(object->onGround);
    EXPECT_EQ(object->atcId, "EZY12");
    const Record cg = [&] {
        EXPECT_EQ(SimConnect_RequestDataOnSimObject(client.handle, 102, DEF_STATIC_CG,
                                                    assigned.dwObjectID, SIMCONNECT_PERIOD_ONCE),
                  S_OK);
        return client.dispatch().at(0);
    }();
    EXPECT_EQ(cg.bytes.size(), 56u);
    EXPECT_NEAR(cg.value<double>(0), 8.2, 1e-9);  // A20N
    EXPECT_NEAR(cg.value<double>(8), 0.4 * kRad, 1e-12);
    EXPECT_NEAR(object->alt_ft, client.sim.groundAltitudeFt(object->lat_deg, object->lon_deg) + 8.2,
                1e-9);
}

TEST_F(BuiltinSimObjects, AnUnknownTitleFailsQuotingTheCreatePacket) {
    const SIMCONNECT_DATA_INITPOSITION init{kEgtkLat, kEgtkLon, 0, 0, 0, 0, 1, 0};
    ASSERT_EQ(SimConnect_AICreateNonATCAircraft(client.handle, "Not Installed", "X1", init, 8),
              S_OK);
    const DWORD packet = client.lastPacket();
    ASSERT_EQ(SimConnect_AICreateNonATCAircraft(client.handle, "DA62 Asobo", "X2", init, 9), S_OK);
    client.sim.advance(300);
    const auto got = client.dispatch();
    ASSERT_EQ(got.size(), 3u);  // the exception, then ObjectAdded and the identifier of 9
    const auto& e = got[0].as<SIMCONNECT_RECV_EXCEPTION>();
    EXPECT_EQ(e.dwID, SIMCONNECT_RECV_ID_EXCEPTION);
    EXPECT_EQ(e.dwException, SIMCONNECT_EXCEPTION_CREATE_OBJECT_FAILED);
    EXPECT_EQ(e.dwSendID, packet);
    EXPECT_EQ(got[2].as<SIMCONNECT_RECV_ASSIGNED_OBJECT_ID>().dwRequestID, 9u);
    EXPECT_EQ(client.sim.aiObjectIds().size(), 1u);

    client.sim.endFlight();  // no flight: every create fails
    EXPECT_EQ(client.create("DA62 Asobo", kEgtkLat, kEgtkLon, true, 10), 0u);
}

TEST_F(BuiltinSimObjects, TheSimulatorsAiKeepsAnObjectUntilReleasedOrFrozen) {
    const DWORD id = client.create("DA62 Asobo", kEgtkLat, kEgtkLon, true, 1);
    ASSERT_NE(id, 0u);
    sendMotion(id, 51.9, -1.2, 3000, 90);
    client.sim.advance(40);
    EXPECT_NEAR(client.sim.object(id)->lat_deg, kEgtkLat, 1e-9) << "the AI put it back";

    ASSERT_EQ(
        SimConnect_MapClientEventToSimEvent(client.handle, 214, "FREEZE_LATITUDE_LONGITUDE_SET"),
        S_OK);
    ASSERT_EQ(SimConnect_TransmitClientEvent(client.handle, id, 214, 1, TEST_GROUP, 0), S_OK);
    sendMotion(id, 51.9, -1.2, 3000, 90);
    client.sim.advance(40);
    EXPECT_NEAR(client.sim.object(id)->lat_deg, 51.9, 1e-9) << "frozen: the AI leaves it";
    EXPECT_NEAR(client.sim.object(id)->alt_ft, 270 + 3.5, 1e-9) << "altitude is not frozen";

    const DWORD other = client.create("DA62 Asobo", kEgtkLat, kEgtkLon, true, 2);
    ASSERT_EQ(SimConnect_AIReleaseControl(client.handle, other, 103), S_OK);
    sendMotion(other, 51.95, -1.25, 1800, 45);
    client.sim.advance(1000);
    const auto view = client.sim.object(other);
    EXPECT_TRUE(view->released);
    EXPECT_NEAR(view->lat_deg, 51.95, 1e-9);
    EXPECT_NEAR(view->alt_ft, 1800, 1e-9);
    EXPECT_FALSE(view->onGround);
    EXPECT_TRUE(client.dispatchOnly(SIMCONNECT_RECV_ID_EXCEPTION).empty());
}

TEST_F(BuiltinSimObjects, EveryPositionSentIsRecordedWithItsTime) {
    TempWorkdir dir(false);
    const DWORD id = client.create("Boeing 787-10 Asobo", kEgtkLat, kEgtkLon, false, 1);
    ASSERT_EQ(SimConnect_AIReleaseControl(client.handle, id, 103), S_OK);
    const std::int64_t start_ms = client.sim.now_ms();
    for (int i = 0; i < 5; ++i) {
        sendMotion(id, 51.8 + 0.01 * i, -1.3, 2000 + 100 * i, 350);
        client.sim.advance(100);
    }
    sendMotion(0, 0, 0, 0, 0);  // to the user aircraft: recorded, not obeyed

    const auto track = client.sim.recordedPositions(id);
    ASSERT_EQ(track.size(), 5u);
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(track[i].time_ms, start_ms + 100 * i);
        EXPECT_NEAR(track[i].lat_deg, 51.8 + 0.01 * i, 1e-12);
        EXPECT_NEAR(track[i].alt_ft, 2000 + 100 * i, 1e-9);
        EXPECT_NEAR(track[i].heading_deg, 350, 1e-9) << "back in degrees";
        EXPECT_TRUE(track[i].released);
    }
    EXPECT_EQ(client.sim.recordedPositions(1).size(), 1u);
    EXPECT_NEAR(client.sim.object(0)->lat_deg, 51.8352, 1e-9);

    ASSERT_TRUE(client.sim.writeRecordingCsv(dir.path() / "motion.csv"));
    std::ifstream csv(dir.path() / "motion.csv");
    std::string header, line;
    std::getline(csv, header);
    std::getline(csv, line);
    EXPECT_EQ(header.rfind("time_ms,object_id,lat_deg,lon_deg,alt_ft", 0), 0u) << header;
    const std::string prefix = fmt::format("{},{},51.8000000,-1.3000000,2000.00,", start_ms, id);
    EXPECT_EQ(line.rfind(prefix, 0), 0u) << line;
}

TEST_F(BuiltinSimObjects, RemovalsAndNewFlightsReportObjectRemoved) {
    const DWORD a = client.create("DA62 Asobo", kEgtkLat, kEgtkLon, true, 1);
    const DWORD b = client.create("DA62 Asobo", kEgtkLat, kEgtkLon, true, 2);
    ASSERT_EQ(SimConnect_AIRemoveObject(client.handle, a, 104), S_OK);
    ASSERT_EQ(SimConnect_AIRemoveObject(client.handle, a, 104), S_OK);  // already gone
    auto got = client.dispatch();
    ASSERT_EQ(got.size(), 2u);
    EXPECT_EQ(got[0].as<SIMCONNECT_RECV_EVENT_OBJECT_ADDREMOVE>().uEventID,
              TEST_EVENT_OBJECT_REMOVED);
    EXPECT_EQ(got[0].as<SIMCONNECT_RECV_EVENT_OBJECT_ADDREMOVE>().dwData, a);
    EXPECT_EQ(got[1].as<SIMCONNECT_RECV_EXCEPTION>().dwException,
              SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID);

    client.sim.loadFlight();
    got = client.dispatchOnly(SIMCONNECT_RECV_ID_EVENT_OBJECT_ADDREMOVE);
    ASSERT_EQ(got.size(), 1u);
    EXPECT_EQ(got[0].as<SIMCONNECT_RECV_EVENT_OBJECT_ADDREMOVE>().dwData, b);
    EXPECT_TRUE(client.sim.aiObjectIds().empty());

    // A client that goes takes its objects with it.
    ASSERT_NE(client.create("DA62 Asobo", kEgtkLat, kEgtkLon, true, 3), 0u);
    ASSERT_EQ(SimConnect_Close(client.handle), S_OK);
    EXPECT_TRUE(client.sim.aiObjectIds().empty());
}

TEST_F(BuiltinSimObjects, CommandsReachTheObject) {
    TempWorkdir dir(false);
    const DWORD id = client.create("Airbus A320 Neo Asobo", kEgtkLat, kEgtkLon, true, 1);
    const HANDLE h = client.handle;
    const std::pair<DWORD, const char*> events[] = {
        {207, "NAV_LIGHTS_SET"}, {210, "LANDING_LIGHTS_SET"}, {219, "GEAR_SET"},
        {217, "FLAPS_SET"},      {222, "THROTTLE_SET"},       {220, "ENGINE_AUTO_START"},
    };
    for (const auto& [event, name] : events) {
        ASSERT_EQ(SimConnect_MapClientEventToSimEvent(h, event, name), S_OK);
        ASSERT_EQ(SimConnect_AddClientEventToNotificationGroup(h, TEST_GROUP, event, TRUE), S_OK);
    }
    ASSERT_EQ(
        SimConnect_SetNotificationGroupPriority(h, TEST_GROUP, SIMCONNECT_GROUP_PRIORITY_HIGHEST),
        S_OK);
    for (const auto& [event, value] : {std::pair<DWORD, DWORD>{207, 1},
                                       {210, 1},
                                       {210, 0},
                                       {219, 0},
                                       {217, 8192},
                                       {222, 16383},
                                       {220, 0}}) {
        ASSERT_EQ(SimConnect_TransmitClientEvent(h, id, event, value, TEST_GROUP, 0), S_OK);
    }
    double reverse[3] = {100, -100, -100};
    ASSERT_EQ(SimConnect_SetDataOnSimObject(h, DEF_REVERSE_THRUST, id, 0, 0, 24, reverse), S_OK);
    double shortBlock[2] = {0, 0};
    ASSERT_EQ(SimConnect_SetDataOnSimObject(h, DEF_REVERSE_THRUST, id, 0, 0, 16, shortBlock), S_OK);

    const std::string plan = (dir.path() / "1234.pln").string();
    ASSERT_EQ(SimConnect_AISetAircraftFlightPlan(h, id, plan.c_str(), 109), S_OK);
    dir.write("1234.pln", "<xml/>");
    ASSERT_EQ(SimConnect_AISetAircraftFlightPlan(h, id, plan.c_str(), 109), S_OK);

    const auto got = client.dispatchOnly(SIMCONNECT_RECV_ID_EXCEPTION);
    ASSERT_EQ(got.size(), 2u);
    EXPECT_EQ(got[0].as<SIMCONNECT_RECV_EXCEPTION>().dwException,
              SIMCONNECT_EXCEPTION_INVALID_DATA_SIZE);
    EXPECT_EQ(got[1].as<SIMCONNECT_RECV_EXCEPTION>().dwException,
              SIMCONNECT_EXCEPTION_LOAD_FLIGHTPLAN_FAILED);

    const auto o = client.sim.object(id);
    EXPECT_EQ(o->lightsMask, 0x1u);
    EXPECT_FALSE(o->gearDown);
    EXPECT_NEAR(o->flaps_pct, 50.0, 0.01);
    EXPECT_DOUBLE_EQ(o->spoilers_pct, 100.0);
    EXPECT_DOUBLE_EQ(o->throttle1_pct, -100.0) << "reverse thrust outlasts THROTTLE_SET";
    EXPECT_TRUE(o->enginesRunning);
    EXPECT_EQ(o->flightPlan, plan);
    EXPECT_EQ(client.sim.eventCount(id, "LANDING_LIGHTS_SET"), 2u);
    EXPECT_EQ(client.sim.eventCount(id, "STROBES_SET"), 0u);
}

TEST_F(BuiltinSimObjects, ARangeRequestAnswersPerObjectWithItsGround) {
    const DWORD near = client.create("DA62 Asobo", kEgtkLat + 0.01, kEgtkLon, true, 1, "G-NEAR");
    const DWORD airborne = client.create("DA62 Asobo", kEgtkLat, kEgtkLon + 0.05, false, 2);
    ASSERT_NE(client.create("DA62 Asobo", kEgtkLat + 2, kEgtkLon, true, 3), 0u);  // 120 NM off
    ASSERT_EQ(SimConnect_RequestDataOnSimObjectType(client.handle, 101, DEF_AI_POSITION, 20 * 1852,
                                                    SIMCONNECT_SIMOBJECT_TYPE_AIRCRAFT),
              S_OK);
    const auto got = client.dispatch();
    ASSERT_EQ(got.size(), 3u) << "the user and the two within 20 NM";
    for (std::size_t i = 0; i < got.size(); ++i) {
        const auto& head = got[i].as<SIMCONNECT_RECV_SIMOBJECT_DATA>();
        EXPECT_EQ(head.dwID, SIMCONNECT_RECV_ID_SIMOBJECT_DATA_BYTYPE);
        EXPECT_EQ(head.dwentrynumber, i + 1);
        EXPECT_EQ(head.dwoutof, 3u);
        EXPECT_EQ(head.dwSize, 96u);
    }
    EXPECT_EQ(got[0].as<SIMCONNECT_RECV_SIMOBJECT_DATA>().dwObjectID, 1u);
    EXPECT_EQ(got[1].as<SIMCONNECT_RECV_SIMOBJECT_DATA>().dwObjectID, near);
    EXPECT_NEAR(got[1].value<double>(0), 3.5, 1e-9);  // above ground: its CG
    const auto nearObject = client.sim.object(near);
    ASSERT_TRUE(nearObject);
    EXPECT_NEAR(got[1].value<double>(8),
                client.sim.groundAltitudeFt(nearObject->lat_deg, nearObject->lon_deg), 1e-9);
    EXPECT_EQ(got[1].value<std::int64_t>(16), 1);
    EXPECT_STREQ(reinterpret_cast<const char*>(got[1].bytes.data()) + 64, "G-NEAR");
    EXPECT_EQ(got[2].as<SIMCONNECT_RECV_SIMOBJECT_DATA>().dwObjectID, airborne);
    EXPECT_EQ(got[2].value<std::int64_t>(16), 0);
    EXPECT_NEAR(got[2].value<double>(0), 3000 - got[2].value<double>(8), 1e-9);
}
