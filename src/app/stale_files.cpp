#include "app/stale_files.h"

#include <fmt/format.h>

#include "app/log.h"
#include "app/parameters.h"
#include "app/run_words.h"
#include "platform/file_replace.h"
#include "platform/process_id.h"

namespace fs = std::filesystem;

namespace tfx {
namespace {

// Where the program writes through a working name, relative to the program folder.
constexpr const char* WRITTEN_FOLDERS[] = {
    ".",
    "input",
    "output",
    "airports",
    "airports/learned",
    "airports/learned/stock",
    "airports/learned/simaddon",
    "airports/learned/thirdparty",
    "my_simaddon",
    "my_thirdparty",
    "tblo",
};

int lf_sweep(const fs::path& folder, bool ownFolder) {
    const std::uint64_t self = pf_processId();
    int removed = 0;
    std::error_code ec;
    fs::directory_iterator it(folder, ec);
    for (; !ec && it != fs::directory_iterator(); it.increment(ec)) {
        std::error_code entryEc;
        if (!it->is_regular_file(entryEc)) continue;
        const auto owner = pf_temporaryOwner(it->path());
        if (!owner || *owner == self) continue;
        if (!ownFolder && pf_processAlive(*owner)) continue;
        if (fs::remove(it->path(), entryEc)) {
            ++removed;
        } else if (entryEc) {
            gf_logError(fmt::format("Warning: could not remove '{}', error: {}",
                                    it->path().string(), entryEc.message()));
        }
    }
    return removed;
}

}  // namespace

int gf_removeStaleTemporaries(const std::vector<fs::path>& ownFolders,
                              const std::vector<fs::path>& sharedFolders) {
    int removed = 0;
    for (const auto& folder : ownFolders) removed += lf_sweep(folder, true);
    for (const auto& folder : sharedFolders) removed += lf_sweep(folder, false);
    return removed;
}

int gf_removeSessionLeftovers() {
    std::vector<fs::path> own(std::begin(WRITTEN_FOLDERS), std::end(WRITTEN_FOLDERS));
    own.push_back(gf_dataFolder());
    std::vector<fs::path> shared;
    if (!runWords.recording.empty()) {
        const fs::path folder = fs::absolute(runWords.recording).parent_path();
        std::error_code ec;
        if (!fs::equivalent(folder, fs::current_path(), ec)) shared.push_back(folder);
    }
    const int removed = gf_removeStaleTemporaries(own, shared);
    if (removed > 0)
        gf_logLine(
            fmt::format("{} file{} of interrupted runs removed", removed, removed == 1 ? "" : "s"));
    return removed;
}

}  // namespace tfx
