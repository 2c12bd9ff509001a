// STAND-IN for traffic limits and removal. The removal request, the purge and
// the take-back of queued creates do what the tick needs, and a parked live
// aircraft's stand loses its live mark; missing are the bulk removers (category,
// TCAS coverage, blocked aircraft, destination gate) and the object list file.
// The real bodies replace this file.
#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "airports/airport_file.h"
#include "app/log.h"
#include "parking/parking_applier.h"
#include "parking/parking_state.h"
#include "sim/flight_plan.h"
#include "sim/user_data.h"
#include "traffic/geometry.h"
#include "traffic/removal.h"
#include "traffic/traffic_internal.h"
#include "traffic/traffic_tables.h"
#include "traffic/user_aircraft.h"

namespace tfx {

void removeAircraftFromSim(StaticAircraft& ac) {
    if (const LiveAircraft* live = gf_isStaticHexid(ac.hexid) ? nullptr : gf_findLive(ac.hexid);
        live == &ac && live->flightState == FlightState::parked) {
        if (Stand* stand = gf_standBySid(ac.sid)) stand->liveHere = false;
    }
    switch (ac.simState) {
        case SimState::removingfromsim:
            gf_logLine(fmt::format("{} {} duplicate remove blocked", ac.callsign, ac.regcode));
            return;
        case SimState::buffer:
            ac.eraseNow = 1;
            return;
        case SimState::adding2sim:
            if (ac.removeOnArrival != 0) return;
            if (lf_takeBackCreate(liveCreates, ac.callsign) ||
                lf_takeBackCreate(staticCreates, ac.callsign)) {
                ac.dropQueued = 1;
            } else {
                ac.removeOnArrival = 1;
            }
            return;
        case SimState::active:
        case SimState::liveryrespawn:
            if (ac.objectid != 0) {
                removals.push_back(ac.objectid);
                ac.simState = SimState::removingfromsim;
            } else {
                gf_logLine(fmt::format("{} removing act {}, with objectid=0 ?",
                                       "removeAircraftFromSim", ac.callsign));
                if (gf_isStaticHexid(ac.hexid)) staticErasePending = true;
                ac.eraseNow = 1;
            }
            return;
    }
}

void lf_cleanupLiveAircraft(LiveAircraft& ac) {
    gf_removeFlightPlan(ac);
    lf_purgeAircraft(ac.hexid, ac.objectid);
}

void lf_purgeAircraft(std::uint32_t hexid, std::uint32_t objectid) {
    std::erase_if(delayedMessages, [&](const SimMessage& m) {
        return m.hexid == hexid || (m.hexid == 0 && m.objectid == objectid);
    });
    std::erase(spawnStack, hexid);
    std::erase(nameLookups, hexid);
    gf_dropDelayedParked(hexid);
}

bool lf_takeBackCreate(std::deque<CreateRequest>& queue, std::string_view callsign) {
    if (callsign.empty()) return false;
    const std::size_t before = queue.size();
    std::erase_if(queue, [&](const CreateRequest& r) { return r.callsign == callsign; });
    return queue.size() != before;
}

bool lf_isThisTheFurthestLive(double distance_nm) {
    const LatLon user{userAircraft.lat, userAircraft.lon};
    LiveAircraft* furthest = nullptr;
    double furthest_nm = distance_nm < 0 ? -1.0 : distance_nm + 0.1;
    for (auto& ac : liveAircraft) {
        if (ac.simState != SimState::active) continue;
        const double d = gf_distanceNm(user, {ac.lat, ac.lon});
        if (d > furthest_nm) {
            furthest_nm = d;
            furthest = &ac;
        }
    }
    if (furthest == nullptr) return true;
    removeAircraftFromSim(*furthest);
    return false;
}

void gf_removeLiveAircraftCategory(AircraftCategory) {}
void gf_removeTCASCoverageAcs() {}
void gf_removeBlockedAc() {}
void gf_clearUserDestGate(std::string_view) {}
void gf_writeObjectIdList() {}

}  // namespace tfx
