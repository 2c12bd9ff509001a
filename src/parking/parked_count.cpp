#include "parking/parked_count.h"

#include <algorithm>
#include <vector>

#include <fmt/format.h>

#include "app/log.h"
#include "parking/parking_applier.h"
#include "parking/parking_plan.h"
#include "parking/parking_state.h"
#include "traffic/clock.h"
#include "traffic/removal.h"
#include "traffic/traffic_internal.h"
#include "traffic/traffic_tables.h"

namespace tfx {

namespace {

bool lf_onTheGround(FlightState s) {
    return s == FlightState::pushing_back || s == FlightState::pushed_back ||
           s == FlightState::taxi || s == FlightState::takeoff_roll ||
           s == FlightState::landing_roll || s == FlightState::parked || s == FlightState::parking;
}

// A queued create is taken back, else the object goes when it appears.
void lf_withdrawQueued(StaticAircraft& ac) {
    if (ac.removeOnArrival != 0) return;
    if (lf_takeBackCreate(staticCreates, ac.callsign) ||
        lf_takeBackCreate(liveCreates, ac.callsign)) {
        ac.dropQueued = 1;
    } else {
        ac.removeOnArrival = 1;
    }
}

void lf_purgeDroppedStatics() {
    for (const StaticAircraft& ac : staticAircraft)
        if (ac.dropQueued != 0) lf_purgeAircraft(ac.hexid, ac.objectid);
    std::erase_if(staticAircraft, [](const StaticAircraft& ac) { return ac.dropQueued != 0; });
}

}  // namespace

void lf_removeRemovals() {
    for (const PlannedRemoval& r : parking.removals) {
        try {
            auto it = std::find_if(staticAircraft.begin(), staticAircraft.end(),
                                   [&](const StaticAircraft& ac) {
                                       return ac.sid == r.sid && ac.callsign == r.callsign;
                                   });
            if (it == staticAircraft.end())
                it = std::find_if(staticAircraft.begin(), staticAircraft.end(),
                                  [&](const StaticAircraft& ac) { return ac.sid == r.sid; });
            if (it == staticAircraft.end()) continue;
            const bool active = it->simState == SimState::active;
            // One still waiting for the simulator's answer goes too, or it
            // would appear after the plan and stand beyond the target.
            if (!active && it->simState != SimState::adding2sim) continue;
            gf_logLine(fmt::format("{:14}: {:8} static parked removed, no longer within your specs",
                                   gf_standName(r.sid), it->callsign));
            if (active)
                removeAircraftFromSim(*it);
            else
                lf_withdrawQueued(*it);
        } catch (...) {
            lf_trafficException("lf_removeRemovals");
        }
    }
    parking.removals.clear();
    lf_purgeDroppedStatics();
}

void lf_removeNOldestLiveParked(std::int64_t n) {
    if (n < 1) return;
    std::vector<LiveAircraft*> parked;
    for (LiveAircraft& ac : liveAircraft)
        if (ac.simState == SimState::active && ac.flightState == FlightState::parked)
            parked.push_back(&ac);
    const auto count = std::min<std::size_t>(static_cast<std::size_t>(n), parked.size());
    std::partial_sort(
        parked.begin(), parked.begin() + static_cast<std::ptrdiff_t>(count), parked.end(),
        [](const LiveAircraft* a, const LiveAircraft* b) { return a->lastMoved < b->lastMoved; });
    for (std::size_t i = 0; i < count; ++i) {
        try {
            gf_logLine(fmt::format("{:14}: live parked {} removed", gf_standName(parked[i]->sid),
                                   parked[i]->callsign));
            removeAircraftFromSim(*parked[i]);
        } catch (...) {
            lf_trafficException("lf_removeNOldestLiveParked");
        }
    }
}

void lf_removeNOldestStaticParked(std::int64_t n) {
    if (n < 1) return;
    std::vector<StaticAircraft*> parked;
    for (StaticAircraft& ac : staticAircraft)
        if (ac.simState == SimState::active) parked.push_back(&ac);
    const auto count = std::min<std::size_t>(static_cast<std::size_t>(n), parked.size());
    std::partial_sort(parked.begin(), parked.begin() + static_cast<std::ptrdiff_t>(count),
                      parked.end(), [](const StaticAircraft* a, const StaticAircraft* b) {
                          return gf_slotDifference(weekNow, a->arrivalSlot) >
                                 gf_slotDifference(weekNow, b->arrivalSlot);
                      });
    for (std::size_t i = 0; i < count; ++i) {
        try {
            gf_logLine(fmt::format("{:14}: static parked {} removed", gf_standName(parked[i]->sid),
                                   parked[i]->callsign));
            removeAircraftFromSim(*parked[i]);
        } catch (...) {
            lf_trafficException("lf_removeNOldestStaticParked");
        }
    }
}

void lf_enforceParkedMax(int extra) {
    const std::int64_t wanted = parking.wantedParked;
    if (wanted < 0) return;
    std::int64_t live = extra;
    for (const LiveAircraft& ac : liveAircraft)
        if (ac.simState == SimState::active && ac.flightState == FlightState::parked) ++live;
    // Those on their way out are gone already; those on their way in count.
    std::int64_t stat = 0;
    for (const StaticAircraft& ac : staticAircraft)
        if (ac.simState == SimState::active || ac.simState == SimState::adding2sim) ++stat;
    if (live + stat <= wanted) return;
    if (live <= wanted) {
        lf_removeNOldestStaticParked(live + stat - wanted);
        return;
    }
    lf_removeNOldestLiveParked(live - wanted);
    if (stat > 0) lf_removeNOldestStaticParked(stat);
}

void gf_parkedTargetChanged() {
    if (parking.wantedParked < 0) return;
    const std::int32_t target = gf_parkedTarget();
    const bool fell = target < parking.wantedParked;
    parking.wantedParked = target;
    // Planned aircraft beyond the new target are not created.
    if (fell) {
        std::int64_t room = target;
        for (const StaticAircraft& ac : staticAircraft)
            if (ac.simState == SimState::active || ac.simState == SimState::adding2sim) --room;
        for (const LiveAircraft& ac : liveAircraft)
            if (ac.simState == SimState::active && ac.flightState == FlightState::parked) --room;
        const auto keep = static_cast<std::size_t>(std::max<std::int64_t>(room, 0));
        if (parking.plan.size() > keep)
            parking.plan.erase(parking.plan.begin(),
                               parking.plan.end() - static_cast<std::ptrdiff_t>(keep));
        lf_enforceParkedMax(0);
    }
}

void gf_removeAllStatic() {
    try {
        for (StaticAircraft& ac : staticAircraft) {
            if (ac.simState == SimState::active) {
                gf_logLine(fmt::format("{:14}: {:8} removed", gf_standName(ac.sid), ac.callsign));
                removeAircraftFromSim(ac);
            } else if (ac.simState == SimState::adding2sim) {
                lf_withdrawQueued(ac);
            }
        }
        lf_purgeDroppedStatics();
    } catch (...) {
        lf_trafficException("gf_removeAllStatic");
    }
}

void lf_removeAllStaticAndLiveAtAirport() {
    gf_removeAllStatic();
    try {
        for (LiveAircraft& ac : liveAircraft) {
            if (!lf_onTheGround(ac.flightState)) continue;
            ac.sid = 0;
            ac.standLat = ac.standLon = ac.standHeading = 0;
            ac.standCargo = ac.standIsGate = 0;
            if (ac.simState == SimState::active) {
                removeAircraftFromSim(ac);
            } else if (ac.simState == SimState::adding2sim) {
                lf_withdrawQueued(ac);
            }
        }
        for (LiveAircraft& ac : liveAircraft)
            if (ac.dropQueued != 0) lf_cleanupLiveAircraft(ac);
        std::erase_if(liveAircraft, [](const LiveAircraft& ac) { return ac.dropQueued != 0; });
    } catch (...) {
        lf_trafficException("lf_removeAllStaticAndLiveAtAirport");
    }
}

}  // namespace tfx
