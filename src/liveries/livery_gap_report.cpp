#include "liveries/livery_gap_report.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <tuple>
#include <unordered_map>

#include <fmt/format.h>

#include "app/log.h"
#include "app/options.h"
#include "liveries/code_interning.h"
#include "liveries/livery_index.h"
#include "liveries/livery_index_files.h"
#include "liveries/livery_matching_ladder.h"

namespace fs = std::filesystem;

namespace tfx {

namespace {

// What one aircraft last got. The title is a view into the index, which
// outlives the traffic that the report covers.
struct GapSeen {
    Aimo key;
    int step = NO_STEP;
    std::string_view title;
};

struct GapRow {
    Aimo key;
    std::uint32_t aircraft = 0, unmatched = 0, gain = 0;
    int bestStep = NO_STEP, worstStep = NO_STEP;
    std::string_view title;  // of the best step
};

// What an aircraft without a livery of its own costs the user, by step:
// nothing at the step the ladder aims for (the airline's own livery, or a
// generic one for a private aircraft), one more for each step below it, and
// most when the aircraft is not shown at all.
constexpr std::uint32_t GAIN_NOT_SHOWN = 8;

std::unordered_map<std::uint32_t, GapSeen> seenAircraft;
std::int32_t secondsSinceWrite = 0;

std::uint32_t lf_gain(const Aimo& key, int step) {
    if (step == NO_STEP) return GAIN_NOT_SHOWN;
    const int aim = gf_airlineCode(key.airline) == "PVT" ? 4 : 2;
    return step > aim ? static_cast<std::uint32_t>(step - aim) : 0;
}

std::vector<GapRow> lf_rows() {
    std::map<std::tuple<std::uint16_t, std::uint16_t, std::uint16_t, std::uint8_t>, GapRow> rows;
    for (const auto& [hexid, seen] : seenAircraft) {
        const Aimo& k = seen.key;
        GapRow& row = rows[{k.airline, k.operator_, k.model, k.cargo}];
        row.key = k;
        ++row.aircraft;
        row.gain += lf_gain(k, seen.step);
        if (seen.step == NO_STEP) {
            ++row.unmatched;
            continue;
        }
        if (row.bestStep == NO_STEP || seen.step < row.bestStep ||
            (seen.step == row.bestStep && seen.title < row.title)) {
            row.bestStep = seen.step;
            row.title = seen.title;
        }
        row.worstStep = std::max(row.worstStep, seen.step);
    }
    std::vector<GapRow> sorted;
    sorted.reserve(rows.size());
    for (auto& [key, row] : rows) sorted.push_back(row);
    std::stable_sort(sorted.begin(), sorted.end(), [](const GapRow& a, const GapRow& b) {
        return std::tie(b.gain, b.unmatched, b.aircraft) <
               std::tie(a.gain, a.unmatched, a.aircraft);
    });
    return sorted;
}

std::string lf_airlineText(const Aimo& k) {
    const std::string& airline = gf_airlineCode(k.airline);
    if (k.operator_ == 0) return airline.empty() ? "-" : airline;
    return fmt::format("{}/{}", airline.empty() ? "-" : airline, gf_airlineCode(k.operator_));
}

std::string lf_stepsText(const GapRow& row) {
    std::string text;
    if (row.bestStep != NO_STEP)
        text = row.bestStep == row.worstStep ? fmt::format("{}", row.bestStep)
                                             : fmt::format("{}-{}", row.bestStep, row.worstStep);
    if (row.unmatched > 0) text += text.empty() ? "none" : ",none";
    return text;
}

}  // namespace

void gf_noteGapMatch(const AircraftBase& ac, int step, std::string_view title) {
    Aimo key = ac.aimo;
    key.locked = 0;
    seenAircraft.insert_or_assign(ac.hexid, GapSeen{key, title.empty() ? NO_STEP : step, title});
}

std::vector<std::string> gf_liveryGapLines() {
    const std::vector<GapRow> rows = lf_rows();
    std::vector<std::array<std::string, 7>> cells;
    cells.push_back({"Gain", "Aircraft", "Unmatched", "Airline", "Model", "Cargo", "Steps"});
    for (const GapRow& row : rows) {
        std::string model = gf_modelCode(row.key.model);
        cells.push_back({fmt::format("{}", row.gain), fmt::format("{}", row.aircraft),
                         fmt::format("{}", row.unmatched), lf_airlineText(row.key),
                         model.empty() ? "-" : model, row.key.cargo != 0 ? "cargo" : "",
                         lf_stepsText(row)});
    }
    std::array<std::size_t, 7> width{};
    for (const auto& line : cells)
        for (std::size_t i = 0; i < line.size(); ++i) width[i] = std::max(width[i], line[i].size());

    std::vector<std::string> lines;
    const OptionsPtr options = gf_options();
    lines.push_back(
        fmt::format("Livery gaps, {}: {} aircraft of {} airline and model pair{} seen in the feed, "
                    "MATCHING_DEPTH {}",
                    gf_nowText(), seenAircraft.size(), rows.size(), rows.size() == 1 ? "" : "s",
                    options->MATCHING_DEPTH));
    lines.push_back(
        "Steps: 0-1 registration, 2 the airline's own livery of the model, 3 a similar model of "
        "the airline, 4 a generic livery, 5 the model in another airline's colours, 6 a similar "
        "model of any airline, 7 any model of the category, 8 B738 or A320, none: not shown.");
    lines.push_back(
        "Gain: what a livery of this airline and model would improve, summed over its aircraft "
        "(one per step below 2, or below 4 for a private aircraft; 8 for one not shown). The "
        "largest gains come first.");
    lines.push_back("");
    for (std::size_t r = 0; r < cells.size(); ++r) {
        const auto& c = cells[r];
        const std::string_view title = r == 0 ? "Best title" : rows[r - 1].title;
        lines.push_back(fmt::format("{:>{}}  {:>{}}  {:>{}}  {:<{}}  {:<{}}  {:<{}}  {:<{}}  {}",
                                    c[0], width[0], c[1], width[1], c[2], width[2], c[3], width[3],
                                    c[4], width[4], c[5], width[5], c[6], width[6],
                                    title.empty() ? "-" : title));
    }
    return lines;
}

bool gf_writeLiveryGapReport() {
    const fs::path path = fs::path("output") / "info" / "LiveryGaps.txt";
    if (!gf_writeReportLines(path, gf_liveryGapLines())) return false;
    gf_logLine(fmt::format("Livery gaps of {} aircraft written to '{}'", seenAircraft.size(),
                           path.string()));
    return true;
}

void gf_liveryGapsEverySecond(std::int32_t interval_s) {
    if (interval_s <= 0) return;
    if (++secondsSinceWrite < interval_s) return;
    secondsSinceWrite = 0;
    gf_writeLiveryGapReport();
}

void gf_clearGapReport() {
    seenAircraft.clear();
    secondsSinceWrite = 0;
}

}  // namespace tfx
