// The two catalogue files that the scenery scan reads afresh each time.
#include <exception>

#include <fmt/format.h>

#include "airports/airport_session.h"
#include "airports/archives.h"
#include "app/log.h"

namespace tfx {

bool gf_readScanCatalogues(bool is2020) {
    bool ok = true;
    auto weekly = gf_readWeeklyTrafficAirports();
    if (auto* codes = std::get_if<std::vector<IcaoCode>>(&weekly)) {
        weeklyTrafficAirports = std::move(*codes);
    } else {
        gf_logError(std::get<std::string>(weekly));
        ok = false;
    }
    try {
        ok = gf_readArchives(is2020) && ok;
        gf_logLine(fmt::format("{:5} simaddon airport{} and {} third part{} in the archive",
                               simaddonSet.size(), simaddonSet.size() == 1 ? "" : "s",
                               thirdpartyList.size(), thirdpartyList.size() == 1 ? "y" : "ies"));
    } catch (const std::exception& e) {
        gf_logError(e.what());
        ok = false;
    }
    return ok;
}

}  // namespace tfx
