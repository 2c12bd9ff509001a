// Leaving the stand, as far as the position stream calls it.
#pragma once

#include "traffic/aircraft.h"

namespace tfx {

// A new point of a parked aircraft: whether it goes into the stream.
bool checkAtStandSituations(LiveAircraft& ac, StreamPoint& p);
// A new point of an aircraft that stands after its pushback.
bool lf_checkPushedBack(LiveAircraft& ac, StreamPoint& p);
// A parked aircraft that leaves: pushed back along the stand's axis, or
// pulling out forwards.
void initiatePushBack(LiveAircraft& ac);
void lf_pullOut(LiveAircraft& ac);

}  // namespace tfx
