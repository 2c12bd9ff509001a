// What the engine tells the RealTraffic application about the user.
#pragma once

#include <atomic>
#include <cstdint>

namespace tfx {

// The feed is up: the application connected, or no TCP link is used.
extern std::atomic<bool> rtAppFeedConnected;

// Every 200 ms from the tick on the road "RT App".
void gf_sendPosition();
// With the position update every 5 seconds: the simulator's UTC time, so that
// the application can serve traffic of that moment.
void gf_sendSimTime(std::int64_t epoch_ms);
// The simulator's UTC time from the user data; 0 when not known.
std::int64_t gf_simEpochMillis();
// Every 30 seconds while connected: the traffic indicator shows no data when
// no datagram came since the last look, the weather indicator when no good
// weather came in the last 90 seconds.
void gf_checkFeedIndicators();

}  // namespace tfx
