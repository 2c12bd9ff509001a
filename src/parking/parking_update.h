// The parking update as the clock runs: a countdown of the interval, the
// requests it and new parked lists make, and the two phases that collect the
// seen aircraft and then adjust the plan. Main thread only.
#pragma once

#include <cstdint>

namespace tfx {

// An adjustment waits for its seen aircraft; the park airport checks pause.
bool gf_adjustmentPrepared();
// Asks for an update as the window's Park button does.
void gf_requestParkingUpdate();
// Minutes left until the next update.
std::int32_t gf_parkingCountdown();
// The end of a session: the park airport is left as in the air, and the
// park airport list is written back.
void gf_parkingClosingDown();

}  // namespace tfx
