// What the simulator reported since the last tick: object identifiers,
// removals, position and static data, refused creates; and the two seconds
// an object waits before it is set up and becomes active.
#include <array>
#include <exception>

#include <fmt/format.h>

#include "app/log.h"
#include "app/options.h"
#include "app/user_exception.h"
#include "liveries/livery_matching.h"
#include "parking/parking_applier.h"
#include "sim/flight_plan.h"
#include "sim/object_id_text.h"
#include "sim/sim_ids.h"
#include "sim/sim_queues.h"
#include "traffic/controls.h"
#include "traffic/ground_motion.h"
#include "traffic/removal.h"
#include "traffic/traffic_counters.h"
#include "traffic/traffic_internal.h"
#include "traffic/traffic_tables.h"

namespace tfx {

namespace {

constexpr std::uint32_t LOWEST_OBJECT_ID = 3;
constexpr double MIN_CG_FT = 1, MAX_CG_FT = 35;
constexpr double MIN_STATIC_PITCH = -0.017453292519943295;  // -1 degree
constexpr double MAX_STATIC_PITCH = 0.04363323129985824;    // 2.5 degrees
constexpr double DEFAULT_STATIC_PITCH = 0.012217304763960306;

bool lf_eraseFailedCreate(const SimMessage& m, AircraftBase& refused);

// An identifier below 3 is none the simulator hands out for a created
// object: the create failed, and the record must not wait for ever in
// adding2sim, counted against the live limit. The livery is not to blame
// for the answer, so it doesn't go on the failed list.
bool lf_refusedObjectId(const SimMessage& m) {
    if (m.objectid >= LOWEST_OBJECT_ID) return false;
    gf_logLine(fmt::format("create of hexid:{:x} answered with object id {}: treated as failed",
                           m.hexid, m.objectid));
    AircraftBase refused;
    lf_eraseFailedCreate(m, refused);
    return true;
}

void lf_liveObjectArrived(const SimMessage& m) {
    if (lf_refusedObjectId(m)) return;
    LiveAircraft* ac = gf_findLive(m.hexid);
    if (ac == nullptr) return;
    ac->objectid = m.objectid;
    ++trafficCounters.created;
    if (!ac->stream.empty() && ac->stream.front().inAir == 0) hp_handleGroundTraffic(*ac);
    gf_createFlightPlan(*ac);
    gf_requestSimData(REQUEST_STATIC_DATA, m.objectid);
    SimMessage waiting = m;
    waiting.count = 0;
    delayedMessages.push_back(waiting);
}

void lf_staticObjectArrived(const SimMessage& m) {
    if (lf_refusedObjectId(m)) return;
    SimMessage waiting = m;
    waiting.count = 0;
    delayedMessages.push_back(waiting);
}

void lf_eraseLive(LiveAircraft& ac) {
    liveAircraft.erase(liveAircraft.begin() + (&ac - liveAircraft.data()));
}

void lf_eraseStatic(StaticAircraft& ac) {
    staticAircraft.erase(staticAircraft.begin() + (&ac - staticAircraft.data()));
}

void lf_objectRemoved(const SimMessage& m) {
    if (LiveAircraft* ac = gf_findLiveByObjectId(m.objectid)) {
        if (ac->simState == SimState::liveryrespawn) {
            // Back to the spawn gate, to be created again with a new object;
            // the old object's plan file goes with it.
            gf_removeFlightPlan(*ac);
            ac->simState = SimState::buffer;
            ac->throttleIndex = 5;
            ac->flapsIndex = 4;
            ac->objectid = 0;
            return;
        }
        ++trafficCounters.removed;
        lf_cleanupLiveAircraft(*ac);
        lf_eraseLive(*ac);
        return;
    }
    if (StaticAircraft* st = gf_findStaticByObjectId(m.objectid)) {
        lf_purgeAircraft(st->hexid, st->objectid);
        lf_eraseStatic(*st);
    }
}

void lf_staticData(const SimMessage& m) {
    LiveAircraft* ac = gf_findLiveByObjectId(m.objectid);
    if (ac == nullptr) return;
    if (m.a >= MIN_CG_FT && m.a <= MAX_CG_FT) ac->cgHeight = m.a;
    ac->staticPitch =
        (m.b <= MIN_STATIC_PITCH || m.b > MAX_STATIC_PITCH) ? DEFAULT_STATIC_PITCH : m.b;
}

// false when no record of the create is left.
bool lf_eraseFailedCreate(const SimMessage& m, AircraftBase& refused) {
    if (gf_isStaticHexid(m.hexid)) {
        StaticAircraft* st = gf_findStatic(m.hexid);
        if (st == nullptr) return false;
        refused = *st;
        lf_purgeAircraft(st->hexid, st->objectid);
        lf_eraseStatic(*st);
    } else {
        LiveAircraft* ac = gf_findLive(m.hexid);
        if (ac == nullptr) return false;
        refused = *ac;
        ++trafficCounters.createFailed;
        lf_cleanupLiveAircraft(*ac);
        lf_eraseLive(*ac);
    }
    return true;
}

void lf_createFailed(const SimMessage& m) {
    AircraftBase refused;
    if (lf_eraseFailedCreate(m, refused)) gf_liveryCreateFailed(refused);
}

using ReportHandler = void (*)(const SimMessage&);

// By SimMessage kind.
constexpr std::array<ReportHandler, 6> REPORT_HANDLERS = {
    lf_liveObjectArrived,    // 0 object identifier of a live aircraft
    lf_staticObjectArrived,  // 1 object identifier of a static aircraft
    lf_objectRemoved,        // 2 object removed
    lf_onPositionReport,     // 3 position report
    lf_staticData,           // 4 static data
    lf_createFailed,         // 5 create failed
};

void lf_delayedDone(const SimMessage& m) {
    if (m.kind == SIM_LIVE_OBJECT_ID) {
        LiveAircraft* ac = gf_findLive(m.hexid);
        if (ac == nullptr) {
            gf_logLine(fmt::format(
                "Delayed live command expired: hexid:{:x}, objectid:{} no longer exists", m.hexid,
                gf_objectIdText(m.objectid)));
            return;
        }
        lf_setupNewObject(*ac);
        if (ac->removeOnArrival != 0) removeAircraftFromSim(*ac);
    } else if (m.kind == SIM_STATIC_OBJECT_ID) {
        lf_activateStatic(m);
    } else {
        gf_logLine(fmt::format("Unexpected delayed SimCommand {} for hexid:{:x}", m.kind, m.hexid));
    }
}

}  // namespace

void lf_handleSimMessages() {
    thread_local std::vector<SimMessage> messages = [] {
        std::vector<SimMessage> v;
        v.reserve(256);
        return v;
    }();
    gf_takeSimMessages(messages);
    for (const SimMessage& m : messages) {
        try {
            if (m.kind < REPORT_HANDLERS.size()) REPORT_HANDLERS[m.kind](m);
        } catch (const UserRelatedException&) {
            throw;  // the user must act: it ends the traffic
        } catch (...) {
            lf_trafficException("lf_handleSimMessages");
        }
    }
    messages.clear();
}

void lf_handleDelayed() {
    for (std::size_t i = 0; i < delayedMessages.size();) {
        SimMessage& d = delayedMessages[i];
        if (d.count < OBJECT_SETUP_TICKS) {
            ++d.count;
            // Toggled twice, the lights end as they began, and the object has drawn them.
            if (d.kind == SIM_LIVE_OBJECT_ID && (d.count == 49 || d.count == 99)) {
                gf_sendEvent(d.objectid, EVENT_ALL_LIGHTS_TOGGLE, 0);
            }
        }
        if (d.count < OBJECT_SETUP_TICKS) {
            ++i;
            continue;
        }
        const SimMessage done = d;
        delayedMessages.erase(delayedMessages.begin() + static_cast<std::ptrdiff_t>(i));
        try {
            lf_delayedDone(done);
        } catch (...) {
            lf_trafficException("lf_handleDelayed");
        }
    }
}

void lf_setupNewObject(LiveAircraft& ac) {
    const std::uint32_t oid = ac.objectid;
    const bool rotorcraft = ac.category == AircraftCategory::Rotorcraft;
    const StreamPoint* front = ac.stream.empty() ? nullptr : &ac.stream.front();
    if (front != nullptr && front->inAir != 0) {
        const bool low = ac.alt <= 10000;
        gf_startEngines(oid);
        gf_setSpoilers(ac, false);
        gf_setLights(oid, {.nav = true,
                           .beacon = true,
                           .landing = low,
                           .taxi = false,
                           .strobes = true,
                           .logo = low,
                           .cabin = ac.agl >= 2000});
    } else if (ac.flightState != FlightState::parked) {
        gf_startEngines(oid);
        gf_setSpoilers(ac, false);
        gf_setLights(oid, {.nav = true,
                           .beacon = true,
                           .landing = false,
                           .taxi = ac.flightState == FlightState::taxi,
                           .strobes = false,
                           .logo = true,
                           .cabin = true});
        gf_setThrottle(ac, rotorcraft ? 4 : 0);
        gf_setFlaps(ac, ac.flightState == FlightState::taxi ? 1 : 0);
    } else {
        gf_stopEngines(oid);
        gf_setSpoilers(ac, false);
        gf_setLights(oid, {.nav = gf_options()->NAV_LIGHTS_WHILE_PARKED,
                           .beacon = false,
                           .landing = false,
                           .taxi = false,
                           .strobes = false,
                           .logo = true,
                           .cabin = true});
        gf_setThrottle(ac, rotorcraft ? 4 : 0);
        gf_setFlaps(ac, 0);
    }
    ac.simState = SimState::active;
}

}  // namespace tfx
