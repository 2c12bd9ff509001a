// Ghosts: a feed reports some aircraft twice, once with a trailing "_" on the
// callsign. The one without it is the real aircraft; the ghost gives way.
#include <algorithm>

#include <fmt/format.h>

#include "app/log.h"
#include "parking/parking_plan.h"
#include "traffic/removal.h"
#include "traffic/traffic_internal.h"
#include "traffic/traffic_tables.h"

namespace tfx {

void lf_removeGhostWithUnderscoreIfPresent(std::string_view callsign) {
    if (callsign.empty()) return;
    for (auto& ac : liveAircraft) {
        if (ac.simState == SimState::removingfromsim) continue;
        if (ac.callsign.size() != callsign.size() + 1 || !lf_endsWithUnderscore(ac.callsign) ||
            !ac.callsign.starts_with(callsign)) {
            continue;
        }
        if (ac.flightState == FlightState::parked) {
            gf_logLine(fmt::format("{:14}: {:8} is a ghost and will be removed, continue with {}",
                                   gf_standName(ac.sid), ac.callsign, callsign));
        } else {
            gf_logLine(
                fmt::format("          {:8} is a ghost and will be removed, continue with {}",
                            ac.callsign, callsign));
        }
        if (std::find(ghostList.begin(), ghostList.end(), ac.callsign) == ghostList.end()) {
            ghostList.push_back(ac.callsign);
        }
        removeAircraftFromSim(ac);
        return;
    }
}

bool lf_realVersionExists(std::string_view callsign) {
    if (!lf_endsWithUnderscore(callsign)) return false;
    const std::string_view real = callsign.substr(0, callsign.size() - 1);
    return std::any_of(liveAircraft.begin(), liveAircraft.end(), [&](const LiveAircraft& ac) {
        return ac.simState != SimState::removingfromsim && ac.callsign == real;
    });
}

}  // namespace tfx
