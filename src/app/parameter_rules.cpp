// Rules run on loaded parameters: the automatic-radius rule, the version
// step after an update, and the early look at the window's place.
#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

#include <fmt/format.h>
#include <pugixml.hpp>

#include "app/file_utils.h"
#include "app/log.h"
#include "app/parameters.h"
#include "app/version.h"

namespace fs = std::filesystem;

namespace tfx {
namespace {

// Keys that older versions wrote and that no longer mean anything.
constexpr const char* OBSOLETE_KEYS[] = {
    "CUSTOM_PARKING_PERCENTAGE",
    "AIRBORNE_ONLY",
    "INITIAL_LOAD_ONLY",
    "TCAS Coverage",
    "STRAIGHT_PBS_ONLY",
    "Always",
    "SCAN_AIRPORTS",
    "SCAN_LIVERIES",
    "LIV_SCAN_VERSION",
    "ADDONS_SCAN_VERSION",
    "LIVERIES_SCANNED",
};

// Nearest entry of the holding list; the lower one on a tie.
std::int32_t lf_snapToList(std::int32_t value, const std::vector<std::int32_t>& list) {
    if (value < 11) return 10;
    if (value >= 900) return 900;
    std::int32_t best = list.front();
    for (std::int32_t entry : list)
        if (std::abs(entry - value) < std::abs(best - value)) best = entry;
    return best;
}

std::int32_t lf_windowValue(pugi::xml_node section, const IntParameter& p) {
    for (pugi::xml_node n : section.children("parameter"))
        if (std::strcmp(n.attribute("name").as_string(), p.key.c_str()) == 0)
            return std::clamp(n.attribute("value").as_int(0), p.minimum, p.maximum);
    return p.defaultValue;
}

}  // namespace

void gf_applyRadiusRule() {
    std::array<IntParameter*, 5> radiusParams = {&params.RANGE_GROUND, &params.RANGE_1,
                                                 &params.RANGE_2, &params.RANGE_3,
                                                 &params.RANGE_ABOVE};
    std::array<IntParameter*, 3> levelParams = {&params.FLIGHT_LEVEL_1, &params.FLIGHT_LEVEL_2,
                                                &params.FLIGHT_LEVEL_3};
    std::array<double, 5> radii{};
    std::array<double, 3> levels{};
    for (std::size_t i = 0; i < radii.size(); ++i) radii[i] = radiusParams[i]->current;
    for (std::size_t i = 0; i < levels.size(); ++i) levels[i] = levelParams[i]->current;
    const auto radiiBefore = radii;
    const auto levelsBefore = levels;

    for (double& r : radii) r = std::max(r, 0.0);
    std::sort(levels.begin(), levels.end());
    if (levels[1] <= levels[0]) levels[1] = levels[0] + 1;
    if (levels[2] <= levels[1]) levels[2] = levels[1] + 1;
    for (std::size_t i = 1; i < radii.size(); ++i) radii[i] = std::max(radii[i], radii[i - 1]);

    if (radii == radiiBefore && levels == levelsBefore) {
        gf_logLine("Radius parameters okay");
        return;
    }
    gf_logError("Radius parameters changed to fullfill the requirements (see Manual): ");
    auto store = [](IntParameter& p, double value) {
        p.current = std::clamp(static_cast<std::int32_t>(std::lround(value)), p.minimum, p.maximum);
        gf_saveParameter(p);
    };
    for (std::size_t i = 0; i < radii.size(); ++i) store(*radiusParams[i], radii[i]);
    for (std::size_t i = 0; i < levels.size(); ++i) store(*levelParams[i], levels[i]);
}

void gf_migrateParameters() {
    const std::string savedText = params.PROGRAM_VERSION.current;
    const VersionData saved = gf_parseVersion(savedText);
    const VersionData& running = gf_runningVersion();
    const std::string runningText = gf_versionText(running);

    if (savedText.empty()) {  // first run: no update
        params.PROGRAM_VERSION.current = runningText;
        gf_saveParameter(params.PROGRAM_VERSION);
        return;
    }
    if (saved >= running) {
        if (saved != running) {
            params.PROGRAM_VERSION.current = runningText;
            gf_saveParameter(params.PROGRAM_VERSION);
        }
        return;
    }

    gf_logLine(fmt::format("This is a version update from {} -> {}", savedText, runningText));
    // The leftovers of the old version go first, the file last and in one
    // replacement with the new version in it: a run killed on the way finds
    // the old version in the file and does the whole step again.
    std::error_code ignored;
    fs::remove("zlib1.dll", ignored);
    fs::remove_all("new_version", ignored);

    IntSelector& holding = params.HOLDING_THRESHOLD_METERS;
    holding.current = lf_snapToList(holding.current, holding.list);
    params.PROGRAM_VERSION.current = runningText;
    gf_changeParameters(
        std::vector<std::string>(std::begin(OBSOLETE_KEYS), std::end(OBSOLETE_KEYS)), {&holding},
        {&params.PROGRAM_VERSION});
}

int gf_checkRadiusParameters() {
    const int created = gf_readParameters();
    if (created == 0) {
        gf_applyRadiusRule();
        gf_migrateParameters();
    }
    return created;
}

WindowPlace gf_preReadWindowPlace() {
    const WindowPlace defaults{params.MAIN_WINDOW_X.defaultValue,
                               params.MAIN_WINDOW_Y.defaultValue};
    const fs::path path = gf_parameterFilePath();
    std::error_code ec;
    const bool exists = fs::exists(path, ec);
    if (ec) {
        gf_logError(
            fmt::format("Could not check whether '{}' exists: {}", path.string(), ec.message()));
        return defaults;
    }
    if (!exists) return defaults;

    pugi::xml_document doc;
    const pugi::xml_parse_result result = doc.load_file(path.c_str());
    if (result.status == pugi::status_file_not_found || result.status == pugi::status_io_error) {
        gf_logError(fmt::format("{} could not be opened", path.string()));
        return defaults;
    }
    if (!result) {
        gf_logError(fmt::format("{} failed to load ({}). Saved as 0.xml and removed.",
                                path.string(), result.description()));
        gf_save1GenerationOf(path);
        if (!fs::remove(path, ec) && ec)
            gf_logError(fmt::format("Could not remove '{}': {}", path.string(), ec.message()));
        return defaults;
    }
    pugi::xml_node root = doc.child("root");
    pugi::xml_node section = (root ? root : static_cast<pugi::xml_node>(doc)).child("parameters");
    return {lf_windowValue(section, params.MAIN_WINDOW_X),
            lf_windowValue(section, params.MAIN_WINDOW_Y)};
}

}  // namespace tfx
