// The two reader threads of the RealTraffic application's UDP ports.
#pragma once

#include <cstdint>
#include <string_view>

#include "feeds/rtapp/rt_app_position.h"

namespace tfx {

// Start the weather reader, then the traffic reader; each on its own thread.
void gf_startWeatherReader();
void gf_startTrafficReader();
// Sets both stop flags and joins the weather thread, then the traffic thread.
void gf_stopRTAppReaders();

// Seconds since the last datagram on the traffic port; 0 before the first.
std::int64_t gf_trafficSilence_s();
// No datagram for longer than the link allows (10 s): a frozen application.
bool gf_trafficSilent();

// Datagrams counted by the traffic reader so far; the indicator compares them.
std::uint32_t gf_trafficDatagrams();

// One datagram of the weather port.
void gf_takeWeatherDatagram(std::string_view text);
// Forgets what the weather reader has seen.
void gf_resetWeatherState();
// Steady-clock seconds of the last good weather datagram; 0 when none came.
std::int64_t gf_lastGoodWeather_s();

}  // namespace tfx
