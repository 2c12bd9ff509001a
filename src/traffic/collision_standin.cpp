// STAND-IN for collision avoidance: nothing is ever held back or removed for
// being too close to the user or to a parked aircraft. The real bodies
// replace this file.
#include "traffic/collision.h"

namespace tfx {

bool lf_spawnCollision(LiveAircraft&) {
    return false;
}

void gf_checkUserAcGndCollisions() {}
void lf_checkUserAir() {}
void lf_checkLiveParked() {}

}  // namespace tfx
