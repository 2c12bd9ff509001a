// The traffic's share of the once-a-second work, and the work every 5, 14 and
// 61 seconds by the seconds counter. Paced by the simulator's once-a-second
// data, so it stops when the simulator stops.
#include <algorithm>

#include "app/auto_range.h"
#include "app/log.h"
#include "app/options.h"
#include "app/run_state.h"
#include "feeds/rt_api/query_box.h"
#include "feeds/rtapp/rt_app_position.h"
#include "gui/gui.h"
#include "liveries/livery_matching.h"
#include "parking/airport_context.h"
#include "parking/parking_applier.h"
#include "parking/parking_plan.h"
#include "sim/sim_client.h"
#include "sim/sim_queues.h"
#include "sim/user_data.h"
#include "traffic/clock.h"
#include "traffic/collision.h"
#include "traffic/removal.h"
#include "traffic/stand_claims.h"
#include "traffic/traffic.h"
#include "traffic/traffic_internal.h"
#include "traffic/traffic_tables.h"

namespace tfx {

int secondsCounter = 0;

namespace {

constexpr int SECONDS_PER_DAY = 86400;
constexpr std::int32_t NO_LIVE_LIMIT = 500;

// Sum of half hours on the stand and the number of aircraft with a known slot.
struct StandTime {
    std::int64_t count = 0;
    std::int64_t known = 0;
    std::int64_t halfHours = 0;
    void add(std::uint64_t arrivalSlot) {
        ++count;
        if (arrivalSlot == 0) return;
        ++known;
        halfHours += gf_slotDifference(weekNow, arrivalSlot);
    }
    // Mean time on the stand in hours, -1 when unknown.
    float meanHours() const {
        return known == 0
                   ? -1.0f
                   : static_cast<float>(static_cast<double>(halfHours) / (2.0 * known) + 0.5);
    }
};

void lf_updateWindowCounters() {
    std::int64_t flying = 0;
    StandTime live, parkedStatic;
    for (const auto& ac : liveAircraft) {
        if (ac.simState != SimState::active) continue;
        if (ac.flightState == FlightState::parked) {
            live.add(ac.arrivalSlot);
        } else {
            ++flying;
        }
    }
    for (const auto& ac : staticAircraft) {
        if (ac.simState == SimState::active) parkedStatic.add(ac.arrivalSlot);
    }
    Gui::enqueueUpdate({GuiKind::LiveCount, flying});
    Gui::enqueueUpdate({GuiKind::ParkLive, TwoNumbers{live.count, parkedStatic.count}});
    Gui::enqueueUpdate({GuiKind::LiveFit, live.meanHours()});
    Gui::enqueueUpdate({GuiKind::StaticFit, parkedStatic.meanHours()});
}

void lf_nextNameLookup() {
    if (nameLookups.empty()) return;
    const std::uint32_t hexid = nameLookups.front();
    nameLookups.pop_front();
    LiveAircraft* ac = gf_findLive(hexid);
    if (ac == nullptr) return;
    if (ac->altNamesLooked == 0) {
        lf_lookupAlternativeNames(*ac);
        ac->altNamesLooked = 1;
    }
    lf_checkForStaticWithCallsignOrHexidAndRemove(*ac);
}

void lf_applyLowerLiveLimit(const Options& options) {
    if (!gf_takePending(pending.maxLiveChanged)) return;
    if (options.MAX_LIVE_SEL == NO_LIVE_LIMIT) return;
    const auto inSim = std::count_if(liveAircraft.begin(), liveAircraft.end(), [](const auto& ac) {
        return ac.simState == SimState::adding2sim || ac.simState == SimState::active;
    });
    for (auto surplus = inSim - options.MAX_LIVE_SEL; surplus > 0; --surplus) {
        lf_isThisTheFurthestLive(-1);
    }
}

// One step of the second's work; a failure is reported and the rest goes on.
template <typename Step>
void lf_guarded(const char* where, Step step) {
    try {
        step();
    } catch (...) {
        lf_trafficException(where);
    }
}

void lf_userPositionToFeed() {
    if (gf_isRTDirect()) {
        gf_updateQueryBox();
    } else {
        gf_sendPosition();
        gf_sendSimTime(gf_simEpochMillis());
    }
}

}  // namespace

void gf_applyParkedNavLights() {
    static int applied = -1;  // the value last sent; -1 before the first tick
    const int wanted = gf_options()->NAV_LIGHTS_WHILE_PARKED ? 1 : 0;
    if (applied < 0) applied = wanted;
    if (wanted == applied) return;
    applied = wanted;
    for (const auto& ac : staticAircraft) {
        if (ac.simState == SimState::active) gf_setNavLight(ac.objectid, wanted != 0);
    }
    for (const auto& ac : liveAircraft) {
        if (ac.simState == SimState::active && ac.flightState == FlightState::parked) {
            gf_setNavLight(ac.objectid, wanted != 0);
        }
    }
}

void gf_trafficEverySecond() {
    const OptionsPtr options = gf_options();
    lf_guarded("lf_updateWindowCounters", lf_updateWindowCounters);
    lf_guarded("lf_checkDelayedParked", lf_checkDelayedParked);
    gf_renewWeekNow();
    ++secondsCounter;
    lf_guarded("lf_nextNameLookup", lf_nextNameLookup);
    if (gf_takePending(pending.maxParkChanged)) {
        lf_guarded("lf_enforceParkedMax", gf_parkedTargetChanged);
    }
    lf_guarded("lf_isThisTheFurthestLive", [&] { lf_applyLowerLiveLimit(*options); });
    if (gf_takePending(pending.flushPending)) lf_guarded("gf_removeAllStatic", gf_removeAllStatic);
    if (userOnGround.load() == 1) {
        if (options->COLLISION_USER_GND) {
            lf_guarded("gf_checkUserAcGndCollisions", gf_checkUserAcGndCollisions);
        }
    } else if (options->COLLISION_USER_AIR) {
        lf_guarded("lf_checkUserAir", lf_checkUserAir);
    }
    if (options->COLLISION_LIVE_PARKED_GND) lf_guarded("lf_checkLiveParked", lf_checkLiveParked);
    if (gf_takePending(pending.blockPending)) lf_guarded("gf_removeBlockedAc", gf_removeBlockedAc);
}

void gf_trafficPeriodicWork() {
    const int n = secondsCounter;
    if (n % 5 == 0) {
        const OptionsPtr options = gf_options();
        if (gf_takePending(pending.removeLight)) {
            gf_removeLiveAircraftCategory(AircraftCategory::Light);
        }
        if (gf_takePending(pending.removeRotorcraft)) {
            gf_removeLiveAircraftCategory(AircraftCategory::Rotorcraft);
        }
        if (gf_takePending(pending.removeHighPerf)) {
            gf_removeLiveAircraftCategory(AircraftCategory::HighPerf);
        }
        lf_guarded("lf_userPositionToFeed", lf_userPositionToFeed);
        const std::string destStand = gf_userDestStand();
        if (!destStand.empty()) gf_clearUserDestGate(destStand);
        if (n % 15 == 0) {
            gf_flushLog();
            lf_guarded("gf_parkingUpdate", gf_parkingUpdate);
        }
        if (n % 30 == 0) {
            if (options->AUTO_RANGE) lf_guarded("gf_setAutoRange", gf_setAutoRange);
            gf_removeTCASCoverageAcs();
            if (!gf_isRTDirect() && rtAppFeedConnected.load())
                lf_guarded("gf_checkFeedIndicators", gf_checkFeedIndicators);
        }
        if (n % 60 == 0) {
            lf_guarded("gf_parkingIntervalMinute", gf_parkingIntervalMinute);
            if (options->OBJECTID_LIST) gf_writeObjectIdList();
        }
        if (n % 1200 == 0) {
            std::string summary;
            gf_noMatchSummary(summary);
            if (!summary.empty()) gf_logLine(summary);
        }
        if (n >= SECONDS_PER_DAY) secondsCounter = 0;
        return;
    }
    if (n % 14 == 0) lf_guarded("gf_parkAirportCheck", gf_parkAirportCheck);
    if (n % 61 == 0) {
        lf_guarded("gf_checkForAllGndIfParkedVersionExistsAndRemove",
                   gf_checkForAllGndIfParkedVersionExistsAndRemove);
    }
}

}  // namespace tfx
