// The tick's snapshot of the user's aircraft, taken over from the simulator
// thread once a second. Tick-thread code reads userAircraft; other threads
// take the shared copy.
#pragma once

#include <memory>

#include "sim/user_data.h"

namespace tfx {

extern UserData userAircraft;

void gf_takeOverUserAircraft();
std::shared_ptr<const UserData> gf_userAircraftShared();
// The position is still (0, 0) within 0.0001 degrees.
bool gf_userPositionUnknown();

}  // namespace tfx
