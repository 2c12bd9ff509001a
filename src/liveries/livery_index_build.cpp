// The index proper: the airline index from the sorted scan, the title store,
// the pax/cargo split by airline and by model, and the in-line regcodes.
#include <algorithm>

#include <fmt/format.h>

#include "app/log.h"
#include "liveries/livery_index.h"
#include "liveries/livery_matching_names.h"
#include "liveries/reference_db.h"

namespace tfx {

namespace {

// Sizes of a large catalogue; the tables are sized up front from them.
constexpr std::size_t TITLES_HINT = 30000;
constexpr std::size_t PAX_AIRLINE_MODELS_HINT = 8192;
constexpr std::size_t CARGO_AIRLINE_MODELS_HINT = 1024;
constexpr std::size_t PAX_MODELS_HINT = 324;
constexpr std::size_t CARGO_MODELS_HINT = 75;
constexpr std::size_t REGCODES_HINT = 36000;
constexpr std::size_t SPECIAL_HINT = 4096;
constexpr float LOAD_FACTOR = 0.7f;

template <typename Table>
void lf_size(Table& table, std::size_t hint) {
    table.max_load_factor(LOAD_FACTOR);
    table.reserve(hint);
}

using ModelMap = std::map<std::uint16_t, std::vector<LiveryTitle>>;

std::string_view lf_store(LiveryIndex& index, const std::string& title) {
    return *index.titleStore.insert(title).first;
}

void lf_add(LiveryIndex& index, ModelMap& models, const Livery& l) {
    models[l.model].push_back({lf_store(index, l.title), l.cargo != 0});
}

// The first pass: liveries of an airline without operator, under the airline.
void lf_airlinePass(const std::vector<Livery>& list, LiveryIndex& index) {
    for (const Livery& l : list) {
        if (l.opr != 0) continue;
        if (l.airline == 0 || l.model == 0) {
            gf_logLine(fmt::format("Invalid livery index: airl={}, opr={}, model={}, title={}",
                                   gf_airlineCode(l.airline), gf_airlineCode(l.opr),
                                   gf_modelCode(l.model), l.title));
            continue;
        }
        lf_add(index, index.liveryIndex[l.airline], l);
    }
}

// The second pass: an operator's liveries under the airline and operator
// written together (DLHCLH) and under the operator's own index, never under
// the airline alone.
void lf_operatorPass(const std::vector<Livery>& list, LiveryIndex& index) {
    std::uint16_t lastAirline = 0, lastOpr = 0, combined = 0;
    for (const Livery& l : list) {
        if (l.opr == 0) continue;
        if (l.airline == 0 || l.model == 0) {
            gf_logLine(fmt::format(
                "Invalid operator livery index: airl={}, opr={}, model={}, title={}",
                gf_airlineCode(l.airline), gf_airlineCode(l.opr), gf_modelCode(l.model), l.title));
            continue;
        }
        if (l.airline != lastAirline || l.opr != lastOpr) {
            lastAirline = l.airline;
            lastOpr = l.opr;
            combined = gf_airlineIndex(gf_airlineCode(l.airline) + gf_airlineCode(l.opr));
            if (combined == 0)
                gf_logLine(
                    fmt::format("{}: invalid airline/operator while flushing: airline={}, opr={}",
                                "operator ()", gf_airlineCode(l.airline), gf_airlineCode(l.opr)));
        }
        if (combined == 0) continue;
        index.combinedKeys.emplace(gf_airlineModelKey(l.airline, l.opr), combined);
        lf_add(index, index.liveryIndex[combined], l);
        lf_add(index, index.liveryIndex[l.opr], l);
    }
}

void lf_splitPaxCargo(LiveryIndex& index) {
    for (const auto& [airline, models] : index.liveryIndex) {
        for (const auto& [model, titles] : models) {
            for (const LiveryTitle& t : titles)
                index.byAirline[t.cargo ? CARGO : PAX][gf_airlineModelKey(airline, model)]
                    .push_back(t.title);
        }
    }
}

void lf_inlineRegcodes(const std::vector<Livery>& list, LiveryIndex& index,
                       std::vector<std::string>& clashes) {
    for (const Livery& l : list) {
        if (l.regcode.empty()) continue;
        const auto stored = index.titleStore.find(l.title);
        if (stored == index.titleStore.end()) {
            clashes.push_back(
                fmt::format("==> [{}] {} '{}' not available, system error, should not happen?",
                            gf_modelCode(l.model), l.regcode, l.title));
            continue;
        }
        const std::string_view title = *stored;
        const auto [byRegcode, newRegcode] = index.regcodeToTitle.try_emplace(l.regcode, title);
        if (!newRegcode && byRegcode->second != title)
            clashes.push_back(fmt::format("{} '{}' => already in use by '{}'", l.regcode, title,
                                          byRegcode->second));
        const auto [byTitle, newTitle] = index.titleToRegcode.try_emplace(title, l.regcode);
        if (!newTitle && byTitle->second != l.regcode)
            clashes.push_back(fmt::format("{} '{}' => already in use by '{}'", title, l.regcode,
                                          byTitle->second));
    }
}

}  // namespace

void gf_internLadderCodes(LiveryIndex& index) {
    index.pvt = gf_airlineIndex("PVT");
    index.zzz = gf_airlineIndex("ZZZ");
    index.b738 = gf_modelIndex("B738");
    index.a320 = gf_modelIndex("A320");
    for (const AirlineNameWord& row : AIRLINE_NAME_WORDS)
        index.nameWords.emplace(gf_airlineIndex(row.code), row.word);
}

void gf_indexLiveries(const std::vector<Livery>& list, LiveryIndex& index,
                      std::vector<std::string>& clashes) {
    lf_size(index.titleStore, TITLES_HINT);
    lf_size(index.byAirline[PAX], PAX_AIRLINE_MODELS_HINT);
    lf_size(index.byAirline[CARGO], CARGO_AIRLINE_MODELS_HINT);
    lf_size(index.byModel[PAX], PAX_MODELS_HINT);
    lf_size(index.byModel[CARGO], CARGO_MODELS_HINT);
    lf_size(index.regcodeToTitle, REGCODES_HINT);
    lf_size(index.titleToRegcode, REGCODES_HINT);
    lf_size(index.specialTitles, SPECIAL_HINT);
    index.liveryCount = list.size();

    lf_airlinePass(list, index);
    lf_operatorPass(list, index);
    gf_logLine(fmt::format("{:5} livery titles", index.titleStore.size()));
    lf_splitPaxCargo(index);
    lf_inlineRegcodes(list, index, clashes);
}

void lf_createModelSorted(LiveryIndex& index) {
    struct Flat {
        std::string_view title;
        std::uint16_t model;
        bool cargo;
    };
    std::vector<Flat> flat;
    flat.reserve(TITLES_HINT);
    for (const auto& [airline, models] : index.liveryIndex) {
        for (const auto& [model, titles] : models) {
            if (model == 0) {
                gf_logLine(fmt::format("{}: model index 0 skipped", "lf_createModelSorted"));
                continue;
            }
            for (const LiveryTitle& t : titles) flat.push_back({t.title, model, t.cargo});
        }
    }
    std::stable_sort(flat.begin(), flat.end(),
                     [](const Flat& a, const Flat& b) { return a.model < b.model; });
    for (const Flat& f : flat) index.byModel[f.cargo ? CARGO : PAX][f.model].push_back(f.title);
}

std::vector<std::pair<std::string_view, std::uint16_t>> gf_installedTitles(const LiveryIndex& index) {
    std::vector<std::pair<std::string_view, std::uint16_t>> titles;
    for (const auto& side : index.byModel)
        for (const auto& [model, list] : side)
            for (const std::string_view title : list) titles.emplace_back(title, model);
    std::sort(titles.begin(), titles.end());
    titles.erase(std::unique(titles.begin(), titles.end(),
                             [](const auto& a, const auto& b) { return a.first == b.first; }),
                 titles.end());
    return titles;
}

InstalledModels gf_installedModels(const LiveryIndex& index) {
    InstalledModels installed;
    for (const auto& side : index.byModel)
        for (const auto& [model, titles] : side) installed.models.insert(model);
    for (const auto& [airline, models] : index.liveryIndex) {
        auto& own = installed.modelsByAirline[airline];
        for (const auto& [model, titles] : models) own.insert(model);
    }
    return installed;
}

}  // namespace tfx
