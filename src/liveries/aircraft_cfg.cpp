#include "liveries/aircraft_cfg.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <utility>

#include "app/text_utils.h"

namespace tfx {

namespace {

constexpr std::array<std::string_view, 7> KEY_NAMES = {
    "title",  "texture",      "base_container",   "icao_type_designator",
    "atc_id", "icao_airline", "atc_parking_types"};

// Blanks as a regular expression's \s knows them.
bool lf_blank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f';
}

char lf_lower(char c) {
    return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

bool lf_startsNoCase(std::string_view text, std::string_view lowerPrefix) {
    if (text.size() < lowerPrefix.size()) return false;
    for (std::size_t i = 0; i < lowerPrefix.size(); ++i)
        if (lf_lower(text[i]) != lowerPrefix[i]) return false;
    return true;
}

std::size_t lf_skipBlanks(std::string_view text, std::size_t at) {
    while (at < text.size() && lf_blank(text[at])) ++at;
    return at;
}

struct ContainerRow {
    std::string_view container;  // upper case
    std::string_view model;
};
constexpr ContainerRow CONTAINER_MODELS[] = {
    {"ASOBO_FLIGHTDESIGNCT", "FDCT"},
    {"ASOBO_DA62", "DA62"},
    {"ASOBO_LONGITUDE", "C700"},
    {"ASOBO_DA40_TDI", "DA40"},
    {"ASOBO_VL3", "VL3"},
    {"ASOBO_DA40_NG", "DA40"},
    {"ASOBO_SAVAGE_CUB", "SAVG"},
    {"ASOBO_CAP10C", "CP10"},
    {"ASOBO_SAVAGE_SHOCKULTRA", "SAVG"},
    {"ASOBO_CJ4", "C25C"},
    {"ASOBO_XCUB", "CC19"},
    {"ASOBO_C152", "C152"},
    {"ASOBO_PITTS", "PTS2"},
    {"ASOBO_C152_AEROBAT", "C152"},
    {"ASOBO_SR22", "SR22"},
    {"ASOBO_C172SP_AS1000", "C172"},
    {"ASOBO_ICON", "A5"},
    {"ASOBO_C172SP_CLASSIC", "C172"},
    {"ASOBO_TBM930", "TBM9"},
    {"ASOBO_BONANZA_G36", "BE36"},
    {"ASOBO_KINGAIR350", "B350"},
    {"ASOBO_BARON_G58", "B58T"},
    {"ASOBO_E330", "E300"},
    {"ASOBO_B747_8I", "B748"},
    {"ASOBO_DV20", "DV20"},
    {"ASOBO_B787_10", "B78X"},
    {"ASOBO_DR400", "DR40"},
    {"ASOBO_208B_GRAND_CARAVAN_EX", "C208"},
    {"ASOBO_A320_NEO", "A20N"},
    {"FLYBYWIRE_A320_NEO", "A20N"},
};

}  // namespace

std::optional<std::string_view> gf_cfgRawValue(std::string_view line, CfgKey key) {
    const std::string_view name = KEY_NAMES[static_cast<std::size_t>(key)];
    std::size_t at = lf_skipBlanks(line, 0);
    if (!lf_startsNoCase(line.substr(at), name)) return std::nullopt;
    at = lf_skipBlanks(line, at + name.size());
    if (at >= line.size() || line[at] != '=') return std::nullopt;
    at = lf_skipBlanks(line, at + 1);
    std::size_t end = line.size();
    while (end > at && lf_blank(line[end - 1])) --end;
    if (end <= at) return std::nullopt;  // the value must hold a non-blank
    const std::string_view value = line.substr(at, end - at);
    // A line break inside is no match: '.' never spans one.
    if (value.find_first_of("\r\n") != std::string_view::npos) return std::nullopt;
    return value;
}

std::optional<std::string> gf_cfgValue(std::string_view line, CfgKey key) {
    const auto raw = gf_cfgRawValue(line, key);
    if (!raw) return std::nullopt;
    std::string value = gf_dequote(*raw);
    if (key == CfgKey::icao_airline && value.empty()) return std::nullopt;
    return value;
}

std::optional<std::string_view> gf_sectionNumberText(std::string_view line) {
    std::size_t at = lf_skipBlanks(line, 0);
    if (!lf_startsNoCase(line.substr(at), "[fltsim.")) return std::nullopt;
    at += 8;
    const std::size_t digits = at;
    while (at < line.size() && line[at] >= '0' && line[at] <= '9') ++at;
    if (at == digits || at >= line.size() || line[at] != ']') return std::nullopt;
    if (lf_skipBlanks(line, at + 1) != line.size()) return std::nullopt;
    return line.substr(digits, at - digits);
}

bool gf_isSectionHead(std::string_view line) {
    return gf_sectionNumberText(line).has_value();
}

SectionNumbers gf_checkSectionNumbers(const std::vector<std::string>& lines) {
    SectionNumbers result;
    std::int64_t highest = -1;
    for (const std::string& line : lines) {
        const auto text = gf_sectionNumberText(line);
        if (!text) continue;
        std::int32_t number = 0;
        const auto [end, ec] = std::from_chars(text->data(), text->data() + text->size(), number);
        if (ec != std::errc() || end != text->data() + text->size()) {
            result.verdict = SectionNumbers::overflow;
            result.badText = std::string(*text);
            return result;
        }
        ++result.count;
        highest = std::max<std::int64_t>(highest, number);
    }
    if (highest > MAX_FLTSIM_NUMBER) result.verdict = SectionNumbers::tooHigh;
    return result;
}

std::vector<std::vector<std::string_view>> gf_splitSections(const std::vector<std::string>& lines,
                                                            bool ivaoLayout) {
    std::vector<std::vector<std::string_view>> sections;
    bool open = false;
    for (const std::string& line : lines) {
        if (gf_isSectionHead(line)) {
            sections.emplace_back().reserve(48);
            sections.back().push_back(line);
            open = true;
            continue;
        }
        if (!open) continue;
        const bool closes = ivaoLayout ? line.find('[') != std::string::npos : [&] {
            const std::size_t at = lf_skipBlanks(line, 0);
            return at < line.size() && line[at] == '[';
        }();
        if (closes)
            open = false;
        else
            sections.back().push_back(line);
    }
    return sections;
}

std::optional<std::string_view> gf_baseContainerModel(std::string_view container) {
    for (const ContainerRow& row : CONTAINER_MODELS) {
        if (row.container.size() != container.size()) continue;
        bool same = true;
        for (std::size_t i = 0; i < container.size() && same; ++i) {
            const char c = container[i];
            same =
                ((c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c) == row.container[i];
        }
        if (same) return row.model;
    }
    return std::nullopt;
}

}  // namespace tfx
