// The simulator thread: the only place that talks to the simulator during a
// session. Started by the session with a stop token; joined at its close.
#pragma once

#include <atomic>
#include <cstdint>
#include <stop_token>
#include <string>

#include "liveries/aircraft_category.h"

namespace tfx {

// Body of the SimClient thread.
void gf_simClientThread(std::stop_token stop);

// The user aircraft's on-ground state: -1 not yet known, 0 airborne, 1 on ground.
extern std::atomic<std::int8_t> userOnGround;
// The user aircraft's object identifier, from each position reply; the frame
// and the removals skip it.
extern std::atomic<std::uint32_t> userObjectId;
// Simulator UTC, seconds since the epoch.
extern std::atomic<std::int64_t> simEpochTime;
// The user chose the simulator by hand while waiting; cleared when one opens.
extern std::atomic<bool> simPinned;
// Half wing span of the user aircraft in NM, not a number while unknown; for
// the collision checks.
extern std::atomic<double> userHalfSpan;
extern std::atomic<AircraftCategory> userCategory;
// Title (at most 48 characters) and deduced model of the user aircraft;
// written by the simulator thread only, read after it has been joined.
extern std::string userTitle;
extern std::string userModel;

// Records the user's stand when a flight ends.
void gf_updateUserStand();
// Back to a fresh connection state for the next session: the creates still
// waiting for an answer are forgotten, the user aircraft unknown, no handle.
// Only while the thread is joined.
void gf_resetSimClientState();

}  // namespace tfx
