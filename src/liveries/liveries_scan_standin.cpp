// Stand-in until the livery scan and index exist: nothing is scanned and the
// index stays empty, so no livery is matched.
#include "app/run_state.h"
#include "liveries/liveries_scan.h"

namespace tfx {

void gf_scanLiveries() {}

std::filesystem::path gf_scannedLiveriesPath() {
    return gf_isMSFS2020() ? "LiveriesScanned_MSFS2020.xml" : "LiveriesScanned_MSFS2024.xml";
}

void gf_processScannedLiveries() {}

}  // namespace tfx
