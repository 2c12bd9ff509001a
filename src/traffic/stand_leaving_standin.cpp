// STAND-IN for leaving the stand: a parked aircraft takes no new points and
// one that stands after its pushback waits for nothing. The real bodies
// replace this file.
#include "traffic/stand_leaving.h"

namespace tfx {

bool checkAtStandSituations(LiveAircraft& ac, StreamPoint&) {
    ac.atStandSeen = 1;
    return false;
}

bool lf_checkPushedBack(LiveAircraft&, StreamPoint&) {
    return false;
}

}  // namespace tfx
