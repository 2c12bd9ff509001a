// AI objects of the built-in simulator: creation by known titles after a
// delay, release of control, removal, flight plans, client events, and the
// simulator's own AI that moves what the client has not taken over.
#include <algorithm>
#include <cmath>
#include <filesystem>

#include "sim/builtin/builtin_sim.h"
#include "sim/builtin/builtin_sim_internal.h"
#include "sim/builtin/builtin_sim_terrain.h"

namespace tfx {

namespace {

using bsim::Connection;
using bsim::EventEffect;
using bsim::SimObject;
using bsim::SimWorld;

// "LIGHT STATES" bits.
constexpr std::uint32_t kNav = 0x1, kBeacon = 0x2, kLanding = 0x4, kTaxi = 0x8, kStrobe = 0x10,
                        kLogo = 0x100, kCabin = 0x200, kAllLights = 0x3FF;

const KnownTitle* lf_knownTitle(const SimWorld& world, std::string_view title) {
    for (const KnownTitle& t : world.knownTitles) {
        if (t.title == title) return &t;
    }
    return nullptr;
}

bool lf_validInit(const SIMCONNECT_DATA_INITPOSITION& p) {
    return std::isfinite(p.Latitude) && std::isfinite(p.Longitude) && std::isfinite(p.Altitude) &&
           std::isfinite(p.Pitch) && std::isfinite(p.Bank) && std::isfinite(p.Heading) &&
           std::abs(p.Latitude) <= 90 && std::abs(p.Longitude) <= 180;
}

SimObject lf_newObject(SimWorld& world, const bsim::PendingCreate& create,
                       const KnownTitle& known) {
    const bsim::StaticAttitude attitude = bsim::gf_staticAttitudeOf(known);
    const auto& init = create.init;
    SimObject o;
    o.objectId = bsim::gf_takeObjectId(world);
    o.owner = create.connection;
    o.title = create.title;
    o.atcModel = known.model;
    o.atcId = create.tailNumber;
    o.staticCg_ft = attitude.cg_ft;
    o.staticPitch_deg = attitude.pitch_deg;
    o.ai = {init.Latitude,
            init.Longitude,
            init.Altitude,
            init.Heading,
            static_cast<double>(init.Airspeed),
            init.OnGround != 0};
    o.lat_deg = init.Latitude;
    o.lon_deg = init.Longitude;
    o.heading_deg = init.Heading;
    o.track_deg = init.Heading;
    o.tas_kt = o.gs_kt = init.Airspeed;
    if (init.OnGround != 0) {  // the simulator sets it down on the ground
        o.alt_ft = o.ai.alt_ft =
            bsim::gf_groundAltitudeFt(world.scenario, o.lat_deg, o.lon_deg) + o.staticCg_ft;
        o.pitch_deg = o.staticPitch_deg;
    } else {
        o.alt_ft = init.Altitude;
        o.pitch_deg = init.Pitch;
        o.bank_deg = init.Bank;
        o.gearDown = false;
        o.enginesRunning = true;
    }
    return o;
}

void lf_create(SimWorld& world, const bsim::PendingCreate& create) {
    const auto it = world.connections.find(create.connection);
    if (it == world.connections.end() || it->second.dead) return;
    Connection& c = it->second;
    const KnownTitle* known = lf_knownTitle(world, create.title);
    if (known == nullptr || !lf_validInit(create.init) || !world.flightLoaded) {
        const DWORD index = known == nullptr ? 2 : !world.flightLoaded ? 1 : 4;
        bsim::gf_queueException(world, c, SIMCONNECT_EXCEPTION_CREATE_OBJECT_FAILED, index,
                                create.packetId);
        return;
    }
    const auto aiCount = world.objects.size() - 1;
    if (aiCount >= world.config.max_ai_objects) {
        bsim::gf_queueException(world, c, SIMCONNECT_EXCEPTION_TOO_MANY_OBJECTS, 1,
                                create.packetId);
        return;
    }
    SimObject o = lf_newObject(world, create, *known);
    const DWORD objectId = o.objectId;
    bsim::gf_recordFileLine(world.recorder, RecordKind::create, bsim::gf_recordedNow(world, o),
                            o.atcId);
    world.objects.emplace(objectId, std::move(o));
    bsim::gf_notifyObject(world, bsim::SystemEvent::ObjectAdded, objectId);
    auto* r = bsim::gf_newRecordOf<SIMCONNECT_RECV_ASSIGNED_OBJECT_ID>(
        world, c, SIMCONNECT_RECV_ID_ASSIGNED_OBJECT_ID);
    if (r != nullptr) {
        r->dwRequestID = create.requestId;
        r->dwObjectID = objectId;
    }
}

double lf_percentOf(DWORD value) {
    return static_cast<double>(static_cast<std::int32_t>(value)) * 100.0 / 16383.0;
}

// The light mask bit of each light event, NavLights to CabinLights in order.
std::uint32_t lf_lightBit(EventEffect effect) {
    constexpr std::uint32_t LIGHT_BITS[] = {kNav, kBeacon, kLanding, kTaxi, kStrobe, kLogo, kCabin};
    return LIGHT_BITS[static_cast<std::size_t>(effect) -
                      static_cast<std::size_t>(EventEffect::NavLights)];
}

void lf_setLight(SimObject& o, std::uint32_t bit, DWORD value) {
    o.lightsMask = value != 0 ? (o.lightsMask | bit) : (o.lightsMask & ~bit);
}

void lf_applyEvent(SimObject& o, EventEffect effect, DWORD value) {
    switch (effect) {
        case EventEffect::None:
            break;
        case EventEffect::NavLights:
        case EventEffect::BeaconLights:
        case EventEffect::LandingLights:
        case EventEffect::TaxiLights:
        case EventEffect::Strobes:
        case EventEffect::LogoLights:
        case EventEffect::CabinLights:
            lf_setLight(o, lf_lightBit(effect), value);
            break;
        case EventEffect::AllLightsToggle:
            o.lightsMask = o.lightsMask != 0 ? 0 : kAllLights;
            break;
        case EventEffect::Gear:
            o.gearDown = value != 0;
            break;
        case EventEffect::Flaps:
            o.flaps_pct = std::clamp(lf_percentOf(value), 0.0, 100.0);
            break;
        case EventEffect::Spoilers:
            o.spoilers_pct = std::clamp(lf_percentOf(value), 0.0, 100.0);
            break;
        case EventEffect::Throttle:
            o.throttle_pct.fill(std::clamp(lf_percentOf(value), -100.0, 100.0));
            break;
        case EventEffect::EngineStart:
            o.enginesRunning = true;
            break;
        case EventEffect::EngineStop:
            o.enginesRunning = false;
            break;
        case EventEffect::FreezeLatLon:
            o.freezeLatLon = value != 0;
            break;
        case EventEffect::FreezeAltitude:
            o.freezeAltitude = value != 0;
            break;
        case EventEffect::FreezeAttitude:
            o.freezeAttitude = value != 0;
            break;
    }
}

// The AI object an operation names; the user aircraft and unknown ids are
// refused with an exception record naming the object argument.
SimObject* lf_aiObjectOrRefuse(bsim::SimWorld& world, bsim::Connection& c,
                               SIMCONNECT_OBJECT_ID objectId) {
    SimObject* o = bsim::gf_findObject(world, objectId);
    if (o != nullptr && !o->isUser) return o;
    bsim::gf_queueException(world, c,
                            o == nullptr ? SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID
                                         : SIMCONNECT_EXCEPTION_OPERATION_INVALID_FOR_OBJECT_TYPE,
                            2);
    return nullptr;
}

std::filesystem::path lf_utf8Path(const char* text) {
    const std::u8string_view view(reinterpret_cast<const char8_t*>(text));
    return std::filesystem::path(view);
}

}  // namespace

namespace bsim {

SimObject& gf_userAircraft(SimWorld& world) {
    return world.objects[world.config.user_object_id];
}

SimObject* gf_findObject(SimWorld& world, DWORD objectId) {
    if (objectId == SIMCONNECT_OBJECT_ID_USER) return &gf_userAircraft(world);
    const auto it = world.objects.find(objectId);
    return it == world.objects.end() ? nullptr : &it->second;
}

void gf_completeDueCreates(SimWorld& world) {
    std::vector<PendingCreate> due;
    std::erase_if(world.creates, [&](PendingCreate& p) {
        if (p.due_us > world.now_us) return false;
        due.push_back(std::move(p));
        return true;
    });
    for (const PendingCreate& p : due) lf_create(world, p);
}

void gf_steerAiObjects(SimWorld& world, double dt_s) {
    for (auto& [id, o] : world.objects) {
        if (o.isUser || o.released) continue;
        AiCourse& ai = o.ai;
        if (ai.speed_kt > 0)
            gf_moveAlong(ai.lat_deg, ai.lon_deg, ai.heading_deg, ai.speed_kt * dt_s / 3600);
        if (ai.onGround)
            ai.alt_ft = gf_groundAltitudeFt(world.scenario, ai.lat_deg, ai.lon_deg) + o.staticCg_ft;
        if (!o.freezeLatLon) {
            o.lat_deg = ai.lat_deg;
            o.lon_deg = ai.lon_deg;
        }
        if (!o.freezeAltitude) o.alt_ft = ai.alt_ft;
        if (!o.freezeAttitude) {
            o.heading_deg = ai.heading_deg;
            o.pitch_deg = ai.onGround ? o.staticPitch_deg : 0;
            o.bank_deg = 0;
        }
        o.tas_kt = o.gs_kt = ai.speed_kt;
        o.track_deg = ai.heading_deg;
    }
}

void gf_removeObject(SimWorld& world, DWORD objectId) {
    const auto it = world.objects.find(objectId);
    if (it == world.objects.end()) return;
    gf_recordFileLine(world.recorder, RecordKind::remove, gf_recordedNow(world, it->second));
    world.objects.erase(it);
    gf_freeObjectId(world, objectId);
    gf_notifyObject(world, SystemEvent::ObjectRemoved, objectId);
}

void gf_removeAiObjects(SimWorld& world, std::uintptr_t owner) {
    std::vector<DWORD> gone;
    for (const auto& [id, o] : world.objects) {
        if (!o.isUser && (owner == 0 || o.owner == owner)) gone.push_back(id);
    }
    for (const DWORD id : gone) gf_removeObject(world, id);
}

}  // namespace bsim

HRESULT BuiltinSim::SimConnect_AICreateNonATCAircraft(HANDLE hSimConnect,
                                                      const char* szContainerTitle,
                                                      const char* szTailNumber,
                                                      SIMCONNECT_DATA_INITPOSITION InitPos,
                                                      SIMCONNECT_DATA_REQUEST_ID RequestID) {
    if (szContainerTitle == nullptr || szTailNumber == nullptr) return E_INVALIDARG;
    std::lock_guard lock(mutex_);
    Connection* c = sending(hSimConnect);
    if (c == nullptr) return E_FAIL;
    // The answer, an object or a refusal, comes after the simulator's delay,
    // which varies, so that answers overtake one another; some never come.
    const auto delay_us = bsim::gf_createAnswerDelay_us(world_);
    if (!delay_us) return S_OK;
    world_.creates.push_back({world_.now_us + *delay_us,
                              reinterpret_cast<std::uintptr_t>(hSimConnect), RequestID,
                              c->lastPacketId, szContainerTitle, szTailNumber, InitPos});
    return S_OK;
}

HRESULT BuiltinSim::SimConnect_AIReleaseControl(HANDLE hSimConnect, SIMCONNECT_OBJECT_ID ObjectID,
                                                SIMCONNECT_DATA_REQUEST_ID) {
    std::lock_guard lock(mutex_);
    Connection* c = sending(hSimConnect);
    if (c == nullptr) return E_FAIL;
    SimObject* o = lf_aiObjectOrRefuse(world_, *c, ObjectID);
    if (o == nullptr) return S_OK;
    o->released = true;
    return S_OK;
}

HRESULT BuiltinSim::SimConnect_AIRemoveObject(HANDLE hSimConnect, SIMCONNECT_OBJECT_ID ObjectID,
                                              SIMCONNECT_DATA_REQUEST_ID) {
    std::lock_guard lock(mutex_);
    Connection* c = sending(hSimConnect);
    if (c == nullptr) return E_FAIL;
    SimObject* o = lf_aiObjectOrRefuse(world_, *c, ObjectID);
    if (o == nullptr) return S_OK;
    bsim::gf_removeObject(world_, ObjectID);
    return S_OK;
}

HRESULT BuiltinSim::SimConnect_AISetAircraftFlightPlan(HANDLE hSimConnect,
                                                       SIMCONNECT_OBJECT_ID ObjectID,
                                                       const char* szFlightPlanPath,
                                                       SIMCONNECT_DATA_REQUEST_ID) {
    if (szFlightPlanPath == nullptr) return E_INVALIDARG;
    std::lock_guard lock(mutex_);
    Connection* c = sending(hSimConnect);
    if (c == nullptr) return E_FAIL;
    SimObject* o = lf_aiObjectOrRefuse(world_, *c, ObjectID);
    if (o == nullptr) return S_OK;
    // The simulator takes the path with or without its ".pln".
    std::filesystem::path path = lf_utf8Path(szFlightPlanPath);
    std::error_code ec;
    if (!std::filesystem::is_regular_file(path, ec)) path += ".pln";
    if (!std::filesystem::is_regular_file(path, ec)) {
        bsim::gf_queueException(world_, *c, SIMCONNECT_EXCEPTION_LOAD_FLIGHTPLAN_FAILED, 3);
        return S_OK;
    }
    o->flightPlan = szFlightPlanPath;
    return S_OK;
}

HRESULT BuiltinSim::SimConnect_TransmitClientEvent(HANDLE hSimConnect,
                                                   SIMCONNECT_OBJECT_ID ObjectID,
                                                   SIMCONNECT_CLIENT_EVENT_ID EventID, DWORD dwData,
                                                   SIMCONNECT_NOTIFICATION_GROUP_ID,
                                                   SIMCONNECT_EVENT_FLAG) {
    std::lock_guard lock(mutex_);
    Connection* c = sending(hSimConnect);
    if (c == nullptr) return E_FAIL;
    const auto mapped = c->events.find(EventID);
    if (mapped == c->events.end()) {
        bsim::gf_queueException(world_, *c, SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID, 3);
        return S_OK;
    }
    SimObject* o = bsim::gf_findObject(world_, ObjectID);
    if (o == nullptr) {
        bsim::gf_queueException(world_, *c, SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID, 2);
        return S_OK;
    }
    lf_applyEvent(*o, mapped->second.effect, dwData);
    bsim::gf_countEvent(world_.recorder, o->objectId, mapped->second.name);
    return S_OK;
}

}  // namespace tfx
