// Regcodes from files: the bundled AIG list (input/AIG-regcodes.enc) and the
// user's text files in input/my_regcodes, which may override it. What they
// changed goes to output/info/OfflineRegcodes.txt.
#include <algorithm>
#include <filesystem>
#include <fstream>

#include <fmt/format.h>

#include "app/decrypt.h"
#include "app/log.h"
#include "gui/gui.h"
#include "liveries/livery_index.h"
#include "liveries/livery_index_files.h"
#include "liveries/regcode_files.h"

namespace fs = std::filesystem;

namespace tfx {

namespace {

const char* lf_s(std::size_t count) {
    return count == 1 ? "" : "s";
}

struct ApplyCounts {
    std::size_t added = 0, replaced = 0, special = 0;
};

void lf_apply(LiveryIndex& index, const std::vector<RegcodeEntry>& entries,
              std::vector<std::string>& results) {
    ApplyCounts counts;
    for (const RegcodeEntry& entry : entries) {
        const auto stored = index.titleStore.find(entry.title);
        if (stored == index.titleStore.end()) continue;  // not installed: no effect
        const std::string_view title = *stored;
        for (const std::string& regcode : entry.regcodes) {
            const auto it = index.regcodeToTitle.find(regcode);
            if (it == index.regcodeToTitle.end()) {
                index.regcodeToTitle.emplace(regcode, title);
                ++counts.added;
            } else if (it->second != title) {
                results.push_back(
                    fmt::format("   regcode {} for '{}', instead of the same for '{}'", regcode,
                                title, it->second));
                it->second = title;
                ++counts.replaced;
            }
            if (entry.special && entry.regcodes.size() == 1)
                index.uniqueRegcodes.push_back(regcode);
        }
        if (entry.special && index.specialTitles.insert(title).second) ++counts.special;
    }
    results.push_back(
        fmt::format("{} new regcode{} added", counts.added, lf_s(counts.added)) +
        fmt::format(", {} regcode{} replaced", counts.replaced, lf_s(counts.replaced)) +
        fmt::format(", {} regcode{} defined as special", counts.special, lf_s(counts.special)));
}

bool lf_folderHasEntries(const fs::path& folder) {
    std::error_code ec;
    return fs::is_directory(folder, ec) && !fs::is_empty(folder, ec);
}

void lf_offlineRegcodes(LiveryIndex& index, std::vector<std::string>& results) {
    const fs::path enc = fs::path("input") / "AIG-regcodes.enc";
    std::error_code ec;
    if (!fs::exists(enc, ec)) {
        gf_logError(fmt::format("{} not available", enc.generic_string()));
        return;
    }
    // The plain text lives only while it is read; the build runs alone on
    // the main thread, so the plain file may take its own name.
    const fs::path plain = fs::path("input") / "AIG-regcodes.xml";
    if (!gf_streamDecrypt(enc, plain)) {
        gf_logError(fmt::format("Could not decrypt {}", enc.generic_string()));
        return;
    }
    gf_logLine("\n******* Offline regcodes ******");
    results.push_back(fmt::format("Processing '{}'", plain.generic_string()));
    std::vector<RegcodeEntry> entries;
    const bool ok = gf_readAigRegcodesXml(plain, entries);
    fs::remove(plain, ec);
    if (!ok)
        results.push_back(
            fmt::format("There were errors processing the AIG-regcode file '{}', see Log.txt",
                        enc.generic_string()));
    lf_apply(index, entries, results);

    const fs::path folder = fs::path("input") / "my_regcodes";
    if (lf_folderHasEntries(folder)) {
        results.push_back(fmt::format("Processing files in {}", folder.generic_string()));
        entries.clear();
        if (!gf_readRegcodeFolder(folder, entries))
            gf_showStatus(fmt::format(
                "There were errors processing the regcode files in folder '{}', see Log.txt",
                folder.generic_string()));
        lf_apply(index, entries, results);
    }
}

}  // namespace

void lf_processOfflineRegcodes(LiveryIndex& index) {
    std::vector<std::string> results;
    index.specialTitles.clear();
    index.uniqueRegcodes.clear();
    try {
        lf_offlineRegcodes(index, results);
    } catch (const std::exception& e) {
        gf_logLine(fmt::format("exception in lf_processOfflineRegcodes: {}", e.what()));
    } catch (...) {
        gf_logLine("unknown exception in lf_processOfflineRegcodes");
    }
    std::sort(index.uniqueRegcodes.begin(), index.uniqueRegcodes.end());
    index.uniqueRegcodes.erase(
        std::unique(index.uniqueRegcodes.begin(), index.uniqueRegcodes.end()),
        index.uniqueRegcodes.end());

    const fs::path report = fs::path("output") / "info" / "OfflineRegcodes.txt";
    std::error_code ec;
    fs::remove(report, ec);
    if (!results.empty() && gf_writeReportLines(report, results))
        gf_logLine(fmt::format(
            "****** Offline regcode files processed, results can be found in '{}' ******\n",
            report.generic_string()));
    if (!index.specialTitles.empty())
        gf_logLine(fmt::format("{:5} special liveries", index.specialTitles.size()));
    if (!index.uniqueRegcodes.empty())
        gf_logLine(fmt::format("{:5} unique liveries", index.uniqueRegcodes.size()));
}

}  // namespace tfx
