// One aircraft.cfg: read in whatever encoding it has, its section numbers
// checked, its model found, and each of its sections turned into a livery.
#include <exception>
#include <string>

#include <fmt/format.h>

#include "app/log.h"
#include "app/text_files.h"
#include "app/text_utils.h"
#include "liveries/aircraft_cfg.h"
#include "liveries/liveries_scan_state.h"
#include "liveries/reference_db.h"
#include "platform/wide_text.h"

namespace fs = std::filesystem;

namespace tfx {

namespace {

std::string lf_upper(std::string text) {
    for (char& c : text)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return text;
}

// The lines of a file in its own encoding; false (logged) when unreadable.
bool lf_readCfg(const fs::path& path, std::vector<std::string>& lines) {
    std::error_code ec;
    if (!fs::exists(path, ec)) return false;
    const Charset charset = gf_detectCharset(path);
    if (charset == Charset::none_found) {
        gf_logLine(fmt::format("! No text encoding detected for {}", path.string()));
        return false;
    }
    lines.reserve(4096);
    if (!gf_readTextLines(charset, path, lines)) {
        gf_logLine(fmt::format("! Failed reading {}", path.string()));
        return false;
    }
    return true;
}

}  // namespace

bool lf_sectionsUsable(const std::vector<std::string>& lines, const std::string& pathText) {
    const SectionNumbers numbers = gf_checkSectionNumbers(lines);
    if (numbers.verdict == SectionNumbers::overflow) {
        gf_logError(fmt::format("fltsim num {} incorrect", numbers.badText));
        return false;
    }
    if (numbers.count == 0) {
        scanReports.noSectionFiles.push_back(pathText);
        return false;
    }
    if (numbers.verdict == SectionNumbers::tooHigh) {
        scanReports.invalidFiles.push_back(
            fmt::format("{} contains a [fltsim.x] section with a number < 0 or > {}", pathText,
                        MAX_FLTSIM_NUMBER));
        return false;
    }
    return true;
}

std::optional<std::string> lf_validatedModel(const std::string& code, const std::string& pathText) {
    if (gf_isValidModel(code)) return code;
    if (auto fixed = gf_fixedModel(code)) {
        scanReports.fixes.push_back(
            fmt::format("Model fix: {} found in {} changed into {}", code, pathText, *fixed));
        return fixed;
    }
    scanReports.invalidModels.push_back(fmt::format("{:16} in {}", code, pathText));
    return std::nullopt;
}

std::optional<std::string> lf_fileModel(const std::vector<std::string>& lines,
                                        const std::string& pathText) {
    for (const std::string& line : lines) {
        const auto value = gf_cfgValue(line, CfgKey::icao_type_designator);
        if (!value) continue;
        return lf_validatedModel(lf_upper(value->substr(0, 4)), pathText);
    }
    for (const std::string& line : lines) {
        const auto raw = gf_cfgRawValue(line, CfgKey::base_container);
        if (!raw) continue;
        // "..\Asobo_A320_NEO": the folder's name after its "..\".
        const std::size_t open = raw->find('"');
        const std::size_t close = open == std::string_view::npos ? open : raw->find('"', open + 1);
        if (close == std::string_view::npos || close - open - 1 < 4) break;
        const auto model = gf_baseContainerModel(raw->substr(open + 4, close - open - 4));
        if (!model) break;
        return lf_validatedModel(std::string(*model), pathText);
    }
    if (pathText.find("pmdg-aircraft-7") == std::string::npos &&
        pathText.find("fnx-aircraft-3") == std::string::npos)
        scanReports.invalidFiles.push_back(
            "Line icao_type_designator= is missing in [General] section of " + pathText);
    return std::nullopt;
}

std::size_t lf_liveriesOfLines(std::uint16_t rank, const std::vector<std::string>& lines,
                               const std::string& pathText) {
    if (!lf_sectionsUsable(lines, pathText)) return 0;
    const auto model = lf_fileModel(lines, pathText);
    if (!model) return 0;
    std::size_t added = 0;
    for (auto& section : gf_splitSections(lines, false)) {
        try {
            added += lf_procesFltSimSection(rank, std::move(section), *model, pathText) ? 1 : 0;
        } catch (const std::exception& e) {
            gf_logLine(fmt::format("Exception in lf_procesFltSimSection: {}, file: {}", e.what(),
                                   pathText));
        }
    }
    return added;
}

std::size_t lf_searchLiveriesinFile(std::uint16_t rank, const fs::path& path) {
    try {
        std::vector<std::string> lines;
        if (!lf_readCfg(path, lines)) return 0;
        return lf_liveriesOfLines(rank, lines, path.string());
    } catch (const std::exception& e) {
        gf_logLine(
            fmt::format("! Exception in lf_searchLiveriesinFile {}: {}", path.string(), e.what()));
    }
    return 0;
}

std::size_t lf_searchLiveriesinIVAOFile(std::uint16_t rank, const fs::path& path) {
    try {
        std::vector<std::string> lines;
        if (!lf_readCfg(path, lines)) return 0;
        return lf_ivaoLiveriesOfLines(rank, lines, pf_pathToUtf8(path));
    } catch (const std::exception& e) {
        gf_logLine(fmt::format("! Exception in lf_searchLiveriesinIVAOFile {}: {}", path.string(),
                               e.what()));
    } catch (...) {
        gf_logLine(
            fmt::format("! Unknown exception in lf_searchLiveriesinIVAOFile {}", path.string()));
    }
    return 0;
}

}  // namespace tfx
