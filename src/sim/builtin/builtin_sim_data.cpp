// Data definitions of the built-in simulator: declaring them, answering
// requests with blocks in the declared order, and setting data on objects.
#include <algorithm>
#include <cstring>

#include "sim/builtin/builtin_sim.h"
#include "sim/builtin/builtin_sim_internal.h"
#include "sim/builtin/builtin_sim_terrain.h"
#include "sim/builtin/builtin_sim_vars.h"

namespace tfx {

namespace {

using bsim::Connection;
using bsim::DataDefinition;
using bsim::SimObject;
using bsim::SimWorld;

constexpr DWORD kMaxRadius_m = 200000;  // what the simulator searches at most

bsim::VarContext lf_context(const SimWorld& world, const SimObject& object) {
    return {object, bsim::gf_groundAltitudeFt(world.scenario, object.lat_deg, object.lon_deg),
            static_cast<double>(world.scenario.start_utc_s) +
                static_cast<double>(world.flightTime_us) / 1e6,
            world.scenario.rough.pressure_offset_ft};
}

// One data record; with lastBlock and the "changed" flag, only when the block
// differs from the one sent before.
void lf_sendData(SimWorld& world, Connection& connection, DWORD recvId, DWORD requestId,
                 DWORD defineId, const DataDefinition& definition, const SimObject& object,
                 DWORD flags, DWORD entry, DWORD outOf, std::vector<std::byte>* lastBlock) {
    std::vector<std::byte> block;
    block.reserve(definition.fixedBytes + 64);
    bsim::gf_writeBlock(definition, lf_context(world, object), block);
    if (lastBlock != nullptr) {
        if ((flags & SIMCONNECT_DATA_REQUEST_FLAG_CHANGED) != 0 && *lastBlock == block) return;
        *lastBlock = block;
    }
    SIMCONNECT_RECV* raw =
        bsim::gf_newRecord(world, connection, recvId, SIMOBJECT_DATA_OFFSET + block.size());
    if (raw == nullptr) return;
    auto* r = static_cast<SIMCONNECT_RECV_SIMOBJECT_DATA*>(raw);
    r->dwRequestID = requestId;
    r->dwObjectID = object.objectId;
    r->dwDefineID = defineId;
    r->dwFlags = flags;
    r->dwentrynumber = entry;
    r->dwoutof = outOf;
    r->dwDefineCount = static_cast<DWORD>(definition.items.size());
    if (!block.empty()) {
        std::memcpy(reinterpret_cast<std::byte*>(raw) + SIMOBJECT_DATA_OFFSET, block.data(),
                    block.size());
    }
}

}  // namespace

namespace bsim {

void gf_servePeriodicRequests(SimWorld& world, bool secondBoundary) {
    const bool simulating = world.flightLoaded && !world.paused;
    for (auto& [id, connection] : world.connections) {
        if (connection.dead) continue;
        bool anyGone = false;
        for (DataRequest& request : connection.requests) {
            const bool due = request.period == SIMCONNECT_PERIOD_VISUAL_FRAME ||
                             (request.period == SIMCONNECT_PERIOD_SIM_FRAME && simulating) ||
                             (request.period == SIMCONNECT_PERIOD_SECOND && secondBoundary);
            if (!due) continue;
            const SimObject* object = gf_findObject(world, request.objectId);
            const auto definition = connection.definitions.find(request.defineId);
            if (object == nullptr || definition == connection.definitions.end()) {
                request.period = SIMCONNECT_PERIOD_NEVER;  // its object is gone
                anyGone = true;
                continue;
            }
            lf_sendData(world, connection, SIMCONNECT_RECV_ID_SIMOBJECT_DATA, request.requestId,
                        request.defineId, definition->second, *object, request.flags, 1, 1,
                        &request.lastBlock);
        }
        if (anyGone) {
            std::erase_if(connection.requests,
                          [](const DataRequest& r) { return r.period == SIMCONNECT_PERIOD_NEVER; });
        }
    }
}

}  // namespace bsim

HRESULT BuiltinSim::SimConnect_AddToDataDefinition(HANDLE hSimConnect,
                                                   SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                                   const char* DatumName, const char* UnitsName,
                                                   SIMCONNECT_DATATYPE DatumType, float, DWORD) {
    if (DatumName == nullptr) return E_INVALIDARG;
    std::lock_guard lock(mutex_);
    Connection* c = sending(hSimConnect);
    if (c == nullptr) return E_FAIL;
    const auto var = bsim::gf_findVar(DatumName);
    if (!var) {
        bsim::gf_queueException(world_, *c, SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED, 3);
        return S_OK;
    }
    const bsim::SimVarInfo& info = bsim::gf_varInfo(var->var);
    const auto bytes = bsim::gf_datatypeBytes(DatumType);
    const bool textType = DatumType >= SIMCONNECT_DATATYPE_STRING8;
    if (!bytes || textType != (info.family == bsim::VarFamily::Text)) {
        bsim::gf_queueException(world_, *c, SIMCONNECT_EXCEPTION_INVALID_DATA_TYPE, 5);
        return S_OK;
    }
    const auto factor = bsim::gf_unitFactor(info.family, UnitsName != nullptr ? UnitsName : "");
    if (!factor) {
        bsim::gf_queueException(world_, *c, SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED, 4);
        return S_OK;
    }
    DataDefinition& definition = c->definitions[DefineID];
    definition.items.push_back({var->var, var->index, DatumType, *factor, *bytes});
    definition.fixedBytes += *bytes;
    definition.variableSize = definition.variableSize || *bytes == 0;
    definition.setsPosition =
        definition.setsPosition || info.name == "PLANE LATITUDE" || info.name == "PLANE LONGITUDE";
    return S_OK;
}

HRESULT BuiltinSim::SimConnect_RequestDataOnSimObject(
    HANDLE hSimConnect, SIMCONNECT_DATA_REQUEST_ID RequestID,
    SIMCONNECT_DATA_DEFINITION_ID DefineID, SIMCONNECT_OBJECT_ID ObjectID, SIMCONNECT_PERIOD Period,
    SIMCONNECT_DATA_REQUEST_FLAG Flags, DWORD, DWORD, DWORD) {
    std::lock_guard lock(mutex_);
    Connection* c = sending(hSimConnect);
    if (c == nullptr) return E_FAIL;
    const auto definition = c->definitions.find(DefineID);
    if (definition == c->definitions.end()) {
        bsim::gf_queueException(world_, *c, SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID, 3);
        return S_OK;
    }
    const SimObject* object = bsim::gf_findObject(world_, ObjectID);
    if (object == nullptr) {
        bsim::gf_queueException(world_, *c, SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID, 4);
        return S_OK;
    }
    if (Period > SIMCONNECT_PERIOD_SECOND) {
        bsim::gf_queueException(world_, *c, SIMCONNECT_EXCEPTION_INVALID_ENUM, 5);
        return S_OK;
    }
    if ((Flags & SIMCONNECT_DATA_REQUEST_FLAG_TAGGED) != 0) {  // not offered here
        bsim::gf_queueException(world_, *c, SIMCONNECT_EXCEPTION_ILLEGAL_OPERATION, 6);
        return S_OK;
    }
    // A request id stands for one request: a new one replaces the old.
    std::erase_if(c->requests,
                  [&](const bsim::DataRequest& r) { return r.requestId == RequestID; });
    if (Period == SIMCONNECT_PERIOD_ONCE) {
        lf_sendData(world_, *c, SIMCONNECT_RECV_ID_SIMOBJECT_DATA, RequestID, DefineID,
                    definition->second, *object, Flags, 1, 1, nullptr);
    } else if (Period != SIMCONNECT_PERIOD_NEVER) {
        c->requests.push_back({RequestID, DefineID, ObjectID, Period, Flags, {}});
    }
    return S_OK;
}

HRESULT BuiltinSim::SimConnect_RequestDataOnSimObjectType(HANDLE hSimConnect,
                                                          SIMCONNECT_DATA_REQUEST_ID RequestID,
                                                          SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                                          DWORD dwRadiusMeters,
                                                          SIMCONNECT_SIMOBJECT_TYPE type) {
    std::lock_guard lock(mutex_);
    Connection* c = sending(hSimConnect);
    if (c == nullptr) return E_FAIL;
    const auto definition = c->definitions.find(DefineID);
    if (definition == c->definitions.end()) {
        bsim::gf_queueException(world_, *c, SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID, 3);
        return S_OK;
    }
    if (type > SIMCONNECT_SIMOBJECT_TYPE_GROUND) {
        bsim::gf_queueException(world_, *c, SIMCONNECT_EXCEPTION_INVALID_ENUM, 5);
        return S_OK;
    }
    // Every object here is an aircraft: the user's first, then the AI in order.
    std::vector<const SimObject*> found;
    const SimObject& user = bsim::gf_userAircraft(world_);
    const bool aircraft =
        type == SIMCONNECT_SIMOBJECT_TYPE_ALL || type == SIMCONNECT_SIMOBJECT_TYPE_AIRCRAFT;
    if (aircraft || type == SIMCONNECT_SIMOBJECT_TYPE_USER) found.push_back(&user);
    const double radius_nm = std::min(dwRadiusMeters, kMaxRadius_m) / 1852.0;
    for (const auto& [id, object] : world_.objects) {
        if (!aircraft || object.isUser) continue;
        if (bsim::gf_greatCircleNm(user.lat_deg, user.lon_deg, object.lat_deg, object.lon_deg) <=
            radius_nm) {
            found.push_back(&object);
        }
    }
    const auto outOf = static_cast<DWORD>(found.size());
    for (DWORD i = 0; i < outOf; ++i) {
        lf_sendData(world_, *c, SIMCONNECT_RECV_ID_SIMOBJECT_DATA_BYTYPE, RequestID, DefineID,
                    definition->second, *found[i], 0, i + 1, outOf, nullptr);
    }
    return S_OK;
}

HRESULT BuiltinSim::SimConnect_SetDataOnSimObject(HANDLE hSimConnect,
                                                  SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                                  SIMCONNECT_OBJECT_ID ObjectID,
                                                  SIMCONNECT_DATA_SET_FLAG, DWORD ArrayCount,
                                                  DWORD cbUnitSize, void* pDataSet) {
    if (pDataSet == nullptr) return E_INVALIDARG;
    std::lock_guard lock(mutex_);
    Connection* c = sending(hSimConnect);
    if (c == nullptr) return E_FAIL;
    const auto definition = c->definitions.find(DefineID);
    if (definition == c->definitions.end()) {
        bsim::gf_queueException(world_, *c, SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID, 2);
        return S_OK;
    }
    SimObject* object = bsim::gf_findObject(world_, ObjectID);
    if (object == nullptr) {
        bsim::gf_queueException(world_, *c, SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID, 3);
        return S_OK;
    }
    const DataDefinition& def = definition->second;
    if (ArrayCount > 1) {
        bsim::gf_queueException(world_, *c, SIMCONNECT_EXCEPTION_INVALID_ARRAY, 5);
        return S_OK;
    }
    if (def.variableSize || cbUnitSize != def.fixedBytes) {
        bsim::gf_queueException(world_, *c, SIMCONNECT_EXCEPTION_INVALID_DATA_SIZE, 6);
        return S_OK;
    }
    // The user aircraft follows its script; what is sent to it is only recorded.
    SimObject scratch;
    SimObject& target = object->isUser ? (scratch = *object) : *object;
    if (!bsim::gf_applyBlock(def, static_cast<const std::byte*>(pDataSet), target)) {
        bsim::gf_queueException(world_, *c, SIMCONNECT_EXCEPTION_DATA_ERROR, 7);
        return S_OK;
    }
    if (!target.isUser) {  // no wind: the ground track is the heading
        target.gs_kt = target.tas_kt;
        target.track_deg = target.heading_deg;
    }
    if (def.setsPosition) {
        bsim::gf_recordPosition(
            world_.recorder, {world_.now_us / 1000, target.objectId, target.lat_deg, target.lon_deg,
                              target.alt_ft, target.pitch_deg, target.bank_deg, target.heading_deg,
                              target.vs_fpm, target.tas_kt, target.released});
    }
    return S_OK;
}

}  // namespace tfx
