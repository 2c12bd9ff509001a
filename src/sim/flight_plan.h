// The flight plan file that MSFS 2020 gets for a live aircraft with a route.
#pragma once

#include "sim/sim_queues.h"
#include "traffic/aircraft.h"

namespace tfx {

// Called when the object identifier of a live aircraft arrives.
void gf_createFlightPlan(LiveAircraft& ac);
// When a live aircraft is cleaned up: its file goes. Failures are logged and
// never stop the cleanup.
void gf_removeFlightPlan(LiveAircraft& ac);
// On the simulator's thread: writes (or removes) the file; true when a plan
// was written and is to be set. Failures are logged.
bool gf_carryOutFlightPlan(const FlightPlanCommand& plan);

}  // namespace tfx
