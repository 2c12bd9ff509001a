// The start and the end of the traffic: a clean slate with the starting
// capacities for the next session.
#include "feeds/qnh.h"
#include "liveries/livery_matching.h"
#include "parking/park_airport.h"
#include "parking/parking_applier.h"
#include "parking/parking_plan.h"
#include "traffic/clock.h"
#include "traffic/traffic.h"
#include "traffic/traffic_internal.h"
#include "traffic/traffic_tables.h"

namespace tfx {

void gf_initTraffic() {
    gf_reserveTrafficTables();
}

void gf_stopTraffic() {
    gf_clearParkAirport();
    {
        std::lock_guard lock(pendingLock);
        pendingMessages.clear();
    }
    gf_clearHistory();
    delayedMessages.clear();
    spawnStack.clear();
    liveCreates.clear();
    staticCreates.clear();
    removals.clear();
    nameLookups.clear();
    ghostList.clear();
    gf_clearPlan();
    liveAircraft.clear();
    staticAircraft.clear();
    staticErasePending = false;
    gf_clearStands();
    gf_resetParkingUpdate();
    gf_resetLiveryMemory();
    qnh.store(1013);
    weekNow = 0;
    // The next session's feed may lag by another shift.
    gf_forgetFeedTimeStamp();
    // Every session starts here: its tables never have to grow inside a tick
    // until the traffic passes their starting capacities.
    gf_reserveTrafficTables();
}

}  // namespace tfx
