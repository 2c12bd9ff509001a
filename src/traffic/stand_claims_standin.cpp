// STAND-IN for the stand claims of live aircraft. Nobody claims or yields: no
// aircraft is created at a stand, nothing is removed, and an aircraft that
// landed and stops in taxi takes the nearest stand of the loaded airport
// within its near search radius, whatever the stand's type or who stands
// there, and parks on it without the stand being marked or learned. (What stood at a
// stand is learned in src/airports/stand_learning.cpp.) The real bodies
// replace this file.
#include <fmt/format.h>

#include "airports/loaded_airport.h"
#include "app/log.h"
#include "parking/park_airport.h"
#include "traffic/aircraft_base.h"
#include "traffic/clock.h"
#include "traffic/controls.h"
#include "traffic/flight_motion_internal.h"
#include "traffic/ground_motion.h"
#include "traffic/stand_claims.h"

namespace tfx {

std::optional<StandTaken> lf_findStandAtSpawn(LiveAircraft&) {
    return std::nullopt;
}

void lf_checkForStaticWithCallsignOrHexidAndRemove(const LiveAircraft&) {}

void gf_checkForAllGndIfParkedVersionExistsAndRemove() {}

void try2Park(LiveAircraft& ac) {
    // Without the stand at spawn and the pushback, a departure that stops
    // after its push would take its own stand again: only aircraft that
    // landed look for one here.
    if (!parkAirport.known() || ac.prevState != FlightState::landing_roll) return;
    const LatLon at = lf_pos(ac.stream.back());
    const Stand* best = nullptr;
    double bestNm = ac.standSearchNear;
    for (const Stand& s : loadedAirport.file.stands) {
        if (s.type == 0) continue;
        const double d = gf_distanceNm(at, {s.latitude, s.longitude});
        if (d <= bestNm) {
            best = &s;
            bestNm = d;
        }
    }
    if (best == nullptr) return;
    ac.standLat = best->latitude;
    ac.standLon = best->longitude;
    ac.standHeading = best->heading;
    ac.sid = static_cast<std::int32_t>(best->number);
    ac.standCargo = best->cargo ? 1 : 0;
    ac.standIsGate = best->id.find("GATE") != std::string::npos ? 1 : 0;
    ac.stream.truncate(1);
    gf_setFlightState(ac, FlightState::parking);
    drive2Stand(ac, *best);
}

// Arrival without the stand's marks: on the stand, lined up, it parks; too
// far off it goes back to taxi; turned away it ends.
bool lf_arrivedAtStand(LiveAircraft& ac) {
    ac.maxAdvance = ac.maxDelay = DELAY_LIMIT_REST;
    const double h_deg =
        std::abs(gf_foldAngle(gf_normalizeHeading(ac.standHeading) - ac.heading)) * DEG_PER_RAD;
    if (h_deg > 40 || ac.stream.empty()) {
        ac.extensions = 1;
        return false;
    }
    if (gf_distanceNm(lf_pos(ac), {ac.standLat, ac.standLon}) > 0.009719222462203024) {
        ac.sid = 0;
        ac.standLat = ac.standLon = ac.standHeading = 0;
        ac.standCargo = ac.standIsGate = 0;
        gf_setFlightState(ac, FlightState::taxi);
        return true;
    }
    gf_setFlightState(ac, FlightState::parked);
    ac.arrivalSlot = weekNow;
    ac.stream.front().same = 1;
    ac.lastMoved = gf_wallClock100ns();
    ac.standLastDistance = 0;
    ac.distanceGrowCount = 0;
    gf_setThrottle(ac, 0);
    gf_setFlaps(ac, 0);
    gf_logLine(fmt::format("{:14}: {:8} arrived at stand", ac.sid, ac.callsign));
    return true;
}

}  // namespace tfx
