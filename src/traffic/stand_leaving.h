// Leaving the stand, as far as the position stream calls it.
#pragma once

#include "traffic/aircraft.h"

namespace tfx {

// A new point of a parked aircraft: whether it goes into the stream.
bool checkAtStandSituations(LiveAircraft& ac, StreamPoint& p);
// A new point of an aircraft that stands after its pushback.
bool lf_checkPushedBack(LiveAircraft& ac, StreamPoint& p);

}  // namespace tfx
