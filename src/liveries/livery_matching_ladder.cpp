// The ladder's steps: registration, the airline's own livery of the model,
// a similar model of the airline, then wider: generic, any airline, a similar
// model of any airline, any model of the category, and B738 or A320.
#include "liveries/livery_matching_ladder.h"

#include <algorithm>
#include <random>

#include "liveries/reference_db.h"

namespace tfx {

namespace {

using Found = std::string_view;  // empty: nothing found

bool lf_containsNoCase(std::string_view text, std::string_view word) {
    const auto lower = [](char ch) {
        return (ch >= 'A' && ch <= 'Z') ? static_cast<char>(ch - 'A' + 'a') : ch;
    };
    return std::search(text.begin(), text.end(), word.begin(), word.end(),
                       [&](char a, char b) { return lower(a) == lower(b); }) != text.end();
}

// A list of models in the order to try: the stored one, or with RANDOM a
// shuffled copy, so that the index is never changed by reading it.
class ModelOrder {
public:
    ModelOrder(const std::vector<std::uint16_t>& stored, bool random) : stored_(stored) {
        if (random && stored.size() > 1) {
            copy_ = stored;
            gf_shuffleModels(copy_, true);
            shuffled_ = true;
        }
    }
    const std::vector<std::uint16_t>& models() const { return shuffled_ ? copy_ : stored_; }

private:
    const std::vector<std::uint16_t>& stored_;
    std::vector<std::uint16_t> copy_;
    bool shuffled_ = false;
};

struct Walk {
    const LiveryIndex& index;
    const LadderQuery& query;
    const LadderRules& rules;
    const RefusedTitles& refused;

    // A title that isn't special and wasn't refused may be handed out.
    bool usable(std::string_view title) const {
        if (!index.specialTitles.empty() && index.specialTitles.contains(title)) return false;
        return refused.empty() || !refused.contains(title);
    }
    bool accepted(std::string_view title) const {
        return !title.empty() && (refused.empty() || !refused.contains(title));
    }

    Found pickTitle(const TitleList& list) const {
        const auto n = static_cast<std::uint32_t>(list.size());
        for (int attempt = 0; attempt < 5; ++attempt) {
            const std::string_view title = list[gf_randomBelow(n, rules.random)];
            if (usable(title)) return title;
        }
        Found chosen;
        std::uint32_t k = 0;
        for (const std::string_view title : list) {
            if (!usable(title)) continue;
            ++k;
            if (gf_randomBelow(k, rules.random) == 0) chosen = title;
        }
        return chosen;
    }

    const TitleList* titlesOf(std::uint16_t airline, std::uint16_t model, std::size_t c) const {
        const auto& table = index.byAirline[c];
        const auto it = table.find(gf_airlineModelKey(airline, model));
        return it == table.end() || it->second.empty() ? nullptr : &it->second;
    }

    Found lookup(std::uint16_t airline, std::uint16_t model, std::size_t c) const {
        const TitleList* list = titlesOf(airline, model, c);
        return list == nullptr ? Found{} : pickTitle(*list);
    }

    // The first title of airline and model that carries the name of code's
    // airline; no random choice, special titles allowed.
    Found titleWithName(std::size_t c, std::uint16_t airline, std::uint16_t model,
                        std::uint16_t nameOf) const {
        const auto word = index.nameWords.find(nameOf);
        if (word == index.nameWords.end()) return {};
        const TitleList* list = titlesOf(airline, model, c);
        if (list == nullptr) return {};
        for (const std::string_view title : *list)
            if (lf_containsNoCase(title, word->second) && accepted(title)) return title;
        return {};
    }

    Found matchKey(const Aimo& key, std::size_t c) const {
        if (key.operator_ == 0) return lookup(key.airline, key.model, c);
        const auto combined =
            index.combinedKeys.find(gf_airlineModelKey(key.airline, key.operator_));
        if (combined != index.combinedKeys.end())
            if (Found t = lookup(combined->second, key.model, c); !t.empty()) return t;
        if (Found t = titleWithName(c, key.operator_, key.model, key.airline); !t.empty()) return t;
        if (Found t = titleWithName(c, key.airline, key.model, key.operator_); !t.empty()) return t;
        if (Found t = lookup(key.operator_, key.model, c); !t.empty()) return t;
        return lookup(key.airline, key.model, c);
    }

    // A freighter may fall back to a passenger livery, not the other way round.
    Found matchAirlineModel(const Aimo& key) const {
        const std::size_t c = key.cargo != 0 ? CARGO : PAX;
        Found t = matchKey(key, c);
        if (t.empty() && c == CARGO) t = matchKey(key, PAX);
        return t;
    }

    Found matchAnyAirline(std::uint16_t model, std::size_t c) const {
        const auto& table = index.byModel[c];
        const auto it = table.find(model);
        return it == table.end() || it->second.empty() ? Found{} : pickTitle(it->second);
    }

    // Another aircraft of the same category from the airline's own fleet.
    Found matchSimilarModel() const {
        const Aimo& key = query.key;
        const std::uint16_t owner = key.operator_ != 0 ? key.operator_ : key.airline;
        const auto fleet = index.similarByAirline.find(owner);
        if (fleet == index.similarByAirline.end()) return {};
        const auto listed = fleet->second.find(key.model);
        if (listed == fleet->second.end()) return {};
        const ModelOrder order(listed->second, rules.random);
        for (const std::uint16_t model : order.models()) {
            if (gf_modelCategory(model) != query.category) continue;
            Aimo similar = key;
            similar.model = model;
            Found t = matchKey(similar, key.cargo != 0 ? CARGO : PAX);
            if (t.empty() && key.cargo != 0) t = matchKey(similar, PAX);
            if (!t.empty()) return t;
        }
        return {};
    }

    LadderResult matchWider(int depth) const {
        const std::uint16_t model = query.key.model;
        const std::size_t own = query.ownCargo != 0 ? CARGO : PAX;
        const std::size_t c = (query.ownCargo != 0 || query.cargoOverride) ? CARGO : PAX;
        const bool small = gf_isSmallCategory(query.category);

        const Aimo generic{index.zzz, index.zzz, model, static_cast<std::uint8_t>(c), 0};
        if (Found t = matchAirlineModel(generic); accepted(t)) return {t, 4};
        if (depth >= 5 || small)
            if (Found t = matchAnyAirline(model, own); accepted(t)) return {t, 5};
        if (depth >= 6 || small) {
            if (const auto it = index.similarInstalled.find(model);
                it != index.similarInstalled.end()) {
                const ModelOrder order(it->second, rules.random);
                for (const std::uint16_t m : order.models())
                    if (Found t = matchAnyAirline(m, own); accepted(t)) return {t, 6};
            }
        }
        if (depth >= 7 || small) {
            const auto category = static_cast<std::size_t>(gf_modelCategory(model));
            for (const std::uint16_t m : index.categoryModels[category]) {
                if (Found t = matchAnyAirline(m, c); accepted(t)) return {t, 7};
                if (Found t = matchAnyAirline(m, c == CARGO ? PAX : CARGO); accepted(t))
                    return {t, 7};
            }
        }
        if (depth == 8) {
            for (const std::uint16_t m : {index.b738, index.a320})
                if (Found t = matchAnyAirline(m, own); accepted(t)) return {t, 8};
        }
        return {};
    }
};

}  // namespace

LadderResult gf_walkLadder(const LiveryIndex& index, const LadderQuery& query,
                           const LadderRules& rules, const RefusedTitles& refused) {
    const Walk walk{index, query, rules, refused};
    // The registration comes first, whatever the depth.
    if (!query.regcode.empty()) {
        if (const auto it = index.regcodeToTitle.find(query.regcode);
            it != index.regcodeToTitle.end() && walk.accepted(it->second)) {
            const bool unique = std::binary_search(index.uniqueRegcodes.begin(),
                                                   index.uniqueRegcodes.end(), query.regcode);
            return {it->second, unique ? 0 : 1};
        }
    }
    if (rules.depth < 2) return {};
    if (query.key.airline != 0 && query.key.airline == index.pvt) {
        Aimo generic = query.key;
        generic.airline = index.zzz;
        generic.operator_ = 0;
        if (Found t = walk.matchAirlineModel(generic); walk.accepted(t)) return {t, 4};
    }
    if (Found t = walk.matchAirlineModel(query.key); walk.accepted(t)) return {t, 2};
    if (rules.depth < 3) return {};
    if (Found t = walk.matchSimilarModel(); walk.accepted(t)) return {t, 3};
    if (rules.depth < 4) return {};
    return walk.matchWider(rules.depth);
}

std::uint32_t gf_randomBelow(std::uint32_t n, bool random) {
    if (!random || n < 2) return 0;
    thread_local std::mt19937 engine{std::random_device{}()};
    return std::uniform_int_distribution<std::uint32_t>(0, n - 1)(engine);
}

void gf_shuffleModels(std::vector<std::uint16_t>& models, bool random) {
    if (!random || models.size() < 2) return;
    for (std::size_t i = 1; i < models.size(); ++i)
        std::swap(models[i], models[gf_randomBelow(static_cast<std::uint32_t>(i + 1), random)]);
}

}  // namespace tfx
