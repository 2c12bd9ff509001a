// Stand-in until the scenery scan exists: the scan only reads the weekly
// traffic airports and the archive lists, as the real scan does first.
#include "airports/airport_session.h"
#include "app/parameters.h"
#include "app/run_state.h"

namespace tfx {

void gf_scanAirports() {
    gf_readScanCatalogues(gf_isMSFS2020());
}

}  // namespace tfx
