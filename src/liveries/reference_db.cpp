// The tables of the reference database and the lookups on them.
#include "liveries/reference_db.h"

#include <algorithm>
#include <atomic>

#include "liveries/reference_db_state.h"
#include "liveries/similar_models.h"

namespace tfx {

CodeSet validModels;
ModelSet cargoModels;
ModelSet heavyModels;
ModelSet largeModels;
ModelSet bizjetModels;
ModelSet highPerfModels;
ModelSet rotorcraftModels;
std::vector<std::vector<std::string>> similarGroups;
CodeSet validAirlines;
CodeSet cargoOperators;
std::set<std::uint16_t> cargoOperatorIndices;
std::map<std::string, double, std::less<>> wingspans;
std::array<double, HALF_WINGSPAN_SLOTS> halfWingspan{};
double maxHalfWingspan = 0.0;
std::map<std::string, std::string, std::less<>> modelFixes;
std::vector<RegcodeRecord> dbaseRecords;

std::atomic<bool> modelFixesActive{false};

void gf_clearReferenceData() {
    modelFixesActive = false;
    validModels.clear();
    cargoModels.clear();
    heavyModels.clear();
    largeModels.clear();
    bizjetModels.clear();
    highPerfModels.clear();
    rotorcraftModels.clear();
    similarGroups.clear();
    validAirlines.clear();
    cargoOperators.clear();
    cargoOperatorIndices.clear();
    wingspans.clear();
    halfWingspan.fill(0.0);
    maxHalfWingspan = 0.0;
    modelFixes.clear();
    dbaseRecords.clear();
    dbaseRecords.shrink_to_fit();
    similarAllModels.clear();
    similarInstalledModels.clear();
    similarByAirline.clear();
    gf_clearCodes(modelCodes);
    gf_clearCodes(airlineCodes);
}

std::uint16_t gf_modelIndex(std::string_view code) {
    if (const auto known = gf_findCode(modelCodes, code)) return *known;
    // The fix table is complete and constant once the read has turned this on.
    if (modelFixesActive.load(std::memory_order_acquire)) {
        if (const auto fix = modelFixes.find(code); fix != modelFixes.end()) {
            if (const auto fixed = gf_findCode(modelCodes, fix->second)) return *fixed;
        }
    }
    return gf_internCode(modelCodes, code);
}

std::uint16_t gf_airlineIndex(std::string_view code) {
    return gf_internCode(airlineCodes, code);
}

bool gf_isValidModel(std::string_view code) {
    return !code.empty() && validModels.contains(code);
}

bool gf_isValidAirline(std::string_view code) {
    return !code.empty() && validAirlines.contains(code);
}

std::optional<std::string> gf_fixedModel(std::string_view code) {
    const auto fix = modelFixes.find(code);
    if (fix == modelFixes.end()) return std::nullopt;
    return fix->second;
}

AircraftCategory gf_modelCategory(std::uint16_t model) {
    if (model == 0) return AircraftCategory::Light;
    if (largeModels.contains(model)) return AircraftCategory::Large;
    if (heavyModels.contains(model)) return AircraftCategory::Heavy;
    if (bizjetModels.contains(model)) return AircraftCategory::Bizjet;
    if (rotorcraftModels.contains(model)) return AircraftCategory::Rotorcraft;
    if (highPerfModels.contains(model)) return AircraftCategory::HighPerf;
    return AircraftCategory::Light;
}

AircraftCategory gf_modelCategory(std::string_view code) {
    return gf_modelCategory(gf_modelIndex(code));
}

double gf_halfWingspanNm(std::uint16_t model) {
    if (model >= HALF_WINGSPAN_SLOTS) return HALF_WINGSPAN_BEYOND_TABLE_NM;
    return halfWingspan[model];
}

const RegcodeRecord& gf_lookupRegcode(std::string_view regcode) {
    static const RegcodeRecord none;
    const auto it = std::lower_bound(
        dbaseRecords.begin(), dbaseRecords.end(), regcode,
        [](const RegcodeRecord& record, std::string_view key) { return record.regcode < key; });
    if (it == dbaseRecords.end() || it->regcode != regcode) return none;
    return *it;
}

std::optional<std::string> gf_airlineOfCallsign(std::string_view callsign) {
    const auto letter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
    if (callsign.size() < 4 || !letter(callsign[0]) || !letter(callsign[1]) ||
        !letter(callsign[2]) || callsign[3] < '0' || callsign[3] > '9')
        return std::nullopt;
    std::string code(callsign.substr(0, 3));
    for (char& c : code)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return code;
}

}  // namespace tfx
