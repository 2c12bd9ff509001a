// Which simulator answers the simulator thread's calls. On this platform it
// is the built-in simulator; tests install their own provider first.
#pragma once

namespace tfx {

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

}  // namespace tfx
