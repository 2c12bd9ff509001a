// Stand-in until the airport catalogue and the scenery scan exist. The
// catalogue reports the one airport the demo runs at, and nothing is scanned.
#include "airports/airport_session.h"
#include "app/parameters.h"

namespace tfx {

std::variant<std::size_t, std::string> gf_readAirportsXml() {
    return std::size_t{1};
}

bool gf_airportKnown(const std::string& code) {
    return code == "EGTK";
}

void gf_scanAirports() {}

bool gf_readMyParkAirportsFile() {
    return true;
}

}  // namespace tfx
