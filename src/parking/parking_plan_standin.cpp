// STAND-IN for the parking plan and the park airport's stands: the plan is
// always empty, no stand is known, and no alternative names are found. The
// real bodies replace this file.
#include "parking/parking_plan.h"

namespace tfx {

bool gf_planHasEntries() {
    return false;
}

void gf_dropPlannedStaticAt(std::int32_t) {}
void gf_clearPlan() {}

std::string gf_standName(std::int32_t) {
    return {};
}

void gf_clearStands() {}
void lf_lookupAlternativeNames(LiveAircraft&) {}

}  // namespace tfx
