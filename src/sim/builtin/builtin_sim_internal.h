// What the parts of the built-in simulator call in one another. All of it
// runs under the simulator's lock.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

#include "sim/builtin/builtin_sim_state.h"

namespace tfx::bsim {

// ---- records (builtin_sim_connection.cpp) ----
// A zeroed record of the given size at the end of the connection's queue,
// with its header filled in; nullptr when the queue is full (logged once).
// The pointer is good until the next record is added.
SIMCONNECT_RECV* gf_newRecord(SimWorld& world, Connection& connection, DWORD id, std::size_t bytes);
template <class Record>
Record* gf_newRecordOf(SimWorld& world, Connection& connection, DWORD id) {
    return static_cast<Record*>(gf_newRecord(world, connection, id, sizeof(Record)));
}
// An exception record quoting a packet (the one just sent when sendId is 0)
// and the 1-based argument at fault.
void gf_queueException(SimWorld& world, Connection& connection, SIMCONNECT_EXCEPTION exception,
                       DWORD index, DWORD sendId = 0);
// Plain EVENT records to every subscriber of the event.
void gf_notify(SimWorld& world, SystemEvent kind, DWORD data);
void gf_notifyObject(SimWorld& world, SystemEvent kind, DWORD objectId);
void gf_notifyFlightLoaded(SimWorld& world, std::string_view fileName);
void gf_notifyFrame(SimWorld& world);

// ---- data (builtin_sim_data.cpp) ----
// Answers the periodic requests due at this frame.
void gf_servePeriodicRequests(SimWorld& world, bool secondBoundary);

// ---- objects (builtin_sim_objects.cpp) ----
void gf_completeDueCreates(SimWorld& world);
// The simulator's AI moves the objects that are not released.
void gf_steerAiObjects(SimWorld& world, double dt_s);
// Removes an AI object and tells the subscribers of "ObjectRemoved".
void gf_removeObject(SimWorld& world, DWORD objectId);
// All AI objects, or those of one connection (owner != 0).
void gf_removeAiObjects(SimWorld& world, std::uintptr_t owner);

// ---- user aircraft (builtin_sim_user.cpp) ----
// Title, model, lights and stance from the scenario (a new scenario or flight).
void gf_resetUserAircraft(SimWorld& world);
// Puts the user aircraft where the scenario has it at the flight time, or at
// (0, 0) while no flight is loaded.
void gf_placeUserAircraft(SimWorld& world);

// ---- roughness (builtin_sim_rough.cpp) ----
// When the frame after frameCount comes: uneven, now and then after a stall.
std::int64_t gf_nextFrameTime_us(SimWorld& world);
// How long a create waits for its answer; nullopt: it never gets one.
std::optional<std::int64_t> gf_createAnswerDelay_us(SimWorld& world);
// The id of a new AI object, maybe one that a removed object had.
DWORD gf_takeObjectId(SimWorld& world);
void gf_freeObjectId(SimWorld& world, DWORD objectId);
// A simulator that starts again numbers its objects from the start.
void gf_restartNumbering(SimWorld& world);

// An object's state now, as the recording keeps it.
inline RecordedPosition gf_recordedNow(const SimWorld& world, const SimObject& o) {
    return {world.now_us / 1000, o.objectId,    o.lat_deg, o.lon_deg, o.alt_ft,  o.pitch_deg,
            o.bank_deg,          o.heading_deg, o.vs_fpm,  o.tas_kt,  o.released};
}

// ---- lookups (builtin_sim_objects.cpp) ----
SimObject& gf_userAircraft(SimWorld& world);
// The object an identifier names; 0 is the user aircraft. nullptr if none.
SimObject* gf_findObject(SimWorld& world, DWORD objectId);

}  // namespace tfx::bsim
