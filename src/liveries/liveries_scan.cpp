// The livery scan as a whole: the folders to look at, the walk through them,
// the titles not to take, removing what a higher package already offers, the
// report files and the scanned-liveries file.
#include "liveries/liveries_scan.h"

#include <algorithm>
#include <fstream>
#include <map>
#include <tuple>

#include <fmt/format.h>

#include "airports/install_path.h"
#include "app/decrypt.h"
#include "app/exit_request.h"
#include "app/file_utils.h"
#include "app/log.h"
#include "app/parameters.h"
#include "app/run_state.h"
#include "app/user_exception.h"
#include "gui/gui.h"
#include "liveries/liveries_scan_state.h"
#include "liveries/liveries_walk.h"
#include "liveries/regcode_files.h"
#include "liveries/scanned_liveries_file.h"

namespace fs = std::filesystem;

namespace tfx {

std::unordered_set<std::string> scanTitles;
std::unordered_set<std::string> dontUseTitles;

namespace {

constexpr std::uint16_t MAX_RANK = 10;

const char* lf_plural(std::size_t n) {
    return n == 1 ? "" : "s";
}

std::size_t lf_addDontUse(const std::vector<RegcodeEntry>& entries) {
    std::size_t added = 0;
    for (const RegcodeEntry& e : entries)
        if (e.regcodes.empty() && dontUseTitles.insert(e.title).second) ++added;
    return added;
}

void lf_loadDontUseTitles() {
    dontUseTitles.clear();
    const fs::path enc = fs::path("input") / "AIG-regcodes.enc";
    std::error_code ec;
    if (!fs::exists(enc, ec)) {
        gf_logError(fmt::format("{} not available", enc.generic_string()));
    } else if (const auto plain =
                   gf_decryptToTemporary(enc, fs::path("input") / "AIG-regcodes.xml")) {
        std::vector<RegcodeEntry> entries;
        const bool ok = gf_readAigRegcodesXml(*plain, entries);
        fs::remove(*plain, ec);
        if (!ok)
            gf_showError(
                fmt::format("There were errors in processing the file '{}', see the Log.txt",
                            enc.generic_string()));
        const std::size_t n = lf_addDontUse(entries);
        gf_logLine(fmt::format("{:5} don't use title{} read", n, lf_plural(n)));
    }
    const fs::path folder = fs::path("input") / "my_regcodes";
    if (fs::is_directory(folder, ec)) {
        std::vector<RegcodeEntry> entries;
        if (!gf_readRegcodeFolder(folder, entries))
            gf_showError(fmt::format(
                "There were errors in processing the regcode files in folder '{}', see the Log.txt",
                folder.generic_string()));
        const std::size_t n = lf_addDontUse(entries);
        gf_logLine(fmt::format("{:5} don't use title{} read from files in {}", n, lf_plural(n),
                               folder.generic_string()));
    }
    gf_logLine(fmt::format("{:5} don't use liveries", dontUseTitles.size()));
    std::vector<std::string> titles(dontUseTitles.begin(), dontUseTitles.end());
    std::sort(titles.begin(), titles.end());
    fs::create_directories("output/info", ec);
    std::ofstream out(fs::path("output") / "info" / "DontUseLiveries.txt", std::ios::trunc);
    for (const std::string& t : titles) out << t << '\n';
}

// Keeps, for each airline, operator, model and cargo, only the liveries of
// the best-ranked folder that has any.
std::size_t lf_prioritize(std::vector<Livery>& list) {
    using Key = std::tuple<std::uint16_t, std::uint16_t, std::uint16_t, std::uint8_t>;
    std::map<Key, std::uint16_t> best;
    for (const Livery& l : list) {
        const Key key{l.airline, l.opr, l.model, l.cargo};
        auto [it, added] = best.try_emplace(key, l.rank);
        if (!added) it->second = std::min(it->second, l.rank);
    }
    const std::size_t before = list.size();
    std::erase_if(list, [&](const Livery& l) {
        return l.rank > best.at(Key{l.airline, l.opr, l.model, l.cargo});
    });
    return before - list.size();
}

}  // namespace

int gf_runFolderWalk(const std::vector<fs::path>& folders, bool prioritize) {
    scanList.clear();
    scanReports.clear();
    scanTitles.clear();
    scanTitles.reserve(30000);
    dontUseTitles.reserve(5000);
    gf_removeFilesFromDirectory("output/info");
    gf_removeFilesFromDirectory("output/errors");
    lf_loadDontUseTitles();

    std::uint16_t rank = 0;
    std::size_t walked = 0;
    for (const fs::path& folder : folders) {
        if (folder.empty()) continue;
        std::error_code ec;
        if (!fs::exists(folder, ec)) {
            gf_logLine(folder.string() + " does not exist, skipped!");
            continue;
        }
        if (!fs::is_directory(folder, ec)) {
            gf_logLine(folder.string() + " is not a folder name, skipped!");
            continue;
        }
        rank = std::min<std::uint16_t>(rank + 1, MAX_RANK);
        if (!gf_keepRunning()) return 1;
        gf_showStatus(fmt::format("Scanning for liveries in {} ...", folder.filename().string()));
        const FolderWalk walk = gf_walkLiveryFolder(folder, rank);
        ++walked;
        const std::string where = fmt::format("found in {}", folder.string());
        if (walk.liveries > 0)
            gf_logLine(
                fmt::format("{:5} liverie{} {}", walk.liveries, lf_plural(walk.liveries), where));
        else
            gf_logLine(fmt::format("No liveries {}", where));
        gf_logLine(
            fmt::format("{:5} aircraft.cfg file{} read, {} folder{} not entered (scenery names, "
                        "paths too long)",
                        walk.files, lf_plural(walk.files), walk.skippedFolders,
                        lf_plural(walk.skippedFolders)));
    }
    if (!gf_keepRunning()) return 1;
    if (scanList.empty()) return 2;

    if (walked > 1 && prioritize) {
        gf_logLine("\nPrioritizing the scanned liveries ...");
        const std::size_t removed = lf_prioritize(scanList);
        gf_logLine(
            fmt::format("{:5} same airl+model liverie{} removed because from lower ai-package",
                        removed, lf_plural(removed)));
        gf_logLine(fmt::format("{:5} in total", scanList.size()));
    }
    std::sort(scanList.begin(), scanList.end(), gf_liveryLess);
    const auto last = std::unique(scanList.begin(), scanList.end(), gf_liverySame);
    const auto duplicates = static_cast<std::size_t>(std::distance(last, scanList.end()));
    scanList.erase(last, scanList.end());
    if (duplicates > 0) gf_logError(fmt::format("{} duplicates removed ?", duplicates));

    gf_writeScanReport("output");
    gf_flushLog();
    return gf_writeScannedLiveries() ? 0 : 3;
}

std::vector<fs::path> gf_liveryFolders(bool automatic) {
    std::vector<fs::path> folders;
    if (automatic) {
        const auto selection = gf_packageSelection(params.AI_PACKAGE_SELECTOR.current);
        if (const auto community = gf_scanRootPath("Community"))
            folders = gf_automaticFolders(*community, selection, gf_isMSFS2020());
        if (folders.empty())
            throw UserRelatedException(148,
                                       "Automatic scan has not found any AI packages, choose a "
                                       "different selection, or switch to Manual mode");
        return folders;
    }
    for (const StringParameter& p : params.lfolder) {
        if (p.current.empty()) continue;
        std::error_code ec;
        if (!fs::exists(p.current, ec)) {
            gf_logError(fmt::format("{}: '{}' does not exist", p.key, p.current));
            throw UserRelatedException(
                243,
                fmt::format("the path pointed to by parameter '{}' does not exist, see Log.txt!",
                            p.key));
        }
        folders.emplace_back(p.current);
    }
    if (folders.empty())
        throw UserRelatedException(
            48,
            fmt::format("Exit {} first!   Then set one or more lfolder parameters to your liveries",
                        PROGRAM_NAME));
    return folders;
}

void gf_scanLiveries() {
    const bool prioritize = params.LIG_PRIORITIZE.current;
    const bool automatic = params.LIG_AUTOMATIC.current;
    struct Ending {
        ~Ending() {
            scanReports.clear();
            gf_clearStatus();
            gf_logLine(
                "\n++++++++++++++++++++++++ liveries scan ends ++++++++++++++++++++++++++++++++\n");
        }
    };
    try {
        Ending ending;
        gf_showStatus("Scanning for liveries ...");
        gf_logLine(fmt::format(
            "\n++++++++++++++++++++++++ liveries scan {} starts ++++++++++++++++++++++++++++++++",
            automatic ? "automatic" : "manual"));
        const std::vector<fs::path> folders = gf_liveryFolders(automatic);
        switch (gf_runFolderWalk(folders, prioritize)) {
            case 0:
                Gui::enqueueUpdate(
                    {GuiKind::LiveryCount, static_cast<std::int64_t>(scanList.size())});
                gf_showStatus(fmt::format("Liveries scan finished: {} liveries", scanList.size()),
                              true);
                break;
            case 1:
                gf_showStatus("Liveries scan cancelled", true);
                break;
            case 2:
                if (automatic)
                    throw UserRelatedException(553,
                                               "Automatic scan has not found any liveries in your "
                                               "packages, choose a different selection, or go to "
                                               "Manual mode");
                throw UserRelatedException(554, "no liveries found");
            default:
                throw std::runtime_error(fmt::format("the new {} could not be committed safely",
                                                     gf_scannedLiveriesPath().filename().string()));
        }
    } catch (const std::exception& e) {
        gf_logError(fmt::format("Liveries scan failed: {}", e.what()));
        throw;
    }
}

}  // namespace tfx
