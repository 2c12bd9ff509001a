#include "liveries/similar_models.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>
#include <tuple>

#include <fmt/format.h>

#include "app/log.h"
#include "liveries/reference_db.h"

namespace tfx {

SimilarModelLists similarAllModels;
SimilarModelLists similarInstalledModels;
std::map<std::uint16_t, SimilarModelLists> similarByAirline;

namespace {

struct CodeParts {
    std::string letters;
    std::string digits;
    std::uint64_t number = 0;
};

CodeParts lf_split(std::string_view code) {
    CodeParts parts;
    for (const char c : code) {
        if ((c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z')) {
            parts.letters += c;
        } else if (c >= '0' && c <= '9') {
            parts.digits += c;
            // Model codes hold a handful of digits; saturate rather than wrap.
            if (parts.number < UINT64_MAX / 100) parts.number = parts.number * 10 + (c - '0');
        }
    }
    return parts;
}

std::size_t lf_levenshtein(std::string_view a, std::string_view b) {
    std::vector<std::size_t> row(b.size() + 1);
    for (std::size_t j = 0; j <= b.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= a.size(); ++i) {
        std::size_t diagonal = row[0];
        row[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            const std::size_t above = row[j];
            row[j] =
                std::min({row[j] + 1, row[j - 1] + 1, diagonal + (a[i - 1] == b[j - 1] ? 0u : 1u)});
            diagonal = above;
        }
    }
    return row[b.size()];
}

void lf_addOnce(std::vector<std::uint16_t>& list, std::uint16_t model) {
    if (std::find(list.begin(), list.end(), model) == list.end()) list.push_back(model);
}

}  // namespace

std::optional<std::uint16_t> closestModel(std::uint16_t model,
                                          const std::vector<std::uint16_t>& candidates) {
    if (candidates.empty()) return std::nullopt;
    if (candidates.size() == 1) return candidates.front();

    const std::string code = gf_modelCode(model);
    const CodeParts own = lf_split(code);
    using Score = std::tuple<std::size_t, std::size_t, std::size_t, std::uint64_t, std::string>;
    std::optional<Score> best;
    std::optional<std::uint16_t> winner;
    for (const std::uint16_t candidate : candidates) {
        const std::string other = gf_modelCode(candidate);
        const CodeParts parts = lf_split(other);
        const std::size_t d1 = lf_levenshtein(parts.letters, own.letters);
        const std::size_t d2 = lf_levenshtein(other, code);
        const std::size_t d3 = lf_levenshtein(parts.digits, own.digits);
        const std::uint64_t d4 =
            parts.number > own.number ? parts.number - own.number : own.number - parts.number;
        if (!(d2 <= 1 || (d1 == 0 && d3 <= 1))) continue;
        Score score{d1, d2, d3, d4, other};
        if (!best || score < *best) {
            best = std::move(score);
            winner = candidate;
        }
    }
    return winner;
}

void gf_buildSimilarModels(const InstalledModels& installed) {
    similarAllModels.clear();
    similarInstalledModels.clear();
    similarByAirline.clear();

    for (const auto& group : similarGroups) {
        if (group.size() < 2) continue;
        std::vector<std::uint16_t> members;
        members.reserve(group.size());
        for (const auto& code : group) members.push_back(gf_modelIndex(code));
        for (const std::uint16_t model : members) {
            for (const std::uint16_t other : members) {
                if (other == model) continue;
                lf_addOnce(similarAllModels[model], other);
                if (installed.models.contains(other))
                    lf_addOnce(similarInstalledModels[model], other);
            }
        }
    }
    if (similarInstalledModels.empty()) {
        gf_logLine("No similar model definitions with installed liveries found");
        return;
    }

    std::map<std::uint16_t, std::uint16_t> closest;
    for (const auto& [model, list] : similarInstalledModels) {
        if (const auto pick = closestModel(model, list)) closest[model] = *pick;
    }

    // An airline without a livery for a model keeps to its own fleet when one
    // of its installed models is close enough.
    std::vector<std::uint16_t> own;
    for (const auto& [airline, models] : installed.modelsByAirline) {
        for (const auto& [model, list] : similarInstalledModels) {
            if (models.contains(model)) continue;
            own.clear();
            for (const std::uint16_t candidate : list)
                if (models.contains(candidate)) own.push_back(candidate);
            if (own.empty()) continue;
            if (const auto pick = closestModel(model, own))
                similarByAirline[airline][model] = {*pick};
        }
    }

    gf_logLine(fmt::format("{:5} similar model definitions", similarInstalledModels.size()));
    for (const auto& [model, pick] : closest) similarInstalledModels[model] = {pick};
}

}  // namespace tfx
