// A feed message reaches the tick: it feeds an aircraft's stream, starts a
// new aircraft, or is ignored as a repeat, a wrong speed or too close to the
// point before.
#include <algorithm>
#include <cmath>

#include "parking/park_airport.h"
#include "traffic/aircraft_base.h"
#include "traffic/clock.h"
#include "traffic/flight_motion.h"
#include "traffic/reference_lookup.h"
#include "traffic/traffic_internal.h"
#include "traffic/traffic_tables.h"

namespace tfx {

namespace {

// Distances below which a steady aircraft's next report adds nothing.
constexpr double AIR_THIN_NM = 0.2429805615550756;       // 450 m
constexpr double GROUND_THIN_NM = 0.010799136069114472;  // 20 m
constexpr double THIN_CAP_S = 15.0;

// Seconds to cover dist_nm at speed_kt; a standing aircraft counts as the cap.
double lf_secondsToCover(double dist_nm, double speed_kt) {
    if (speed_kt == 0) return THIN_CAP_S;
    return dist_nm / speed_kt * 3600.0;
}

// True when the message adds nothing to the stream, or is wrong.
bool lf_ignoreForStream(const LiveAircraft& ac, const TrafficMessage& m) {
    const StreamPoint& p = m.point;
    const StreamPoint& last = ac.stream.back();
    const double dt = m.time - ac.lastMessageTime;
    const double dTrack = std::fabs(p.track - last.track);
    if (dt <= 1.0) return true;  // at most one message per second
    if (last.speed > 5 && p.speed >= 10 * last.speed) return true;
    if (p.speed > 5 && last.speed >= 10 * p.speed) return true;
    if ((last.speed <= 5 && p.speed >= 80) || (p.speed <= 5 && last.speed >= 80)) return true;
    if (ac.extensions > 0) return false;
    if (p.inAir != 0) {
        return p.speed > 120 && dTrack <= 1.0 && dt <= lf_secondsToCover(AIR_THIN_NM, p.speed);
    }
    return p.speed <= 30 && dTrack <= 2.0 &&
           dt <= std::min(THIN_CAP_S, lf_secondsToCover(GROUND_THIN_NM, p.speed));
}

bool lf_sameCallsignAndModelFlies(const TrafficMessage& m) {
    if (m.callsign.empty()) return false;
    return std::any_of(liveAircraft.begin(), liveAircraft.end(), [&](const LiveAircraft& ac) {
        return ac.callsign == m.callsign && ac.aimo.model == m.aimo.model;
    });
}

}  // namespace

bool lf_altitudeRulePasses(double alt_ft) {
    if (!(alt_ft > 0 && alt_ft < 10000)) return true;
    const double fieldAlt_ft = parkAirport.known() ? parkAirport.alt_ft : -1000.0;
    return std::fabs(alt_ft - fieldAlt_ft) > 120;
}

void lf_handleTrafficMessage(TrafficMessage& message) {
    LiveAircraft* ac = gf_findLive(message.hexid);
    if (ac == nullptr) {
        if (lf_sameCallsignAndModelFlies(message)) return;
        lf_handleNewMessage(message);
        return;
    }
    if (ac->simState == SimState::liveryrespawn || ac->simState == SimState::removingfromsim)
        return;
    if (!ac->stream.empty() && lf_ignoreForStream(*ac, message)) return;
    if (ac->simState == SimState::buffer && !lf_altitudeRulePasses(message.point.alt)) return;
    if (!lf_checkChanges(*ac, message)) return;
    ac->lastMessageTime = message.time;
    decodeExisting(*ac, message.point);
}

void lf_handleNewMessage(TrafficMessage& message) {
    if (!message.regcode.empty()) {
        if (const auto aimo = gf_regcodeAimo(message.regcode)) message.aimo = *aimo;
    }
    if (!gf_categoryEnabled(gf_categoryOfModel(message.aimo.model))) return;
    if (!lf_altitudeRulePasses(message.point.alt)) return;
    message.flightA = message.callsign;
    message.flightB.clear();
    message.altNamesLooked = 0;

    LiveAircraft ac;
    static_cast<AircraftBase&>(ac) = gf_makeAircraftBase(message);
    ac.lastMessageTime = message.time;
    ac.simState = SimState::buffer;
    ac.flightState = FlightState::birth;
    ac.stateTick = gf_simTick();
    ac.stream.push_back(message.point);
    ac.arrivalSlot = weekNow;
    liveAircraft.push_back(std::move(ac));
}

}  // namespace tfx
