// Which installed model can stand in for a model that has no livery: built
// from the similar-type groups of the reference database once the livery
// index knows what is installed.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <vector>

namespace tfx {

// What the livery index has: every model with a pax or cargo livery for any
// airline, and per airline (or operator) index the models it has liveries for.
struct InstalledModels {
    std::set<std::uint16_t> models;
    std::map<std::uint16_t, std::set<std::uint16_t>> modelsByAirline;
};

// Model index to the model indices that may stand in for it.
using SimilarModelLists = std::map<std::uint16_t, std::vector<std::uint16_t>>;

// Every other model of the model's groups.
extern SimilarModelLists similarAllModels;
// Those installed; reduced to the closest one where there is a closest one.
extern SimilarModelLists similarInstalledModels;
// Airline index to the closest model of that airline's own installed models,
// for the models it has no livery for (a list of one).
extern std::map<std::uint16_t, SimilarModelLists> similarByAirline;

// Fills the three tables above from similarGroups and what is installed.
void gf_buildSimilarModels(const InstalledModels& installed);

// Of candidates, the one closest in writing to model: same letters and digits
// one apart, or the whole codes one edit apart. A list of one is taken as it
// stands; nothing when none comes close enough.
std::optional<std::uint16_t> closestModel(std::uint16_t model,
                                          const std::vector<std::uint16_t>& candidates);

}  // namespace tfx
