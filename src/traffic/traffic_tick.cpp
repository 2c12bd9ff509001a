// The tick: one hundred times a second, in this order, the simulator's
// reports, every aircraft's step, the create and remove pacing, two feed
// messages, one create request, and the periodic requests.
#include "app/run_state.h"
#include "feeds/rtapp/rt_app_position.h"
#include "parking/parking_applier.h"
#include "parking/parking_plan.h"
#include "sim/sim_ids.h"
#include "sim/sim_queues.h"
#include "traffic/allocation_count.h"
#include "traffic/clock.h"
#include "traffic/geometry.h"
#include "traffic/removal.h"
#include "traffic/traffic.h"
#include "traffic/traffic_counters.h"
#include "traffic/traffic_internal.h"
#include "traffic/traffic_tables.h"
#include "traffic/user_aircraft.h"

namespace tfx {

namespace {

constexpr std::int32_t REMOVAL_EVERY_TICKS = 10;  // 10 removals a second
constexpr std::int32_t CREATE_EVERY_TICKS = 20;   // 5 creates a second
constexpr std::int32_t REPORTS_EVERY_TICKS = 20;
constexpr std::int32_t USER_EVERY_TICKS = 100;

bool lf_every(std::int32_t ticks) {
    return gf_simTick() % ticks == 0;
}

void lf_requestObjectReports() {
    if (lf_every(REPORTS_EVERY_TICKS)) gf_requestSimData(REQUEST_AIRCRAFT_IN_RANGE, 0);
}

void lf_pollRtApp() {
    if (lf_every(REPORTS_EVERY_TICKS) && !gf_isRTDirect()) gf_sendPosition();
}

void lf_takeOverUser() {
    if (lf_every(USER_EVERY_TICKS)) gf_takeOverUserAircraft();
}

bool lf_movesOnGround(const LiveAircraft& other) {
    if (other.simState != SimState::active || other.onGround == 0) return false;
    return other.flightState == FlightState::taxi ||
           other.flightState == FlightState::takeoff_roll ||
           other.flightState == FlightState::landing_roll;
}

// An aircraft that holds on the ground without data goes when another one
// comes to move through its place.
void lf_releaseHolding() {
    if (!lf_every(REPORTS_EVERY_TICKS)) return;
    for (auto& ac : liveAircraft) {
        if (ac.holding == 0) continue;
        try {
            for (const auto& other : liveAircraft) {
                if (other.objectid == ac.objectid || !lf_movesOnGround(other)) continue;
                if (!gf_withinNm({ac.lat, ac.lon}, ac.clearance, {other.lat, other.lon},
                                 other.clearance)) {
                    continue;
                }
                ac.extensions = 0;
                ac.maxAdvance = 2700;
                ac.maxDelay = ac.flightState == FlightState::takeoff_roll ? 4500 : 2700;
                ac.holdSinceTick = 0;
                ac.holding = 0;
                removeAircraftFromSim(ac);
                break;
            }
        } catch (...) {
            lf_trafficException("lf_releaseHolding");
        }
    }
}

}  // namespace

void lf_handleStacks() {
    if (!lf_every(REMOVAL_EVERY_TICKS)) return;
    if (!removals.empty()) {
        const std::uint32_t objectid = removals.front();
        removals.pop_front();
        gf_queueRemoval(objectid);
    }
    if (!lf_every(CREATE_EVERY_TICKS)) return;
    if (!liveCreates.empty()) {
        lf_placeForCreate(liveCreates.front());
        gf_queueCreate(std::move(liveCreates.front()));
        liveCreates.pop_front();
        return;
    }
    if (!staticCreates.empty()) {
        gf_queueCreate(std::move(staticCreates.front()));
        staticCreates.pop_front();
    }
    if (gf_planHasEntries()) {
        try {
            lf_addOneStatic();
        } catch (...) {
            lf_trafficException("lf_addOneStatic");
        }
    }
}

void gf_trafficTick() {
    const std::uint64_t allocationsBefore = gf_threadAllocations();
    lf_handleSimMessages();
    // The two seconds of set-up count only while the flight runs.
    lf_handleDelayed();
    lf_updateAllLive();
    lf_handleStacks();
    lf_takeHistory();
    lf_takePendingMessages();
    lf_handleAddingStack();
    lf_requestObjectReports();
    lf_pollRtApp();
    lf_takeOverUser();
    lf_releaseHolding();
    simTick.fetch_add(1, std::memory_order_relaxed);
    if (const std::uint64_t made = gf_threadAllocations() - allocationsBefore; made != 0) {
        trafficCounters.tickAllocations.fetch_add(made, std::memory_order_relaxed);
        trafficCounters.allocatingTicks.fetch_add(1, std::memory_order_relaxed);
    }
}

void gf_trafficFrozenTick() {
    lf_handleSimMessages();
}

}  // namespace tfx
