// Ground motion, as far as the tick calls it.
#pragma once

#include "sim/sim_message.h"
#include "traffic/aircraft.h"

namespace tfx {

// The first handling of an aircraft created on the ground.
void hp_handleGroundTraffic(LiveAircraft& ac);
// A position report of an object (SimMessage kind 3).
void lf_onPositionReport(const SimMessage& message);

}  // namespace tfx
