// Creates and their answers. The simulator answers a create later, with the
// object identifier under the create's request id, or with an exception that
// names only the packet that carried it; two tables lead from either back to
// the aircraft.
#include <fmt/format.h>

#include "app/log.h"
#include "sim/object_id_text.h"
#include "sim/sim_client.h"
#include "sim/sim_client_internal.h"
#include "sim/sim_ids.h"
#include "sim/sim_message.h"
#include "sim/sim_queues.h"

namespace tfx {

std::unordered_map<std::uint32_t, PendingCreate> pendingCreates;
std::unordered_map<std::uint32_t, std::uint32_t> packetRequests;
std::atomic<std::uint32_t> requestCounter{0};

namespace {

constexpr std::uint32_t MAX_STATIC_HEXID = 10000;

}  // namespace

void lf_create(HANDLE handle, const CreateRequest& request) {
    const std::uint32_t requestId = ++requestCounter;
    PendingCreate& pending = pendingCreates[requestId];
    pending.hexid = request.hexid;
    pending.isLive = request.hexid > MAX_STATIC_HEXID;
    pending.callsign = request.callsign;
    pending.title = request.title;
    pending.request = request;

    const SIMCONNECT_DATA_INITPOSITION init{request.lat,
                                            request.lon,
                                            request.alt,
                                            request.pitch,
                                            request.bank,
                                            request.heading,
                                            request.onGround ? 1u : 0u,
                                            0};
    const HRESULT hr = SimConnect_AICreateNonATCAircraft(handle, request.title.c_str(),
                                                         request.callsign.c_str(), init, requestId);
    if (gf_hrFailed(hr)) {
        pendingCreates.erase(requestId);
        gf_logError(fmt::format("! create failed hr=0x{:08X}, requestId:{}, callsign:{}",
                                static_cast<std::uint32_t>(hr), requestId, request.callsign));
        lf_requestFailed();
        return;
    }
    DWORD packetId = 0;
    if (gf_hrFailed(SimConnect_GetLastSentPacketID(handle, &packetId))) {
        pendingCreates.erase(requestId);
        gf_logError(fmt::format("! cannot retrieve packetId for create requestId:{}", requestId));
        lf_requestFailed();
        return;
    }
    pending.packetId = packetId;
    packetRequests[packetId] = requestId;
}

void lf_objectAssigned(HANDLE handle, std::uint32_t requestId, std::uint32_t objectid) {
    const auto it = pendingCreates.find(requestId);
    if (it == pendingCreates.end()) {
        gf_logLine(fmt::format("ASSIGNED_OBJECT_ID: requestId:{} oid:{} (no pending)", requestId,
                               gf_objectIdText(objectid)));
        return;
    }
    const PendingCreate created = std::move(it->second);
    pendingCreates.erase(it);
    packetRequests.erase(created.packetId);
    lf_objectCreated(objectid);

    // From here on only this program moves the object: the simulator's AI
    // lets go, and the frame step sets every position.
    SimConnect_AIReleaseControl(handle, objectid, REQUEST_ID_RELEASE_CONTROL);
    for (DWORD freeze : {EVENT_FREEZE_LATITUDE_LONGITUDE_SET, EVENT_FREEZE_ALTITUDE_SET,
                         EVENT_FREEZE_ATTITUDE_SET})
        SimConnect_TransmitClientEvent(handle, objectid, freeze, 1, TRAFFIC_APP, 0);

    SimMessage m;
    m.objectid = objectid;
    m.hexid = created.hexid;
    m.count = 0;
    m.kind = created.isLive ? SIM_LIVE_OBJECT_ID : SIM_STATIC_OBJECT_ID;
    gf_postSimMessage(m);
}

void lf_createFailed(std::uint32_t packetId) {
    const auto packet = packetRequests.find(packetId);
    if (packet == packetRequests.end()) {
        gf_logLine(fmt::format("CREATE_OBJECT_FAILED packetId:{} (no pending request)", packetId));
        return;
    }
    const std::uint32_t requestId = packet->second;
    packetRequests.erase(packet);
    const auto it = pendingCreates.find(requestId);
    if (it == pendingCreates.end()) {
        gf_logLine(fmt::format("CREATE_OBJECT_FAILED requestId:{} (no pending create)", requestId));
        return;
    }
    gf_logLine(fmt::format("CREATE_OBJECT_FAILED packetId:{} requestId:{} hexid:{:x} callsign:{}",
                           packetId, requestId, it->second.hexid, it->second.callsign));
    SimMessage m;
    m.kind = SIM_CREATE_FAILED;
    m.hexid = it->second.hexid;
    pendingCreates.erase(it);
    gf_postSimMessage(m);
}

}  // namespace tfx
