// The parking plan and the stands of the park airport, as far as the traffic
// engine calls them.
#pragma once

#include <cstdint>
#include <string>

#include "traffic/aircraft.h"

namespace tfx {

bool gf_planHasEntries();
// A live aircraft parks at sid: a static aircraft planned there leaves the plan.
void gf_dropPlannedStaticAt(std::int32_t sid);
void gf_clearPlan();
// The name of a stand of the park airport for log lines: "sid==0?" for 0,
// "sid==?" for a number that names no stand.
std::string gf_standName(std::int32_t sid);
// The stands, the plan and the planner's marks go (the traffic stops).
void gf_clearStands();
// The aircraft's other callsigns from the stand options (flightA, flightB).
void lf_lookupAlternativeNames(LiveAircraft& ac);

}  // namespace tfx
