// Reading the text of an aircraft.cfg: keys, section heads, the file's model
// and its [fltsim.x] sections. Works on lines already read, so that it can be
// tried on any text.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tfx {

enum class CfgKey : std::uint8_t {
    title,
    texture,
    base_container,
    icao_type_designator,
    atc_id,
    icao_airline,
    atc_parking_types,
};

// "  Title = \"A\" ; note" with key title gives "A": the whole line must be
// key, '=' and a non-blank value; blanks around are dropped, then quotes.
// Nothing when the line isn't that key. An empty icao_airline is no key.
std::optional<std::string> gf_cfgValue(std::string_view line, CfgKey key);
// The same without taking off the quotes.
std::optional<std::string_view> gf_cfgRawValue(std::string_view line, CfgKey key);

// The digits of "[fltsim.N]" (any case, blanks around); nothing for another
// line, and for a line that starts with ";" or "//".
std::optional<std::string_view> gf_sectionNumberText(std::string_view line);
bool gf_isSectionHead(std::string_view line);

// Section numbers of a file: ok, a number beyond 32 bits, or one above 10000.
struct SectionNumbers {
    enum Verdict : std::uint8_t { ok, overflow, tooHigh } verdict = ok;
    std::size_t count = 0;
    std::string badText;  // the number that overflowed
};
inline constexpr std::int64_t MAX_FLTSIM_NUMBER = 10000;
SectionNumbers gf_checkSectionNumbers(const std::vector<std::string>& lines);

// Splits into sections, each starting with its head line. ivaoLayout closes a
// section at any line holding "[", else at a line whose first non-blank is "[".
std::vector<std::vector<std::string_view>> gf_splitSections(const std::vector<std::string>& lines,
                                                            bool ivaoLayout);

// "Asobo_A320_NEO" -> "A20N"; nothing for a container without a row.
std::optional<std::string_view> gf_baseContainerModel(std::string_view container);

}  // namespace tfx
