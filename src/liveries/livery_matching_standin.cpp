// STAND-IN for livery matching. Instead of the ladder over the installed
// catalogue, every aircraft with a known model gets the first title of that
// model in the scanned liveries that the simulator hasn't refused, whatever
// its airline; an aircraft without a model, or of a model nobody installed,
// gets none. With no scanned liveries loaded at all, a model gets the
// made-up title "<model> livery". The memory of liveries and no-matches and the refused-title rule
// with its escalation behave as the engine expects. The real matcher
// replaces this file.
#include <algorithm>
#include <set>
#include <unordered_map>
#include <unordered_set>

#include <fmt/format.h>

#include "app/log.h"
#include "app/run_state.h"
#include "app/user_exception.h"
#include "gui/gui.h"
#include "liveries/code_interning.h"
#include "liveries/livery.h"
#include "liveries/livery_matching.h"
#include "traffic/aircraft_base.h"

namespace tfx {

namespace {

constexpr std::size_t FAILED_TITLES_LIMIT = 20;

std::unordered_set<std::string> madeUpTitles;  // owns the titles handed out
std::unordered_map<std::uint32_t, std::string_view> rememberedLiveries;
std::set<std::string> noMatchKeys;
std::unordered_set<std::string_view> failedTitles;
std::set<std::string> failedAircraft;

std::string lf_noMatchKey(const AircraftBase& ac) {
    return fmt::format("{} {}", gf_aimoText(ac.aimo), ac.regcode);
}

}  // namespace

void gf_matchLivery(AircraftBase& ac, double) {
    ac.livery = {};
    if (ac.aimo.model == 0) return;
    std::string_view title;
    if (scanList.empty()) {
        // No scan loaded at all (the engine run on its own): one made-up
        // title per model, as before there was a scan.
        title = *madeUpTitles.insert(fmt::format("{} livery", gf_modelCode(ac.aimo.model))).first;
        if (gf_isFailedTitle(title)) return;
    } else {
        const auto found = std::find_if(scanList.begin(), scanList.end(), [&](const Livery& l) {
            return l.model == ac.aimo.model && !gf_isFailedTitle(l.title);
        });
        if (found == scanList.end()) return;
        // A copy of its own, so that a later scan can't take the text away.
        title = *madeUpTitles.insert(found->title).first;
    }
    ac.livery = title;
    ac.fsltlLivery = 0;
    ac.tcasOnly = 0;
}

std::optional<std::string_view> gf_rememberedLivery(std::uint32_t hexid) {
    const auto it = rememberedLiveries.find(hexid);
    if (it == rememberedLiveries.end()) return std::nullopt;
    if (gf_isFailedTitle(it->second)) {
        rememberedLiveries.erase(it);
        return std::nullopt;
    }
    return it->second;
}

void gf_rememberLivery(std::uint32_t hexid, std::string_view title) {
    rememberedLiveries.insert_or_assign(hexid, title);
}

bool gf_forgetLivery(std::uint32_t hexid) {
    return rememberedLiveries.erase(hexid) > 0;
}

std::string_view gf_regcodeLivery(std::string_view) {
    return {};
}

void gf_rememberNoMatch(const AircraftBase& ac) {
    noMatchKeys.insert(lf_noMatchKey(ac));
}

bool gf_isRememberedNoMatch(const AircraftBase& ac) {
    return !noMatchKeys.empty() && noMatchKeys.contains(lf_noMatchKey(ac));
}

void gf_noMatchSummary(std::string& out) {
    if (noMatchKeys.empty()) return;
    out += "\nNo match found for:\n";
    for (const auto& key : noMatchKeys) out += key + "\n";
    out += "\n";
}

void gf_liveryCreateFailed(const AircraftBase& ac) {
    const std::uint8_t run = SimRunState.load();
    if (run == 1 || run == 2) {
        const std::string text =
            fmt::format("{} '{}' could not be created by your Sim!", ac.callsign, ac.livery);
        gf_logLine(text);
        gf_showStatus(text);
    }
    failedTitles.insert(ac.livery);
    failedAircraft.insert(
        fmt::format("{} {}", gf_modelCode(ac.aimo.model), gf_airlineCode(ac.aimo.airline)));
    if (failedTitles.size() >= FAILED_TITLES_LIMIT) {
        const std::string message = "There are too many liveries that could not be created!";
        gf_logLine(fmt::format("\n{}Error 81, {}\n", "==> ", message));
        throw UserRelatedException(81, fmt::format("{}, see Log.txt", message));
    }
}

bool gf_isFailedTitle(std::string_view title) {
    return failedTitles.contains(title);
}

void gf_resetLiveryMemory() {
    rememberedLiveries.clear();
    noMatchKeys.clear();
}

}  // namespace tfx
