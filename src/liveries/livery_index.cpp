// The index build as the session start runs it: the stored scan read back,
// the index built into a fresh object, and that object published whole.
//
// Where the tick stands: the build runs on the main thread before the main
// loop starts (and a rescan only after the traffic has stopped), and the tick
// runs on that same thread, so no tick can run during a build. Beyond that,
// readers only ever get a finished index: the build fills a private object
// and publishes it with one atomic pointer store; a reader loads the pointer
// once per match. The previous index is kept one generation longer, so that
// titles handed out from it stay valid until its aircraft are gone.
#include <atomic>
#include <filesystem>

#include <fmt/format.h>

#include "app/log.h"
#include "gui/gui.h"
#include "liveries/liveries_scan.h"
#include "liveries/livery_index.h"
#include "liveries/livery_index_files.h"
#include "liveries/scanned_liveries_file.h"

namespace fs = std::filesystem;

namespace tfx {

namespace {

std::atomic<std::shared_ptr<const LiveryIndex>> publishedIndex;
std::shared_ptr<const LiveryIndex> retiredIndex;  // main thread only

const std::shared_ptr<const LiveryIndex>& lf_emptyIndex() {
    static const std::shared_ptr<const LiveryIndex> empty = std::make_shared<LiveryIndex>();
    return empty;
}

void lf_writeClashes(const std::vector<std::string>& clashes) {
    if (clashes.empty()) return;
    const fs::path path = fs::path("output") / "errors" / "InlineRegcodes.txt";
    if (gf_writeReportLines(path, clashes))
        gf_logLine(fmt::format("{:5} in-line regcode clashes, see '{}'", clashes.size(),
                               path.generic_string()));
}

}  // namespace

std::shared_ptr<LiveryIndex> gf_buildLiveryIndex(const std::vector<Livery>& list) {
    auto index = std::make_shared<LiveryIndex>();
    gf_internLadderCodes(*index);

    std::vector<std::string> clashes;
    gf_indexLiveries(list, *index, clashes);
    lf_writeClashes(clashes);

    lf_processOfflineRegcodes(*index);
    gf_logLine(fmt::format("{:5} registration codes", index->regcodeToTitle.size()));

    lf_createModelSorted(*index);
    gf_logLine(fmt::format("{:5} airlines, {} pax aircraft models and {} cargo aircraft models",
                           index->liveryIndex.size(), index->byModel[PAX].size(),
                           index->byModel[CARGO].size()));

    gf_buildSimilarModels(gf_installedModels(*index));
    index->similarInstalled = similarInstalledModels;
    index->similarByAirline = similarByAirline;

    gf_categoriesAndGenerics(*index);
    return index;
}

void gf_processScannedLiveries() {
    gf_logLine("\n+++++ processing scanned liveries +++++");
    if (!gf_readScannedLiveries())
        throw std::runtime_error(fmt::format("{} could not be read completely",
                                             gf_scannedLiveriesPath().generic_string()));
    Gui::enqueueUpdate({GuiKind::LiveryCount, static_cast<std::int64_t>(scanList.size())});

    gf_publishLiveryIndex(gf_buildLiveryIndex(scanList));

    scanList.clear();
    scanList.shrink_to_fit();
    gf_logLine("----- end of processing scanned liveries ------\n");
}

std::shared_ptr<const LiveryIndex> gf_liveryIndex() {
    std::shared_ptr<const LiveryIndex> index = publishedIndex.load(std::memory_order_acquire);
    return index ? index : lf_emptyIndex();
}

void gf_publishLiveryIndex(std::shared_ptr<const LiveryIndex> index) {
    retiredIndex = publishedIndex.exchange(std::move(index), std::memory_order_acq_rel);
}

}  // namespace tfx
