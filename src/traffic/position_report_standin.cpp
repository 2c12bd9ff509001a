// STAND-IN for the simulator's position reports: only the height above the
// ground is taken over; the touchdown and ground-altitude work is missing.
// The real body replaces this file.
#include "traffic/ground_motion.h"
#include "traffic/traffic_tables.h"

namespace tfx {

void lf_onPositionReport(const SimMessage& message) {
    if (LiveAircraft* ac = gf_findLiveByObjectId(message.objectid)) ac->agl = message.b;
}

}  // namespace tfx
