// STAND-IN for leaving the stand. No pushback or pull-out is played: a
// parked aircraft whose reports have moved further from its stand than an
// aircraft of its span pushes back hands its stand back (learned as left)
// and taxis from where it stands towards the reports; closer reports only
// show that it is still in the feed. One that stands after a pushback waits
// for nothing, and one that was to leave stays parked. The real bodies
// replace this file.
#include <algorithm>

#include "airports/airport_file.h"
#include "parking/parking_state.h"
#include "traffic/aircraft_base.h"
#include "traffic/clock.h"
#include "traffic/flight_motion_internal.h"
#include "traffic/stand_claims.h"
#include "traffic/stand_leaving.h"
#include "traffic/units.h"

namespace tfx {

bool checkAtStandSituations(LiveAircraft& ac, StreamPoint& p) {
    ac.atStandSeen = 1;
    const double gone_m = std::max(2 * ac.halfSpan * METRES_PER_NM, 25.0);
    if (gf_distanceNm({ac.standLat, ac.standLon}, lf_pos(p)) * METRES_PER_NM < gone_m) return false;
    gf_addRealStandOption(ac.sid, ac, 2);
    if (Stand* stand = gf_standBySid(ac.sid)) stand->liveHere = false;
    p.same = 0;
    if (ac.extensions > 0) {
        // The week-long point of a parked aircraft goes; the reports take over.
        ac.stream.truncate(1);
        ac.stream.front().time = gf_simTick() + 1;
        lf_endExtension(ac);
    }
    ac.sid = 0;
    ac.standLat = ac.standLon = ac.standHeading = 0;
    ac.standCargo = ac.standIsGate = 0;
    gf_setFlightState(ac, FlightState::taxi);
    return true;
}

bool lf_checkPushedBack(LiveAircraft&, StreamPoint&) {
    return false;
}

void initiatePushBack(LiveAircraft& ac) {
    ac.leaving = 0;
}

void lf_pullOut(LiveAircraft& ac) {
    ac.leaving = 0;
}

}  // namespace tfx
