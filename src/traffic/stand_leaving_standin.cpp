// STAND-IN for leaving the stand: a parked aircraft takes no new points, one
// that stands after its pushback waits for nothing, and one that was to
// leave stays parked. The real bodies replace this file.
#include "traffic/stand_leaving.h"

namespace tfx {

bool checkAtStandSituations(LiveAircraft& ac, StreamPoint&) {
    ac.atStandSeen = 1;
    return false;
}

bool lf_checkPushedBack(LiveAircraft&, StreamPoint&) {
    return false;
}

void initiatePushBack(LiveAircraft& ac) {
    ac.leaving = 0;
}

void lf_pullOut(LiveAircraft& ac) {
    ac.leaving = 0;
}

}  // namespace tfx
