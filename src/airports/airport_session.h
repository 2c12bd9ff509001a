// What a session's start needs of the airport data: the catalogue, the
// install path of the simulator and the airport scan.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <variant>

#include "airports/airport_catalogue.h"

namespace tfx {

// The packages folder of the simulator in use, or nothing.
std::optional<std::filesystem::path> gf_findInstallPath();
// The scan of installed scenery, run when the feeds start.
void gf_scanAirports();
// The weekly traffic airports and the archive lists, read afresh by each
// scan; false (logged) when either failed and the old data stays.
bool gf_readScanCatalogues(bool is2020);

}  // namespace tfx
