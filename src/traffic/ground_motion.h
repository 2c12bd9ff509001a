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

namespace tfx {

// Timing of a leg on the ground, called when the front point is due.
void nextPosGround(LiveAircraft& ac);
// The steps of a ground leg.
void lf_setGroundSteps(LiveAircraft& ac);
// Re-times a stop so that it keeps its length as the data have it.
void lf_retimeSame(LiveAircraft& ac);

}  // namespace tfx
