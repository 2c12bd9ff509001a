// Commands that steer an aircraft's controls. Throttle and flaps are not sent
// again while they stand at the commanded position.
#pragma once

#include <cstdint>

#include "traffic/aircraft.h"

namespace tfx {

// index 0 .. 4
void gf_setThrottle(StaticAircraft& ac, std::uint32_t index);
// index 0 .. 4 (4 retracts like 0); not for a Rotorcraft
void gf_setFlaps(StaticAircraft& ac, std::uint32_t index);
// not for a Rotorcraft
void gf_setSpoilers(const StaticAircraft& ac, bool on);
void gf_setGear(const StaticAircraft& ac, bool down);

}  // namespace tfx
