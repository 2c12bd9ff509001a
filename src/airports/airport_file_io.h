// Reading and writing airport files, and the loaded airport that the parking
// and the traffic engine work with.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include <pugixml.hpp>

#include "airports/airport_file.h"

namespace tfx {

inline constexpr std::int32_t APF_USER_ERROR = 84;

// A read of the airport file at path (a scan, pointer or archive path): the
// file, with its learned file merged, or the error text for the caller to log.
std::variant<AirportFile, std::string> gf_readAirportFile(const std::filesystem::path& path);

// The parkpos elements of a section as stands; source 1 for an airport or
// handmade file, 0 for a learned file. Throws UserRelatedException for a
// stand without a name, which ends the read.
std::vector<Stand> gf_readParkpositions(const pugi::xml_node& section, std::int32_t source);
// One parkpos as a stand (nothing, logged, when it is to be skipped), and
// one opt (nothing for a day outside 1-7 or no half hours), unnumbered.
std::optional<Stand> gf_readStand(const pugi::xml_node& parkpos, std::int32_t source);
std::optional<StandOption> gf_readOption(const pugi::xml_node& opt, std::int32_t source);
// The meta section's check; a learned file needs no simulator entry.
bool gf_metaAccepted(const pugi::xml_node& root, bool learned);
// The parameter of that name, or an empty attribute.
pugi::xml_attribute gf_apfParameter(const pugi::xml_node& root, std::string_view name);
// The document's root element, or the document itself for a file without one.
pugi::xml_node gf_apfRoot(const pugi::xml_document& document);

// Numbers the stands from 1 and recomputes every overlap: two stands overlap
// when their radii together exceed 1.1 times their distance.
void gf_numberStandsAndOverlaps(std::vector<Stand>& stands);

// Merges the learned file into stands (or, for a handmade file, replaces
// them). Only gf_readAirportFile calls it; true when a file was applied.
bool lf_readLearned(const std::filesystem::path& learnedPath, const std::string& airportName,
                    std::vector<Stand>& stands, bool& handmade);

// Quality factors of a stand list: -1 for both without any option.
struct QualityFactors {
    std::int32_t Qf_real = -1, Qf_soft = -1;
};
QualityFactors gf_calcQualityFactors(const std::vector<Stand>& stands);

// Writes the file: kind 1 a scan file, 0 a learned file. Beside and swapped in.
inline constexpr int APF_KIND_SCAN = 1;
inline constexpr int APF_KIND_LEARNED = 0;
bool gf_writeApf(const ApfRecord& record, const std::filesystem::path& path, int kind,
                 std::int32_t simNumber);

// The stand ids of an airport in file order, without loading it as park airport.
std::vector<std::string> gf_readApfForStands(const IcaoCode& icao);

}  // namespace tfx
