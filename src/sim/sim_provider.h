// Which simulator answers the simulator thread's calls. On this platform it
// is the built-in simulator; tests install their own provider first.
#pragma once

#include <filesystem>

namespace tfx {

// Before the first session: the built-in simulator streams every position it
// is sent to this CSV file (nothing is kept in memory, so long runs stay flat).
void gf_setSimRecording(const std::filesystem::path& file);

// When no provider is set: installs the built-in simulator, made at the first
// call from the scenario file named by ZEPT_SIM_SCENARIO, else
// "sim_scenario.json" in the working folder, else a flight parked at Oxford
// Kidlington; its thread started, running, the flight loaded. The simulator
// lives for the process, as a real one outlives a session. True when it was
// installed by this call.
bool gf_selectSimProvider();
// Takes the built-in simulator out again (the end of the thread that
// installed it), so that nothing calls it between sessions.
void gf_releaseSimProvider();
// At the end of the process: the recording file is closed and named.
void gf_endSimProvider();

}  // namespace tfx
