// The stand names of an airport that isn't the park airport, read from its
// file under the scratch name, which goes again after the look-up.
#include <fmt/format.h>

#include "airports/airport_file_io.h"
#include "airports/airport_paths.h"
#include "airports/xml_text.h"
#include "app/log.h"

namespace fs = std::filesystem;

namespace tfx {

std::vector<std::string> gf_readApfForStands(const IcaoCode& icao) {
    std::vector<std::string> ids;
    const auto path = gf_findAirportFile(icao);
    if (!path) return ids;
    auto fetched = gf_fetchAirportFile(*path, false);
    if (auto* error = std::get_if<std::string>(&fetched)) {
        gf_logError(*error);
        return ids;
    }
    const fs::path local = std::get<fs::path>(fetched);
    const bool scratch = local != *path;
    if (const auto text = gf_readWholeFile(local)) {
        pugi::xml_document document;
        if (auto failure = gf_parseXmlText(*text, document)) {
            gf_logError(fmt::format("{} not loaded: {}", local.generic_string(), *failure));
        } else {
            const pugi::xml_node section = gf_apfRoot(document).child("parkpositions");
            for (const pugi::xml_node parkpos : section.children("parkpos"))
                ids.emplace_back(parkpos.attribute("id").value());
        }
    } else {
        gf_logError(fmt::format("{} could not be opened", local.generic_string()));
    }
    if (scratch) {
        std::error_code ec;
        fs::remove(local, ec);
    }
    return ids;
}

}  // namespace tfx
