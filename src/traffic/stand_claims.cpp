// How a live aircraft gets a stand: when it is created standing still at
// one, when it slows to a stop in taxi near one, and what its arrival there
// sets in motion.
#include <algorithm>
#include <cmath>
#include <stdexcept>

#include <fmt/format.h>

#include "airports/airport_file.h"
#include "app/log.h"
#include "parking/park_airport.h"
#include "parking/parked_count.h"
#include "parking/parking_applier.h"
#include "parking/parking_plan.h"
#include "parking/parking_state.h"
#include "traffic/aircraft_base.h"
#include "traffic/clock.h"
#include "traffic/controls.h"
#include "traffic/flight_motion_internal.h"
#include "traffic/ground_motion.h"
#include "traffic/stand_claims.h"
#include "traffic/traffic_internal.h"
#include "traffic/traffic_tables.h"
#include "traffic/units.h"

namespace tfx {

namespace {

// A spawn looks for a stand only at the park airport.
constexpr double SPAWN_AIRPORT_NM = 5;
// A spawn that moves stands at a stand only when it crawls on the spot.
constexpr double SPAWN_STANDING_KT = 6;
constexpr double SPAWN_DRIFT_NM2 = 0.0003571528532577005;  // 35 m, squared
// Arrival: further off than 18 m it was no arrival; turned more than 40
// degrees away it can't have driven in.
constexpr double ARRIVAL_REACH_NM = 0.009719222462203024;
constexpr double ARRIVAL_TURNED_DEG = 40;

double lf_flatSquaredNm(LatLon a, LatLon b) {
    const double dlat = (b.lat - a.lat) * 60;
    const double dlon = (b.lon - a.lon) * 60 * std::cos(a.lat * RAD_PER_DEG);
    return dlat * dlat + dlon * dlon;
}

StandTaken lf_takenOf(const Stand& stand) {
    StandTaken t;
    t.sid = static_cast<std::int32_t>(stand.number);
    t.lat = stand.latitude;
    t.lon = stand.longitude;
    t.heading = stand.heading;
    t.cargo = stand.cargo ? 1 : 0;
    t.isGate = stand.id.find("GATE") != std::string::npos ? 1 : 0;
    return t;
}

// A live aircraft in a standing state with another callsign at the
// overlapping stand, close enough to touch an aircraft at the stand.
bool lf_overlapOccupied(const LiveAircraft& ac, const Stand& stand) {
    for (const std::uint32_t overlapSid : stand.overlaps) {
        const Stand* overlap = gf_standBySid(static_cast<std::int32_t>(overlapSid));
        if (overlap == nullptr) continue;
        for (const LiveAircraft& other : liveAircraft) {
            if (&other == &ac || other.sid != static_cast<std::int32_t>(overlapSid)) continue;
            if (other.simState != SimState::active || other.callsign == ac.callsign) continue;
            if (other.flightState != FlightState::parked &&
                other.flightState != FlightState::pushing_back)
                continue;
            if (gf_withinNm({overlap->latitude, overlap->longitude}, other.clearance,
                            {stand.latitude, stand.longitude}, ac.clearance))
                return true;
        }
    }
    return false;
}

void lf_clearStandData(LiveAircraft& ac) {
    ac.sid = 0;
    ac.standLat = ac.standLon = ac.standHeading = 0;
    ac.standCargo = ac.standIsGate = 0;
}

void lf_try2ParkSteps(LiveAircraft& ac) {
    double distance_m = 0;
    Stand* stand =
        gf_closestStand(gf_parkStands(), lf_pos(ac.stream.back()), ac, distance_m, false);
    if (stand == nullptr) return;
    if (lf_isUserStand(*stand, ac, 1)) return;
    lf_checkStandOrExcludedIsOccupiedByLiveParkedTry(*stand, ac);
    lf_makeWay(ac, *stand);
    const StandTaken t = lf_takenOf(*stand);
    ac.standLat = t.lat;
    ac.standLon = t.lon;
    ac.standHeading = t.heading;
    ac.sid = t.sid;
    ac.standCargo = t.cargo;
    ac.standIsGate = t.isGate;
    ac.stream.truncate(1);
    gf_setFlightState(ac, FlightState::parking);
    drive2Stand(ac, *stand);
}

}  // namespace

std::optional<StandTaken> lf_findStandAtSpawn(LiveAircraft& ac) {
    std::vector<Stand>& stands = gf_parkStands();
    if (stands.empty() || !parkAirport.known() || ac.stream.empty()) return std::nullopt;
    PointQueue& stream = ac.stream;
    StreamPoint& front = stream.front();
    if (gf_distanceNm(lf_pos(front), {parkAirport.lat, parkAirport.lon}) > SPAWN_AIRPORT_NM)
        return std::nullopt;
    if (front.same == 0) {
        const bool moving = std::any_of(stream.begin(), stream.end(), [](const StreamPoint& p) {
            return p.speed > SPAWN_STANDING_KT;
        });
        if (moving || lf_flatSquaredNm(lf_pos(front), lf_pos(stream.back())) > SPAWN_DRIFT_NM2)
            return std::nullopt;
    }
    const LatLon at = front.same != 0 ? lf_pos(front) : lf_pos(stream.back());
    // The same place found no stand before: it won't now.
    if (at.lat == ac.standTestLat && at.lon == ac.standTestLon && ac.standTestHit == 0)
        return std::nullopt;
    ac.standTestLat = at.lat;
    ac.standTestLon = at.lon;
    double distance_m = 0;
    const Stand* stand = gf_closestStand(stands, at, ac, distance_m, true);
    if (stand == nullptr) {
        ac.standTestHit = 0;
        return std::nullopt;
    }
    ac.standTestHit = 1;
    if (lf_isUserStand(*stand, ac, 0)) return std::nullopt;
    // The aircraft standing there, or next to it, has the better claim.
    if (!lf_checkStandIsNotUsedByOtherLiveAircraftSub(static_cast<std::int32_t>(stand->number),
                                                      ac.callsign) ||
        lf_overlapOccupied(ac, *stand)) {
        ac.eraseNow = 1;
        return std::nullopt;
    }
    lf_makeWay(ac, *stand);
    if (front.same == 0) {
        front.same = 1;
        front.speed = 0;
    }
    return lf_takenOf(*stand);
}

void try2Park(LiveAircraft& ac) {
    try {
        lf_try2ParkSteps(ac);
    } catch (...) {
        try {
            throw std::runtime_error(
                fmt::format("{}: {} {}, sz:{}, fs:{}, st:{}", "try2Park", lf_currentExceptionText(),
                            gf_logName(ac), ac.stream.size(), gf_flightStateName(ac.flightState),
                            gf_simStateName(ac.simState)));
        } catch (...) {
            lf_trafficException("try2Park");
        }
    }
}

bool lf_arrivedAtStand(LiveAircraft& ac) {
    ac.maxAdvance = DELAY_LIMIT_REST;
    ac.maxDelay = DELAY_LIMIT_REST;
    Stand* stand = gf_standBySid(ac.sid);
    // Someone else got there first, or the aircraft can't have driven in:
    // its stream ends and it goes.
    if ((stand != nullptr && stand->liveHere) || ac.stream.empty()) {
        ac.extensions = 1;
        return false;
    }
    const double off_deg =
        std::abs(gf_foldAngle(gf_normalizeHeading(ac.standHeading) - ac.heading)) * DEG_PER_RAD;
    if (off_deg > ARRIVAL_TURNED_DEG) {
        ac.extensions = 1;
        return false;
    }
    if (gf_distanceNm(lf_pos(ac), {ac.standLat, ac.standLon}) > ARRIVAL_REACH_NM) {
        // Stopped short: it taxis on and may find the stand again.
        lf_clearStandData(ac);
        gf_setFlightState(ac, FlightState::taxi);
        return true;
    }
    gf_setFlightState(ac, FlightState::parked);
    ac.arrivalSlot = weekNow;
    if (stand != nullptr) stand->liveHere = true;
    if (ac.towed != 0) gf_logLine(fmt::format("          towed aircraft {} parks", gf_logName(ac)));
    ac.stream.front().same = 1;
    ac.lastMoved = gf_wallClock100ns();
    ac.standLastDistance = 0;
    ac.distanceGrowCount = 0;
    gf_setThrottle(ac, 0);
    gf_setFlaps(ac, 0);
    gf_addDelayedParkedCommands(ac);
    gf_logLine(fmt::format("{:14}: {:8} arrived at stand", gf_standName(ac.sid), ac.callsign));
    nameLookups.push_back(ac.hexid);
    gf_addRealStandOption(ac.sid, ac, 0);
    lf_enforceParkedMax(0);
    return true;
}

}  // namespace tfx
