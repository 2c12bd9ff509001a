// The reference database: which model and airline codes exist, each model's
// category, freighters and cargo operators, wingspans, corrections of wrongly
// written model codes, and what is known of a large number of registrations
// (regcodes). Read once at start from input/dbase.enc; constant afterwards
// but for the interning tables (code_interning.h).
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "liveries/aircraft_category.h"
#include "liveries/code_interning.h"

namespace tfx {

struct RegcodeRecord {
    std::string regcode;  // sort key
    std::uint16_t airline = 0;
    std::uint16_t opr = 0;  // operator, from the airline table
    std::uint16_t model = 0;
    bool cargo = false;
    bool valid = false;  // true in every stored record
};

using CodeSet = std::set<std::string, std::less<>>;
using ModelSet = std::set<std::uint16_t>;

inline constexpr std::size_t HALF_WINGSPAN_SLOTS = 2700;
// What gf_halfWingspanNm gives for a model index beyond the table.
inline constexpr double HALF_WINGSPAN_BEYOND_TABLE_NM = 35.0;
inline constexpr double NM_PER_METRE = 0.0005399568034557236;

extern CodeSet validModels;
extern ModelSet cargoModels;
extern ModelSet heavyModels;
extern ModelSet largeModels;
extern ModelSet bizjetModels;
extern ModelSet highPerfModels;
extern ModelSet rotorcraftModels;
extern std::vector<std::vector<std::string>> similarGroups;
extern CodeSet validAirlines;
extern CodeSet cargoOperators;
extern std::set<std::uint16_t> cargoOperatorIndices;
// Model code to half wingspan in nautical miles.
extern std::map<std::string, double, std::less<>> wingspans;
// The same by model index, nautical miles; 0.0 where not known.
extern std::array<double, HALF_WINGSPAN_SLOTS> halfWingspan;
extern double maxHalfWingspan;  // nautical miles
// Wrong model code to its correct one.
extern std::map<std::string, std::string, std::less<>> modelFixes;
extern std::vector<RegcodeRecord> dbaseRecords;  // sorted by regcode, no two alike

// Reads input/dbase.enc into the tables above, starting from empty ones.
// Throws when the file is missing or can't be decrypted, and
// UserRelatedException 61 when a required section is missing; false (logged)
// when the plain file can't be read as XML.
bool gf_readDbase();

// Back to a process that has read nothing: every table and both interning
// tables empty.
void gf_clearReferenceData();

// A code's index; once the database is read, a wrongly written code that
// has a correction gets the index of the correct code.
std::uint16_t gf_modelIndex(std::string_view code);
std::uint16_t gf_airlineIndex(std::string_view code);

bool gf_isValidModel(std::string_view code);
bool gf_isValidAirline(std::string_view code);
std::optional<std::string> gf_fixedModel(std::string_view code);

// Large, Heavy, Bizjet, Rotorcraft, HighPerf: the first set holding the model
// wins; Light otherwise, and for index 0.
AircraftCategory gf_modelCategory(std::uint16_t model);
AircraftCategory gf_modelCategory(std::string_view code);

// Half wingspan in nautical miles; 0.0 when not known (callers then take
// maxHalfWingspan).
double gf_halfWingspanNm(std::uint16_t model);

// The record of a regcode, or an empty record whose valid is false.
const RegcodeRecord& gf_lookupRegcode(std::string_view regcode);

// "BAW123" -> "BAW": three letters and a digit start the callsign. The code
// is not checked against the known airlines.
std::optional<std::string> gf_airlineOfCallsign(std::string_view callsign);

}  // namespace tfx
