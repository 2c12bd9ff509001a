// STAND-IN for the livery index build: the stored scan is read back into
// scanList and nothing more is built; the matching stand-in picks from it.
#include <fmt/format.h>

#include "app/log.h"
#include "liveries/liveries_scan.h"
#include "liveries/scanned_liveries_file.h"

namespace tfx {

void gf_processScannedLiveries() {
    if (!gf_readScannedLiveries())
        gf_logError(
            fmt::format("{} could not be read completely", gf_scannedLiveriesPath().string()));
}

}  // namespace tfx
