// The engine's tables and queues. All belong to the tick's thread except
// pendingMessages and historyMessages, which the feed threads fill under
// their locks.
#pragma once

#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <vector>

#include "sim/create_request.h"
#include "sim/sim_message.h"
#include "traffic/aircraft.h"

namespace tfx {

extern std::vector<LiveAircraft> liveAircraft;      // reserved 512
extern std::vector<StaticAircraft> staticAircraft;  // reserved 256

extern std::mutex pendingLock;
extern std::vector<TrafficMessage> pendingMessages;  // 2 per tick, from the back
// History pieces of the start, in the order they came; the tick works them off.
extern std::mutex historyLock;
extern std::vector<TrafficMessage> historyMessages;

extern std::vector<std::uint32_t> spawnStack;  // hexids, last in first out
extern std::deque<CreateRequest> liveCreates;
extern std::deque<CreateRequest> staticCreates;
extern std::deque<std::uint32_t> removals;       // objectids, one each 0.1 s
extern std::deque<std::uint32_t> nameLookups;    // hexids, one per second
extern std::vector<SimMessage> delayedMessages;  // object identifiers waiting 2 s
extern std::vector<std::string> ghostList;       // callsigns ending in "_"

// A static record was marked eraseNow; the tick sweeps the static table.
extern bool staticErasePending;

// Gives every table its starting capacity.
void gf_reserveTrafficTables();

// Linear searches from the front; nullptr when absent.
LiveAircraft* gf_findLive(std::uint32_t hexid);
LiveAircraft* gf_findLiveByObjectId(std::uint32_t objectid);
StaticAircraft* gf_findStatic(std::uint32_t hexid);
StaticAircraft* gf_findStaticByObjectId(std::uint32_t objectid);

// A hexid of 10000 or less marks a static aircraft.
constexpr bool gf_isStaticHexid(std::uint32_t hexid) {
    return hexid <= 10000;
}

}  // namespace tfx
