// Connections of the built-in simulator: open and close, the record queue
// and its dispatch, system events, client event maps and groups, and the
// facility requests.
#include <algorithm>
#include <cctype>
#include <cstring>

#include <fmt/format.h>

#include "app/log.h"
#include "sim/builtin/builtin_sim.h"
#include "sim/builtin/builtin_sim_internal.h"

namespace tfx {

namespace {

using bsim::Connection;
using bsim::EventEffect;
using bsim::SystemEvent;

bool lf_sameText(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) ==
                      std::tolower(static_cast<unsigned char>(y));
           });
}

struct SystemEventEntry {
    std::string_view name;
    SystemEvent kind;
};
constexpr SystemEventEntry kSystemEvents[] = {
    {"Sim", SystemEvent::Sim},
    {"SimStart", SystemEvent::SimStart},
    {"SimStop", SystemEvent::SimStop},
    {"Pause", SystemEvent::Pause},
    {"ObjectAdded", SystemEvent::ObjectAdded},
    {"ObjectRemoved", SystemEvent::ObjectRemoved},
    {"FlightLoaded", SystemEvent::FlightLoaded},
    {"Frame", SystemEvent::Frame},
    {"1sec", SystemEvent::OneSecond},
};

struct SimEventEntry {
    std::string_view name;
    EventEffect effect;
};
constexpr SimEventEntry kSimEvents[] = {
    {"NAV_LIGHTS_SET", EventEffect::NavLights},
    {"BEACON_LIGHTS_SET", EventEffect::BeaconLights},
    {"LANDING_LIGHTS_SET", EventEffect::LandingLights},
    {"TAXI_LIGHTS_SET", EventEffect::TaxiLights},
    {"STROBES_SET", EventEffect::Strobes},
    {"LOGO_LIGHTS_SET", EventEffect::LogoLights},
    {"CABIN_LIGHTS_SET", EventEffect::CabinLights},
    {"ALL_LIGHTS_TOGGLE", EventEffect::AllLightsToggle},
    {"GEAR_SET", EventEffect::Gear},
    {"FLAPS_SET", EventEffect::Flaps},
    {"SPOILERS_SET", EventEffect::Spoilers},
    {"THROTTLE_SET", EventEffect::Throttle},
    {"ENGINE_AUTO_START", EventEffect::EngineStart},
    {"ENGINE_AUTO_SHUTDOWN", EventEffect::EngineStop},
    {"FREEZE_LATITUDE_LONGITUDE_SET", EventEffect::FreezeLatLon},
    {"FREEZE_ALTITUDE_SET", EventEffect::FreezeAltitude},
    {"FREEZE_ATTITUDE_SET", EventEffect::FreezeAttitude},
};

constexpr std::size_t lf_padded(std::size_t bytes) {
    return (bytes + 7) & ~std::size_t{7};
}

void lf_copyText(char* to, std::size_t capacity, std::string_view text) {
    const std::size_t n = std::min(text.size(), capacity - 1);
    std::memcpy(to, text.data(), n);
    to[n] = '\0';
}

}  // namespace

namespace bsim {

SIMCONNECT_RECV* gf_newRecord(SimWorld& world, Connection& connection, DWORD id,
                              std::size_t bytes) {
    const std::size_t at = connection.pending.size();
    if (at + lf_padded(bytes) > world.config.max_queued_bytes) {
        if (!connection.overflowLogged) {
            gf_logError(
                fmt::format("Built-in simulator: client \"{}\" does not dispatch, records "
                            "are dropped",
                            connection.name));
            connection.overflowLogged = true;
        }
        return nullptr;
    }
    connection.pending.resize(at + lf_padded(bytes), std::byte{0});
    auto* record = reinterpret_cast<SIMCONNECT_RECV*>(connection.pending.data() + at);
    record->dwSize = static_cast<DWORD>(bytes);
    record->dwVersion = world.config.simconnect_version[0];
    record->dwID = id;
    return record;
}

void gf_queueException(SimWorld& world, Connection& connection, SIMCONNECT_EXCEPTION exception,
                       DWORD index, DWORD sendId) {
    auto* r =
        gf_newRecordOf<SIMCONNECT_RECV_EXCEPTION>(world, connection, SIMCONNECT_RECV_ID_EXCEPTION);
    if (r == nullptr) return;
    r->dwException = exception;
    r->dwSendID = sendId != 0 ? sendId : connection.lastPacketId;
    r->dwIndex = index;
}

void gf_notify(SimWorld& world, SystemEvent kind, DWORD data) {
    for (auto& [id, connection] : world.connections) {
        if (connection.dead) continue;
        for (const Subscription& s : connection.subscriptions) {
            if (s.kind != kind) continue;
            auto* r =
                gf_newRecordOf<SIMCONNECT_RECV_EVENT>(world, connection, SIMCONNECT_RECV_ID_EVENT);
            if (r == nullptr) continue;
            r->uGroupID = SIMCONNECT_UNUSED;
            r->uEventID = s.eventId;
            r->dwData = data;
        }
    }
}

void gf_notifyObject(SimWorld& world, SystemEvent kind, DWORD objectId) {
    for (auto& [id, connection] : world.connections) {
        if (connection.dead) continue;
        for (const Subscription& s : connection.subscriptions) {
            if (s.kind != kind) continue;
            auto* r = gf_newRecordOf<SIMCONNECT_RECV_EVENT_OBJECT_ADDREMOVE>(
                world, connection, SIMCONNECT_RECV_ID_EVENT_OBJECT_ADDREMOVE);
            if (r == nullptr) continue;
            r->uGroupID = SIMCONNECT_UNUSED;
            r->uEventID = s.eventId;
            r->dwData = objectId;
            r->eObjType = SIMCONNECT_SIMOBJECT_TYPE_AIRCRAFT;
        }
    }
}

void gf_notifyFlightLoaded(SimWorld& world, std::string_view fileName) {
    for (auto& [id, connection] : world.connections) {
        if (connection.dead) continue;
        for (const Subscription& s : connection.subscriptions) {
            if (s.kind != SystemEvent::FlightLoaded) continue;
            auto* r = gf_newRecordOf<SIMCONNECT_RECV_EVENT_FILENAME>(
                world, connection, SIMCONNECT_RECV_ID_EVENT_FILENAME);
            if (r == nullptr) continue;
            r->uGroupID = SIMCONNECT_UNUSED;
            r->uEventID = s.eventId;
            lf_copyText(r->szFileName, sizeof r->szFileName, fileName);
        }
    }
}

void gf_notifyFrame(SimWorld& world) {
    const bool simulating = world.flightLoaded && !world.paused;
    for (auto& [id, connection] : world.connections) {
        if (connection.dead) continue;
        for (const Subscription& s : connection.subscriptions) {
            if (s.kind != SystemEvent::Frame) continue;
            auto* r = gf_newRecordOf<SIMCONNECT_RECV_EVENT_FRAME>(world, connection,
                                                                  SIMCONNECT_RECV_ID_EVENT_FRAME);
            if (r == nullptr) continue;
            r->uGroupID = SIMCONNECT_UNUSED;
            r->uEventID = s.eventId;
            r->fFrameRate = static_cast<float>(world.config.frame_rate_hz);
            r->fSimSpeed = simulating ? 1.0f : 0.0f;
        }
    }
}

}  // namespace bsim

bsim::Connection* BuiltinSim::sending(HANDLE handle) {
    const auto it = world_.connections.find(reinterpret_cast<std::uintptr_t>(handle));
    if (it == world_.connections.end() || it->second.dead) return nullptr;
    ++it->second.lastPacketId;
    return &it->second;
}

HRESULT BuiltinSim::SimConnect_Open(HANDLE* phSimConnect, LPCSTR szName, HWND, DWORD, HANDLE,
                                    DWORD ConfigIndex) {
    if (phSimConnect == nullptr) return E_INVALIDARG;
    *phSimConnect = nullptr;
    std::lock_guard lock(mutex_);
    if (!world_.running || ConfigIndex != 0) return E_FAIL;
    const std::uintptr_t id = world_.nextConnection++;
    Connection& c = world_.connections[id];
    c.name = szName != nullptr ? szName : "";
    c.lastPacketId = 1;
    auto* r = bsim::gf_newRecordOf<SIMCONNECT_RECV_OPEN>(world_, c, SIMCONNECT_RECV_ID_OPEN);
    *phSimConnect = reinterpret_cast<HANDLE>(id);
    if (r == nullptr) return S_OK;
    lf_copyText(r->szApplicationName, sizeof r->szApplicationName, world_.config.application_name);
    const auto& app = world_.config.application_version;
    const auto& sc = world_.config.simconnect_version;
    r->dwApplicationVersionMajor = app[0];
    r->dwApplicationVersionMinor = app[1];
    r->dwApplicationBuildMajor = app[2];
    r->dwApplicationBuildMinor = app[3];
    r->dwSimConnectVersionMajor = sc[0];
    r->dwSimConnectVersionMinor = sc[1];
    r->dwSimConnectBuildMajor = sc[2];
    r->dwSimConnectBuildMinor = sc[3];
    return S_OK;
}

HRESULT BuiltinSim::SimConnect_Close(HANDLE hSimConnect) {
    std::lock_guard lock(mutex_);
    const auto id = reinterpret_cast<std::uintptr_t>(hSimConnect);
    if (world_.connections.erase(id) == 0) return E_FAIL;
    // The simulator drops what a client created when the client goes.
    bsim::gf_removeAiObjects(world_, id);
    std::erase_if(world_.creates,
                  [id](const bsim::PendingCreate& p) { return p.connection == id; });
    return S_OK;
}

HRESULT BuiltinSim::SimConnect_CallDispatch(HANDLE hSimConnect, DispatchProc pfcnDispatch,
                                            void* pContext) {
    if (pfcnDispatch == nullptr) return E_INVALIDARG;
    const auto id = reinterpret_cast<std::uintptr_t>(hSimConnect);
    std::vector<std::byte> batch;
    {
        std::lock_guard lock(mutex_);
        const auto it = world_.connections.find(id);
        if (it == world_.connections.end()) return E_FAIL;
        Connection& c = it->second;
        if (c.pending.empty()) return c.dead ? E_FAIL : S_OK;
        batch.swap(c.pending);
        c.pending.swap(c.spare);
        c.overflowLogged = false;
    }
    // The lock is free while the client handles records: it may call back in.
    std::size_t at = 0;
    try {
        while (at < batch.size()) {
            auto* record = reinterpret_cast<SIMCONNECT_RECV*>(batch.data() + at);
            const DWORD size = record->dwSize;
            at += lf_padded(size);
            pfcnDispatch(record, size, pContext);
        }
    } catch (...) {
        // What the client has not seen yet waits for its next dispatch.
        std::lock_guard lock(mutex_);
        if (const auto it = world_.connections.find(id); it != world_.connections.end()) {
            auto& pending = it->second.pending;
            pending.insert(pending.begin(), batch.begin() + static_cast<std::ptrdiff_t>(at),
                           batch.end());
        }
        throw;
    }
    std::lock_guard lock(mutex_);
    if (const auto it = world_.connections.find(id); it != world_.connections.end()) {
        batch.clear();
        it->second.spare.swap(batch);
    }
    return S_OK;
}

HRESULT BuiltinSim::SimConnect_GetLastSentPacketID(HANDLE hSimConnect, DWORD* pdwSendID) {
    if (pdwSendID == nullptr) return E_INVALIDARG;
    std::lock_guard lock(mutex_);
    const auto it = world_.connections.find(reinterpret_cast<std::uintptr_t>(hSimConnect));
    if (it == world_.connections.end() || it->second.dead) return E_FAIL;
    *pdwSendID = it->second.lastPacketId;
    return S_OK;
}

HRESULT BuiltinSim::SimConnect_SubscribeToSystemEvent(HANDLE hSimConnect,
                                                      SIMCONNECT_CLIENT_EVENT_ID EventID,
                                                      const char* SystemEventName) {
    if (SystemEventName == nullptr) return E_INVALIDARG;
    std::lock_guard lock(mutex_);
    Connection* c = sending(hSimConnect);
    if (c == nullptr) return E_FAIL;
    const auto known = std::find_if(
        std::begin(kSystemEvents), std::end(kSystemEvents),
        [&](const SystemEventEntry& e) { return lf_sameText(e.name, SystemEventName); });
    if (known == std::end(kSystemEvents)) {
        bsim::gf_queueException(world_, *c, SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED, 3);
        return S_OK;
    }
    std::erase_if(c->subscriptions,
                  [&](const bsim::Subscription& s) { return s.eventId == EventID; });
    c->subscriptions.push_back({EventID, known->kind});
    if (known->kind == SystemEvent::Sim) {  // the state as it stands comes at once
        auto* r = bsim::gf_newRecordOf<SIMCONNECT_RECV_EVENT>(world_, *c, SIMCONNECT_RECV_ID_EVENT);
        if (r != nullptr) {
            r->uGroupID = SIMCONNECT_UNUSED;
            r->uEventID = EventID;
            r->dwData = world_.flightLoaded && !world_.paused ? 1 : 0;
        }
    }
    return S_OK;
}

HRESULT BuiltinSim::SimConnect_MapClientEventToSimEvent(HANDLE hSimConnect,
                                                        SIMCONNECT_CLIENT_EVENT_ID EventID,
                                                        const char* EventName) {
    std::lock_guard lock(mutex_);
    Connection* c = sending(hSimConnect);
    if (c == nullptr) return E_FAIL;
    if (c->events.contains(EventID)) {
        bsim::gf_queueException(world_, *c, SIMCONNECT_EXCEPTION_EVENT_ID_DUPLICATE, 2);
        return S_OK;
    }
    const std::string_view name = EventName != nullptr ? EventName : "";
    bsim::MappedEvent mapped;
    if (!name.empty()) {
        const auto known =
            std::find_if(std::begin(kSimEvents), std::end(kSimEvents),
                         [&](const SimEventEntry& e) { return lf_sameText(e.name, name); });
        if (known == std::end(kSimEvents)) {
            bsim::gf_queueException(world_, *c, SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED, 3);
            return S_OK;
        }
        mapped = {known->effect, std::string(known->name)};
    }
    c->events.emplace(EventID, std::move(mapped));
    return S_OK;
}

HRESULT BuiltinSim::SimConnect_AddClientEventToNotificationGroup(
    HANDLE hSimConnect, SIMCONNECT_NOTIFICATION_GROUP_ID GroupID,
    SIMCONNECT_CLIENT_EVENT_ID EventID, BOOL) {
    std::lock_guard lock(mutex_);
    Connection* c = sending(hSimConnect);
    if (c == nullptr) return E_FAIL;
    if (!c->events.contains(EventID)) {
        bsim::gf_queueException(world_, *c, SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID, 3);
        return S_OK;
    }
    auto& events = c->groups[GroupID].events;
    if (std::find(events.begin(), events.end(), EventID) == events.end()) events.push_back(EventID);
    return S_OK;
}

HRESULT BuiltinSim::SimConnect_SetNotificationGroupPriority(
    HANDLE hSimConnect, SIMCONNECT_NOTIFICATION_GROUP_ID GroupID, DWORD uPriority) {
    std::lock_guard lock(mutex_);
    Connection* c = sending(hSimConnect);
    if (c == nullptr) return E_FAIL;
    const auto it = c->groups.find(GroupID);
    if (it == c->groups.end()) {
        bsim::gf_queueException(world_, *c, SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID, 2);
        return S_OK;
    }
    it->second.priority = uPriority;
    return S_OK;
}

HRESULT BuiltinSim::SimConnect_AddToFacilityDefinition(HANDLE hSimConnect,
                                                       SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                                       const char* FieldName) {
    if (FieldName == nullptr) return E_INVALIDARG;
    std::lock_guard lock(mutex_);
    Connection* c = sending(hSimConnect);
    if (c == nullptr) return E_FAIL;
    c->facilityDefinitions[DefineID].emplace_back(FieldName);
    return S_OK;
}

// No facility data yet: a known definition gets the end record alone, as for
// an airport the simulator does not have.
HRESULT BuiltinSim::SimConnect_RequestFacilityData(HANDLE hSimConnect,
                                                   SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                                   SIMCONNECT_DATA_REQUEST_ID RequestID,
                                                   const char* ICAO, const char*) {
    if (ICAO == nullptr) return E_INVALIDARG;
    std::lock_guard lock(mutex_);
    Connection* c = sending(hSimConnect);
    if (c == nullptr) return E_FAIL;
    if (!c->facilityDefinitions.contains(DefineID)) {
        bsim::gf_queueException(world_, *c, SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID, 2);
        return S_OK;
    }
    auto* r = bsim::gf_newRecordOf<SIMCONNECT_RECV_FACILITY_DATA_END>(
        world_, *c, SIMCONNECT_RECV_ID_FACILITY_DATA_END);
    if (r != nullptr) r->RequestId = RequestID;
    return S_OK;
}

}  // namespace tfx
