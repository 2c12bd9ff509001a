// Which stand a live aircraft may use at a place: the nearest one of a type
// and size that fits it, or a little further off one that knows it from an
// earlier visit; and whether a stand is the user's.
#include <cmath>
#include <string>

#include "airports/airport_file.h"
#include "parking/airport_context.h"
#include "parking/parking_state.h"
#include "parking/user_stand.h"
#include "sim/user_data.h"
#include "traffic/stand_claims.h"
#include "traffic/stand_fit_table.h"
#include "traffic/units.h"
#include "traffic/user_aircraft.h"

namespace tfx {

namespace {

// Nothing further than 81.25 m from a place stands there.
constexpr double STAND_REACH_NM = 0.04387149028077754;
constexpr double NO_STAND_M = 99999;

bool lf_standKnowsAircraft(const Stand& stand, const AircraftBase& ac) {
    for (const StandOption& o : stand.options) {
        if (o.real == 0 || o.number == 0) continue;
        if (!ac.callsign.empty() && (o.cs1 == ac.callsign || o.cs2 == ac.callsign)) return true;
        if (o.key.airline == ac.aimo.airline && o.key.operator_ == ac.aimo.operator_ &&
            o.key.model == ac.aimo.model && o.key.cargo == ac.aimo.cargo)
            return true;
    }
    return false;
}

// The stand's name is name, or one of the stands it overlaps bears it.
bool lf_standOrOverlapNamed(const Stand& stand, const std::string& name) {
    if (name.empty()) return false;
    if (stand.id == name) return true;
    for (const std::uint32_t sid : stand.overlaps) {
        const Stand* other = gf_standBySid(static_cast<std::int32_t>(sid));
        if (other != nullptr && other->id == name) return true;
    }
    return false;
}

}  // namespace

bool lf_standFits(const Stand& stand, AircraftCategory category, double halfSpan) {
    const double excess = halfSpan - stand.radius;
    if (excess > STAND_EXCESS_LIMIT_NM) return false;
    // A helipad is a stand for helicopters, whatever else its type says.
    if (stand.type == 0 && stand.heli) return category == AircraftCategory::Rotorcraft;
    const StandFitRow& row = STAND_FIT_TABLE[std::min<std::size_t>(stand.type, 15)];
    if (excess > row.excessLimit_nm) return false;
    if ((row.categories & lf_categoryBit(category)) != 0) return true;
    return row.largeWithoutOverhang && category == AircraftCategory::Large && excess <= 0;
}

Stand* gf_closestStand(std::vector<Stand>& stands, LatLon position, const AircraftBase& ac,
                       double& distance_m, bool allowFar) {
    distance_m = NO_STAND_M;
    const bool rotorcraft = ac.category == AircraftCategory::Rotorcraft;
    const double cosLat = std::cos(position.lat * RAD_PER_DEG);
    Stand* nearStand = nullptr;
    Stand* farStand = nullptr;
    double near_nm = STAND_REACH_NM, far_nm = STAND_REACH_NM;
    for (Stand& stand : stands) {
        if (stand.blockedByOverlap) continue;
        if (stand.type == 0 && !(stand.heli && rotorcraft)) continue;
        if (stand.heli != rotorcraft) continue;
        const double dlat_nm = (stand.latitude - position.lat) * 60;
        const double dlon_nm = (stand.longitude - position.lon) * 60 * cosLat;
        if (std::abs(dlat_nm) > STAND_REACH_NM || std::abs(dlon_nm) > STAND_REACH_NM) continue;
        if (!lf_standFits(stand, ac.category, ac.halfSpan)) continue;
        const double d = std::sqrt(dlat_nm * dlat_nm + dlon_nm * dlon_nm);
        if (d > STAND_REACH_NM) continue;
        if (d <= ac.standSearchNear && (nearStand == nullptr || d < near_nm)) {
            nearStand = &stand;
            near_nm = d;
            // A stand close enough beats any further one that knows the aircraft.
            allowFar = false;
        } else if (allowFar && d < ac.standSearchFar && (farStand == nullptr || d < far_nm) &&
                   lf_standKnowsAircraft(stand, ac)) {
            farStand = &stand;
            far_nm = d;
        }
    }
    if (nearStand != nullptr) {
        distance_m = near_nm * METRES_PER_NM;
        return nearStand;
    }
    if (farStand != nullptr) distance_m = far_nm * METRES_PER_NM;
    return farStand;
}

bool lf_isUserStand(const Stand& stand, const LiveAircraft&, int) {
    if (lf_standOrOverlapNamed(stand, gf_userDestStand())) return true;
    const UserData user = userAircraft;
    const auto here = gf_closestStandToUser({user.lat, user.lon});
    return here.has_value() && lf_standOrOverlapNamed(stand, *here);
}

}  // namespace tfx
