// The built-in simulator as a program meets it: made from the scenario file
// named by ZEPT_SIM_SCENARIO, else "sim_scenario.json" in the working folder,
// else a flight parked at Oxford Kidlington; it knows the titles of the
// installation its UserCfg.opt names, runs on its own thread, and has the
// flight loaded. Shared by the provider inside the program and by the facade
// library that stands in for the simulator's client library.
#pragma once

#include <filesystem>
#include <memory>

#include "sim/builtin/builtin_sim.h"

namespace tfx {

// recording: every position the simulator is sent goes to this CSV file
// (none when empty), nothing of it kept in memory, so long runs stay flat.
std::unique_ptr<BuiltinSim> gf_startBuiltinSim(const std::filesystem::path& recording);

}  // namespace tfx
