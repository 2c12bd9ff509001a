// The installed liveries in the shapes that matching needs: by airline and
// model, by model, by category and by regcode, pax and cargo apart. Built once
// per start and once per rescan into a fresh LiveryIndex, then published
// whole; readers take the published index and never see one half built.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "liveries/aircraft_category.h"
#include "liveries/code_interning.h"
#include "liveries/livery.h"
#include "liveries/similar_models.h"

namespace tfx {

struct LiveryTitle {
    std::string_view title;  // into titleStore
    bool cargo = false;
};

// Views of titles; the same title may stand more than once, which weights a
// random pick by how often it occurs.
using TitleList = std::vector<std::string_view>;

struct ViewHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const noexcept {
        return std::hash<std::string_view>{}(text);
    }
};

// Index 0 pax, 1 cargo: the ladder selects with the cargo flag.
inline constexpr std::size_t PAX = 0;
inline constexpr std::size_t CARGO = 1;

// An airline (or operator) index and a model index as one hash key.
constexpr std::uint32_t gf_airlineModelKey(std::uint16_t airline, std::uint16_t model) {
    return (static_cast<std::uint32_t>(airline) << 16) | model;
}

struct LiveryIndex {
    // Owns every distinct title once; node-based, so views stay valid.
    std::unordered_set<std::string, ViewHash, std::equal_to<>> titleStore;
    // Airline index -> model index -> titles, as built from the scan.
    std::map<std::uint16_t, std::map<std::uint16_t, std::vector<LiveryTitle>>> liveryIndex;
    // gf_airlineModelKey -> titles; [PAX] paxByAirline, [CARGO] cargoByAirline.
    std::array<std::unordered_map<std::uint32_t, TitleList>, 2> byAirline;
    // Model index -> titles; [PAX] paxByModel, [CARGO] cargoByModel.
    std::array<std::unordered_map<std::uint16_t, TitleList>, 2> byModel;
    // By AircraftCategory: model indices, sorted, no duplicates.
    std::array<std::vector<std::uint16_t>, AIRCRAFT_CATEGORY_WORDS.size()> categoryModels;
    // A regcode stands for exactly one title.
    std::unordered_map<std::string, std::string_view, ViewHash, std::equal_to<>> regcodeToTitle;
    std::unordered_map<std::string_view, std::string> titleToRegcode;
    // Titles that belong to their regcodes and are not handed to others.
    std::unordered_set<std::string_view> specialTitles;
    std::vector<std::string> uniqueRegcodes;  // sorted
    // Models with a generic livery (key ZZZ), sorted.
    std::vector<std::uint16_t> genericModels;

    // Copies of the similar-model results of this build, so that the index
    // answers on its own and stays unchanged while it is read.
    SimilarModelLists similarInstalled;
    std::map<std::uint16_t, SimilarModelLists> similarByAirline;

    // Codes the ladder needs, interned when the index is built, so that a
    // match interns nothing: the combined key of each airline and operator
    // pair of the scan (DLH and CLH -> DLHCLH), and the name table by index.
    std::uint16_t pvt = 0, zzz = 0, b738 = 0, a320 = 0;
    std::unordered_map<std::uint32_t, std::uint16_t> combinedKeys;
    std::unordered_map<std::uint16_t, std::string_view> nameWords;
    std::size_t liveryCount = 0;  // records of the scan the index was built from
};

// Interns "PVT", "ZZZ", "B738", "A320" and the name table's codes.
void gf_internLadderCodes(LiveryIndex& index);

// Steps of the build that need no files: the airline index from the sorted
// list, the title store, the pax/cargo split and in-line regcodes.
// Fills clashes with the lines of in-line regcode clashes.
void gf_indexLiveries(const std::vector<Livery>& list, LiveryIndex& index,
                      std::vector<std::string>& clashes);
// Flattens liveryIndex into byModel.
void lf_createModelSorted(LiveryIndex& index);
// What is installed, for the similar-model tables.
InstalledModels gf_installedModels(const LiveryIndex& index);
// The category step for each category, in the order Heavy, Large, Bizjet,
// Light, Rotorcraft, HighPerf, and the generic liveries, with their log.
void gf_categoriesAndGenerics(LiveryIndex& index);
// input/AIG-regcodes.enc, then input/my_regcodes: regcodes, special titles
// and unique regcodes, with output/info/OfflineRegcodes.txt.
void lf_processOfflineRegcodes(LiveryIndex& index);

// Steps 3 to 11 of the build from a list sorted as the catalogue is
// (gf_liveryLess): everything but reading the stored scan and publishing.
std::shared_ptr<LiveryIndex> gf_buildLiveryIndex(const std::vector<Livery>& list);

// Every installed title once, with its model index, in title order.
std::vector<std::pair<std::string_view, std::uint16_t>> gf_installedTitles(const LiveryIndex& index);

// The index readers see: the last one published, or an empty one.
std::shared_ptr<const LiveryIndex> gf_liveryIndex();
void gf_publishLiveryIndex(std::shared_ptr<const LiveryIndex> index);

}  // namespace tfx
