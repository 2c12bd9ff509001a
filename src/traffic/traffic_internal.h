// The tick's steps, shared between the files of the tick. Tick thread only.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "sim/create_request.h"
#include "sim/sim_message.h"
#include "traffic/aircraft.h"

namespace tfx {

// Stamps each message with the tick at which its aircraft is to be there.
void lf_stampBatch(std::vector<TrafficMessage>& batch, std::int32_t now, int delay_s);

void lf_handleSimMessages();
void lf_handleDelayed();
void lf_setupNewObject(LiveAircraft& ac);
void lf_updateAllLive();
void lf_handleStacks();
void lf_takePendingMessages();
// Works off queued history pieces, a bounded number of messages per tick.
void lf_takeHistory();
// Drops all queued history (the traffic stops).
void gf_clearHistory();
void lf_handleAddingStack();

// Ticks from an object's identifier to its set-up, when it starts to move.
inline constexpr std::int32_t OBJECT_SETUP_TICKS = 200;
// A live create about to leave: the aircraft and the request move to where
// the aircraft is due now, when its object appears.
void lf_placeForCreate(CreateRequest& request);

void lf_handleTrafficMessage(TrafficMessage& message);
void lf_handleNewMessage(TrafficMessage& message);
// Whether a message at this altitude may be taken up near the park airport.
bool lf_altitudeRulePasses(double alt_ft);
// false: the message stops here (ignored, or the aircraft respawns).
bool lf_checkChanges(LiveAircraft& ac, const TrafficMessage& message);

void lf_spawnGate(LiveAircraft& ac);
void lf_initPosition(LiveAircraft& ac);

// Ghosts: a callsign with a trailing "_" gives way to the one without.
void lf_removeGhostWithUnderscoreIfPresent(std::string_view callsign);
// A record, not removingfromsim, whose callsign equals callsign without its "_".
bool lf_realVersionExists(std::string_view callsign);
bool lf_endsWithUnderscore(std::string_view callsign);

// Erases records marked eraseNow or dropQueued (live), eraseNow (static).
void lf_sweepLiveTable();
void lf_sweepStaticTable();

// The one report of traffic exceptions; call from a catch site.
void lf_trafficException(std::string_view where);
// The text of the exception being handled.
std::string lf_currentExceptionText();
// The number reported so far (process-wide).
int gf_trafficExceptionCount();
// Back to 0, for tests that count from the first report.
void gf_resetTrafficExceptionCount();

}  // namespace tfx
