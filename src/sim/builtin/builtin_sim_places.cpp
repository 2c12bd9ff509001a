// Placing what a scenario names: path files, stands, airports of the catalogue.
#include "sim/builtin/builtin_sim_places.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <numbers>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "airports/airport_catalogue.h"
#include "airports/airport_file_io.h"
#include "airports/xml_text.h"
#include "app/log.h"
#include "app/user_exception.h"

namespace fs = std::filesystem;

namespace tfx {

namespace {

using nlohmann::json;

constexpr double kRadToDeg = 180.0 / std::numbers::pi;

// The finite number under key into value; false when there is none.
bool lf_finite(const json& object, const char* key, double& value) {
    const auto it = object.find(key);
    if (it == object.end() || !it->is_number() || !std::isfinite(it->get<double>())) return false;
    value = it->get<double>();
    return true;
}

fs::path lf_under(const fs::path& baseDir, const fs::path& name) {
    return name.is_relative() && !baseDir.empty() ? baseDir / name : name;
}

// An airport named only, unless the scenario has it already.
void lf_nameAirport(Scenario& scenario, std::string_view icao) {
    const bool known = std::any_of(scenario.airports.begin(), scenario.airports.end(),
                                   [&](const ScenarioAirport& a) { return a.icao == icao; });
    if (known) return;
    ScenarioAirport a;
    a.icao = std::string(icao);
    a.fromCatalogue = true;
    scenario.airports.push_back(std::move(a));
}

// The catalogue's entry; the catalogue is read from the working folder when
// nothing read it yet (the program reads it before the simulator starts).
const Airport* lf_catalogued(std::string_view icao, std::string_view source) {
    IcaoCode code;
    if (!gf_tryIcaoCode(icao, code)) {
        gf_logError(fmt::format("{}: airport '{}' is no ICAO code, left out", source, icao));
        return nullptr;
    }
    if (airportTable.empty()) {
        const auto read = gf_readAirportsXml();
        if (const auto* error = std::get_if<std::string>(&read)) {
            gf_logError(fmt::format("{}: no airport catalogue for {} ({}), left out", source, icao,
                                    *error));
            return nullptr;
        }
    }
    const Airport* airport = gf_airportByCode(code);
    if (airport == nullptr)
        gf_logError(fmt::format("{}: {} is not in the airport catalogue, left out", source, icao));
    return airport;
}

bool lf_readPathFile(Scenario& scenario, const fs::path& baseDir, std::string_view source) {
    UserScenario& user = scenario.user;
    const fs::path path = lf_under(baseDir, user.pathFile);
    const auto text = gf_readWholeFile(path);
    if (!text) {
        gf_logError(fmt::format("{}: cannot read the path file {}", source, path.string()));
        return false;
    }
    const json root = json::parse(text->begin(), text->end(), nullptr, false);
    const std::string where = path.filename().string();
    const json* points = &root;
    if (root.is_object()) {
        points = root.contains("points") ? &root["points"] : nullptr;
        if (const auto loop = root.find("loop"); loop != root.end() && loop->is_boolean())
            user.loop = loop->get<bool>();
        lf_finite(root, "heading_deg", user.heading_deg);
        if (const auto airports = root.find("airports"); airports != root.end()) {
            for (const json& icao : *airports) {
                if (icao.is_string()) lf_nameAirport(scenario, icao.get<std::string>());
            }
        }
    }
    if (points == nullptr || !points->is_array()) {
        gf_logError(fmt::format("{}: not a list of points nor an object with \"points\"", where));
        return false;
    }
    user.path.clear();
    gf_readPathPoints(*points, where, user.path);
    if (user.path.empty()) {
        gf_logError(fmt::format("{}: no good point", where));
        return false;
    }
    return true;
}

bool lf_placeOnStand(Scenario& scenario, const fs::path& baseDir, std::string_view source) {
    const StandRef& ref = *scenario.user.parkedStand;
    const fs::path file = lf_under(baseDir, scenario.scenery) / (ref.airport + ".xml");
    const auto text = gf_readWholeFile(file);
    pugi::xml_document document;
    std::optional<std::string> failure =
        text ? gf_parseXmlText(*text, document) : std::optional<std::string>("cannot be read");
    std::vector<Stand> stands;
    if (!failure) {
        try {
            stands = gf_readParkpositions(gf_apfRoot(document).child("parkpositions"), 1);
        } catch (const UserRelatedException& e) {
            failure = e.message;
        } catch (const std::exception& e) {
            failure = e.what();
        }
    }
    if (failure) {
        gf_logError(fmt::format("{}: the airport file {} of the scenery: {}", source, file.string(),
                                *failure));
        return false;
    }
    const auto stand = std::find_if(stands.begin(), stands.end(),
                                    [&](const Stand& s) { return s.id == ref.stand; });
    if (stand == stands.end()) {
        gf_logError(fmt::format("{}: {} has no stand \"{}\"", source, file.string(), ref.stand));
        return false;
    }
    scenario.user.path = {PathPoint{0, stand->latitude, stand->longitude, std::nullopt}};
    scenario.user.heading_deg = stand->heading * kRadToDeg;
    lf_nameAirport(scenario, ref.airport);
    return true;
}

}  // namespace

void gf_readPathPoints(const json& list, std::string_view where, std::vector<PathPoint>& path) {
    for (std::size_t i = 0; i < list.size(); ++i) {
        const std::string at = fmt::format("{} path point {}", where, i + 1);
        const json& item = list[i];
        PathPoint p;
        if (!item.is_object() || !lf_finite(item, "t_s", p.t_s) ||
            !lf_finite(item, "lat", p.lat_deg) || !lf_finite(item, "lon", p.lon_deg) ||
            std::abs(p.lat_deg) > 90 || std::abs(p.lon_deg) > 180) {
            gf_logError(fmt::format("{} needs t_s, lat and lon, skipped", at));
            continue;
        }
        if (!path.empty() && p.t_s <= path.back().t_s) {
            gf_logError(
                fmt::format("{}: t_s {} does not follow {}, skipped", at, p.t_s, path.back().t_s));
            continue;
        }
        if (double alt_ft = 0; item.contains("alt_ft")) {
            if (!lf_finite(item, "alt_ft", alt_ft)) {
                gf_logError(fmt::format("{}: \"alt_ft\" is not a number, skipped", at));
                continue;
            }
            p.alt_ft = alt_ft;
        }
        if (const auto back = item.find("back"); back != item.end())
            p.backwards = back->is_boolean() && back->get<bool>();
        path.push_back(p);
    }
}

bool gf_placeScenarioNames(Scenario& scenario, const fs::path& baseDir, std::string_view source) {
    if (!scenario.user.pathFile.empty() && !lf_readPathFile(scenario, baseDir, source))
        return false;
    if (scenario.user.parkedStand && !lf_placeOnStand(scenario, baseDir, source)) return false;
    std::erase_if(scenario.airports, [&](ScenarioAirport& a) {
        if (!a.fromCatalogue) return false;
        const Airport* known = lf_catalogued(a.icao, source);
        if (known == nullptr) return true;
        a.lat_deg = known->latitude;
        a.lon_deg = known->longitude;
        a.elevation_ft = known->altitude;
        a.fromCatalogue = false;
        return false;
    });
    return true;
}

}  // namespace tfx
