// Stand-in until the airport catalogue, the scenery scan and the install path
// search exist. The catalogue reports the one airport the demo runs at, the
// install path is a folder in the data folder, and nothing is scanned.
#include "airports/airport_session.h"
#include "app/parameters.h"

namespace tfx {

std::variant<std::size_t, std::string> gf_readAirportsXml() {
    return std::size_t{1};
}

bool gf_airportKnown(const std::string& code) {
    return code == "EGTK";
}

std::optional<std::filesystem::path> gf_findInstallPath() {
    const auto path = gf_dataFolder() / "simulator" / "Packages";
    std::error_code ec;
    std::filesystem::create_directories(path, ec);
    if (ec) return std::nullopt;
    return path;
}

void gf_scanAirports() {}

bool gf_readMyParkAirportsFile() {
    return true;
}

}  // namespace tfx
