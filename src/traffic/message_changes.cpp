// What a message changes on an aircraft that already flies: route, regcode,
// livery and callsign. A change that needs another livery or name sends the
// object away to be created again where it stands (liveryRespawn).
#include <fmt/format.h>

#include "app/log.h"
#include "app/options.h"
#include "liveries/livery_matching.h"
#include "parking/park_airport.h"
#include "traffic/aircraft_base.h"
#include "traffic/clock.h"
#include "traffic/geometry.h"
#include "traffic/reference_lookup.h"
#include "traffic/stand_claims.h"
#include "traffic/traffic.h"
#include "traffic/traffic_internal.h"
#include "traffic/traffic_tables.h"
#include "traffic/units.h"

namespace tfx {

namespace {

// The matching key: airline, operator, model and cargo.
bool lf_sameKey(const Aimo& a, const Aimo& b) {
    return a.airline == b.airline && a.operator_ == b.operator_ && a.model == b.model &&
           a.cargo == b.cargo;
}

void lf_mergeMessage(LiveAircraft& ac, const TrafficMessage& m) {
    if (m.dest.known() && m.dest != ac.dest) ac.dest = m.dest;
    if (m.orig.known() && m.orig != ac.orig) ac.orig = m.orig;
    if (!m.callsign.empty() && m.callsign != ac.callsign) {
        ac.callsign = m.callsign;
        ac.flightA = m.callsign;
    }
    if (!m.regcode.empty() && m.regcode != ac.regcode) ac.regcode = m.regcode;
}

// The aircraft needs another livery: forget the old one and start again.
void lf_dropLivery(LiveAircraft& ac) {
    gf_forgetLivery(ac.hexid);
    ac.livery = {};
    gf_setFlightState(ac, FlightState::birth);
}

bool lf_routeChanged(LiveAircraft& ac, const TrafficMessage& m) {
    const bool allKnown = ac.orig.known() && ac.dest.known() && m.orig.known() && m.dest.known();
    if (!ac.orig.known() && m.orig.known()) ac.orig = m.orig;
    if (!ac.dest.known() && m.dest.known()) ac.dest = m.dest;
    if (!allKnown || ac.orig == m.orig || ac.dest == m.dest) return false;
    // An aircraft that came from here and is reported back here turned round.
    if (gf_isParkAirport(ac.orig) && gf_isParkAirport(m.dest)) return false;
    ac.orig = m.orig;
    ac.dest = m.dest;
    if (ac.onGround != 0 && ac.flightState != FlightState::parking &&
        ac.flightState != FlightState::parked) {
        gf_setFlightState(ac, FlightState::taxi);
        ac.targetHeading = ac.heading;
    }
    return true;
}

// A change of registration that calls for another livery. The livery is
// dropped only when the aircraft respawns for it (lf_checkChanges): without
// respawns the object keeps its livery and its flight state.
bool lf_liveryTest(LiveAircraft& ac, const TrafficMessage& m) {
    const std::string_view title = gf_regcodeLivery(m.regcode);
    if (!title.empty()) {
        if (title == ac.livery) return false;
        if (const auto aimo = gf_regcodeAimo(m.regcode)) gf_takeAimo(ac, *aimo);
    } else {
        if (m.regcode == ac.regcode) return false;
        const auto aimo = gf_regcodeAimo(m.regcode);
        if (!aimo || lf_sameKey(*aimo, ac.aimo)) return false;
        gf_takeAimo(ac, *aimo);
    }
    return true;
}

bool lf_regcodeChanged(LiveAircraft& ac, const TrafficMessage& m) {
    if (m.regcode.empty()) return false;
    const bool sameAsCallsign = ac.regcode == ac.callsign;
    bool changed = false;
    if (ac.regcode.empty() || (sameAsCallsign && m.regcode != ac.regcode)) {
        changed = lf_liveryTest(ac, m);
    } else if (m.regcode != ac.regcode) {
        const auto aimo = gf_regcodeAimo(m.regcode);
        if (aimo && !lf_sameKey(*aimo, ac.aimo)) {
            // Only an airline the callsign confirms makes it another aircraft.
            const std::uint16_t airline = gf_callsignAirline(m.callsign);
            if (airline != 0 && (airline == aimo->airline || airline == aimo->operator_)) {
                gf_takeAimo(ac, *aimo);
                if (ac.flightState == FlightState::parked) gf_addRealStandOption(ac.sid, ac, 0);
                changed = true;
            }
        }
    }
    ac.regcode = m.regcode;
    return changed;
}

void lf_addReason(std::string& reasons, std::string_view reason) {
    if (!reasons.empty()) reasons += ", ";
    reasons += reason;
}

}  // namespace

bool lf_checkChanges(LiveAircraft& ac, const TrafficMessage& m) {
    switch (ac.flightState) {
        case FlightState::takeoff_roll:
        case FlightState::takeoff:
        case FlightState::landing:
        case FlightState::landing_roll:
            return true;
        default:
            break;
    }
    if (ac.simState == SimState::buffer) {
        lf_mergeMessage(ac, m);
        return true;
    }
    if (ac.simState != SimState::active || ac.flightState == FlightState::pushing_back ||
        ac.extensions > 0) {
        return true;
    }
    std::string reasons;
    if (lf_routeChanged(ac, m)) lf_addReason(reasons, "orig-dest change");
    const bool newLivery = lf_regcodeChanged(ac, m);
    if (newLivery) lf_addReason(reasons, "regcode change");
    if (!m.callsign.empty() && m.callsign != ac.callsign && m.callsign != ac.regcode) {
        if (lf_endsWithUnderscore(m.callsign)) {
            if (lf_realVersionExists(m.callsign)) return false;
        } else {
            lf_removeGhostWithUnderscoreIfPresent(m.callsign);
            // The aircraft was itself the ghost of the new name: it goes.
            if (ac.simState == SimState::removingfromsim) return false;
        }
        ac.callsign = m.callsign;
        ac.flightA = m.callsign;
        ac.flightB.clear();
        lf_addReason(reasons, "callsign change");
    }
    if (reasons.empty()) return true;
    if (!gf_options()->GUID_CHANGES) return true;
    if (newLivery) lf_dropLivery(ac);
    gf_logLine(fmt::format(
        "{:16}{} respawns because of {}", "",
        fmt::format("{:8} {:12} {}", ac.callsign, ac.regcode, gf_routeText(ac.orig, ac.dest)),
        reasons));
    liveryRespawn(ac);
    return false;
}

void liveryRespawn(LiveAircraft& ac) {
    StreamPoint copy;
    if (ac.flightState != FlightState::parked) {
        if (!ac.stream.empty()) {
            StreamPoint& front = ac.stream.front();
            copy = front;
            if (gf_samePosition({front.lat, front.lon}, {ac.lat, ac.lon})) front.same = 1;
        }
        copy.lat = ac.lat;
        copy.lon = ac.lon;
        copy.alt = ac.alt;
        copy.bank = ac.bank;
        copy.bankValid = 1;
    } else {
        if (ac.stream.empty()) {
            copy.lat = ac.lat;
            copy.lon = ac.lon;
            copy.alt = ac.alt;
        } else {
            ac.stream.truncate(1);
            copy = ac.stream.front();
        }
        copy.same = 1;
        copy.speed = 0;
        copy.tas = 0;
        copy.track = ac.heading * DEG_PER_RAD;
        if (!ac.stream.empty()) ac.stream.front() = copy;
    }
    copy.time = gf_simTick() + 1;
    ac.stream.push_front(copy);
    ac.simState = SimState::liveryrespawn;
    ac.respawnHeading = ac.heading;
    ac.respawning = 1;
    if (ac.objectid != 0) {
        removals.push_back(ac.objectid);
    } else {
        gf_logLine(
            fmt::format("{} removing act {} with objectid=0 ?", "liveryRespawn", gf_logName(ac)));
    }
}

}  // namespace tfx
