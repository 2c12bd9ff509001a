// Who published a scenery file and which airport it is, from its path, its
// name and its package's manifest. The lookups in the publisher table and the
// airport catalogue are passed in, so that the rules stay apart from where
// those tables live.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "airports/install_path.h"

namespace tfx {

// What a scenery record needs for these rules: its file, and the package
// data, read at most once.
struct PackagedFile {
    std::filesystem::path bglPath;
    std::optional<PackageData> package;
    bool packageSearched = false;
};

// A name (publisher) or code (airport) found in a text, or nothing.
using TextFinder = std::function<std::optional<std::string>(std::string_view)>;

struct PackageLookups {
    TextFinder findPublisher;
    TextFinder findAirportCode;
    std::function<bool(std::string_view code)> hasTrafficThisWeek;
};

// "simaddon" for the simulator's own airports, a third party's name, or nothing.
std::optional<std::string> gf_publisherOfRecord(PackagedFile& file, const PackageLookups& lookups);
// The ICAO code of the airport in the file, or nothing.
std::optional<std::string> gf_airportCodeOfRecord(PackagedFile& file,
                                                  const PackageLookups& lookups);

}  // namespace tfx
