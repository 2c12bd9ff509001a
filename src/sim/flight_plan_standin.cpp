// STAND-IN for the flight plan files: none is written, hasFlightPlan stays 0.
// The real body replaces this file.
#include "sim/flight_plan.h"

namespace tfx {

void gf_createFlightPlan(LiveAircraft& ac) {
    ac.hasFlightPlan = 0;
}

}  // namespace tfx
