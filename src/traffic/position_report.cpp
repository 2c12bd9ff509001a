// The simulator's position report of an object: touchdown, the height above
// the ground, and the ground under the wheels of an aircraft on the ground.
#include <fmt/format.h>

#include "app/log.h"
#include "sim/sim_queues.h"
#include "traffic/aircraft_base.h"
#include "traffic/controls.h"
#include "traffic/ground_motion.h"
#include "traffic/traffic_tables.h"

namespace tfx {

namespace {

void lf_touchdown(LiveAircraft& ac) {
    if (ac.flarePhase == 0 && ac.flightState != FlightState::landing) {
        // An aircraft in the air was simply put down.
        ac.onGround = 1;
        ac.stepAlt = 0;
        ac.counter = 1;
        return;
    }
    gf_setFlightState(ac, FlightState::landing_roll);
    ac.derotating = 1;
    ac.touchdownHeading = ac.heading;
    gf_setSpoilers(ac, true);
    if (ac.category != AircraftCategory::Light) {
        gf_setReverseThrust(ac.objectid, true, ac.fsltlLivery);
    }
    if (ac.derotationTicks > 0) {
        ac.stepBank = -ac.bank / ac.derotationTicks;
        ac.stepPitch = (ac.staticPitch - ac.pitch) / ac.derotationTicks;
    } else {
        gf_logLine(fmt::format("{} ! onGround slots {:.1f}", gf_logName(ac),
                               static_cast<double>(ac.derotationTicks)));
        ac.stepBank = 0;
        ac.stepPitch = ac.staticPitch;
    }
    nameLookups.push_back(ac.hexid);
    ac.onGround = 1;
    ac.stepAlt = 0;
    ac.counter = 1;
}

}  // namespace

void lf_onPositionReport(const SimMessage& message) {
    LiveAircraft* ac = gf_findLiveByObjectId(message.objectid);
    if (ac == nullptr) return;
    const bool reportsGround = message.hexid != 0;
    if (reportsGround && ac->onGround == 0 && ac->counter <= 1 &&
        ac->simState != SimState::removingfromsim && ac->flightState != FlightState::takeoff) {
        lf_touchdown(*ac);
    }
    ac->agl = message.b;
    if (ac->onGround != 0 || ac->counter >= 2) ac->alt = ac->cgHeight + message.a;
}

}  // namespace tfx
