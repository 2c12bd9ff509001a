// The two entries of matching, live and static, with what a match leaves
// behind: the step counts, the remembered title of each live aircraft, the
// aircraft without a match, and the titles the simulator refused.
#include "liveries/livery_matching.h"

#include <set>
#include <unordered_map>

#include <fmt/format.h>

#include "app/log.h"
#include "app/options.h"
#include "app/run_state.h"
#include "app/user_exception.h"
#include "gui/gui.h"
#include "liveries/code_interning.h"
#include "liveries/livery_gap_report.h"
#include "liveries/livery_index.h"
#include "liveries/livery_matching_ladder.h"
#include "traffic/aircraft_base.h"
#include "traffic/user_aircraft.h"

namespace tfx {

namespace {

constexpr std::size_t FAILED_TITLES_LIMIT = 20;
constexpr std::string_view ACCEPT_INDENT = "                ";  // 16 blanks

// Live aircraft: the traffic thread's, from one start of the traffic to the next.
std::unordered_map<std::uint32_t, std::string_view> rememberedLiveries;
std::set<std::string> noMatchKeys;
// For the life of the process. Refused titles are kept as text: they must
// outlive the index whose titles were refused.
RefusedTitles failedTitles;
std::set<std::string> failedAircraft;
std::array<std::uint32_t, LADDER_STEPS> stepCounts{};

std::string lf_noMatchKey(const AircraftBase& ac) {
    return fmt::format("{} {}", gf_aimoText(ac.aimo), ac.regcode);
}

void lf_logAccepted(const AircraftBase& ac, std::string_view mark, std::string_view title) {
    if (!gf_logIsOpen()) return;
    gf_logLine(fmt::format("{}{} ={}= {}", ACCEPT_INDENT, gf_logName(ac), mark, title));
}

}  // namespace

void gf_matchLivery(AircraftBase& ac, double altitude_ft) {
    const std::shared_ptr<const LiveryIndex> index = gf_liveryIndex();
    const OptionsPtr options = gf_options();
    const int chosenDepth = options->MATCHING_DEPTH;
    LadderRules rules{chosenDepth, options->RANDOM};
    // An aircraft up where the user flies is there for TCAS coverage,
    // whatever it looks like.
    const double tcasFloor_ft = 100.0 * options->TCAS_FL;
    if (userAircraft.alt > tcasFloor_ft && altitude_ft > tcasFloor_ft) rules.depth = 8;

    const LadderQuery query{ac.aimo, ac.aimo.cargo, ac.regcode, ac.category, false};
    const LadderResult found = gf_walkLadder(*index, query, rules, failedTitles);
    ac.livery = found.title;
    ac.fsltlLivery = 0;
    ac.tcasOnly = 0;
    if (!found.title.empty()) {
        ++stepCounts[static_cast<std::size_t>(found.step)];
        lf_logAccepted(ac, std::to_string(found.step), found.title);
        ac.fsltlLivery = found.title.find("FSLTL_") != std::string_view::npos ? 1 : 0;
        ac.tcasOnly = gf_beyondChosenDepth(found.step, chosenDepth, ac.category) ? 1 : 0;
    }
    gf_noteGapMatch(ac, found.step, found.title);
}

bool gf_matchStaticLivery(AircraftBase& ac, const StandForMatch& stand) {
    if (!ac.livery.empty()) {
        lf_logAccepted(ac, "s", ac.livery);
        return true;
    }
    const std::shared_ptr<const LiveryIndex> index = gf_liveryIndex();
    const OptionsPtr options = gf_options();
    Aimo key = ac.aimo;
    key.cargo = stand.cargo ? 1 : 0;
    const LadderQuery query{key, ac.aimo.cargo, ac.regcode, ac.category, stand.cargo};
    const LadderRules rules{options->MATCHING_DEPTH, options->RANDOM};
    const LadderResult found = gf_walkLadder(*index, query, rules, failedTitles);
    if (found.title.empty()) {
        gf_logLine(
            fmt::format("{:14}: {} no livery match ...", stand.name,
                        fmt::format("{:8} {} {}", ac.callsign, ac.regcode, gf_aimoText(ac.aimo))));
        return false;
    }
    ac.livery = found.title;
    lf_logAccepted(ac, std::to_string(found.step), found.title);
    return true;
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

std::string_view gf_regcodeLivery(std::string_view regcode) {
    if (regcode.empty()) return {};
    const std::shared_ptr<const LiveryIndex> index = gf_liveryIndex();
    const auto it = index->regcodeToTitle.find(regcode);
    return it == index->regcodeToTitle.end() ? std::string_view{} : it->second;
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
    failedTitles.emplace(ac.livery);
    failedAircraft.insert(
        fmt::format("{} {}", gf_modelCode(ac.aimo.model), gf_airlineCode(ac.aimo.airline)));
    if (failedTitles.size() >= FAILED_TITLES_LIMIT) {
        const std::string message = "There are too many liveries that could not be created!";
        gf_logLine(fmt::format("\n{}Error 81, {}\n", "==> ", message));
        throw UserRelatedException(81, fmt::format("{}, see Log.txt", message));
    }
}

bool gf_isFailedTitle(std::string_view title) {
    return !failedTitles.empty() && failedTitles.contains(title);
}

const std::array<std::uint32_t, 9>& gf_liveryStepCounts() {
    return stepCounts;
}

void gf_liveryMatchSummary() {
    bool any = false;
    for (const std::uint32_t n : stepCounts) any = any || n > 0;
    if (!any) return;
    constexpr std::string_view TITLE = "live traffic livery matching summary";
    gf_logLine(gf_bannerOpen(100, TITLE));
    std::string steps = "Matches at step: ";
    for (std::size_t step = 0; step < stepCounts.size(); ++step)
        steps += fmt::format("  {}: {}", step, stepCounts[step]);
    gf_logLine(steps);
    if (!failedAircraft.empty()) {
        gf_logLine("\nCould not be created");
        for (const std::string& line : failedAircraft) gf_logLine("  " + line);
    }
    gf_logLine(gf_bannerClose(100, TITLE));
}

void gf_liveryTrafficEnded() {
    gf_liveryMatchSummary();
    std::string noMatch;
    gf_noMatchSummary(noMatch);
    if (!noMatch.empty()) gf_logLine(noMatch);
    gf_writeLiveryGapReport();
}

void gf_clearLiveryFailures() {
    failedTitles.clear();
    failedAircraft.clear();
    stepCounts.fill(0);
}

void gf_resetLiveryMemory() {
    rememberedLiveries.clear();
    noMatchKeys.clear();
    gf_clearGapReport();
}

}  // namespace tfx
