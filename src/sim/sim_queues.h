// The buffers between the traffic tick and the simulator thread. The tick
// never talks to the simulator: it appends commands here and writes
// positions into the frame tables; the simulator thread takes both at each
// "Frame" event and appends what it learns to simMessages. Every lock is held
// only for an append or a swap, and never two at once.
#pragma once

#include <cstdint>
#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

#include "sim/create_request.h"
#include "sim/frame_table.h"
#include "sim/sim_message.h"

namespace tfx {

struct ClientEvent {
    std::uint32_t objectid;
    std::uint32_t event;
    std::uint32_t value;
};
struct SimRequest {
    std::uint32_t kind;
    std::uint32_t objectid;
};
struct ThrustCommand {
    std::uint32_t objectid;
    std::uint8_t reverse;
    std::uint8_t fsltlLivery;
};
// A flight plan file to write (text not empty) or to remove (text empty),
// and for a written one the plan to set; the simulator's thread does both,
// so that the tick never touches a file.
struct FlightPlanCommand {
    std::uint32_t objectid;
    std::filesystem::path path;
    std::string text;
    std::string label;  // the aircraft, for a complaint
};

// The command buffers, all under one lock.
struct SimCommands {
    std::vector<ClientEvent> clientEvents;
    std::vector<CreateRequest> creates;
    std::vector<std::uint32_t> removes;
    std::vector<SimRequest> requests;
    std::vector<ThrustCommand> thrusts;
    std::vector<FlightPlanCommand> flightPlans;

    // The capacities that keep appends free of allocation.
    void reserve();
    void clear();
    bool empty() const;
};

// ---- commands: any thread appends ----
// While the buffers are torn down (no simulator thread is left to take them)
// every command below is dropped, so that nothing piles up for nobody.
void gf_sendEvent(std::uint32_t objectid, std::uint32_t event, std::uint32_t value);
void gf_startEngines(std::uint32_t objectid);
void gf_stopEngines(std::uint32_t objectid);
// nav, beacon, landing, taxi, strobes, logo, cabin.
struct Lights {
    bool nav, beacon, landing, taxi, strobes, logo, cabin;
};
void gf_setLights(std::uint32_t objectid, const Lights& lights);
void gf_setNavLight(std::uint32_t objectid, bool on);
void gf_setCabinLight(std::uint32_t objectid, bool on);
void gf_setReverseThrust(std::uint32_t objectid, bool reverse, std::uint8_t fsltlLivery);
void gf_queueCreate(CreateRequest request);
// Drops the object from the tick's frame table and the pending map first, so
// that no position follows a removal.
void gf_queueRemoval(std::uint32_t objectid);
void gf_queueFlightPlan(FlightPlanCommand plan);
void gf_requestSimData(std::uint32_t kind, std::uint32_t objectid);

// The simulator thread's flush: swaps all six buffers out. Pass empty buffers
// (they are handed back to the producers, capacity and all).
void gf_takeSimCommands(SimCommands& out);

// ---- reports: the simulator thread appends, the tick takes ----
void gf_postSimMessage(const SimMessage& message);
// Swaps the waiting reports into out (which is cleared first).
void gf_takeSimMessages(std::vector<SimMessage>& out);

// ---- positions ----
// The tick's own table; only the tick's thread touches it.
void gf_framePut(std::uint32_t objectid, const MotionBlock& motion);
// Under the frame lock, the tick's positions go into the pending map; the
// tick's table is cleared.
void gf_publishFrame();
// The simulator thread at a frame: when the frame lock is free and the pending
// map holds entries, pending and sending change places. Never waits.
bool gf_trySwapFrame(FrameTable& sending);
// The sending map, private to the simulator thread.
extern FrameTable sendingFrame;

// Empties the tick's frame table and the pending map (a paused flight).
void gf_clearFrameTables();

// Empties the commands, the reports and the three position maps (a session's
// start and its restart), and sets the command buffers up for the session's
// simulator thread.
void gf_clearSimBuffers();
// The simulator thread has ended (called as it leaves): the waiting commands
// are emptied, and new ones are dropped until the next gf_clearSimBuffers.
void gf_tearDownSimBuffers();
bool gf_simBuffersTornDown();

// For tests and the benchmark: copies of what waits, taken under the locks.
SimCommands gf_peekSimCommands();
std::size_t gf_pendingFrameSize();
std::size_t gf_tickFrameSize();

}  // namespace tfx
