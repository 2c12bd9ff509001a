// The built-in simulator as a client meets it: opening, the simulator's life,
// system events, frames, refusals and the dispatch itself.
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>

#include <fmt/format.h>

#include "sim/builtin/builtin_sim_client.h"

using namespace tfx;
using namespace tfx::test;

TEST(BuiltinSimConnection, OpenWorksOnlyWhileTheSimulatorRuns) {
    HANDLE h = reinterpret_cast<HANDLE>(1);
    EXPECT_EQ(SimConnect_Open(&h, "ZEPT", nullptr, 0, nullptr, 0), E_FAIL) << "no provider";
    EXPECT_EQ(h, nullptr);

    BuiltinSimConfig config;
    config.application_name = "SunRise";
    SimTestClient client(config);
    EXPECT_EQ(SimConnect_Open(&h, "ZEPT", nullptr, 0, nullptr, 0), E_FAIL) << "not started yet";

    client.sim.run();
    ASSERT_EQ(SimConnect_Open(&client.handle, "ZEPT", nullptr, 0, nullptr, 0), S_OK);
    const auto records = client.dispatch();
    ASSERT_EQ(records.size(), 1u);
    const auto& open = records[0].as<SIMCONNECT_RECV_OPEN>();
    EXPECT_EQ(open.dwID, SIMCONNECT_RECV_ID_OPEN);
    EXPECT_EQ(open.dwSize, 308u);
    EXPECT_STREQ(open.szApplicationName, "SunRise");
    EXPECT_EQ(open.dwApplicationVersionMajor, 11u);

    // Quitting: the QUIT record still arrives, then the connection is dead
    // until closed, and a new one waits for the next start.
    ASSERT_EQ(SimConnect_SubscribeToSystemEvent(client.handle, TEST_EVENT_FRAME, "Frame"), S_OK);
    client.sim.quit();
    const auto last = client.dispatch();
    ASSERT_EQ(last.size(), 1u);
    EXPECT_EQ(last[0].id(), SIMCONNECT_RECV_ID_QUIT);
    client.sim.advance(1000);
    std::vector<Record> none;
    EXPECT_EQ(SimConnect_CallDispatch(
                  client.handle, [](SIMCONNECT_RECV*, DWORD, void*) {}, &none),
              E_FAIL);
    EXPECT_EQ(SimConnect_SubscribeToSystemEvent(client.handle, 1, "Sim"), E_FAIL);
    EXPECT_EQ(SimConnect_Open(&h, "ZEPT", nullptr, 0, nullptr, 0), E_FAIL);
    EXPECT_EQ(SimConnect_Close(client.handle), S_OK);
    EXPECT_EQ(SimConnect_Close(client.handle), E_FAIL) << "closed twice";
    client.sim.run();
    EXPECT_EQ(SimConnect_Open(&h, "ZEPT", nullptr, 0, nullptr, 0), S_OK);
}

TEST(BuiltinSimConnection, SimAndFlightLoadedFollowTheFlight) {
    SimTestClient client;
    client.open();
    ASSERT_EQ(SimConnect_SubscribeToSystemEvent(client.handle, TEST_EVENT_SIM, "Sim"), S_OK);
    ASSERT_EQ(
        SimConnect_SubscribeToSystemEvent(client.handle, TEST_EVENT_FLIGHT_LOADED, "FlightLoaded"),
        S_OK);
    // Each step as (record kind, event, data) in order of arrival.
    auto steps = [&] {
        std::string out;
        for (const Record& r : client.dispatch()) {
            const auto& e = r.as<SIMCONNECT_RECV_EVENT>();
            out += fmt::format("{}:{}:{} ", r.id(), e.uEventID, e.dwData);
        }
        return out;
    };
    EXPECT_EQ(steps(), "4:201:0 ") << "Sim answers its state at once";
    client.sim.loadFlight();
    EXPECT_EQ(steps(), "6:205:0 4:201:1 ");
    client.sim.pause(true);
    EXPECT_EQ(steps(), "4:201:0 ");
    client.sim.pause(false);
    EXPECT_EQ(steps(), "4:201:1 ");
    client.sim.endFlight();
    client.sim.loadFlight();
    EXPECT_EQ(steps(), "4:201:0 6:205:0 4:201:1 ");
    client.sim.loadFlight();  // a new flight over a running one
    EXPECT_EQ(steps(), "4:201:0 6:205:0 4:201:1 ");
}

TEST(BuiltinSimConnection, FramesFollowTheConfiguredRateAndGoOnWhilePaused) {
    for (const double rate : {30.0, 50.0}) {
        BuiltinSimConfig config;
        config.frame_rate_hz = rate;
        SimTestClient client(config);
        client.sim.advance(500);  // not running: no frames owed later
        client.open();
        ASSERT_EQ(SimConnect_SubscribeToSystemEvent(client.handle, TEST_EVENT_FRAME, "Frame"),
                  S_OK);
        client.sim.advance(1000);
        const auto frames = client.dispatchOnly(SIMCONNECT_RECV_ID_EVENT_FRAME);
        ASSERT_EQ(frames.size(), static_cast<std::size_t>(rate));
        EXPECT_EQ(frames[0].as<SIMCONNECT_RECV_EVENT_FRAME>().uEventID, TEST_EVENT_FRAME);
        EXPECT_EQ(frames[0].as<SIMCONNECT_RECV_EVENT_FRAME>().fSimSpeed, 0.0f) << "no flight";

        client.sim.loadFlight();
        client.sim.pause(true);
        client.sim.advance(2000);
        EXPECT_EQ(client.dispatchOnly(SIMCONNECT_RECV_ID_EVENT_FRAME).size(),
                  static_cast<std::size_t>(2 * rate));
    }
}

TEST(BuiltinSimConnection, RefusalsComeAsExceptionsNamingTheirPacket) {
    SimTestClient client;
    client.open();
    struct Case {
        std::function<HRESULT()> call;
        DWORD exception, index;
    };
    const HANDLE h = client.handle;
    const Case cases[] = {
        {[&] { return SimConnect_SubscribeToSystemEvent(h, 1, "NoSuchEvent"); },
         SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED, 3},
        {[&] { return SimConnect_MapClientEventToSimEvent(h, 1, "NO_SUCH_EVENT"); },
         SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED, 3},
        {[&] { return SimConnect_AddToDataDefinition(h, 1, "NO SUCH VAR", "feet"); },
         SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED, 3},
        {[&] { return SimConnect_AddToDataDefinition(h, 1, "Plane Altitude", "knots"); },
         SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED, 4},
        {[&] {
             return SimConnect_AddToDataDefinition(h, 1, "TITLE", nullptr,
                                                   SIMCONNECT_DATATYPE_FLOAT64);
         },
         SIMCONNECT_EXCEPTION_INVALID_DATA_TYPE, 5},
        {[&] { return SimConnect_RequestDataOnSimObject(h, 1, 999, 0, SIMCONNECT_PERIOD_ONCE); },
         SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID, 3},
        {[&] { return SimConnect_TransmitClientEvent(h, 0, 999, 1, TEST_GROUP, 0); },
         SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID, 3},
        {[&] { return SimConnect_SetNotificationGroupPriority(h, 77, 1); },
         SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID, 2},
        {[&] { return SimConnect_AIRemoveObject(h, 0, 104); },
         SIMCONNECT_EXCEPTION_OPERATION_INVALID_FOR_OBJECT_TYPE, 2},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.call(), S_OK) << "the library itself accepts it";
        const DWORD packet = client.lastPacket();
        const auto got = client.dispatch();
        ASSERT_EQ(got.size(), 1u);
        const auto& e = got[0].as<SIMCONNECT_RECV_EXCEPTION>();
        EXPECT_EQ(e.dwException, c.exception);
        EXPECT_EQ(e.dwSendID, packet);
        EXPECT_EQ(e.dwIndex, c.index);
    }
    EXPECT_EQ(SimConnect_SubscribeToSystemEvent(h, 1, nullptr), E_INVALIDARG);
    EXPECT_EQ(SimConnect_Open(nullptr, "ZEPT", nullptr, 0, nullptr, 0), E_INVALIDARG);
}

TEST(BuiltinSimConnection, DispatchLetsTheHandlerCallInAndKeepsWhatAThrowLeft) {
    SimTestClient client;
    client.open();
    ASSERT_EQ(SimConnect_SubscribeToSystemEvent(client.handle, TEST_EVENT_FRAME, "Frame"), S_OK);
    client.sim.advance(100);  // three frames

    struct Context {
        HANDLE handle;
        int seen = 0;
    } context{client.handle};
    auto throwingHandler = [](SIMCONNECT_RECV*, DWORD, void* p) {
        auto* c = static_cast<Context*>(p);
        ++c->seen;
        // Calling back in from the handler must not dead-lock.
        DWORD packet = 0;
        EXPECT_EQ(SimConnect_GetLastSentPacketID(c->handle, &packet), S_OK);
        EXPECT_EQ(SimConnect_SubscribeToSystemEvent(c->handle, 1, "1sec"), S_OK);
        throw std::runtime_error("handler failed");
    };
    EXPECT_THROW(SimConnect_CallDispatch(client.handle, throwingHandler, &context),
                 std::runtime_error);
    EXPECT_EQ(context.seen, 1);
    EXPECT_EQ(client.dispatchOnly(SIMCONNECT_RECV_ID_EVENT_FRAME).size(), 2u)
        << "the two frames the handler did not see wait for the next dispatch";
}

TEST(BuiltinSimConnection, FacilityRequestsEndWithoutData) {
    SimTestClient client;
    client.open();
    for (const char* field : {"OPEN AIRPORT", "LATITUDE", "CLOSE AIRPORT"}) {
        ASSERT_EQ(SimConnect_AddToFacilityDefinition(client.handle, 1001, field), S_OK);
    }
    ASSERT_EQ(SimConnect_RequestFacilityData(client.handle, 1001, 2001, "EGTK"), S_OK);
    const auto got = client.dispatch();
    ASSERT_EQ(got.size(), 1u);
    EXPECT_EQ(got[0].id(), SIMCONNECT_RECV_ID_FACILITY_DATA_END);
    EXPECT_EQ(got[0].as<SIMCONNECT_RECV_FACILITY_DATA_END>().RequestId, 2001u);
    ASSERT_EQ(SimConnect_RequestFacilityData(client.handle, 1002, 2002, "EGTK"), S_OK);
    EXPECT_EQ(client.dispatchOnly(SIMCONNECT_RECV_ID_EXCEPTION).size(), 1u);
}
