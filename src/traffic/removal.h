// All ways by which an aircraft leaves the engine, and the limits at the door.
#pragma once

#include <cstdint>
#include <deque>
#include <string_view>

#include "sim/create_request.h"
#include "traffic/aircraft.h"

namespace tfx {

// The only way to ask for removal; ac may be live or static.
void removeAircraftFromSim(StaticAircraft& ac);
// Releases what a live record holds before it is erased.
void lf_cleanupLiveAircraft(LiveAircraft& ac);
// Drops all entries of the aircraft from the tick's queues.
void lf_purgeAircraft(std::uint32_t hexid, std::uint32_t objectid);
// Takes the requests of this callsign out of a create queue; true when one was there.
bool lf_takeBackCreate(std::deque<CreateRequest>& queue, std::string_view callsign);
// Removes the active live aircraft furthest from the user and further than
// distance_nm + 0.1 (any, with a negative distance): false. None: true.
bool lf_isThisTheFurthestLive(double distance_nm);

void gf_removeLiveAircraftCategory(AircraftCategory category);
void gf_removeTCASCoverageAcs();
void gf_removeBlockedAc();
void gf_clearUserDestGate(std::string_view standName);
void gf_writeObjectIdList();

}  // namespace tfx
