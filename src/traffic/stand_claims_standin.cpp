// STAND-IN for the stand claims of live aircraft: no stands are known, so no
// aircraft is created at a stand and nothing is removed. (What stood at a
// stand is learned in src/airports/stand_learning.cpp.) The real bodies
// replace this file.
#include "traffic/stand_claims.h"

namespace tfx {

std::optional<StandTaken> lf_findStandAtSpawn(LiveAircraft&) {
    return std::nullopt;
}

void lf_checkForStaticWithCallsignOrHexidAndRemove(const LiveAircraft&) {}

void gf_checkForAllGndIfParkedVersionExistsAndRemove() {}

// No stand work yet: an aircraft in parking never arrives.
bool lf_arrivedAtStand(LiveAircraft&) {
    return false;
}

}  // namespace tfx
