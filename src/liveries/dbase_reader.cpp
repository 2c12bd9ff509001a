// Reading dbase.xml, the plain form of input/dbase.enc, into the tables of
// the reference database.
#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string>
#include <system_error>

#include <fmt/format.h>
#include <pugixml.hpp>

#include "app/decrypt.h"
#include "app/log.h"
#include "app/text_utils.h"
#include "app/user_exception.h"
#include "liveries/reference_db.h"
#include "liveries/reference_db_state.h"

namespace fs = std::filesystem;

namespace tfx {
namespace {

// Room for the records of the published file, so that the read never moves
// the strings it has already stored.
constexpr std::size_t RECORD_RESERVE = 0x12000;
constexpr int DATA_ERROR = 61;

// The plain text lives only while the reader runs, whichever way it ends.
struct PlainFileGuard {
    fs::path path;
    ~PlainFileGuard() {
        std::error_code ignored;
        fs::remove(path, ignored);
    }
};

pugi::xml_node lf_section(const pugi::xml_document& document, const char* name, bool required) {
    const pugi::xml_node root = document.child("root");
    if (!root) throw UserRelatedException(DATA_ERROR, "XML root missing: root");
    const pugi::xml_node section = root.child(name);
    if (!section && required)
        throw UserRelatedException(DATA_ERROR, fmt::format("Missing section: {}", name));
    return section;
}

template <typename Add>
void lf_forEachListItem(std::string_view list, Add add) {
    for (const std::string& piece : gf_split(list, ',')) {
        std::string item = gf_trim(piece);
        if (!item.empty()) add(std::move(item));
    }
}

// All codes of a required section whose elements carry a comma list.
CodeSet lf_readCodes(const pugi::xml_document& document, const char* section, const char* element,
                     const char* attribute) {
    CodeSet codes;
    for (const pugi::xml_node node : lf_section(document, section, true).children(element))
        lf_forEachListItem(node.attribute(attribute).as_string(),
                           [&](std::string code) { codes.insert(std::move(code)); });
    return codes;
}

ModelSet lf_toModels(const CodeSet& codes) {
    ModelSet models;
    for (const std::string& code : codes) models.insert(gf_modelIndex(code));
    return models;
}

void lf_readSimilarGroups(const pugi::xml_document& document) {
    similarGroups.reserve(128);
    for (const pugi::xml_node node :
         lf_section(document, "similar_types", false).children("similar")) {
        std::vector<std::string> group;
        lf_forEachListItem(node.attribute("types").as_string(),
                           [&](std::string code) { group.push_back(std::move(code)); });
        similarGroups.push_back(std::move(group));
    }
}

void lf_readWingspans(const pugi::xml_document& document) {
    for (const pugi::xml_node node :
         lf_section(document, "wingspans", false).children("wingspan")) {
        const std::string model = node.attribute("type").as_string();
        const pugi::xml_attribute meters = node.attribute("meters");
        if (!gf_isValidModel(model)) {
            gf_logError(fmt::format("wingspan model {} is not valid, skipped", model));
            continue;
        }
        const double span_m = meters.as_double();
        if (!meters || !(span_m > 0.0)) {
            gf_logError(fmt::format("wingspan for model {} is not positive, skipped", model));
            continue;
        }
        if (!std::isfinite(span_m)) {
            gf_logError(fmt::format("wingspan for model {} is not a number, skipped", model));
            continue;
        }
        if (wingspans.contains(model)) {
            gf_logError(fmt::format("duplicate wingspan model {}, skipped", model));
            continue;
        }
        const double half_nm = span_m * 0.5 * NM_PER_METRE;
        wingspans.emplace(model, half_nm);
        maxHalfWingspan = std::max(maxHalfWingspan, half_nm);
    }
    for (const auto& [model, half_nm] : wingspans) {
        const std::uint16_t index = gf_modelIndex(model);
        if (index >= HALF_WINGSPAN_SLOTS) {
            gf_logError(fmt::format("cannot store wingspan for model {}: {}", model, index));
            continue;
        }
        halfWingspan[index] = half_nm;
    }
}

void lf_readFixes(const pugi::xml_document& document) {
    const pugi::xml_node section = lf_section(document, "fixes", false);
    for (const pugi::xml_node node : section.children("fx")) {
        const std::string wrong = node.attribute("wro").as_string();
        const std::string correct = node.attribute("cor").as_string();
        if (!gf_isValidModel(correct)) {
            gf_logError(fmt::format("invalid fix {} -> {}, target is not a valid ICAO model", wrong,
                                    correct));
            continue;
        }
        if (wrong.empty()) {
            gf_logError(fmt::format("invalid fix {} -> {}, no wrong code given", wrong, correct));
            continue;
        }
        if (modelFixes.contains(wrong)) {
            gf_logError(fmt::format("duplicate fix key '{}', skipped", wrong));
            continue;
        }
        modelFixes.emplace(wrong, correct);
    }
    if (section) gf_logLine(fmt::format("{:5} fixes", modelFixes.size()));
}

void lf_readRecords(const pugi::xml_document& document) {
    dbaseRecords.clear();
    dbaseRecords.reserve(RECORD_RESERVE);
    std::size_t withoutRegcode = 0;
    for (const pugi::xml_node node : lf_section(document, "dbase", false).children("d")) {
        const char* regcode = node.attribute("r").as_string();
        if (*regcode == '\0') {
            ++withoutRegcode;
            continue;
        }
        RegcodeRecord& record = dbaseRecords.emplace_back();
        record.regcode = regcode;
        record.airline = gf_airlineIndex(node.attribute("a").as_string());
        record.opr = gf_airlineIndex(node.attribute("o").as_string());
        record.model = gf_modelIndex(node.attribute("m").as_string());
        record.cargo = node.attribute("c").as_bool(false);
        record.valid = true;
    }
    if (withoutRegcode > 0)
        gf_logError(fmt::format("{} dbase record{} without regcode skipped", withoutRegcode,
                                withoutRegcode == 1 ? "" : "s"));

    std::sort(dbaseRecords.begin(), dbaseRecords.end(),
              [](const RegcodeRecord& a, const RegcodeRecord& b) { return a.regcode < b.regcode; });
    const auto end = std::unique(
        dbaseRecords.begin(), dbaseRecords.end(),
        [](const RegcodeRecord& a, const RegcodeRecord& b) { return a.regcode == b.regcode; });
    dbaseRecords.erase(end, dbaseRecords.end());
    dbaseRecords.shrink_to_fit();
    gf_logLine(fmt::format("{:5} dbase records read\n", dbaseRecords.size()));
}

void lf_readTables(const pugi::xml_document& document) {
    validModels = lf_readCodes(document, "aircrafts", "aircraft", "types");
    gf_logLine(fmt::format("\n{:5} ICAO model codes", validModels.size()));
    const CodeSet cargoTypes = lf_readCodes(document, "cargo_types", "cargo_type", "types");

    // Indices 1 to n are the valid models in sorted order.
    gf_internCode(modelCodes, "");
    for (const std::string& code : validModels) gf_internCode(modelCodes, code);
    modelFixesActive.store(true, std::memory_order_release);
    cargoModels = lf_toModels(cargoTypes);

    const CodeSet heavy = lf_readCodes(document, "heavy", "hvy", "types");
    const CodeSet large = lf_readCodes(document, "large", "lar", "types");
    const CodeSet bizjet = lf_readCodes(document, "buzjet", "bzj", "types");
    const CodeSet highPerf = lf_readCodes(document, "high_performance", "hpf", "types");
    const CodeSet rotorcraft = lf_readCodes(document, "rotorcraft", "rot", "types");
    heavyModels = lf_toModels(heavy);
    largeModels = lf_toModels(large);
    bizjetModels = lf_toModels(bizjet);
    highPerfModels = lf_toModels(highPerf);
    rotorcraftModels = lf_toModels(rotorcraft);

    lf_readSimilarGroups(document);

    validAirlines = lf_readCodes(document, "ICAO_airlines", "ICAO", "codes");
    gf_logLine(fmt::format("{:5} ICAO airline codes", validAirlines.size()));
    cargoOperators = lf_readCodes(document, "cargo_operators", "ICAO", "codes");
    gf_logLine(fmt::format("{:5} cargo operators", cargoOperators.size()));
    gf_internCode(airlineCodes, "");
    for (const std::string& code : validAirlines) gf_internCode(airlineCodes, code);
    for (const std::string& code : cargoOperators)
        cargoOperatorIndices.insert(gf_internCode(airlineCodes, code));

    lf_readWingspans(document);
    lf_readFixes(document);
    lf_readRecords(document);
}

}  // namespace

bool gf_readDbase() {
    const fs::path encrypted = fs::path("input") / "dbase.enc";
    const fs::path plainName = fs::path("input") / "dbase.xml";
    std::error_code ec;
    if (!fs::exists(encrypted, ec))
        throw std::runtime_error(fmt::format("{} not available", encrypted.generic_string()));
    const auto plain = gf_decryptToTemporary(encrypted, plainName);
    if (!plain)
        throw std::runtime_error(
            fmt::format("{} stream decrypt failed", encrypted.generic_string()));
    const PlainFileGuard guard{*plain};

    pugi::xml_document document;
    const pugi::xml_parse_result parsed = document.load_file(plain->c_str());
    if (!parsed) {
        if (parsed.status == pugi::status_file_not_found || parsed.status == pugi::status_io_error)
            gf_logError(fmt::format("{} could not be opened", plainName.generic_string()));
        else
            gf_logError(fmt::format("{} not read because: {}", plainName.generic_string(),
                                    parsed.description()));
        return false;
    }
    if (!document.child("root")) {
        gf_logError(fmt::format("'{}' has no root node", plainName.generic_string()));
        return false;
    }

    gf_clearReferenceData();
    lf_readTables(document);
    return true;
}

}  // namespace tfx
