// The built-in simulator's data: its settings, the client connections with
// what each declared, the objects of the world, and the clock. Behaviour is in
// the builtin_sim_*.cpp files; everything here is guarded by the simulator's
// one lock.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <random>
#include <string>
#include <vector>

#include "sim/builtin/builtin_sim_recorder.h"
#include "sim/builtin/builtin_sim_scenario.h"
#include "sim/simconnect_api.h"

namespace tfx {

struct BuiltinSimConfig {
    double frame_rate_hz = 30;  // "Frame" events per second, on average
    // Name and versions in the OPEN record: "KittyHawk" is MSFS 2020,
    // "SunRise" MSFS 2024.
    std::string application_name = "KittyHawk";
    std::array<DWORD, 4> application_version = {11, 0, 282174, 999};
    std::array<DWORD, 4> simconnect_version = {11, 0, 62651, 3};
    std::size_t max_ai_objects = 1000;
    std::size_t max_recorded_positions = 1'000'000;  // 0: no recording
    std::size_t max_queued_bytes = 16u << 20;  // per connection; more is dropped (logged once)
    DWORD user_object_id = 1;
    // Well above the few small ids the simulator keeps for itself, which the
    // engine ignores in its reports.
    DWORD first_ai_object_id = 1000;
};

namespace bsim {

enum class SystemEvent : std::uint8_t {
    Sim,  // dwData 1 while the user flies, else 0; answered at once on subscription
    SimStart,
    SimStop,
    Pause,  // dwData 1 paused, 0 resumed
    ObjectAdded,
    ObjectRemoved,
    FlightLoaded,  // an EVENT_FILENAME record
    Frame,         // an EVENT_FRAME record
    OneSecond,     // "1sec"
};
struct Subscription {
    DWORD eventId;
    SystemEvent kind;
};

// One variable of a data definition, as declared.
struct DataItem {
    std::uint16_t var = 0;   // index into the variable table
    std::uint8_t index = 0;  // the ":N" of an indexed variable
    SIMCONNECT_DATATYPE type = SIMCONNECT_DATATYPE_FLOAT64;
    double perCanonical = 1;  // factor from the variable's own unit to the declared one
    DWORD bytes = 8;          // 0 for a variable-length text
};
struct DataDefinition {
    std::vector<DataItem> items;
    DWORD fixedBytes = 0;
    bool variableSize = false;
    bool setsPosition = false;  // holds latitude or longitude: a set is recorded
};

struct DataRequest {
    DWORD requestId = 0;
    DWORD defineId = 0;
    DWORD objectId = 0;
    SIMCONNECT_PERIOD period = SIMCONNECT_PERIOD_ONCE;
    DWORD flags = 0;
    std::vector<std::byte> lastBlock;  // for the "changed" flag
};

// What a client event does to an object.
enum class EventEffect : std::uint8_t {
    None,  // a private client event
    NavLights,
    BeaconLights,
    LandingLights,
    TaxiLights,
    Strobes,
    LogoLights,
    CabinLights,
    AllLightsToggle,
    Gear,
    Flaps,
    Spoilers,
    Throttle,
    EngineStart,
    EngineStop,
    FreezeLatLon,
    FreezeAltitude,
    FreezeAttitude,
};
struct MappedEvent {
    EventEffect effect = EventEffect::None;
    std::string name;  // as the simulator knows it
};
struct NotificationGroup {
    std::vector<DWORD> events;
    DWORD priority = SIMCONNECT_GROUP_PRIORITY_STANDARD;
};

struct Connection {
    std::string name;
    DWORD lastPacketId = 0;
    bool dead = false;  // the simulator quit: only dispatch and close still work
    bool overflowLogged = false;
    std::vector<Subscription> subscriptions;
    std::map<DWORD, DataDefinition> definitions;
    std::map<DWORD, MappedEvent> events;
    std::map<DWORD, NotificationGroup> groups;
    std::vector<DataRequest> requests;  // the periodic ones
    std::map<DWORD, std::vector<std::string>> facilityDefinitions;
    // Records waiting for SimConnect_CallDispatch, each at an 8-byte boundary.
    std::vector<std::byte> pending;
    std::vector<std::byte> spare;  // keeps its capacity between dispatches
};

// Where the simulator's own AI takes an object until the client releases it.
struct AiCourse {
    double lat_deg = 0, lon_deg = 0, alt_ft = 0, heading_deg = 0;
    double speed_kt = 0;
    bool onGround = false;
};

struct SimObject {
    DWORD objectId = 0;
    bool isUser = false;
    std::uintptr_t owner = 0;  // connection that created it; 0 for the user aircraft
    std::string title, atcModel, atcId;
    double lat_deg = 0, lon_deg = 0, alt_ft = 0;
    double pitch_deg = 0, bank_deg = 0, heading_deg = 0;
    double vs_fpm = 0, tas_kt = 0, gs_kt = 0, track_deg = 0;
    double staticCg_ft = 6, staticPitch_deg = 0;
    bool released = false;  // SimConnect_AIReleaseControl
    bool freezeLatLon = false, freezeAltitude = false, freezeAttitude = false;
    AiCourse ai;
    std::uint32_t lightsMask = 0;
    bool gearDown = true;
    double flaps_pct = 0, spoilers_pct = 0;
    std::array<double, 4> throttle_pct{};
    bool enginesRunning = false;
    std::string flightPlan;  // path of the last plan accepted
};

struct PendingCreate {
    std::int64_t due_us = 0;
    std::uintptr_t connection = 0;
    DWORD requestId = 0;
    DWORD packetId = 0;
    std::string title, tailNumber;
    SIMCONNECT_DATA_INITPOSITION init{};
};

struct SimWorld {
    BuiltinSimConfig config;
    Scenario scenario;
    std::vector<KnownTitle> knownTitles;

    bool running = false;  // the simulator process runs: SimConnect_Open works
    bool flightLoaded = false;
    bool paused = false;
    std::uint32_t flightCount = 0;

    std::int64_t now_us = 0;          // simulator clock
    std::int64_t frameOrigin_us = 0;  // frames fall on a grid from here
    std::int64_t frameCount = 0;
    std::int64_t nextFrame_us = 0;
    std::int64_t lastFrame_us = 0;
    std::int64_t nextSecond_us = 0;
    std::int64_t flightTime_us = 0;  // runs while a flight is loaded and not paused

    std::map<std::uintptr_t, Connection> connections;
    std::uintptr_t nextConnection = 1;
    std::map<DWORD, SimObject> objects;  // the user aircraft included
    DWORD nextObjectId = 1000;
    std::deque<DWORD> freedIds;     // removed objects' ids, oldest first, for reuse
    std::mt19937_64 random{7};      // the roughness, seeded by the scenario
    bool restartDone = false;       // the scenario's restart happens once
    std::int64_t comeBack_us = -1;  // after a scheduled restart: when it runs again
    std::vector<PendingCreate> creates;
    PositionRecorder recorder;
};

}  // namespace bsim
}  // namespace tfx
