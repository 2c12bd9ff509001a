// What the user is told is installed: liveries per category with their
// models, and the models that have a generic livery. A category the user
// shows but has no livery for is switched off.
#include <algorithm>

#include <fmt/format.h>

#include "app/log.h"
#include "app/options.h"
#include "app/parameters.h"
#include "liveries/livery_index.h"
#include "liveries/reference_db.h"

namespace tfx {

namespace {

constexpr std::size_t CODES_PER_LINE = 20;

constexpr AircraftCategory CATEGORY_ORDER[] = {
    AircraftCategory::Heavy, AircraftCategory::Large,      AircraftCategory::Bizjet,
    AircraftCategory::Light, AircraftCategory::Rotorcraft, AircraftCategory::HighPerf,
};

struct CategorySwitch {
    AircraftCategory category;
    BoolOption ParameterStore::*parameter;
    const char* what;
};

constexpr CategorySwitch SWITCHES[] = {
    {AircraftCategory::Light, &ParameterStore::LIGHT_AIRCRAFT, "light aircraft"},
    {AircraftCategory::HighPerf, &ParameterStore::HIGH_PERF_AIRCRAFT, "High Perf aircraft"},
    {AircraftCategory::Rotorcraft, &ParameterStore::HELICOPTERS, "Helicopters"},
};

const CategorySwitch* lf_switchOf(AircraftCategory category) {
    for (const CategorySwitch& s : SWITCHES)
        if (s.category == category) return &s;
    return nullptr;
}

// "  A319, A320, ..." in lines of 20 codes.
void lf_logModelList(const std::vector<std::uint16_t>& models) {
    for (std::size_t from = 0; from < models.size(); from += CODES_PER_LINE) {
        std::string line = "  ";
        const std::size_t to = std::min(models.size(), from + CODES_PER_LINE);
        for (std::size_t i = from; i < to; ++i) {
            if (i > from) line += ", ";
            line += gf_modelCode(models[i]);
        }
        gf_logLine(line);
    }
}

void lf_sortUnique(std::vector<std::uint16_t>& models) {
    std::sort(models.begin(), models.end());
    models.erase(std::unique(models.begin(), models.end()), models.end());
}

void lf_publishSwitches() {
    gf_publishOptions([](Options& o) {
        o.LIGHT_AIRCRAFT = params.LIGHT_AIRCRAFT.current;
        o.HIGH_PERF_AIRCRAFT = params.HIGH_PERF_AIRCRAFT.current;
        o.HELICOPTERS = params.HELICOPTERS.current;
    });
}

void lf_categoryStep(LiveryIndex& index, AircraftCategory category) {
    std::size_t pax = 0, cargo = 0;
    std::vector<std::uint16_t>& models = index.categoryModels[static_cast<std::size_t>(category)];
    models.clear();
    for (std::size_t side : {PAX, CARGO}) {
        for (const auto& [model, titles] : index.byModel[side]) {
            if (gf_modelCategory(model) != category) continue;
            (side == PAX ? pax : cargo) += titles.size();
            models.push_back(model);
        }
    }
    const std::string_view word = gf_categoryWord(category);
    if (pax == 0 && cargo == 0) {
        gf_logLine(fmt::format("Category {}: No livery found", word));
        const CategorySwitch* s = lf_switchOf(category);
        if (s != nullptr && (params.*(s->parameter)).current) {
            BoolOption& option = params.*(s->parameter);
            option.current = false;
            gf_saveParameter(option);
            gf_logLine(
                fmt::format("{} temporarily switched off because you do not have {} installed",
                            option.key, s->what));
        }
    } else {
        gf_logLine(fmt::format(
            "Category {}: {} pax liverie{}{}", word, pax, pax == 1 ? "" : "s",
            cargo == 0 ? std::string()
                       : fmt::format(" and {} cargo liverie{}", cargo, cargo == 1 ? "" : "s")));
        lf_sortUnique(models);
        lf_logModelList(models);
    }
    lf_publishSwitches();
}

void lf_genericLiveries(LiveryIndex& index) {
    index.genericModels.clear();
    const auto it = index.liveryIndex.find(index.zzz);
    if (it == index.liveryIndex.end() || it->second.empty()) {
        gf_logLine("No generic liveries");
        return;
    }
    for (const auto& [model, titles] : it->second) index.genericModels.push_back(model);
    lf_sortUnique(index.genericModels);
    const std::size_t n = index.genericModels.size();
    gf_logLine(fmt::format("{} model{} have a generic livery", n, n == 1 ? "" : "s"));
    lf_logModelList(index.genericModels);
}

}  // namespace

void gf_categoriesAndGenerics(LiveryIndex& index) {
    gf_logLine("");
    for (const AircraftCategory category : CATEGORY_ORDER) lf_categoryStep(index, category);
    lf_genericLiveries(index);
}

}  // namespace tfx
