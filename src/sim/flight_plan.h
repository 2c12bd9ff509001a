// The flight plan file that MSFS 2020 gets for a live aircraft with a route.
#pragma once

#include "traffic/aircraft.h"

namespace tfx {

// Called when the object identifier of a live aircraft arrives.
void gf_createFlightPlan(LiveAircraft& ac);
// When a live aircraft is cleaned up: its file goes. Failures are logged and
// never stop the cleanup.
void gf_removeFlightPlan(LiveAircraft& ac);

}  // namespace tfx
