// The provider for the simulator's client library, against the built-in
// simulator's facade library: finding and loading it, every call through its
// C functions, and the bytes of every record it hands back, read at the
// offsets of the documentation's table rather than through our structs.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include <nlohmann/json.hpp>

#include "app/exit_request.h"
#include "app/run_state.h"
#include "sim/create_request.h"
#include "sim/sim_client.h"
#include "sim/sim_queues.h"
#include "sim/simconnect_layouts.h"
#include "sim/simconnect_library.h"
#include "sim/user_data.h"
#include "support/temp_workdir.h"

#ifndef _WIN32
#include <dlfcn.h>

#include <cmath>
#endif

using namespace tfx;
using namespace std::chrono_literals;

namespace {

namespace fs = std::filesystem;

enum : DWORD {
    EV_SIM = 1,
    EV_ADDED,
    EV_FRAME,
    EV_BAD,
    DEF_PLACE = 10,
    REQ_USER = 20,
    REQ_AROUND,
    REQ_CREATE,
    REQ_FAILED_CREATE,
    REQ_PLACE_OF_NEW,
    FAC_DEF = 30,
    FAC_REQ,
};
constexpr const char* KNOWN_TITLE = "Airbus A320 Neo Asobo";  // installed in the scenario

void lf_setEnv(const char* name, const std::string& value) {
#ifdef _WIN32
    _putenv_s(name, value.c_str());
#else
    if (value.empty())
        unsetenv(name);
    else
        setenv(name, value.c_str(), 1);
#endif
}

// The facade's simulator starts at its first call and stays for the process:
// one polite scenario at EGTK for every test here, read at once so that no
// other test meets the variable that names it.
SimConnectLibrary& facade() {
    static SimConnectLibrary library({fs::path(ZEPT_SIMCONNECT_FACADE)});
    static const bool started = [] {
        auto scenario = nlohmann::json::parse(
            std::ifstream(std::string(ZEPT_SOURCE_DIR) + "/data/sim_scenario_egtk.json"));
        scenario["rough"] = false;
        const fs::path file = fs::temp_directory_path() / "zept_facade_scenario.json";
        std::ofstream(file) << scenario.dump();
        lf_setEnv("ZEPT_SIM_SCENARIO", file.string());
        HANDLE handle = nullptr;
        const bool opened =
            library.SimConnect_Open(&handle, "ZEPT", nullptr, 0, nullptr, 0) == S_OK;
        if (opened) library.SimConnect_Close(handle);
        lf_setEnv("ZEPT_SIM_SCENARIO", "");
        fs::remove(file);
        return opened;
    }();
    EXPECT_TRUE(started) << "the facade library did not open";
    return library;
}

// A copy of one record as it came out of the library.
struct Bytes {
    std::vector<unsigned char> data;
    DWORD cbData = 0;
    template <class T>
    T at(std::string_view record, std::string_view field) const {
        const SimConnectField& row = gf_simConnectField(record, field);
        EXPECT_EQ(row.size, sizeof(T)) << record << "::" << field;
        T value{};
        if (row.offset + sizeof(T) <= data.size())
            std::memcpy(&value, &data[row.offset], sizeof(T));
        return value;
    }
    std::string text(std::string_view record, std::string_view field) const {
        const SimConnectField& row = gf_simConnectField(record, field);
        const char* start = reinterpret_cast<const char*>(&data[row.offset]);
        return std::string(start, strnlen(start, row.size));
    }
    DWORD id() const { return at<DWORD>("SIMCONNECT_RECV", "dwID"); }
    template <class T>
    T block(std::size_t offset) const {  // the data block of a SIMOBJECT_DATA record
        T value{};
        std::memcpy(
            &value,
            &data[gf_simConnectField("SIMCONNECT_RECV_SIMOBJECT_DATA", "dwData").offset + offset],
            sizeof(T));
        return value;
    }
};

void lf_keep(SIMCONNECT_RECV* data, DWORD cbData, void* context) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(data);
    static_cast<std::vector<Bytes>*>(context)->push_back({{bytes, bytes + cbData}, cbData});
}

struct Client {
    Client() { EXPECT_EQ(facade().SimConnect_Open(&handle, "ZEPT", nullptr, 0, nullptr, 0), S_OK); }
    ~Client() { facade().SimConnect_Close(handle); }
    // Dispatches until a record of the kind arrives (kept with all before it).
    std::optional<Bytes> waitFor(DWORD id, std::chrono::milliseconds limit = 5s) {
        const auto until = std::chrono::steady_clock::now() + limit;
        std::size_t seen = 0;
        do {
            EXPECT_EQ(facade().SimConnect_CallDispatch(handle, &lf_keep, &records), S_OK);
            for (; seen < records.size(); ++seen)
                if (records[seen].id() == id) return records[seen];
            std::this_thread::sleep_for(5ms);
        } while (std::chrono::steady_clock::now() < until);
        ADD_FAILURE() << "no record " << id << " within the wait";
        return std::nullopt;
    }
    HANDLE handle = nullptr;
    std::vector<Bytes> records;
};

// A library that is not the simulator's.
fs::path lf_someOtherLibrary() {
#ifdef _WIN32
    const char* root = std::getenv("SystemRoot");
    return fs::path(root != nullptr ? root : "C:\\windows") / "System32" / "kernel32.dll";
#else
    Dl_info info{};
    dladdr(reinterpret_cast<void*>(static_cast<double (*)(double)>(&::cos)), &info);
    return info.dli_fname;
#endif
}

}  // namespace

TEST(SimConnectLibrary, SaysWhereItLookedAndWhyNothingLoaded) {
    test::TempWorkdir dir;
    std::ofstream("not_a_library.so") << "plain text";
    const fs::path missing = fs::absolute("nowhere") / "SimConnect.so";
    const fs::path text = fs::absolute("not_a_library.so");
    const fs::path other = lf_someOtherLibrary();
    SimConnectLibrary library({missing, text, other});

    EXPECT_FALSE(library.load());
    HANDLE handle = reinterpret_cast<HANDLE>(1);
    EXPECT_EQ(library.SimConnect_Open(&handle, "ZEPT", nullptr, 0, nullptr, 0), E_FAIL);
    EXPECT_EQ(handle, nullptr) << "no handle while there is no library";
    const std::string log = dir.logText();
    EXPECT_NE(log.find(missing.string() + ": no such file"), std::string::npos) << log;
    EXPECT_NE(log.find(text.string() + ": can't be loaded"), std::string::npos) << log;
    EXPECT_NE(log.find(other.string() + ": is not the simulator's client library: it lacks "
                                        "SimConnect_Open"),
              std::string::npos)
        << log;
    EXPECT_NE(log.find("Microsoft Flight Simulator SDK"), std::string::npos) << log;
    EXPECT_EQ(library.load(), false);
    EXPECT_EQ(dir.logText(), log) << "a wait logs the same failure once";

    library.setFiles({missing, ZEPT_SIMCONNECT_FACADE});
    ASSERT_TRUE(library.load());
    EXPECT_EQ(library.file(), fs::path(ZEPT_SIMCONNECT_FACADE));
    EXPECT_NE(
        dir.logText().find(std::string("SimConnect library loaded: ") + ZEPT_SIMCONNECT_FACADE),
        std::string::npos);
}

TEST(SimConnectLibrary, RecordsCrossTheBoundaryAsTheDocumentationLaysThemOut) {
    Client c;
    ASSERT_NE(c.handle, nullptr);
    const auto open = c.waitFor(SIMCONNECT_RECV_ID_OPEN);
    ASSERT_TRUE(open);
    EXPECT_EQ(open->cbData, 308u);
    EXPECT_EQ(open->at<DWORD>("SIMCONNECT_RECV", "dwSize"), 308u);
    EXPECT_EQ(open->text("SIMCONNECT_RECV_OPEN", "szApplicationName"), "KittyHawk");
    EXPECT_EQ(open->at<DWORD>("SIMCONNECT_RECV_OPEN", "dwApplicationVersionMajor"), 11u);
    EXPECT_EQ(open->at<DWORD>("SIMCONNECT_RECV_OPEN", "dwApplicationBuildMajor"), 282174u);
    EXPECT_EQ(open->at<DWORD>("SIMCONNECT_RECV_OPEN", "dwSimConnectBuildMajor"), 62651u);

    const HANDLE h = c.handle;
    SimConnectLibrary& lib = facade();
    ASSERT_EQ(lib.SimConnect_SubscribeToSystemEvent(h, EV_SIM, "Sim"), S_OK);
    const auto sim = c.waitFor(SIMCONNECT_RECV_ID_EVENT);
    ASSERT_TRUE(sim);
    EXPECT_EQ(sim->cbData, 24u);
    EXPECT_EQ(sim->at<DWORD>("SIMCONNECT_RECV_EVENT", "uEventID"), EV_SIM);
    EXPECT_EQ(sim->at<DWORD>("SIMCONNECT_RECV_EVENT", "uGroupID"), SIMCONNECT_UNUSED);
    EXPECT_EQ(sim->at<DWORD>("SIMCONNECT_RECV_EVENT", "dwData"), 1u) << "the flight runs";

    ASSERT_EQ(lib.SimConnect_SubscribeToSystemEvent(h, EV_FRAME, "Frame"), S_OK);
    const auto frame = c.waitFor(SIMCONNECT_RECV_ID_EVENT_FRAME);
    ASSERT_TRUE(frame);
    EXPECT_EQ(frame->cbData, 32u);
    EXPECT_EQ(frame->at<DWORD>("SIMCONNECT_RECV_EVENT", "uEventID"), EV_FRAME);
    EXPECT_EQ(frame->at<float>("SIMCONNECT_RECV_EVENT_FRAME", "fSimSpeed"), 1.0f);
    EXPECT_GT(frame->at<float>("SIMCONNECT_RECV_EVENT_FRAME", "fFrameRate"), 0.0f);

    // The user aircraft's place: a data block of three doubles after the head.
    ASSERT_EQ(lib.SimConnect_SubscribeToSystemEvent(h, EV_ADDED, "ObjectAdded"), S_OK);
    for (const char* var : {"Plane Latitude", "Plane Longitude"})
        ASSERT_EQ(
            lib.SimConnect_AddToDataDefinition(h, DEF_PLACE, var, "degree",
                                               SIMCONNECT_DATATYPE_FLOAT64, 0, SIMCONNECT_UNUSED),
            S_OK);
    ASSERT_EQ(lib.SimConnect_AddToDataDefinition(h, DEF_PLACE, "SIM ON GROUND", "Bool",
                                                 SIMCONNECT_DATATYPE_INT64, 0, SIMCONNECT_UNUSED),
              S_OK);
    c.records.clear();
    ASSERT_EQ(
        lib.SimConnect_RequestDataOnSimObject(h, REQ_USER, DEF_PLACE, SIMCONNECT_OBJECT_ID_USER,
                                              SIMCONNECT_PERIOD_ONCE, 0, 0, 0, 0),
        S_OK);
    const auto user = c.waitFor(SIMCONNECT_RECV_ID_SIMOBJECT_DATA);
    ASSERT_TRUE(user);
    EXPECT_EQ(user->cbData, 40u + 24u);
    EXPECT_EQ(user->at<DWORD>("SIMCONNECT_RECV", "dwSize"), user->cbData);
    EXPECT_EQ(user->at<DWORD>("SIMCONNECT_RECV_SIMOBJECT_DATA", "dwRequestID"), REQ_USER);
    EXPECT_EQ(user->at<DWORD>("SIMCONNECT_RECV_SIMOBJECT_DATA", "dwDefineID"), DEF_PLACE);
    EXPECT_EQ(user->at<DWORD>("SIMCONNECT_RECV_SIMOBJECT_DATA", "dwentrynumber"), 1u);
    EXPECT_EQ(user->at<DWORD>("SIMCONNECT_RECV_SIMOBJECT_DATA", "dwoutof"), 1u);
    EXPECT_NEAR(user->block<double>(0), 51.8352, 0.01);
    EXPECT_NEAR(user->block<double>(8), -1.3225, 0.01);
    EXPECT_EQ(user->block<std::int64_t>(16), 1) << "parked at the start";
    const DWORD userId = user->at<DWORD>("SIMCONNECT_RECV_SIMOBJECT_DATA", "dwObjectID");

    // A create: the position goes by value, the answer names the request.
    const SIMCONNECT_DATA_INITPOSITION place{51.8390, -1.3190, 270, 0, 0, 90, 1, 0};
    ASSERT_EQ(lib.SimConnect_AICreateNonATCAircraft(h, KNOWN_TITLE, "TEST1", place, REQ_CREATE),
              S_OK);
    const auto assigned = c.waitFor(SIMCONNECT_RECV_ID_ASSIGNED_OBJECT_ID);
    ASSERT_TRUE(assigned);
    EXPECT_EQ(assigned->cbData, 20u);
    EXPECT_EQ(assigned->at<DWORD>("SIMCONNECT_RECV_ASSIGNED_OBJECT_ID", "dwRequestID"), REQ_CREATE);
    const DWORD created = assigned->at<DWORD>("SIMCONNECT_RECV_ASSIGNED_OBJECT_ID", "dwObjectID");
    EXPECT_NE(created, userId);
    const auto added = c.waitFor(SIMCONNECT_RECV_ID_EVENT_OBJECT_ADDREMOVE);
    ASSERT_TRUE(added);
    EXPECT_EQ(added->cbData, 28u);
    EXPECT_EQ(added->at<DWORD>("SIMCONNECT_RECV_EVENT", "dwData"), created);
    EXPECT_EQ(added->at<DWORD>("SIMCONNECT_RECV_EVENT_OBJECT_ADDREMOVE", "eObjType"),
              static_cast<DWORD>(SIMCONNECT_SIMOBJECT_TYPE_AIRCRAFT));
    ASSERT_EQ(lib.SimConnect_AIReleaseControl(h, created, REQ_CREATE), S_OK);
    c.records.clear();
    ASSERT_EQ(lib.SimConnect_RequestDataOnSimObject(h, REQ_PLACE_OF_NEW, DEF_PLACE, created,
                                                    SIMCONNECT_PERIOD_ONCE, 0, 0, 0, 0),
              S_OK);
    const auto placed = c.waitFor(SIMCONNECT_RECV_ID_SIMOBJECT_DATA);
    ASSERT_TRUE(placed);
    EXPECT_NEAR(placed->block<double>(0), place.Latitude, 1e-4) << "the position crossed whole";
    EXPECT_NEAR(placed->block<double>(8), place.Longitude, 1e-4);

    // Every aircraft around, one record each.
    c.records.clear();
    ASSERT_EQ(lib.SimConnect_RequestDataOnSimObjectType(h, REQ_AROUND, DEF_PLACE, 20000,
                                                        SIMCONNECT_SIMOBJECT_TYPE_AIRCRAFT),
              S_OK);
    const auto around = c.waitFor(SIMCONNECT_RECV_ID_SIMOBJECT_DATA_BYTYPE);
    ASSERT_TRUE(around);
    EXPECT_EQ(around->cbData, 40u + 24u);
    EXPECT_EQ(around->at<DWORD>("SIMCONNECT_RECV_SIMOBJECT_DATA_BYTYPE", "dwRequestID"),
              REQ_AROUND);

    // Facility data: the end record names the request.
    ASSERT_EQ(lib.SimConnect_AddToFacilityDefinition(h, FAC_DEF, "OPEN AIRPORT"), S_OK);
    ASSERT_EQ(lib.SimConnect_RequestFacilityData(h, FAC_DEF, FAC_REQ, "EGTK", ""), S_OK);
    const auto end = c.waitFor(SIMCONNECT_RECV_ID_FACILITY_DATA_END);
    ASSERT_TRUE(end);
    EXPECT_EQ(end->cbData, 16u);
    EXPECT_EQ(end->at<DWORD>("SIMCONNECT_RECV_FACILITY_DATA_END", "RequestId"), FAC_REQ);
}

TEST(SimConnectLibrary, ExceptionsQuoteThePacketThatCausedThem) {
    Client c;
    ASSERT_TRUE(c.waitFor(SIMCONNECT_RECV_ID_OPEN));
    SimConnectLibrary& lib = facade();
    const SIMCONNECT_DATA_INITPOSITION place{51.8390, -1.3190, 270, 0, 0, 90, 1, 0};
    DWORD badName = 0, badCreate = 0;
    ASSERT_EQ(lib.SimConnect_SubscribeToSystemEvent(c.handle, EV_BAD, "NoSuchEvent"), S_OK);
    ASSERT_EQ(lib.SimConnect_GetLastSentPacketID(c.handle, &badName), S_OK);
    ASSERT_EQ(lib.SimConnect_AICreateNonATCAircraft(c.handle, "No Such Title", "TEST2", place,
                                                    REQ_FAILED_CREATE),
              S_OK);
    ASSERT_EQ(lib.SimConnect_GetLastSentPacketID(c.handle, &badCreate), S_OK);
    EXPECT_NE(badName, badCreate);

    std::vector<Bytes> exceptions;
    const auto until = std::chrono::steady_clock::now() + 5s;
    while (exceptions.size() < 2 && std::chrono::steady_clock::now() < until) {
        c.records.clear();
        ASSERT_EQ(lib.SimConnect_CallDispatch(c.handle, &lf_keep, &c.records), S_OK);
        for (const Bytes& r : c.records)
            if (r.id() == SIMCONNECT_RECV_ID_EXCEPTION) exceptions.push_back(r);
        std::this_thread::sleep_for(5ms);
    }
    ASSERT_EQ(exceptions.size(), 2u);
    for (const Bytes& e : exceptions) {
        EXPECT_EQ(e.cbData, 24u);
        const auto code = e.at<DWORD>("SIMCONNECT_RECV_EXCEPTION", "dwException");
        const auto packet = e.at<DWORD>("SIMCONNECT_RECV_EXCEPTION", "dwSendID");
        if (code == SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED) {
            EXPECT_EQ(packet, badName);
            EXPECT_EQ(e.at<DWORD>("SIMCONNECT_RECV_EXCEPTION", "dwIndex"), 3u);
        } else {
            EXPECT_EQ(code, static_cast<DWORD>(SIMCONNECT_EXCEPTION_CREATE_OBJECT_FAILED));
            EXPECT_EQ(packet, badCreate);
        }
    }
}

TEST(SimConnectLibrary, AnExceptionInDispatchWaitsUntilTheLibraryHasReturned) {
    Client c;
    const DispatchProc throwing = [](SIMCONNECT_RECV*, DWORD, void*) {
        throw std::runtime_error("handler");
    };
    EXPECT_THROW(facade().SimConnect_CallDispatch(c.handle, throwing, nullptr), std::runtime_error);
    ASSERT_EQ(facade().SimConnect_SubscribeToSystemEvent(c.handle, EV_SIM, "Sim"), S_OK);
    EXPECT_TRUE(c.waitFor(SIMCONNECT_RECV_ID_EVENT)) << "the connection still works";
}

// The program's simulator thread, as it runs on a user's machine: through the
// library, until it flies and its create comes back with an object.
TEST(SimConnectLibrary, TheSimulatorThreadFliesThroughTheLibrary) {
    test::TempWorkdir dir;
    facade();
    gf_clearExitRequest();
    gf_clearSimBuffers();
    gf_resetSimClientState();
    gf_storeUserData({});
    runChoice = std::make_shared<const RunChoice>();
    gf_setSimConnectApi(&facade());
    const auto within = [](std::chrono::milliseconds limit, auto cond) {
        const auto until = std::chrono::steady_clock::now() + limit;
        for (;;) {
            if (cond()) return true;
            if (std::chrono::steady_clock::now() > until) return false;
            std::this_thread::sleep_for(5ms);
        }
    };
    {
        std::jthread thread(gf_simClientThread);
        EXPECT_TRUE(within(5s, [] { return SimRunState.load() == 2; })) << dir.logText();
        CreateRequest request;
        request.hexid = 0x4CA123;
        request.callsign = "EIN123";
        request.title = KNOWN_TITLE;
        request.lat = 51.8390;
        request.lon = -1.3190;
        request.onGround = true;
        gf_queueCreate(request);
        std::vector<SimMessage> messages;
        EXPECT_TRUE(within(5s, [&] {
            gf_takeSimMessages(messages);
            for (const SimMessage& m : messages)
                if (m.kind == 0 && m.hexid == 0x4CA123 && m.objectid != 0) return true;
            return false;
        })) << dir.logText();
        thread.request_stop();
    }
    gf_setSimConnectApi(nullptr);
    gf_clearSimBuffers();
    gf_resetSimClientState();
    SimRunState = 0;
    EXPECT_NE(dir.logText().find("KittyHawk"), std::string::npos) << "the OPEN record was read";
}
