// Places a scenario of the built-in simulator names instead of giving their
// numbers: an airport's position and field elevation from the airport
// catalogue, a stand from the airport files of the simulator's scenery, and
// the user's path from a file of its own. A real simulator knows all of
// these from its scenery; the built-in one takes the same real data.
#pragma once

#include <filesystem>
#include <string_view>
#include <vector>

#include <nlohmann/json_fwd.hpp>

#include "sim/builtin/builtin_sim_scenario.h"

namespace tfx {

// Appends the points of a JSON list to path; a bad point is logged and skipped.
void gf_readPathPoints(const nlohmann::json& list, std::string_view where,
                       std::vector<PathPoint>& path);

// Reads the path file and places the stand the user scenario names, then
// looks up every airport named only (the airports of the stand and of the
// path file among them). Relative file names are taken from baseDir. False
// (logged) when a named file or stand can't be used; an airport the
// catalogue doesn't know is logged and left out.
bool gf_placeScenarioNames(Scenario& scenario, const std::filesystem::path& baseDir,
                           std::string_view source);

}  // namespace tfx
