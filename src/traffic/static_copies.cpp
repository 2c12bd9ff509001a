// A static aircraft that turns out to be a live one (the same registration,
// the same flight, the parked record of the same transponder) goes, so that
// no aircraft stands beside its own copy.
#include <algorithm>
#include <string>

#include <fmt/format.h>

#include "app/log.h"
#include "parking/parking_plan.h"
#include "traffic/removal.h"
#include "traffic/stand_claims.h"
#include "traffic/traffic_internal.h"
#include "traffic/traffic_tables.h"

namespace tfx {

namespace {

bool lf_sameFlight(const std::string& name, const StaticAircraft& st) {
    return !name.empty() && (name == st.flightA || name == st.flightB);
}

// The parked record of the same transponder, the same registration, the
// same flight (a ghost's too).
bool lf_isCopyOf(const StaticAircraft& st, const LiveAircraft& ac) {
    if (st.rtHexid != 0 && st.rtHexid == ac.hexid) return true;
    if (!ac.regcode.empty() && st.regcode == ac.regcode) return true;
    if (lf_sameFlight(ac.callsign, st) || lf_sameFlight(ac.flightB, st)) return true;
    return lf_endsWithUnderscore(ac.callsign) &&
           lf_sameFlight(ac.callsign.substr(0, ac.callsign.size() - 1), st);
}

void lf_removeCopy(StaticAircraft& st, const LiveAircraft& ac, std::string_view where) {
    gf_logLine(fmt::format("{:14}: {:8} static removed, live {} is the same aircraft",
                           gf_standName(st.sid), st.callsign, ac.callsign));
    try {
        removeAircraftFromSim(st);
    } catch (...) {
        lf_trafficException(where);
    }
}

}  // namespace

void lf_checkForStaticWithCallsignOrHexidAndRemove(const LiveAircraft& ac) {
    if (ac.callsign.empty()) return;
    for (StaticAircraft& st : staticAircraft) {
        if (st.simState != SimState::active || !lf_isCopyOf(st, ac)) continue;
        lf_removeCopy(st, ac, "lf_checkForStaticWithCallsignOrHexidAndRemove");
        return;
    }
}

void gf_checkForAllGndIfParkedVersionExistsAndRemove() {
    for (const LiveAircraft& ac : liveAircraft) {
        if (ac.simState != SimState::active || ac.onGround == 0) continue;
        const std::string starred = ac.callsign + "*";
        for (StaticAircraft& st : staticAircraft) {
            if (st.simState != SimState::active) continue;
            if ((!ac.regcode.empty() && st.regcode == ac.regcode) ||
                (!ac.callsign.empty() && st.callsign == starred)) {
                lf_removeCopy(st, ac, "gf_checkForAllGndIfParkedVersionExistsAndRemove");
                return;
            }
        }
    }
}

}  // namespace tfx
