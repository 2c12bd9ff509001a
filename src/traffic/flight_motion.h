// Flight along the position stream: how an accepted message enters the
// stream, how the next point is taken, and the per-tick step.
#pragma once

#include "traffic/aircraft.h"

namespace tfx {

// Takes the position block of an accepted message into the stream.
void decodeExisting(LiveAircraft& ac, StreamPoint& p);
// Called when the front point is due: plans the leg to the next point.
void nextPosMain(LiveAircraft& ac);
// One step of the present leg, every tick.
void lf_stepAircraft(LiveAircraft& ac);

}  // namespace tfx
