// Merging the learned file of an airport: the parking settings kept for it,
// the options recorded from live traffic, stands made by hand, or a whole
// handmade stand list that overrules the airport file.
#include <algorithm>
#include <cmath>
#include <exception>

#include <fmt/format.h>

#include "airports/airport_file_io.h"
#include "airports/loaded_airport.h"
#include "airports/xml_text.h"
#include "app/file_utils.h"
#include "app/log.h"
#include "app/parameters.h"

namespace fs = std::filesystem;

namespace tfx {
namespace {

void lf_applySettings(const pugi::xml_node& root) {
    ParkingSettings s = gf_currentParkingSettings();
    const auto boolean = [&](const char* name, bool& value) {
        if (const auto a = gf_apfParameter(root, name)) value = a.as_bool(value);
    };
    boolean("WEEK", s.WEEK);
    boolean("PARK_SOFT", s.PARK_SOFT);
    boolean("RT_PARKTRAFFIC_ONLY", s.RT_PARKTRAFFIC_ONLY);
    // A file without these goes back to the defaults rather than keeping
    // what the previous airport had.
    const auto percentage = gf_apfParameter(root, "parking_percentage");
    s.parking_percentage = percentage ? percentage.as_int(params.parking_percentage.defaultValue)
                                      : params.parking_percentage.defaultValue;
    s.AUTO_PARK = gf_apfParameter(root, "AUTO_PARK").as_bool(false);
    if (const auto fit = gf_apfParameter(root, "MAX_FIT")) s.MAX_FIT = fit.as_int(s.MAX_FIT);
    gf_applyParkingSettings(s);
    const ParkingSettings now = gf_currentParkingSettings();
    gf_logLine(fmt::format("{:24}: {}", "parking_percentage", now.parking_percentage));
    gf_logLine(fmt::format("{:24}: {}", "WEEK", now.WEEK));
    gf_logLine(fmt::format("{:24}: {}", "PARK_SOFT", now.PARK_SOFT));
    gf_logLine(fmt::format("{:24}: {} (max number of half hours, is {:.1F} hrs decimal)", "MAX_FIT",
                           now.MAX_FIT, now.MAX_FIT / 2.0));
    gf_logLine(fmt::format("{:24}: {}", "RT_PARKTRAFFIC_ONLY", now.RT_PARKTRAFFIC_ONLY));
    gf_logLine(fmt::format("{:24}: {}", "AUTO_PARK", now.AUTO_PARK));
}

void lf_mergeOptions(const pugi::xml_node& parkpos, Stand& stand) {
    for (const pugi::xml_node opt : parkpos.children("opt")) {
        auto option = gf_readOption(opt, 0);
        if (!option) continue;
        if (option->hours == 0) {
            gf_logError("empty bit set");
            continue;
        }
        const bool clash =
            std::any_of(stand.options.begin(), stand.options.end(), [&](const StandOption& o) {
                return o.day == option->day && o.real == option->real && o.reg == option->reg &&
                       o.key == option->key && (o.hours & option->hours) != 0;
            });
        if (clash) continue;
        option->number = stand.options.empty() ? 1 : stand.options.back().number + 1;
        stand.options.push_back(std::move(*option));
    }
}

void lf_addManualStand(const pugi::xml_node& parkpos, const fs::path& path,
                       std::vector<Stand>& stands) {
    const std::string id = parkpos.attribute("id").value();
    const auto same = [&](const Stand& s) { return s.id == id; };
    if (std::any_of(stands.begin(), stands.end(), same)) {
        gf_logError(
            fmt::format("manually created standid {} already exists in {}", id, path.string()));
        return;
    }
    const double lat = parkpos.attribute("latitude").as_double(0.0);
    const double lon = parkpos.attribute("longitude").as_double(0.0);
    const double radius = parkpos.attribute("radius").as_double(0.0);
    if (!(std::fabs(lat) > 0.0001 || std::fabs(lon) > 0.0001) || radius == 0.0 ||
        std::isnan(radius)) {
        gf_logError(fmt::format("manually created standid {} misses correct attributes in {}", id,
                                path.string()));
        return;
    }
    if (auto stand = gf_readStand(parkpos, 0)) {
        stand->manual = true;
        stands.push_back(std::move(*stand));
    }
}

void lf_merge(const pugi::xml_node& root, const fs::path& path, std::vector<Stand>& stands) {
    const pugi::xml_node section = root.child("parkpositions");
    if (!section) {
        gf_logLine(
            fmt::format("learned file {} has no '{}' section", path.string(), "parkpositions"));
        return;
    }
    for (const pugi::xml_node parkpos : section.children("parkpos")) {
        if (parkpos.attribute("manual").as_bool(false)) {
            lf_addManualStand(parkpos, path, stands);
            continue;
        }
        const std::string_view id = parkpos.attribute("id").value();
        const auto it =
            std::find_if(stands.begin(), stands.end(), [&](const Stand& s) { return s.id == id; });
        if (it == stands.end()) {
            gf_logLine(fmt::format("learned stand {} in {} not found?", id, path.string()));
            continue;
        }
        lf_mergeOptions(parkpos, *it);
    }
}

// Keeps the damaged file as its one generation and says so.
void lf_setAside(const fs::path& path, const std::string& why) {
    gf_save1GenerationOf(path);
    gf_logError(
        fmt::format("{} found, not loaded: {}, saved as *.0.xml", path.generic_string(), why));
}

}  // namespace

bool lf_readLearned(const fs::path& learnedPath, const std::string& airportName,
                    std::vector<Stand>& stands, bool& handmade) {
    const auto text = gf_readWholeFile(learnedPath);
    if (!text) {
        gf_logError(fmt::format("{} could not be opened", learnedPath.string()));
        return false;
    }
    pugi::xml_document document;
    if (auto failure = gf_parseXmlText(*text, document)) {
        lf_setAside(learnedPath, *failure);
        return false;
    }
    const pugi::xml_node root = gf_apfRoot(document);
    if (!gf_metaAccepted(root, true)) {
        lf_setAside(learnedPath, "refused to load");
        return false;
    }
    gf_logLine(fmt::format("Read from learned airport file: '{}'", learnedPath.generic_string()));
    const std::string learnedName = gf_apfParameter(root, "airport_name").value();
    if (learnedName != airportName)
        gf_logLine(
            fmt::format("Warning: learned file airport name: '{}' differs from archived "
                        "file airport name: '{}'",
                        learnedName, airportName));

    const auto handmadeParameter = gf_apfParameter(root, "handmade");
    std::vector<Stand> handmadeStands;
    if (handmadeParameter) {
        // Read whole before anything changes, so that a broken list leaves the
        // airport file's stands as they were.
        try {
            const pugi::xml_node section = root.child("parkpositions");
            if (section) handmadeStands = gf_readParkpositions(section, 1);
        } catch (const std::exception& e) {
            lf_setAside(learnedPath, e.what());
            return false;
        }
    }
    lf_applySettings(root);
    if (handmadeParameter) {
        stands = std::move(handmadeStands);
        handmade = true;
        gf_logLine(fmt::format("{:24}: {}", "handmade", handmadeParameter.value()));
    } else {
        lf_merge(root, learnedPath, stands);
    }
    return true;
}

}  // namespace tfx
