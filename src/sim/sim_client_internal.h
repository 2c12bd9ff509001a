// What the simulator thread's files share: the fixed identifiers it hands to
// the simulator, the connection's session values and the steps of a frame.
// Everything here belongs to the simulator thread unless a comment says
// otherwise.
#pragma once

#include <atomic>
#include <cstdint>
#include <exception>
#include <string>
#include <unordered_map>

#include "sim/create_request.h"
#include "sim/simconnect_api.h"

namespace tfx {

enum SimClientId : DWORD {
    EVENT_SIM = 201,
    EVENT_OBJECT_ADDED = 202,
    EVENT_OBJECT_REMOVED = 203,
    EVENT_FRAME = 204,
    EVENT_FLIGHT_LOADED = 205,
    TRAFFIC_APP = 301,
    DEFINITION_REVERSE_THRUST = 401,
    DEFINITION_LATLONPIBAHEALVSTAS = 402,
    DEFINITION_LATLONPIBAVSHETRALTGSZULI = 403,
    DEFINITION_AI_GET_POSITION = 404,
    DEFINITION_AI_GET_STATIC_CG_AND_PITCH = 405,
    DEFINITION_AI_LIGHTS = 406,
    DEFINITION_USER_AC_GET_TITLE = 407,
    DEFINITION_USER_AC_GET_MODEL = 408,
    DEFINITION_USER_AC_GET_ONGROUND = 409,
    REQUEST_ID_AC_IN_RANGE = 101,
    REQUEST_ID_STATIC_DATA = 102,
    REQUEST_ID_RELEASE_CONTROL = 103,
    REQUEST_ID_REMOVE_OBJECT = 104,
    REQUEST_ID_USER_TITLE = 105,
    REQUEST_ID_USER_MODEL = 106,
    REQUEST_ID_USER_ON_GROUND = 107,
    REQUEST_ID_USER_POSITION = 108,
    REQUEST_ID_FLIGHT_PLAN = 109,
};

// The exception code that says the simulator answering is not the selected one.
inline constexpr std::int32_t SIM_MISMATCH_CODE = 2024;

// Made for each connection and handed through every dispatch. An exception
// must not cross the simulator's dispatch, so the handler parks it here and
// the thread rethrows it after the call.
struct DispatchContext {
    bool quit = false;
    bool mismatch = false;
    std::string runningSim;  // "MSFS 2020" or "MSFS 2024", from the OPEN record
    std::exception_ptr error;
};

// The open connection; null when closed. Read by the queues of any thread.
extern std::atomic<HANDLE> l_hsimconnect;
// Last user position, for the jump test.
struct PreviousUserPos {
    double lat = 0, lon = 0;  // degrees
};
extern PreviousUserPos previousUserPos;

// A create sent and not yet answered.
struct PendingCreate {
    std::uint32_t hexid = 0;
    bool isLive = false;
    std::uint32_t packetId = 0;
    std::string callsign;
    std::string title;
    CreateRequest request;  // sent again when the connection is lost unanswered
};
extern std::unordered_map<std::uint32_t, PendingCreate> pendingCreates;  // by requestId
extern std::unordered_map<std::uint32_t, std::uint32_t> packetRequests;  // packetId to requestId
extern std::atomic<std::uint32_t> requestCounter;

// ---- steps ----
// Declares events, definitions and client events; false when any call failed
// (each failure is logged).
bool lf_setupConnection(HANDLE handle);
// The dispatch procedure handed to SimConnect_CallDispatch.
void lf_dispatch(SIMCONNECT_RECV* data, DWORD cbData, void* context);
// Sends the positions and the queued commands of one frame.
void lf_frameStep(HANDLE handle);
// The end of every failed command or request: state 3 and a restart.
void lf_requestFailed();
// Sends a create and enters it in the two tables of waiting creates.
void lf_create(HANDLE handle, const CreateRequest& request);
// The answers to creates.
void lf_objectAssigned(HANDLE handle, std::uint32_t requestId, std::uint32_t objectid);
void lf_createFailed(std::uint32_t packetId);
// Replies to the user aircraft requests.
void lf_userPositionReply(const SIMCONNECT_RECV_SIMOBJECT_DATA& record);
void lf_userTitleReply(const SIMCONNECT_RECV_SIMOBJECT_DATA& record, DWORD cbData);
void lf_userModelReply(const SIMCONNECT_RECV_SIMOBJECT_DATA& record);

// ---- the connection's life (sim_connection_life.cpp) ----
// At each frame: queues a user position request when one is due.
void lf_keepUserDataFresh();
// A request of this kind went out; periodic ones are repeated on reconnection.
void lf_requestServed(std::uint32_t kind);
// After the setup of a connection: the session's requests made again.
void lf_connectionOpened();
// Objects of this connection, as the simulator assigns and removes them.
void lf_objectCreated(std::uint32_t objectid);
void lf_objectGone(std::uint32_t objectid);
// The connection is over: its objects are reported gone to the tick, its
// unanswered creates queued again for the next one.
void lf_connectionLost();
void lf_resetConnectionLife();

}  // namespace tfx
