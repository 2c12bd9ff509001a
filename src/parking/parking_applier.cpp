// The plan becomes simulator objects: one static aircraft at a time, while
// its stand is still free, with its callsign, livery and the lights of a
// parked aircraft.
#include "parking/parking_applier.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include <fmt/format.h>

#include "app/log.h"
#include "app/options.h"
#include "liveries/code_interning.h"
#include "liveries/livery_matching.h"
#include "parking/parking_plan.h"
#include "parking/parking_state.h"
#include "sim/object_id_text.h"
#include "sim/sim_queues.h"
#include "traffic/aircraft_base.h"
#include "traffic/clock.h"
#include "traffic/controls.h"
#include "traffic/removal.h"
#include "traffic/traffic_tables.h"

namespace tfx {

std::int64_t parkedUpdatedCount = 0;

namespace {

constexpr std::uint32_t STATIC_HEXIDS = 10000;
constexpr double DEG_PER_RAD = 57.29577951308232;

std::uint32_t staticCounter = 0;

// A create the simulator never answers would hold its stand for the whole
// visit: after this long it is given up, and the next plan has the stand.
constexpr std::int32_t GIVE_UP_TICKS = 6000;
struct SentCreate {
    std::uint32_t hexid;
    std::int32_t tick;
};
std::vector<SentCreate> unanswered;

// The next running number that no static aircraft holds; 0 is never one.
std::uint32_t lf_nextStaticHexid() {
    for (std::uint32_t tries = 0; tries < STATIC_HEXIDS; ++tries) {
        staticCounter = (staticCounter + 1) % STATIC_HEXIDS;
        if (staticCounter == 0) continue;
        if (gf_findStatic(staticCounter) == nullptr) return staticCounter;
    }
    return 0;
}

bool lf_isGroundParked(FlightState s) {
    return s == FlightState::parking || s == FlightState::parked;
}

// Why the stand can't take the entry now, or empty.
std::string lf_standOccupied(const Stand& stand, const StaticPlan& entry) {
    const std::string name = gf_standName(entry.sid);
    for (const LiveAircraft& ac : liveAircraft) {
        if (ac.sid == 0 || !lf_isGroundParked(ac.flightState)) continue;
        if (ac.simState == SimState::removingfromsim || !gf_standsAdjacent(entry.sid, ac.sid))
            continue;
        if (ac.sid == entry.sid)
            return fmt::format("{:14}: no static parking for {}, live aircraft {} standing here",
                               name, entry.cs1, ac.callsign);
        return fmt::format(
            "{:14}: no static parking for {}, live aircraft {} is adjacent at {}, possibly "
            "colliding",
            name, entry.cs1, ac.callsign, gf_standName(ac.sid));
    }
    for (const StaticAircraft& ac : staticAircraft) {
        // One on its way out (removed, or to be removed when its create is
        // answered) leaves the stand to the entry.
        if (ac.sid == 0 || ac.simState == SimState::removingfromsim || ac.removeOnArrival != 0)
            continue;
        if (!gf_standsAdjacent(entry.sid, ac.sid)) continue;
        if (ac.sid == entry.sid)
            return fmt::format("{:14}: no static parking for {}, static aircraft {} standing here",
                               name, entry.cs1, ac.callsign);
        return fmt::format(
            "{:14}: no static parking for {}, static aircraft {} is adjacent at {}, possibly "
            "colliding",
            name, entry.cs1, ac.callsign, gf_standName(ac.sid));
    }
    if (stand.liveHere)
        return fmt::format("{:14}: no static parking for {}, live aircraft occupies the stand",
                           name, entry.cs1);
    return {};
}

std::string lf_withStar(std::string callsign) {
    while (!callsign.empty() && callsign.back() == '_') callsign.pop_back();
    if (!callsign.empty() && callsign.back() != '*') callsign += '*';
    return callsign;
}

void lf_createStatic(const Stand& stand, const StaticPlan& entry) {
    const std::uint32_t hexid = lf_nextStaticHexid();
    if (hexid == 0) return;  // ten thousand static aircraft: no number is free
    std::string callsign;
    if (!entry.cs1.empty()) {
        callsign = lf_determineStaticCallsign(entry);
    } else {
        const std::string& airline = gf_airlineCode(entry.aimo.airline);
        callsign = fmt::format("{}{}{}", airline.empty() ? "PVT" : airline, hexid, "*");
    }
    TrafficMessage m;
    m.aimo = entry.aimo;
    m.callsign = callsign;
    m.flightA = entry.cs1;
    m.flightB = entry.cs2;
    m.regcode = entry.reg;
    m.hexid = hexid;
    StaticAircraft ac;
    static_cast<AircraftBase&>(ac) = gf_makeAircraftBase(m);
    if (!gf_matchStaticLivery(ac, {stand.id, stand.cargo})) return;
    ac.standLat = stand.latitude;
    ac.standLon = stand.longitude;
    ac.standHeading = stand.heading;
    ac.standCargo = stand.cargo ? 1 : 0;
    ac.standIsGate = stand.id.find("GATE") != std::string::npos ? 1 : 0;
    ac.sid = entry.sid;
    ac.fromAirportFile = entry.fromAirportFile;
    ac.rtHexid = entry.rtHexid;
    ac.arrivalSlot = gf_slotBefore(weekNow, entry.offset);
    ac.simState = SimState::adding2sim;

    CreateRequest request;
    request.lat = stand.latitude;
    request.lon = stand.longitude;
    request.heading = stand.heading * DEG_PER_RAD;
    request.onGround = true;
    request.callsign = ac.callsign;
    request.title = std::string(ac.livery);
    request.hexid = hexid;
    staticAircraft.push_back(std::move(ac));
    staticCreates.push_back(std::move(request));
    unanswered.push_back({hexid, gf_simTick()});
}

}  // namespace

std::string lf_determineStaticCallsign(const StaticPlan& entry) {
    std::string callsign = entry.useFirst != 0 ? entry.cs1 : entry.cs2;
    if (callsign.empty()) callsign = entry.useFirst != 0 ? entry.cs2 : entry.cs1;
    if (callsign.empty()) {
        gf_logLine(fmt::format("{} callsign is empty..", gf_standName(entry.sid)));
        return {};
    }
    return lf_withStar(std::move(callsign));
}

void lf_addOneStatic() {
    if (parking.plan.empty()) return;
    const StaticPlan entry = std::move(parking.plan.back());
    parking.plan.pop_back();
    const Stand* stand = gf_standBySid(entry.sid);
    if (stand == nullptr) {
        gf_logLine(fmt::format("stand with id {} not found", entry.sid));
        return;
    }
    if (const std::string why = lf_standOccupied(*stand, entry); !why.empty()) {
        gf_logLine(why);
        return;
    }
    lf_createStatic(*stand, entry);
}

void gf_giveUpUnansweredStatics() {
    const std::int32_t now = gf_simTick();
    std::erase_if(unanswered, [now](const SentCreate& sent) {
        StaticAircraft* ac = gf_findStatic(sent.hexid);
        if (ac == nullptr || ac->simState != SimState::adding2sim) return true;
        if (now - sent.tick < GIVE_UP_TICKS) return false;
        const bool queued =
            std::any_of(staticCreates.begin(), staticCreates.end(),
                        [&](const CreateRequest& r) { return r.hexid == sent.hexid; });
        if (queued) return false;  // still waiting for its turn
        gf_logLine(fmt::format("{:14}: {:8} no answer from the simulator, given up",
                               gf_standName(ac->sid), ac->callsign));
        ac->dropQueued = 1;
        return true;
    });
    for (const StaticAircraft& ac : staticAircraft)
        if (ac.dropQueued != 0) lf_purgeAircraft(ac.hexid, ac.objectid);
    std::erase_if(staticAircraft, [](const StaticAircraft& ac) { return ac.dropQueued != 0; });
}

void gf_forgetUnansweredStatics() {
    unanswered.clear();
}

void lf_activateStatic(const SimMessage& message) {
    StaticAircraft* ac = gf_findStatic(message.hexid);
    if (ac == nullptr) {
        gf_logLine(
            fmt::format("Delayed static command expired: hexid:{:x}, objectid:{} no longer exists",
                        message.hexid, gf_objectIdText(message.objectid)));
        // An answer after the create was given up: no record owns the object.
        removals.push_back(message.objectid);
        return;
    }
    ac->simState = SimState::active;
    ac->objectid = message.objectid;
    const OptionsPtr options = gf_options();
    gf_setThrottle(*ac, 0);
    gf_setFlaps(*ac, 0);
    gf_stopEngines(ac->objectid);
    const bool cabin = ac->standCargo == 0 && gf_randomBelow(10) < 9;
    gf_setLights(ac->objectid,
                 {options->NAV_LIGHTS_WHILE_PARKED, false, false, false, false, true, cabin});
    gf_logLine(fmt::format("{:14}: {:8} parked", gf_standName(ac->sid), ac->callsign));
    ++parkedUpdatedCount;
    if (ac->removeOnArrival != 0) removeAircraftFromSim(*ac);
}

}  // namespace tfx
