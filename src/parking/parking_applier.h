// The parking applier, as far as the tick and the once-a-second work call it.
#pragma once

#include <cstdint>

#include "sim/sim_message.h"

namespace tfx {

// One planned static aircraft into the create queue (every 0.2 s while the
// plan holds entries and no live create waits).
void lf_addOneStatic();
// Two seconds after a static object arrived: it becomes active.
void lf_activateStatic(const SimMessage& message);
// Once a second: the due delayed command of a parked live aircraft.
void lf_checkDelayedParked();
// Keeps the parked count at or below the target, counting extra newcomers.
void lf_enforceParkedMax(int extra);
// Every 15 seconds.
void gf_parkingUpdate();
// Every 60 seconds: the countdown of the parking interval.
void gf_parkingIntervalMinute();
void gf_removeAllStatic();

}  // namespace tfx
