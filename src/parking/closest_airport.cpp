// The airport a user on the ground is at: the nearest of the catalogue, or
// its neighbour when one of the neighbour's stands lies nearer, since a user
// at the edge of one airport beside another is placed by his stand, not by
// the airports' reference points.
#include <cmath>
#include <system_error>

#include <fmt/format.h>
#include <pugixml.hpp>

#include "airports/airport_file_io.h"
#include "airports/airport_paths.h"
#include "airports/xml_text.h"
#include "app/log.h"
#include "parking/airport_context.h"
#include "traffic/units.h"

namespace fs = std::filesystem;

namespace tfx {

namespace {

constexpr double NEAR_NM = 5.0;
constexpr double NO_STAND_NM2 = 10000.0;

// The scratch copy of a look-up goes, whatever happened.
struct ScratchFiles {
    ~ScratchFiles() {
        std::error_code ec;
        fs::remove("airports/airport.xml", ec);
        fs::remove("airports/airport.enc", ec);
    }
};

NearestStand lf_nearestIn(const pugi::xml_node& section, LatLon position) {
    const double cosLat = std::cos(position.lat * RAD_PER_DEG);
    double best = NO_STAND_NM2;
    std::string id;
    for (const pugi::xml_node parkpos : section.children("parkpos")) {
        const double dlat = (parkpos.attribute("latitude").as_double() - position.lat) * 60;
        const double dlon =
            (parkpos.attribute("longitude").as_double() - position.lon) * cosLat * 60;
        const double d = dlat * dlat + dlon * dlon;
        if (d < best) {
            best = d;
            id = parkpos.attribute("id").value();
        }
    }
    return {std::sqrt(best), id};
}

}  // namespace

NearestStand gf_readDestApfForClosestStand(const Airport& airport, LatLon position) {
    const auto path = gf_findAirportFile(airport.icao);
    if (!path) return {};
    ScratchFiles scratch;
    auto fetched = gf_fetchAirportFile(*path, false);
    if (auto* error = std::get_if<std::string>(&fetched)) {
        gf_logError(*error);
        return {};
    }
    const fs::path local = std::get<fs::path>(fetched);
    const auto text = gf_readWholeFile(local);
    if (!text) {
        gf_logError(fmt::format("{} could not be opened", local.generic_string()));
        return {};
    }
    pugi::xml_document document;
    if (auto failure = gf_parseXmlText(*text, document)) {
        gf_logError(fmt::format("{} not loaded: {}", local.generic_string(), *failure));
        return {};
    }
    const pugi::xml_node section = gf_apfRoot(document).child("parkpositions");
    if (!section) {
        gf_logLine(fmt::format("airport file {} has no '{}' section", local.generic_string(),
                               "parkpositions"));
        return {};
    }
    return lf_nearestIn(section, position);
}

const Airport* gf_closestAirport(LatLon position) {
    const double cosLat = std::cos(position.lat * RAD_PER_DEG);
    const Airport* first = nullptr;
    const Airport* second = nullptr;
    double firstD = NEAR_NM * NEAR_NM, secondD = NEAR_NM * NEAR_NM;
    for (const Airport& airport : airportTable) {
        const double dlat = std::fabs(airport.latitude - position.lat) * 60;
        const double dlon = std::fabs(airport.longitude - position.lon) * 60 * cosLat;
        if (dlat > NEAR_NM || dlon > NEAR_NM) continue;
        const double d = dlat * dlat + dlon * dlon;
        if (d < firstD) {
            second = first;
            secondD = firstD;
            first = &airport;
            firstD = d;
        } else if (d < secondD) {
            second = &airport;
            secondD = d;
        }
    }
    if (first == nullptr || second == nullptr) return first;
    gf_logLine(fmt::format("Airport {} is closest, neighbour is {}", first->icao.text(),
                           second->icao.text()));
    const NearestStand own = gf_readDestApfForClosestStand(*first, position);
    const NearestStand neighbour = gf_readDestApfForClosestStand(*second, position);
    if (neighbour.distance_nm >= own.distance_nm) return first;
    gf_logLine(fmt::format(
        "Airport {} has closest stand {} at {} meters,\nbut stand {} at neighbouring airport {} "
        "is closer at {:.0F} meters ...",
        first->icao.text(), own.id, std::lround(own.distance_nm * 1852.0), neighbour.id,
        second->icao.text(), neighbour.distance_nm * 1852.0));
    return second;
}

}  // namespace tfx
