// What the built-in simulator knows is installed: the aircraft titles of the
// aircraft.cfg files under its packages folder, found the way the simulator
// itself finds them, independently of the program's own livery scan.
#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "sim/builtin_sim_scenario.h"

namespace tfx {

// The packages folder named by the simulator's own UserCfg.opt, under local
// application data; nothing when there is none.
std::optional<std::filesystem::path> gf_simPackagesFolder();

// Every title of every [fltsim.N] section in the aircraft.cfg files under
// packages (Official and Community), with the type designator of its file.
std::vector<KnownTitle> gf_readInstalledTitles(const std::filesystem::path& packages);

}  // namespace tfx
