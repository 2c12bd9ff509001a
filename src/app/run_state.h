// Process-wide run flags and the session's run choice that the traffic
// engine and the simulator link read. Written by the program frame and the
// simulator thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

namespace tfx {

// 0 not connected; 1 connected, no flight; 2 flight running; 3 a request
// failed (final for the session).
extern std::atomic<std::uint8_t> SimRunState;

// Feed messages are taken into the traffic queue only while set.
extern std::atomic<std::uint8_t> trafficOpen;

// The simulator and the feed road of this session, published at its start.
struct RunChoice {
    std::uint8_t simulator = 1;  // 1 "MSFS 2020", 2 "MSFS 2024"
    bool rtDirect = true;        // the road "RT Direct", else "RT App"
};
extern std::atomic<std::shared_ptr<const RunChoice>> runChoice;

bool gf_isMSFS2020();
bool gf_isRTDirect();

}  // namespace tfx
