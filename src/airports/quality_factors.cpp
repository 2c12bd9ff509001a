// How well an airport file knows its stands: a score per stand from how many
// options it has, on how many days, how much of the day they cover, and how
// many half hours they tell together; real and soft options apart.
#include <algorithm>
#include <bit>
#include <cmath>

#include "airports/airport_file_io.h"

namespace tfx {
namespace {

double lf_standScore(const Stand& stand, bool real) {
    int n = 0, bits = 0;
    std::uint64_t unionHours = 0;
    std::uint32_t days = 0;  // bit per day
    for (const StandOption& o : stand.options) {
        if (o.number == 0 || (o.real != 0) != real) continue;
        ++n;
        days |= 1u << o.day;
        unionHours |= o.hours;
        bits += std::popcount(o.hours);
    }
    if (n == 0) return 0.0;
    return 10000.0 + std::min(20.0 * n, 4000.0) + 100.0 * std::popcount(days) +
           12.5 * std::popcount(unionHours) + std::min(2.0 * bits, 700.0);
}

std::int32_t lf_factor(double sum, int count) {
    const double factor = std::round(sum / count * 0.00625);
    return static_cast<std::int32_t>(std::clamp(factor, 0.0, 100.0));
}

}  // namespace

QualityFactors gf_calcQualityFactors(const std::vector<Stand>& stands) {
    const bool anyOption = std::any_of(stands.begin(), stands.end(),
                                       [](const Stand& s) { return !s.options.empty(); });
    if (stands.empty() || !anyOption) return {};
    double real = 0, soft = 0;
    int counted = 0;
    for (const Stand& stand : stands) {
        if (stand.type == STAND_TYPE_FUEL) continue;
        ++counted;
        real += lf_standScore(stand, true);
        soft += lf_standScore(stand, false);
    }
    if (counted == 0) return {};
    return {lf_factor(real, counted), lf_factor(soft, counted)};
}

}  // namespace tfx
