// Stand-in until the scenery scan and the install path search exist: the
// install path is a folder in the data folder, and the scan only reads the
// weekly traffic airports and the archive lists, as the real scan does first.
#include "airports/airport_session.h"
#include "app/parameters.h"
#include "app/run_state.h"

namespace tfx {

std::optional<std::filesystem::path> gf_findInstallPath() {
    const auto path = gf_dataFolder() / "simulator" / "Packages";
    std::error_code ec;
    std::filesystem::create_directories(path, ec);
    if (ec) return std::nullopt;
    return path;
}

void gf_scanAirports() {
    gf_readScanCatalogues(gf_isMSFS2020());
}

bool gf_readMyParkAirportsFile() {
    return true;
}

}  // namespace tfx
