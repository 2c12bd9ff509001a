// What a session's start needs of the airport data: the catalogue, the park
// airports file, the install path of the simulator and the airport scan.
#pragma once

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <variant>

namespace tfx {

// The airport catalogue: its number of entries, or an error text.
std::variant<std::size_t, std::string> gf_readAirportsXml();
bool gf_airportKnown(const std::string& code);
// The packages folder of the simulator in use, or nothing.
std::optional<std::filesystem::path> gf_findInstallPath();
// The scan of installed scenery, run when the feeds start.
void gf_scanAirports();
// The user's park airports list; false when a line named an unknown airport.
bool gf_readMyParkAirportsFile();

}  // namespace tfx
