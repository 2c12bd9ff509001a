// Process-wide flags of the program frame, each with a single job. The
// simulator's state and the traffic gate live in run_state.h.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>

namespace tfx {

// Set by the closing when the reason asks for a restart; stays set while the
// next session starts, so start-up can tell a first session from a restart.
extern std::atomic<std::uint8_t> restartPending;
// The user closed the program; never cleared; beats a restart.
extern std::atomic<std::uint8_t> userClosing;
// From the start of a session until its main loop begins.
extern std::atomic<std::uint8_t> inStartup;
// The tick has seen the simulator not running and has announced it.
extern std::atomic<std::uint8_t> flightPaused;
// Set by the simulator thread at each once-a-second data; taken by the tick.
extern std::atomic<std::uint8_t> secondBeat;
// A job from the command line ("--production"): ends after reading the data.
extern std::atomic<std::uint8_t> commandLineJob;
// What the process returns when it ends.
extern std::atomic<int> processExitCode;

// Called when the user closes, so that a link waiting for a client wakes up.
// The RealTraffic application link sets it.
extern std::function<void()> gf_onUserClosing;

}  // namespace tfx
