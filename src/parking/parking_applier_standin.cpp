// STAND-IN for the parking applier: no static aircraft is planned or added,
// the parked count is not enforced and no parking update runs. A static
// object that arrives is made active without its lights and controls. The
// real bodies replace this file.
#include <fmt/format.h>

#include "app/log.h"
#include "parking/parking_applier.h"
#include "sim/object_id_text.h"
#include "traffic/removal.h"
#include "traffic/traffic_tables.h"

namespace tfx {

void lf_addOneStatic() {}

void lf_activateStatic(const SimMessage& message) {
    StaticAircraft* ac = gf_findStatic(message.hexid);
    if (ac == nullptr) {
        gf_logLine(
            fmt::format("Delayed static command expired: hexid:{:x}, objectid:{} no longer exists",
                        message.hexid, gf_objectIdText(message.objectid)));
        return;
    }
    ac->simState = SimState::active;
    ac->objectid = message.objectid;
    if (ac->removeOnArrival != 0) removeAircraftFromSim(*ac);
}

void lf_checkDelayedParked() {}
void lf_enforceParkedMax(int) {}
void gf_parkingUpdate() {}
void gf_parkingIntervalMinute() {}
void gf_removeAllStatic() {}

}  // namespace tfx
