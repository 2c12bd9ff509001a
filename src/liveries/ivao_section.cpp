// The IVAO layout: the model stands in the folder's name (IVAO_B738), the
// airline in the title right after the model ("B738 DLH ...").
#include <algorithm>
#include <string>

#include <fmt/format.h>

#include "app/log.h"
#include "app/text_utils.h"
#include "liveries/aircraft_cfg.h"
#include "liveries/liveries_scan_state.h"
#include "liveries/livery.h"
#include "liveries/reference_db.h"
#include "platform/wide_text.h"

namespace fs = std::filesystem;

namespace tfx {

namespace {

// Folders whose titles carry a "W" behind the model (winglet variants).
constexpr std::string_view WINGLET_FOLDERS[] = {"IVAO_B738WLfa", "IVAO_B739WLfa", "IVAO_A320wCFM",
                                                "IVAO_A320wIAE", "IVAO_A319fIAEw"};

std::string lf_upper(std::string text) {
    for (char& c : text)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return text;
}

bool lf_word(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

bool lf_blank(char c) {
    return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f';
}

// ".../IVAO_MTL/SimObjects/Airplanes/IVAO_<word>/aircraft.cfg": the word.
std::optional<std::string> lf_folderWord(std::string_view path, std::string_view package) {
    const std::string middle = "/" + std::string(package) + "/SimObjects/Airplanes/IVAO_";
    constexpr std::string_view tail = "/aircraft.cfg";
    if (!path.ends_with(tail)) return std::nullopt;
    const std::size_t at = path.rfind(middle);
    if (at == std::string_view::npos || at == 0) return std::nullopt;
    const std::string_view word =
        path.substr(at + middle.size(), path.size() - tail.size() - at - middle.size());
    if (word.empty() || !std::all_of(word.begin(), word.end(), lf_word)) return std::nullopt;
    return std::string(word);
}

std::optional<std::string> lf_modelOfPath(const std::string& pathText) {
    // The reports show the path as the system writes it; the layout is
    // matched with "/" on every system.
    const std::string generic = pf_pathFromUtf8(pathText).generic_string();
    auto word = lf_folderWord(generic, "IVAO_MTL");
    if (!word) word = lf_folderWord(generic, "ivao_x-csl");
    if (!word) return std::nullopt;
    return lf_validatedModel(lf_upper(word->substr(0, 4)), pathText);
}

// The airline in a title "<model> DLH ...": the three word characters after
// the model (and its "W"), blanks between allowed; case doesn't matter.
std::optional<std::string> lf_airlineOfTitle(std::string_view title, const std::string& head) {
    if (title.size() < head.size()) return std::nullopt;
    for (std::size_t i = 0; i < head.size(); ++i)
        if (lf_upper(std::string(1, title[i])) != lf_upper(std::string(1, head[i])))
            return std::nullopt;
    std::size_t at = head.size();
    while (at < title.size() && lf_blank(title[at])) ++at;
    if (at + 3 > title.size()) return std::nullopt;
    const std::string_view code = title.substr(at, 3);
    if (!std::all_of(code.begin(), code.end(), lf_word)) return std::nullopt;
    if (title.find_first_of("\r\n", at) != std::string_view::npos) return std::nullopt;
    return std::string(code);
}

bool lf_reject(const std::string& pathText, const std::string& head, const std::string& what) {
    scanReports.incompleteSections.push_back(fmt::format("{} {}{}", pathText, head, what));
    return false;
}

}  // namespace

bool lf_procesIVAOSection(std::uint16_t rank, const std::vector<std::string_view>& lines,
                          const std::string& model, const std::string& pathText) {
    if (lines.size() <= 1) return false;
    const std::string head = gf_trim(lines.front());
    std::optional<std::string> title, parkingTypes, atcId, texture;
    std::string regcode;
    for (std::size_t i = 1; i < lines.size(); ++i) {
        const std::string_view line = lines[i];
        if (auto v = gf_cfgValue(line, CfgKey::title)) {
            if (title) return lf_reject(pathText, head, " has more than one title key");
            title = gf_trim(*v);
            if (*title != *v)
                gf_logLine(fmt::format("removed spaces around title '{}' --> '{}'", *v, *title));
        } else if (auto v = gf_cfgValue(line, CfgKey::atc_parking_types)) {
            if (parkingTypes)
                return lf_reject(pathText, head, " has more than one atc_parking_types key");
            parkingTypes = *v;
        } else if (auto v = gf_cfgValue(line, CfgKey::atc_id)) {
            if (atcId) {
                scanReports.incompleteSections.push_back(
                    fmt::format("{}, {}, has more than one atc_id key", pathText, head));
                return false;
            }
            atcId = *v;
            const std::string text = v->substr(0, v->find(';'));
            const auto tokens = gf_split(text, ',');
            bool sound = true;
            for (const auto& t : tokens)
                sound = sound && !t.empty() && t != " " && t.size() <= 12 &&
                        t.find('*') == std::string::npos;
            if (!sound)
                scanReports.incompleteSections.push_back(
                    fmt::format("invalid atc_id={} in {}", text, pathText));
            regcode = sound && tokens.size() == 1 ? tokens.front() : std::string();
        } else if (auto v = gf_cfgValue(line, CfgKey::texture)) {
            texture = *v;
        }
    }
    if (texture) {
        std::error_code ec;
        const fs::path folder =
            pf_pathFromUtf8(pathText).parent_path() / pf_pathFromUtf8("texture." + *texture);
        if (!fs::is_directory(folder, ec))
            return lf_reject(pathText, head, fmt::format(" texture.{} does not exist", *texture));
    }
    if (!title || title->empty()) return lf_reject(pathText, head, " misses title");
    if (dontUseTitles.contains(*title)) return false;

    bool winglets = false;
    for (std::string_view folder : WINGLET_FOLDERS)
        winglets = winglets || pathText.find(folder) != std::string::npos;
    Livery livery;
    if (const auto code = lf_airlineOfTitle(*title, model + (winglets ? "W" : ""))) {
        const std::string airline = lf_upper(*code);
        if (!gf_isValidAirline(airline)) {
            scanReports.invalidAirlines.push_back(fmt::format("{:12} in {}", airline, pathText));
            return false;
        }
        if (airline == "ZZZ") regcode.clear();
        livery.airline = gf_airlineIndex(airline);
        livery.model = gf_modelIndex(model);
    } else if (!regcode.empty()) {
        const RegcodeRecord& r = lf_lookupRegcodeVariants(regcode);
        if (!r.valid)
            return lf_reject(pathText, head,
                             fmt::format(" misses airlinecode in title: {}, and regcode unknown {}",
                                         *title, regcode));
        livery.airline = r.airline;
        livery.opr = r.opr;
        livery.model = r.model;
        livery.cargo = r.cargo ? 1 : 0;
    } else {
        return lf_reject(pathText, head,
                         fmt::format(" misses airlinecode in title: {}, and no regcode", *title));
    }
    if (!scanTitles.insert(*title).second)
        return lf_reject(pathText, head, fmt::format(" title already exists: {}", *title));
    if (livery.airline == 0 || livery.model == 0) return false;
    livery.title = std::move(*title);
    livery.regcode = std::move(regcode);
    livery.rank = rank;
    scanList.push_back(std::move(livery));
    return true;
}

std::size_t lf_ivaoLiveriesOfLines(std::uint16_t rank, const std::vector<std::string>& lines,
                                   const std::string& pathText) {
    if (!lf_sectionsUsable(lines, pathText)) return 0;
    const auto model = lf_modelOfPath(pathText);
    if (!model) return 0;
    std::size_t added = 0;
    for (const auto& section : gf_splitSections(lines, true))
        added += lf_procesIVAOSection(rank, section, *model, pathText) ? 1 : 0;
    return added;
}

}  // namespace tfx
