// The stands of the park airport as the planner sees them: names, numbers,
// the marks of one plan, and which stands touch which.
#include <algorithm>

#include "airports/loaded_airport.h"
#include "parking/parking_plan.h"
#include "parking/parking_state.h"
#include "parking/user_stand.h"
#include "traffic/traffic_tables.h"

namespace tfx {

ParkingState parking;

std::vector<Stand>& gf_parkStands() {
    return loadedAirport.file.stands;
}

Stand* gf_standBySid(std::int32_t sid) {
    auto& stands = gf_parkStands();
    if (sid < 1 || static_cast<std::size_t>(sid) > stands.size()) return nullptr;
    return &stands[static_cast<std::size_t>(sid - 1)];
}

std::int32_t gf_standNumberOf(const std::string& name) {
    const auto it = parking.standNumbers.find(name);
    return it == parking.standNumbers.end() ? 0 : it->second;
}

std::string gf_standName(std::int32_t sid) {
    if (sid == 0) return "sid==0?";
    const Stand* stand = gf_standBySid(sid);
    return stand == nullptr ? "sid==?" : stand->id;
}

bool gf_takeStand(std::int32_t sid, std::int32_t needed) {
    Stand* stand = gf_standBySid(sid);
    if (stand == nullptr) return false;
    if (!stand->taken) {
        stand->taken = true;
        ++parking.takenCount;
        for (const std::uint32_t other : stand->overlaps)
            if (Stand* o = gf_standBySid(static_cast<std::int32_t>(other)))
                o->blockedByOverlap = true;
    }
    return parking.takenCount >= needed;
}

bool gf_standsAdjacent(std::int32_t a, std::int32_t b) {
    if (a == b) return true;
    const Stand* stand = gf_standBySid(a);
    if (stand == nullptr) return false;
    return std::find(stand->overlaps.begin(), stand->overlaps.end(),
                     static_cast<std::uint32_t>(b)) != stand->overlaps.end();
}

bool lf_overlapTaken(std::int32_t sid) {
    if (sid < 1) return false;
    for (const StaticAircraft& ac : staticAircraft)
        if (ac.simState != SimState::removingfromsim && ac.removeOnArrival == 0 && ac.sid != sid &&
            gf_standsAdjacent(sid, ac.sid))
            return true;
    for (const Stayer& s : parking.stayers)
        if (gf_standsAdjacent(sid, s.sid)) return true;
    for (const StaticPlan& p : parking.plan)
        if (gf_standsAdjacent(sid, p.sid)) return true;
    return false;
}

void lf_clearStandMarks() {
    for (Stand& stand : gf_parkStands()) {
        stand.taken = false;
        stand.blockedByOverlap = false;
    }
    parking.takenCount = 0;
}

void lf_reviveOptions() {
    for (Stand& stand : gf_parkStands())
        for (std::size_t i = 0; i < stand.options.size(); ++i)
            stand.options[i].number = static_cast<std::uint32_t>(i + 1);
}

bool gf_planHasEntries() {
    return !parking.plan.empty();
}

void gf_dropPlannedStaticAt(std::int32_t sid) {
    std::erase_if(parking.plan, [sid](const StaticPlan& p) { return p.sid == sid; });
}

void gf_clearPlan() {
    parking.plan.clear();
    parking.removals.clear();
    parking.stayers.clear();
    parking.searchRunning = false;
}

void gf_clearStands() {
    gf_clearPlan();
    parking.standNumbers.clear();
    parking.wantedParked = -1;
    parking.takenCount = 0;
    parking.parkedList.clear();
    parking.rtParked.clear();
    parking.seenCallsigns.clear();
    parking.seenHexids.clear();
    gf_clearLoadedAirport();
    gf_publishStandPositions({});
}

}  // namespace tfx
