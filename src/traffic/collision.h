// Collision avoidance, as far as the tick calls it.
#pragma once

#include "traffic/aircraft.h"

namespace tfx {

// True holds the spawn back for this tick (the front point is dropped).
bool lf_spawnCollision(LiveAircraft& ac);
// Once a second: user on the ground, user in the air, live versus parked.
void gf_checkUserAcGndCollisions();
void lf_checkUserAir();
void lf_checkLiveParked();

}  // namespace tfx
