// A bare client of the built-in simulator for tests: it installs the
// simulator as the provider, opens a connection through the free operations,
// and keeps copies of the records each dispatch hands over.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <string>
#include <vector>

#include "sim/builtin/builtin_sim.h"
#include "sim/simconnect_api.h"

namespace tfx::test {

// The client's own identifiers, as the simulator thread declares them.
enum : DWORD {
    TEST_EVENT_SIM = 201,
    TEST_EVENT_OBJECT_ADDED = 202,
    TEST_EVENT_OBJECT_REMOVED = 203,
    TEST_EVENT_FRAME = 204,
    TEST_EVENT_FLIGHT_LOADED = 205,
    TEST_GROUP = 301,
    DEF_REVERSE_THRUST = 401,
    DEF_MOTION = 402,
    DEF_USER_POSITION = 403,
    DEF_AI_POSITION = 404,
    DEF_STATIC_CG = 405,
    DEF_USER_TITLE = 407,
    DEF_USER_MODEL = 408,
    DEF_USER_ON_GROUND = 409,
};

struct Record {
    std::vector<std::byte> bytes;
    DWORD id() const { return as<SIMCONNECT_RECV>().dwID; }
    template <class R>
    const R& as() const {
        return *reinterpret_cast<const R*>(bytes.data());
    }
    // A value of the data block at a byte offset from its start.
    template <class T>
    T value(std::size_t offset) const {
        T v;
        std::memcpy(&v, bytes.data() + SIMOBJECT_DATA_OFFSET + offset, sizeof v);
        return v;
    }
};

class SimTestClient {
public:
    // Polite, so that the mechanics can be checked to the frame; the rough
    // habits have tests of their own.
    explicit SimTestClient(BuiltinSimConfig config = {}) : sim(std::move(config)) {
        sim.setRoughness(SimRoughness::polite());
        gf_setSimConnectApi(&sim);
    }
    ~SimTestClient() { gf_setSimConnectApi(nullptr); }

    // Runs the simulator and opens; the OPEN record is taken away.
    void open() {
        sim.run();
        ASSERT_EQ(SimConnect_Open(&handle, "ZEPT", nullptr, 0, nullptr, 0), S_OK);
        ASSERT_EQ(dispatch().size(), 1u);
    }

    std::vector<Record> dispatch() {
        std::vector<Record> out;
        EXPECT_EQ(SimConnect_CallDispatch(handle, &collect, &out), S_OK);
        return out;
    }
    // The records of one kind, in order.
    std::vector<Record> dispatchOnly(DWORD id) {
        std::vector<Record> out;
        for (Record& r : dispatch()) {
            if (r.id() == id) out.push_back(std::move(r));
        }
        return out;
    }

    DWORD lastPacket() const {
        DWORD id = 0;
        EXPECT_EQ(SimConnect_GetLastSentPacketID(handle, &id), S_OK);
        return id;
    }

    // The blocks the client declares for the user aircraft, AI positions,
    // motion, static data and reverse thrust.
    void declareDefinitions() {
        auto add = [&](DWORD def, const char* name, const char* unit,
                       SIMCONNECT_DATATYPE type = SIMCONNECT_DATATYPE_FLOAT64) {
            ASSERT_EQ(SimConnect_AddToDataDefinition(handle, def, name, unit, type), S_OK);
        };
        add(DEF_USER_TITLE, "TITLE", nullptr, SIMCONNECT_DATATYPE_STRINGV);
        add(DEF_USER_MODEL, "ATC MODEL", nullptr, SIMCONNECT_DATATYPE_STRING32);
        add(DEF_USER_ON_GROUND, "SIM ON GROUND", "Bool", SIMCONNECT_DATATYPE_INT64);
        for (const char* n : {"Plane Latitude", "Plane Longitude"}) add(DEF_MOTION, n, "degree");
        for (const char* n :
             {"Plane Pitch degrees", "Plane Bank degrees", "Plane Heading degrees true"}) {
            add(DEF_MOTION, n, "radian");
        }
        add(DEF_MOTION, "Plane Altitude", "feet");
        add(DEF_MOTION, "Vertical Speed", "feet per minute");
        add(DEF_MOTION, "Airspeed True", "knots");
        for (const char* n : {"Plane Latitude", "Plane Longitude"}) {
            add(DEF_USER_POSITION, n, "degree");
        }
        add(DEF_USER_POSITION, "Plane Pitch degrees", "radian");
        add(DEF_USER_POSITION, "Plane Bank degrees", "radian");
        add(DEF_USER_POSITION, "Vertical Speed", "feet per minute");
        add(DEF_USER_POSITION, "Plane Heading degrees true", "radian");
        for (const char* n : {"Plane Altitude", "Indicated Altitude", "Plane Alt Above Ground"}) {
            add(DEF_USER_POSITION, n, "feet");
        }
        add(DEF_USER_POSITION, "Ground Velocity", "knots");
        add(DEF_USER_POSITION, "ZULU TIME", "Seconds", SIMCONNECT_DATATYPE_INT64);
        add(DEF_USER_POSITION, "ZULU DAY OF YEAR", "Number", SIMCONNECT_DATATYPE_INT64);
        add(DEF_USER_POSITION, "ZULU YEAR", "Number", SIMCONNECT_DATATYPE_INT64);
        add(DEF_USER_POSITION, "LIGHT STATES", "Mask", SIMCONNECT_DATATYPE_INT64);
        add(DEF_USER_POSITION, "GPS Ground True Track", "degree");
        add(DEF_STATIC_CG, "Static CG to Ground", "feet");
        add(DEF_STATIC_CG, "Static Pitch", "radian");
        add(DEF_AI_POSITION, "Plane Alt Above Ground", "feet");
        add(DEF_AI_POSITION, "Ground Altitude", "feet");
        add(DEF_AI_POSITION, "SIM ON GROUND", "Bool", SIMCONNECT_DATATYPE_INT64);
        add(DEF_AI_POSITION, "ATC ID", nullptr, SIMCONNECT_DATATYPE_STRING32);
        add(DEF_REVERSE_THRUST, "SPOILERS HANDLE POSITION", "percent");
        add(DEF_REVERSE_THRUST, "GENERAL ENG THROTTLE LEVER POSITION:1", "percent");
        add(DEF_REVERSE_THRUST, "GENERAL ENG THROTTLE LEVER POSITION:2", "percent");
        EXPECT_TRUE(dispatch().empty()) << "no definition may be refused";
    }

    // An AI create with the answer waited for; the object identifier, or 0
    // when the simulator refused.
    DWORD create(const char* title, double lat, double lon, bool onGround, DWORD requestId,
                 const char* tail = "TEST1") {
        const SIMCONNECT_DATA_INITPOSITION init{lat, lon, onGround ? 0.0 : 3000.0, 0,
                                                0,   90,  onGround ? 1u : 0u,      0};
        EXPECT_EQ(SimConnect_AICreateNonATCAircraft(handle, title, tail, init, requestId), S_OK);
        sim.advance(300);
        for (const Record& r : dispatch()) {
            if (r.id() == SIMCONNECT_RECV_ID_ASSIGNED_OBJECT_ID &&
                r.as<SIMCONNECT_RECV_ASSIGNED_OBJECT_ID>().dwRequestID == requestId) {
                return r.as<SIMCONNECT_RECV_ASSIGNED_OBJECT_ID>().dwObjectID;
            }
        }
        return 0;
    }

    BuiltinSim sim;
    HANDLE handle = nullptr;

    // A dispatch procedure that keeps a copy of each record.
    static void collect(SIMCONNECT_RECV* data, DWORD cbData, void* context) {
        auto* out = static_cast<std::vector<Record>*>(context);
        const auto* bytes = reinterpret_cast<const std::byte*>(data);
        out->push_back(Record{std::vector<std::byte>(bytes, bytes + cbData)});
    }
};

// The example scenario of the source tree.
inline std::string egtkScenarioPath() {
    return std::string(ZEPT_SOURCE_DIR) + "/data/sim_scenario_egtk.json";
}

}  // namespace tfx::test
