#include "app/hours.h"

#include <charconv>

#include <fmt/format.h>

#include "app/log.h"
#include "app/text_utils.h"

namespace tfx {
namespace {

constexpr std::string_view FN = "gf_hours2bitset";
constexpr int LAST_HALF_HOUR = 47;

// A decimal 0..47 with blanks around it; anything else is logged.
std::optional<int> lf_hour(std::string_view piece, std::string_view whole) {
    const std::string trimmed = gf_trim(piece);
    int value = -1;
    const char* end = trimmed.data() + trimmed.size();
    const auto [ptr, ec] = std::from_chars(trimmed.data(), end, value);
    if (trimmed.empty() || ec != std::errc() || ptr != end || value < 0 || value > LAST_HALF_HOUR) {
        gf_logError(fmt::format("{} invalid hour '{}' in {}", "operator ()", piece, whole));
        return std::nullopt;
    }
    return value;
}

HalfHours lf_range(std::string_view text) {
    const auto pieces = gf_split(text, ':');
    if (pieces.size() > 2) {
        gf_logError(fmt::format("{} more than one colon char in: {}", FN, text));
        return {};
    }
    std::optional<int> numbers[2];
    bool anyInvalid = false;
    int count = 0;
    for (const auto& piece : pieces) {
        if (gf_trim(piece).empty()) continue;  // "3:" is one number
        numbers[count] = lf_hour(piece, text);
        anyInvalid |= !numbers[count].has_value();
        ++count;
    }
    if (anyInvalid) return {};
    HalfHours set;
    if (count == 1) {
        set.set(static_cast<std::size_t>(*numbers[0]));
    } else if (count == 2) {
        if (*numbers[0] > *numbers[1]) {
            gf_logError(fmt::format("{} descending range not allowed ({}:{} in {})", FN,
                                    *numbers[0], *numbers[1], text));
            return {};
        }
        for (int h = *numbers[0]; h <= *numbers[1]; ++h) set.set(static_cast<std::size_t>(h));
    } else {
        gf_logError(fmt::format("{} invalid range format in {}", FN, text));
    }
    return set;
}

}  // namespace

HalfHours gf_hours2bitset(std::string_view text) {
    if (text.empty()) return {};
    if (text.find(':') != std::string_view::npos) return lf_range(text);
    HalfHours set;
    for (const auto& piece : gf_split(text, ','))
        if (auto hour = lf_hour(piece, text)) set.set(static_cast<std::size_t>(*hour));
    return set;
}

std::optional<std::string> gf_bitset2hours(const HalfHours& set) {
    if (set.none()) return std::nullopt;
    std::size_t first = 0;
    while (!set.test(first)) ++first;
    std::size_t last = first;
    while (last + 1 < set.size() && set.test(last + 1)) ++last;
    for (std::size_t h = last + 1; h < set.size(); ++h)
        if (set.test(h)) return std::nullopt;  // more than one run
    if (first == last) return fmt::format("{}", first);
    return fmt::format("{}:{}", first, last);
}

}  // namespace tfx
