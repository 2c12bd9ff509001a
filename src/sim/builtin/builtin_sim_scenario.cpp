// Reading the built-in simulator's scenario file (format in the header).
#include "sim/builtin/builtin_sim_scenario.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "app/log.h"
#include "sim/builtin/builtin_sim_places.h"

namespace tfx {

namespace {

using nlohmann::json;

// Days since 1970-01-01 of a proleptic Gregorian date.
std::int64_t lf_daysFromCivil(std::int64_t y, unsigned m, unsigned d) {
    y -= m <= 2 ? 1 : 0;
    const std::int64_t era = (y >= 0 ? y : y - 399) / 400;
    const auto yoe = static_cast<unsigned>(y - era * 400);
    const unsigned doy = (153 * (m > 2 ? m - 3 : m + 9) + 2) / 5 + d - 1;
    const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
    return era * 146097 + static_cast<std::int64_t>(doe) - 719468;
}

// A number under key; absent gives fallback, a wrong type is logged and gives nullopt.
std::optional<double> lf_number(const json& object, const char* key, std::optional<double> fallback,
                                std::string_view where) {
    const auto it = object.find(key);
    if (it == object.end()) return fallback;
    if (!it->is_number() || !std::isfinite(it->get<double>())) {
        gf_logError(fmt::format("{}: \"{}\" is not a number", where, key));
        return std::nullopt;
    }
    return it->get<double>();
}

std::string lf_text(const json& object, const char* key, std::string fallback,
                    std::string_view where) {
    const auto it = object.find(key);
    if (it == object.end()) return fallback;
    if (!it->is_string()) {
        gf_logError(fmt::format("{}: \"{}\" is not a text, default kept", where, key));
        return fallback;
    }
    return it->get<std::string>();
}

bool lf_validPosition(std::optional<double> lat, std::optional<double> lon) {
    return lat && lon && std::abs(*lat) <= 90 && std::abs(*lon) <= 180;
}

void lf_readAirports(const json& list, std::string_view source, Scenario& out) {
    if (!list.is_array()) {
        gf_logError(fmt::format("{}: \"airports\" is not a list, ignored", source));
        return;
    }
    for (std::size_t i = 0; i < list.size(); ++i) {
        const std::string where = fmt::format("{}: airport {}", source, i + 1);
        const json& item = list[i];
        if (!item.is_object()) {
            gf_logError(fmt::format("{} is not an object, skipped", where));
            continue;
        }
        ScenarioAirport a;
        a.icao = lf_text(item, "icao", "", where);
        if (!a.icao.empty() && !item.contains("lat") && !item.contains("lon") &&
            !item.contains("elevation_ft")) {
            a.fromCatalogue = true;  // placed from the airport catalogue
            if (const auto radius = lf_number(item, "radius_nm", 3.0, where); radius && *radius > 0)
                a.radius_nm = *radius;
            out.airports.push_back(std::move(a));
            continue;
        }
        const auto lat = lf_number(item, "lat", std::nullopt, where);
        const auto lon = lf_number(item, "lon", std::nullopt, where);
        const auto elevation = lf_number(item, "elevation_ft", std::nullopt, where);
        const auto radius = lf_number(item, "radius_nm", 3.0, where);
        if (!lf_validPosition(lat, lon) || !elevation || !radius || *radius <= 0) {
            gf_logError(
                fmt::format("{} ({}) needs lat, lon, elevation_ft and a positive "
                            "radius_nm, skipped",
                            where, a.icao));
            continue;
        }
        a.lat_deg = *lat;
        a.lon_deg = *lon;
        a.elevation_ft = *elevation;
        a.radius_nm = *radius;
        out.airports.push_back(std::move(a));
    }
}

void lf_readInstalled(const json& list, std::string_view source, Scenario& out) {
    if (!list.is_array()) {
        gf_logError(fmt::format("{}: \"installed\" is not a list, ignored", source));
        return;
    }
    for (std::size_t i = 0; i < list.size(); ++i) {
        const std::string where = fmt::format("{}: installed title {}", source, i + 1);
        const json& item = list[i];
        KnownTitle t;
        if (item.is_string()) {
            t.title = item.get<std::string>();
        } else if (item.is_object()) {
            t.title = lf_text(item, "title", "", where);
            t.model = lf_text(item, "model", "", where);
            if (item.contains("static_cg_ft"))
                t.static_cg_ft = lf_number(item, "static_cg_ft", std::nullopt, where);
            if (item.contains("static_pitch_deg"))
                t.static_pitch_deg = lf_number(item, "static_pitch_deg", std::nullopt, where);
        }
        if (t.title.empty()) {
            gf_logError(fmt::format("{} has no title, skipped", where));
            continue;
        }
        out.installed.push_back(std::move(t));
    }
}

bool lf_readUser(const json& item, std::string_view source, UserScenario& user) {
    const std::string where = fmt::format("{}: user", source);
    if (!item.is_object()) {
        gf_logError(fmt::format("{} is not an object", where));
        return false;
    }
    user.title = lf_text(item, "title", user.title, where);
    user.atc_model = lf_text(item, "atc_model", user.atc_model, where);
    user.atc_id = lf_text(item, "atc_id", user.atc_id, where);
    user.model = lf_text(item, "model", user.model, where);
    if (item.contains("static_cg_ft"))
        user.static_cg_ft = lf_number(item, "static_cg_ft", std::nullopt, where);
    if (item.contains("static_pitch_deg"))
        user.static_pitch_deg = lf_number(item, "static_pitch_deg", std::nullopt, where);
    if (const auto mask = lf_number(item, "lights_mask", user.lights_mask, where);
        mask && *mask >= 0 && *mask < 65536) {
        user.lights_mask = static_cast<std::uint32_t>(*mask);
    }
    if (const auto heading = lf_number(item, "heading_deg", user.heading_deg, where)) {
        user.heading_deg = *heading;
    }
    if (const auto loop = item.find("loop"); loop != item.end()) {
        if (loop->is_boolean()) {
            user.loop = loop->get<bool>();
        } else {
            gf_logError(fmt::format("{}: \"loop\" is not true or false, ignored", where));
        }
    }
    if (const auto it = item.find("parked"); it != item.end() && it->contains("stand")) {
        const std::string airport = lf_text(*it, "airport", "", where);
        const std::string stand = lf_text(*it, "stand", "", where);
        if (!airport.empty() && !stand.empty()) user.parkedStand = StandRef{airport, stand};
    } else if (it != item.end()) {
        const auto lat =
            it->is_object() ? lf_number(*it, "lat", std::nullopt, where) : std::nullopt;
        const auto lon =
            it->is_object() ? lf_number(*it, "lon", std::nullopt, where) : std::nullopt;
        const auto heading =
            it->is_object() ? lf_number(*it, "heading_deg", user.heading_deg, where) : std::nullopt;
        if (lf_validPosition(lat, lon) && heading) {
            user.path = {PathPoint{0, *lat, *lon, std::nullopt}};
            user.heading_deg = *heading;
        }
    } else if (const auto path = item.find("path"); path != item.end()) {
        if (path->is_array()) {
            gf_readPathPoints(*path, where, user.path);
        } else {
            gf_logError(fmt::format("{}: \"path\" is not a list", where));
        }
    } else {
        user.pathFile = lf_text(item, "path_file", "", where);
    }
    return true;
}

bool lf_userPlaced(const UserScenario& user, std::string_view source) {
    const std::string where = fmt::format("{}: user", source);
    if (user.path.empty()) {
        gf_logError(
            fmt::format("{} needs \"parked\" with lat and lon or a stand, or a \"path\" "
                        "or \"path_file\" with at least one good point",
                        where));
        return false;
    }
    return true;
}

bool lf_flag(const json& object, const char* key, bool fallback, std::string_view where) {
    const auto it = object.find(key);
    if (it == object.end()) return fallback;
    if (!it->is_boolean()) {
        gf_logError(fmt::format("{}: \"{}\" is not true or false, default kept", where, key));
        return fallback;
    }
    return it->get<bool>();
}

// A number at least low; a bad one is logged and the default kept.
double lf_atLeast(const json& object, const char* key, double fallback, double low,
                  std::string_view where) {
    const auto value = lf_number(object, key, fallback, where);
    if (!value || *value < low) {
        if (value) gf_logError(fmt::format("{}: \"{}\" below {}, default kept", where, key, low));
        return fallback;
    }
    return *value;
}

void lf_readRough(const json& item, std::string_view source, SimRoughness& r) {
    const std::string where = fmt::format("{}: rough", source);
    if (item.is_boolean()) {
        if (!item.get<bool>()) r = SimRoughness::polite();
        return;
    }
    if (!item.is_object()) {
        gf_logError(fmt::format("{} is not an object or true/false, defaults kept", where));
        return;
    }
    r.seed =
        static_cast<std::uint64_t>(lf_atLeast(item, "seed", static_cast<double>(r.seed), 0, where));
    r.frame_jitter = std::min(0.45, lf_atLeast(item, "frame_jitter", r.frame_jitter, 0, where));
    r.stall_every_s = lf_atLeast(item, "stall_every_s", r.stall_every_s, 0, where);
    r.stall_ms =
        std::llround(lf_atLeast(item, "stall_ms", static_cast<double>(r.stall_ms), 0, where));
    if (const auto it = item.find("create_delay_ms"); it != item.end()) {
        if (it->is_array() && it->size() == 2 && (*it)[0].is_number() && (*it)[1].is_number() &&
            (*it)[0].get<double>() >= 0 && (*it)[1].get<double>() >= (*it)[0].get<double>()) {
            r.create_delay_min_ms = std::llround((*it)[0].get<double>());
            r.create_delay_max_ms = std::llround((*it)[1].get<double>());
        } else {
            gf_logError(
                fmt::format("{}: \"create_delay_ms\" is not [low, high], default kept", where));
        }
    }
    r.create_never_every = static_cast<std::uint32_t>(
        lf_atLeast(item, "create_never_every", r.create_never_every, 0, where));
    r.reuse_object_ids = lf_flag(item, "reuse_object_ids", r.reuse_object_ids, where);
    if (const auto offset = lf_number(item, "pressure_offset_ft", r.pressure_offset_ft, where))
        r.pressure_offset_ft = *offset;
    if (item.contains("restart_at_s")) {
        const double at = lf_atLeast(item, "restart_at_s", -1, 0, where);
        if (at >= 0) r.restart_at_s = at;
    }
    r.restart_down_s = lf_atLeast(item, "restart_down_s", r.restart_down_s, 0, where);
    r.restart_crash = lf_flag(item, "restart_crash", r.restart_crash, where);
}

}  // namespace

std::optional<std::int64_t> gf_parseUtcText(std::string_view text) {
    int y = 0, mo = 0, d = 0, h = 0, mi = 0, s = 0;
    char z = 0;
    const std::string copy(text);
    if (std::sscanf(copy.c_str(), "%4d-%2d-%2dT%2d:%2d:%2d%c", &y, &mo, &d, &h, &mi, &s, &z) != 7 ||
        z != 'Z' || mo < 1 || mo > 12 || d < 1 || d > 31 || h > 23 || mi > 59 || s > 59 || h < 0 ||
        mi < 0 || s < 0) {
        return std::nullopt;
    }
    return lf_daysFromCivil(y, static_cast<unsigned>(mo), static_cast<unsigned>(d)) * 86400 +
           h * 3600 + mi * 60 + s;
}

std::optional<Scenario> gf_parseSimScenario(std::string_view jsonText, std::string_view source,
                                            const std::filesystem::path& baseDir) {
    const json root = json::parse(jsonText.begin(), jsonText.end(), nullptr, false);
    if (root.is_discarded() || !root.is_object()) {
        gf_logError(fmt::format("{}: not a JSON object, scenario refused", source));
        return std::nullopt;
    }
    Scenario out;
    if (root.contains("start_utc")) {
        const auto utc = root["start_utc"].is_string()
                             ? gf_parseUtcText(root["start_utc"].get<std::string>())
                             : std::nullopt;
        if (utc) {
            out.start_utc_s = *utc;
        } else {
            gf_logError(
                fmt::format("{}: \"start_utc\" is not like 2024-06-01T12:00:00Z, "
                            "default kept",
                            source));
        }
    }
    if (const auto ground = lf_number(root, "default_ground_ft", 0.0, source)) {
        out.default_ground_ft = *ground;
    }
    if (root.contains("airports")) lf_readAirports(root["airports"], source, out);
    out.scenery = lf_text(root, "scenery", "", source);
    if (root.contains("installed")) lf_readInstalled(root["installed"], source, out);
    if (root.contains("rough")) lf_readRough(root["rough"], source, out.rough);
    if (!root.contains("user")) {
        gf_logError(fmt::format("{}: no \"user\" aircraft, scenario refused", source));
        return std::nullopt;
    }
    if (!lf_readUser(root["user"], source, out.user) ||
        !gf_placeScenarioNames(out, baseDir, source) || !lf_userPlaced(out.user, source)) {
        gf_logError(fmt::format("{}: scenario refused", source));
        return std::nullopt;
    }
    return out;
}

std::optional<Scenario> gf_readSimScenario(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    if (!in) {
        gf_logError(fmt::format("Cannot read the simulator scenario {}", path.string()));
        return std::nullopt;
    }
    const std::string text{std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    return gf_parseSimScenario(text, path.filename().string(), path.parent_path());
}

}  // namespace tfx
