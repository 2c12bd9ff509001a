#include "liveries/liveries_walk.h"

#include <algorithm>
#include <stdexcept>

#include <fmt/format.h>

#include "app/log.h"
#include "app/parameters.h"
#include "gui/gui.h"
#include "liveries/liveries_scan_state.h"

namespace fs = std::filesystem;

namespace tfx {

namespace {

constexpr std::string_view PACKAGE_WORDS[] = {"AIG", "FSLTL", "JF", "MTL"};
constexpr std::string_view PACKAGE_LOG_NAMES[] = {"AIG", "FSLTL", "JF", "IVAO_MTL"};

// Scenery publishers and the like: nothing of theirs holds AI aircraft.
constexpr std::string_view SKIPPED_WORDS[] = {"airport",  "lvfr",        "mkstudios",
                                              "simwings", "fsdreamteam", "navigraph",
                                              "flytampa", "inibuilds",   "_CVT_"};
constexpr std::size_t MAX_FOLDER_PATH_BYTES = 250;
constexpr std::size_t PROGRESS_EVERY_FILES = 250;

bool lf_has(std::string_view text, std::string_view part) {
    return text.find(part) != std::string_view::npos;
}

bool lf_isAircraftCfg(const std::string& name) {
    constexpr std::string_view wanted = "aircraft.cfg";
    if (name.size() != wanted.size()) return false;
    for (std::size_t i = 0; i < wanted.size(); ++i) {
        char c = name[i];
        if (c >= 'A' && c <= 'Z') c = static_cast<char>(c - 'A' + 'a');
        if (c != wanted[i]) return false;
    }
    return true;
}

// Sub-folder names of community in listing order; false on a listing error.
bool lf_subFolders(const fs::path& community, std::vector<fs::path>& out, const char* what) {
    std::error_code ec;
    fs::directory_iterator it(community, ec);
    for (; !ec && it != fs::directory_iterator(); it.increment(ec))
        if (it->is_directory(ec)) out.push_back(it->path());
    if (ec) {
        gf_logLine(fmt::format("{} warning in '{}': {}", what, community.string(), ec.message()));
        return false;
    }
    return true;
}

}  // namespace

std::vector<AiPackage> gf_packageSelection(const std::string& selector) {
    const auto& permitted = gf_aiPackageOrderings();
    if (std::find(permitted.begin(), permitted.end(), selector) == permitted.end())
        throw std::runtime_error(fmt::format("{} not set", "AI_PACKAGE_SELECTOR"));
    std::vector<AiPackage> selection;
    std::size_t start = 0;
    while (start <= selector.size()) {
        const std::size_t comma = std::min(selector.find(", ", start), selector.size());
        const std::string_view word = std::string_view(selector).substr(start, comma - start);
        for (std::size_t k = 0; k < std::size(PACKAGE_WORDS); ++k)
            if (word == PACKAGE_WORDS[k]) selection.push_back(static_cast<AiPackage>(k));
        start = comma + 2;
    }
    return selection;
}

bool gf_isPackageFolder(AiPackage kind, std::string_view name, bool msfs2020) {
    if (lf_has(name, "_CVT_")) return false;
    switch (kind) {
        case AiPackage::AIG:
            if (lf_has(name, "aig-aitraffic-oci-beta")) return msfs2020;
            return lf_has(name, "aig-aitraffic-oci");
        case AiPackage::FSLTL:
            return lf_has(name, "fsltl-traffic-base");
        case AiPackage::JF:
            return lf_has(name, "justflight-aircraft-traffic-fleet") ||
                   lf_has(name, "justflight-fstraffic-module");
        case AiPackage::MTL:
            return lf_has(name, "IVAO_MTL");
    }
    return false;
}

std::vector<fs::path> gf_automaticFolders(const fs::path& community,
                                          const std::vector<AiPackage>& selection, bool msfs2020) {
    std::vector<fs::path> subFolders;
    lf_subFolders(community, subFolders, "Automatic AI package scan");
    std::vector<fs::path> found(selection.size());
    std::size_t foundCount = 0;
    for (const fs::path& folder : subFolders) {
        if (foundCount == selection.size()) break;
        const std::string name = folder.filename().string();
        for (std::size_t k = 0; k < selection.size(); ++k) {
            if (!found[k].empty() || !gf_isPackageFolder(selection[k], name, msfs2020)) continue;
            found[k] = folder;
            ++foundCount;
            gf_logLine(fmt::format("Automatic {} scan found folder: '{}'",
                                   PACKAGE_LOG_NAMES[static_cast<std::size_t>(selection[k])],
                                   folder.string()));
            break;
        }
    }
    std::vector<fs::path> folders;
    for (fs::path& f : found)
        if (!f.empty()) folders.push_back(std::move(f));

    std::vector<fs::path> userFolders;
    lf_subFolders(community, userFolders, "Automatic user-aitraffic scan");
    for (const fs::path& folder : userFolders) {
        const std::string name = folder.filename().string();
        if (!lf_has(name, "user-aitraffic") || lf_has(name, "_CVT_")) continue;
        gf_logLine(
            fmt::format("Automatic user-aitraffic scan found folder: '{}'", folder.string()));
        folders.push_back(folder);
    }
    return folders;
}

bool gf_skippedFolder(const std::string& utf8Path) {
    if (utf8Path.size() >= MAX_FOLDER_PATH_BYTES) return true;
    for (std::string_view word : SKIPPED_WORDS)
        if (lf_has(utf8Path, word)) return true;
    return false;
}

FolderWalk gf_walkLiveryFolder(const fs::path& folder, std::uint16_t rank) {
    FolderWalk walk;
    std::vector<fs::path> pending{folder};
    bool first = true;
    while (!pending.empty()) {
        const fs::path current = std::move(pending.back());
        pending.pop_back();
        std::error_code ec;
        std::vector<fs::directory_entry> entries;
        for (fs::directory_iterator it(current, ec), end; !ec && it != end; it.increment(ec))
            entries.push_back(*it);
        if (ec) {
            if (first)
                gf_logLine(fmt::format("Could not start liveries search in {}, cause: {}",
                                       folder.string(), ec.message()));
            else
                gf_logLine(fmt::format("Could not read folder {}, cause: {}", current.string(),
                                       ec.message()));
        }
        first = false;
        // Name order makes "the first title wins" the same on every machine.
        std::sort(entries.begin(), entries.end(),
                  [](const auto& a, const auto& b) { return a.path() < b.path(); });
        std::vector<fs::path> subFolders;
        for (const fs::directory_entry& entry : entries) {
            const fs::path& path = entry.path();
            if (entry.is_directory(ec)) {
                if (gf_skippedFolder(path.string())) {
                    ++walk.skippedFolders;
                    continue;
                }
                subFolders.push_back(path);
            } else if (lf_isAircraftCfg(path.filename().string())) {
                const std::string text = path.string();
                const bool ivao = lf_has(text, "ivao_x-csl") || lf_has(text, "IVAO_MTL");
                walk.liveries += ivao ? lf_searchLiveriesinIVAOFile(rank, path)
                                      : lf_searchLiveriesinFile(rank, path);
                if (++walk.files % PROGRESS_EVERY_FILES == 0)
                    gf_showStatus(fmt::format("Scanning for liveries ... {} files, {} liveries",
                                              walk.files, walk.liveries));
            }
        }
        // Depth first, in name order.
        pending.insert(pending.end(), subFolders.rbegin(), subFolders.rend());
    }
    return walk;
}

}  // namespace tfx
