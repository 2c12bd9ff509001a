// Taking parked aircraft away: what the plan no longer wants, the oldest when
// there are more than wanted, and everything when the airport is left.
#pragma once

#include <cstdint>

namespace tfx {

// Executes the planner's removals and empties the list.
void lf_removeRemovals();
// Keeps static plus live parked at or below the wanted count, counting
// extra aircraft about to park.
void lf_enforceParkedMax(int extra);
void lf_removeNOldestLiveParked(std::int64_t n);
void lf_removeNOldestStaticParked(std::int64_t n);
// Every static aircraft, queued ones taken back before they appear.
void gf_removeAllStatic();
// The static aircraft and every live one on the ground at the airport.
void lf_removeAllStaticAndLiveAtAirport();
// A changed target (max park, percentage): the count follows it down.
void gf_parkedTargetChanged();

}  // namespace tfx
