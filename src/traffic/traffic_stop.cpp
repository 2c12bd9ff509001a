// The start and the end of the traffic: capacities, and a clean slate for
// the next session.
#include "feeds/qnh.h"
#include "liveries/livery_matching.h"
#include "parking/park_airport.h"
#include "parking/parking_plan.h"
#include "traffic/clock.h"
#include "traffic/traffic.h"
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
    gf_resetLiveryMemory();
    qnh.store(1013);
    weekNow = 0;
    // The next session's feed may lag by another shift.
    gf_forgetFeedTimeStamp();
}

}  // namespace tfx
