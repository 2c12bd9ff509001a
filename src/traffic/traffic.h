// The traffic engine's entry points: feeds hand in batches, the main loop runs
// the tick one hundred times a second and the once-a-second work.
#pragma once

#include <vector>

#include "traffic/aircraft.h"

namespace tfx {

// One tick. Only the main loop calls it, and only while the flight runs.
void gf_trafficTick();

// A feed's cycle of messages, played delay_s seconds after now. Any thread.
// With a delay of 30 the batch replaces what is still pending; any other
// delay is a piece of history (gf_handleHistoryBatch).
void gf_handleTrafficBatch(std::vector<TrafficMessage>& batch, int delay_s, bool fromRtApp);
// A piece of the history at the start, played delay_s seconds after now,
// whatever that delay is. Any thread; the pieces queue up in order and the
// tick works them off.
void gf_handleHistoryBatch(std::vector<TrafficMessage>& batch, int delay_s, bool fromRtApp);

// While no flight runs: only the simulator's reports are worked off; nothing
// moves and simTick stands still.
void gf_trafficFrozenTick();

// Per tick, before gf_trafficTick: a changed nav-lights-while-parked option
// goes out to every parked aircraft.
void gf_applyParkedNavLights();

// The once-a-second work that touches traffic; renews weekNow and counts the
// seconds.
void gf_trafficEverySecond();
// The 5, 14 and 61 second work, by the seconds counter.
void gf_trafficPeriodicWork();
extern int secondsCounter;

// One aircraft's step; true when the record is to be erased.
bool updateLiveAc(LiveAircraft& ac);
// Picks the livery and the first flight state and queues the create.
void spawnLiveAc(LiveAircraft& ac);
// Sends the object away to be created again where it is, with what changed.
void liveryRespawn(LiveAircraft& ac);

// Capacities of the tables and queues (program start).
void gf_initTraffic();
// Ends the traffic: tables, queues, plan and week slot cleared, the tables
// left with their starting capacities. Called at the start of every session.
void gf_stopTraffic();

}  // namespace tfx
