// The simulator thread: the only place that talks to the simulator during a
// session. Started by the session with a stop token; joined at its close.
#pragma once

#include <atomic>
#include <cstdint>
#include <stop_token>

namespace tfx {

// Body of the SimClient thread.
void gf_simClientThread(std::stop_token stop);

// The user aircraft's on-ground state: -1 not yet known, 0 airborne, 1 on ground.
extern std::atomic<std::int8_t> userOnGround;

}  // namespace tfx
