// STAND-IN for the stand claims of live aircraft: no stands are known, so no
// aircraft is created at a stand and nothing is removed. (What stood at a
// stand is learned in src/airports/stand_learning.cpp.) The real bodies
// replace this file.
#include <cmath>

#include "airports/airport_file.h"
#include "traffic/stand_claims.h"

namespace tfx {

// Only the distance and the radius are looked at: the nearest stand within
// 81.25 m, of a known type, not blocked, not too small for the aircraft, a
// helipad only for a rotorcraft and the other way round.
Stand* gf_closestStand(std::vector<Stand>& stands, LatLon position, const AircraftBase& ac,
                       double& distance_m, bool) {
    constexpr double REACH_NM = 0.04387149028077754;
    constexpr double TOO_SMALL_NM = 0.0029157667386609074;
    distance_m = 99999;
    Stand* best = nullptr;
    double best_nm = REACH_NM;
    const double cosLat = std::cos(position.lat * 0.017453292519943295);
    const bool rotorcraft = ac.category == AircraftCategory::Rotorcraft;
    for (Stand& stand : stands) {
        if (stand.type == 0 && !stand.heli) continue;
        if (stand.blockedByOverlap || stand.heli != rotorcraft) continue;
        if (ac.halfSpan - stand.radius > TOO_SMALL_NM) continue;
        const double dlat = (stand.latitude - position.lat) * 60;
        const double dlon = (stand.longitude - position.lon) * 60 * cosLat;
        const double d = std::sqrt(dlat * dlat + dlon * dlon);
        if (d > best_nm) continue;
        best_nm = d;
        best = &stand;
    }
    if (best != nullptr) distance_m = best_nm * 1852.0;
    return best;
}

std::optional<StandTaken> lf_findStandAtSpawn(LiveAircraft&) {
    return std::nullopt;
}

void lf_checkForStaticWithCallsignOrHexidAndRemove(const LiveAircraft&) {}

void gf_checkForAllGndIfParkedVersionExistsAndRemove() {}

// No stand work yet: an aircraft in parking never arrives.
bool lf_arrivedAtStand(LiveAircraft&) {
    return false;
}

}  // namespace tfx
