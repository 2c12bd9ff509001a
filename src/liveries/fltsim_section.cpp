// One [fltsim.x] section of an ordinary aircraft.cfg becomes one livery, or a
// line in the reports that says why not.
#include <algorithm>
#include <string>

#include <fmt/format.h>

#include "app/text_utils.h"
#include "liveries/aircraft_cfg.h"
#include "liveries/liveries_scan_state.h"
#include "liveries/livery.h"
#include "liveries/reference_db.h"

namespace tfx {

namespace {

std::string lf_upper(std::string text) {
    for (char& c : text)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return text;
}

bool lf_isCommentOrEmpty(std::string_view line) {
    const std::string text = gf_trim(line);
    return text.empty() || text.starts_with(";") || text.starts_with("//");
}

void lf_incomplete(std::string text) {
    scanReports.incompleteSections.push_back(std::move(text));
}

// atc_id: the text before ";", a list of tokens that must each be sound.
// One token is the regcode; several leave it empty; a bad one clears all.
std::string lf_regcodeOfAtcId(const std::string& value, const std::string& pathText) {
    const std::string text = value.substr(0, value.find(';'));
    const std::vector<std::string> tokens = gf_split(text, ',');
    for (const std::string& token : tokens) {
        if (token.empty() || token == " " || token.size() > 12 ||
            token.find('*') != std::string::npos) {
            lf_incomplete(fmt::format("invalid atc_id={} in: {}", text, pathText));
            return {};
        }
    }
    return tokens.size() == 1 ? tokens.front() : std::string();
}

// The first record whose short regcode stands in the title.
const RegcodeRecord* lf_recordNamedInTitle(const std::string& title) {
    for (const RegcodeRecord& r : dbaseRecords)
        if (r.regcode.size() < 6 && title.find(r.regcode) != std::string::npos) return &r;
    return nullptr;
}

}  // namespace

const RegcodeRecord& lf_lookupRegcodeVariants(std::string_view regcode) {
    if (regcode.size() >= 5 && regcode.front() != 'N' &&
        regcode.find('-') == std::string_view::npos) {
        const std::string rest2 = fmt::format("{}-{}", regcode.substr(0, 2), regcode.substr(2));
        if (const RegcodeRecord& r = gf_lookupRegcode(rest2); r.valid) return r;
        const std::string rest1 = fmt::format("{}-{}", regcode.substr(0, 1), regcode.substr(1));
        if (const RegcodeRecord& r = gf_lookupRegcode(rest1); r.valid) return r;
    }
    return gf_lookupRegcode(regcode);
}

bool lf_procesFltSimSection(std::uint16_t rank, std::vector<std::string_view> lines,
                            const std::string& model, const std::string& pathText) {
    while (!lines.empty() && lf_isCommentOrEmpty(lines.back())) lines.pop_back();
    if (lines.size() <= 1) return false;  // a head alone is an empty section
    const std::string head = gf_trim(lines.front());

    std::optional<std::string> title, airline, parkingTypes, atcId;
    bool airlineInvalid = false;
    std::string regcode;
    for (std::size_t i = 1; i < lines.size(); ++i) {
        const std::string_view line = lines[i];
        if (auto v = gf_cfgValue(line, CfgKey::title)) {
            if (title) {
                lf_incomplete(fmt::format("{} {} has more than one title key", pathText, head));
                return false;
            }
            title = gf_trim(*v);
            if (title->find("FenixA320") != std::string::npos ||
                title->find("PMDG 737") != std::string::npos)
                return false;
        } else if (auto v = gf_cfgValue(line, CfgKey::icao_airline)) {
            if (airline) {
                lf_incomplete(
                    fmt::format("{} {} has more than one icao_airline key", pathText, head));
                return false;
            }
            std::string code = lf_upper(*v);
            code = code == "ZZZZ" ? std::string("ZZZ") : gf_cleanList(code);
            if (code.size() == 4 && (code.back() == 'X' || code.back() == 'C')) code.pop_back();
            if (!gf_isValidAirline(code)) {
                if (code == "RFO") return false;
                scanReports.invalidAirlines.push_back(fmt::format("{:12} in {}", code, pathText));
                code.clear();
                airlineInvalid = true;
            }
            airline = std::move(code);
        } else if (auto v = gf_cfgValue(line, CfgKey::atc_parking_types)) {
            if (parkingTypes) {
                lf_incomplete(
                    fmt::format("{} {} has more than one atc_parking_types key", pathText, head));
                return false;
            }
            parkingTypes = lf_upper(gf_cleanList(*v));
        } else if (auto v = gf_cfgValue(line, CfgKey::atc_id)) {
            if (atcId) {
                lf_incomplete(fmt::format("{}, {}, has more than one atc_id key", pathText, head));
                return false;
            }
            atcId = *v;
            regcode = lf_regcodeOfAtcId(*v, pathText);
        }
    }

    std::string airlineCode = airline.value_or(std::string());
    if (!airline || airlineInvalid)
        lf_incomplete(
            fmt::format("{} {} icao_airline is missing, or it has invalid info", pathText, head));
    if (!title || title->empty()) {
        lf_incomplete(fmt::format("{} {} misses title", pathText, head));
        return false;
    }
    if (title->find("Fictional") != std::string::npos) return false;
    if (title->ends_with("-STUB")) airlineCode = "ZZZ";
    if (dontUseTitles.contains(*title)) return false;
    if (airlineCode == "ZZZ") regcode.clear();

    const RegcodeRecord* record = nullptr;
    if (!regcode.empty()) {
        const RegcodeRecord& r = lf_lookupRegcodeVariants(regcode);
        if (r.valid) record = &r;
    }
    const bool heavy = gf_modelCategory(model) == AircraftCategory::Heavy;
    if (airlineCode.empty()) {
        if (regcode.empty()) {
            if (heavy) {
                lf_incomplete(
                    fmt::format("'{}' '{}' has no airline and no regcode info", *title, pathText));
                return false;
            }
            airlineCode = "PVT";
            if (const RegcodeRecord* r = lf_recordNamedInTitle(*title)) {
                regcode = r->regcode;
                record = r;
            }
        } else if (record == nullptr) {
            if (heavy) {
                lf_incomplete(fmt::format("'{}' '{}' has no airline and regcode not in dbase",
                                          *title, pathText));
                return false;
            }
            airlineCode = "PVT";
        }
    }
    const std::string types = parkingTypes.value_or(std::string());
    const bool cargo =
        types.find("CARGO") != std::string::npos && types.find("GATE") == std::string::npos;

    Livery livery;
    if (record != nullptr) {
        livery.airline = record->airline;
        livery.opr = record->opr;
        livery.model = record->model;
        livery.cargo = record->cargo ? 1 : 0;
    } else {
        livery.airline = gf_airlineIndex(airlineCode);
        livery.model = gf_modelIndex(model);
        livery.cargo = cargo ? 1 : 0;
    }
    if (!scanTitles.insert(*title).second) {
        lf_incomplete(fmt::format("{} {} title '{}' already exists", pathText, head, *title));
        return false;
    }
    if (livery.airline == 0 || livery.model == 0) return false;
    livery.title = std::move(*title);
    livery.regcode = std::move(regcode);
    livery.rank = rank;
    scanList.push_back(std::move(livery));
    return true;
}

}  // namespace tfx
