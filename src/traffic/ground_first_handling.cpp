// The first handling of an aircraft created on the ground, when its object
// identifier arrives: wheels down, and a parked one takes its stand over from
// any static aircraft standing there.
#include <fmt/format.h>

#include "app/log.h"
#include "parking/parking_plan.h"
#include "traffic/clock.h"
#include "traffic/controls.h"
#include "traffic/ground_motion.h"
#include "traffic/removal.h"
#include "traffic/traffic_internal.h"
#include "traffic/traffic_tables.h"

namespace tfx {

void hp_handleGroundTraffic(LiveAircraft& ac) {
    try {
        ac.onGround = 1;
        gf_setGear(ac, true);
        ac.stepAlt = 0;
        if (ac.flightState == FlightState::parked) {
            ac.arrivalSlot = weekNow;
            const std::string stand = gf_standName(ac.sid);
            gf_logLine(fmt::format("{:14}: {:8} parks", stand, ac.callsign));
            gf_dropPlannedStaticAt(ac.sid);
            for (auto& st : staticAircraft) {
                if (st.sid != ac.sid || st.simState != SimState::active) continue;
                gf_logLine(fmt::format("{:14}: {:8} parks over static {} , static will be removed",
                                       stand, ac.callsign, st.callsign));
                removeAircraftFromSim(st);
            }
        }
        ac.counter = 1;
    } catch (...) {
        lf_trafficException("hp_handleGroundTraffic");
    }
}

}  // namespace tfx
