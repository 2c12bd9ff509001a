// The parking applier, as far as the tick and the once-a-second work call it.
#pragma once

#include <cstdint>
#include <string>

#include "parking/parked_count.h"
#include "sim/sim_message.h"
#include "traffic/aircraft.h"

namespace tfx {

struct StaticPlan;

// One planned static aircraft into the create queue (every 0.2 s while the
// plan holds entries and no live create waits).
void lf_addOneStatic();
// The callsign a planned aircraft shows, with the "*" of a static aircraft;
// empty (logged) when the entry has none.
std::string lf_determineStaticCallsign(const StaticPlan& entry);
// Two seconds after a static object arrived: it becomes active.
void lf_activateStatic(const SimMessage& message);
// Creates the simulator never answered are given up, so that their stands
// are free for the next plan.
void gf_giveUpUnansweredStatics();
void gf_forgetUnansweredStatics();
// Static aircraft that became active since the last plan.
extern std::int64_t parkedUpdatedCount;

// A live aircraft arrived at its stand: engines off and the lights of a
// parked aircraft follow, each a little later.
void gf_addDelayedParkedCommands(const LiveAircraft& ac);
// Once a second: the due delayed command of a parked live aircraft.
void lf_checkDelayedParked();
// The aircraft's delayed commands go (it is purged).
void gf_dropDelayedParked(std::uint32_t hexid);
void gf_clearDelayedParked();

// Every 15 seconds.
void gf_parkingUpdate();
// Every 60 seconds: the countdown of the parking interval.
void gf_parkingIntervalMinute();
// The first plan at the park airport: its file read and the plan made.
void gf_parkAtAirport();
// The park airport is left: learned data saved, everything of it cleared.
void lf_leaveAirport();
// A fresh session's parking: countdown, requests and flags back to the start.
void gf_resetParkingUpdate();

}  // namespace tfx
