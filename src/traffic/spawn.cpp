// From a buffered record to a create request: the spawn gate, spawnLiveAc,
// the first position and the adding stack.
#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "app/log.h"
#include "app/options.h"
#include "liveries/livery_matching.h"
#include "parking/park_airport.h"
#include "parking/parking_applier.h"
#include "traffic/aircraft_base.h"
#include "traffic/clock.h"
#include "traffic/collision.h"
#include "traffic/geometry.h"
#include "traffic/reference_lookup.h"
#include "traffic/removal.h"
#include "traffic/stand_claims.h"
#include "traffic/traffic.h"
#include "traffic/traffic_internal.h"
#include "traffic/traffic_tables.h"
#include "traffic/units.h"
#include "traffic/user_aircraft.h"

namespace tfx {

namespace {

constexpr std::int32_t NO_LIVE_LIMIT = 500;   // MAX_LIVE_SEL that means no limit
constexpr std::size_t CREATES_BACKLOG = 11;   // newcomers wait while this many wait
constexpr double CLEAR_OF_FIELD_FT = 1000.0;  // airborne spawns only above this
constexpr double TAXI_SPAWN_MAX_KT = 30.0;

bool lf_anyAirborne(const PointQueue& stream) {
    return std::any_of(stream.begin(), stream.end(),
                       [](const StreamPoint& p) { return p.inAir != 0; });
}

std::int32_t lf_liveInSim() {
    return static_cast<std::int32_t>(
        std::count_if(liveAircraft.begin(), liveAircraft.end(), [](const LiveAircraft& ac) {
            return ac.simState == SimState::adding2sim || ac.simState == SimState::active;
        }));
}

bool lf_inGhostList(std::string_view callsign) {
    return std::find(ghostList.begin(), ghostList.end(), callsign) != ghostList.end();
}

// Fills the key from the registration, else the airline from the callsign.
// A registration that names another model brings that model's category,
// span and performance with it.
void lf_completeAimo(LiveAircraft& ac) {
    if (ac.aimo.locked != 0) return;
    if (const auto aimo = gf_regcodeAimo(ac.regcode)) gf_takeAimo(ac, *aimo);
    if (ac.aimo.airline == 0) {
        const std::uint16_t airline = gf_callsignAirline(ac.callsign);
        ac.aimo.airline = airline != 0 ? airline : gf_privateAirline();
    }
}

void lf_takeStand(LiveAircraft& ac, const StandTaken& stand) {
    ac.sid = stand.sid;
    ac.standLat = stand.lat;
    ac.standLon = stand.lon;
    ac.standHeading = stand.heading;
    ac.standCargo = stand.cargo;
    ac.standIsGate = stand.isGate;
    gf_setFlightState(ac, FlightState::parked);
    ac.arrivalSlot = weekNow;
    ac.lastMoved = gf_wallClock100ns();
    ac.standLastDistance = 0;
    ac.distanceGrowCount = 0;
    ac.stream.truncate(1);
    StreamPoint& front = ac.stream.front();
    front.lat = stand.lat;
    front.lon = stand.lon;
    front.heading = stand.heading;
    front.headingValid = 1;
    gf_addRealStandOption(ac.sid, ac, 1);
    lf_enforceParkedMax(1);
}

// The livery of a newborn aircraft: remembered, else matched. None: erase.
void lf_chooseLivery(LiveAircraft& ac) {
    if (!ac.livery.empty()) return;
    if (const auto title = gf_rememberedLivery(ac.hexid)) {
        ac.livery = *title;
        return;
    }
    gf_matchLivery(ac, ac.stream.front().alt);
    if (ac.livery.empty()) {
        ac.eraseNow = 1;
        if (ac.tcasOnly == 0 && !ac.regcode.empty()) gf_rememberNoMatch(ac);
    } else {
        gf_rememberLivery(ac.hexid, ac.livery);
    }
}

// false: the spawn waits (the front point was dropped).
bool lf_chooseFirstState(LiveAircraft& ac) {
    PointQueue& stream = ac.stream;
    if (stream.front().inAir != 0) {
        gf_setFlightState(ac, FlightState::flying);
        return true;
    }
    if (const auto stand = lf_findStandAtSpawn(ac)) {
        lf_takeStand(ac, *stand);
        return true;
    }
    const bool fast = std::any_of(stream.begin(), stream.end(),
                                  [](const StreamPoint& p) { return p.speed > TAXI_SPAWN_MAX_KT; });
    if (stream[1].same != 0 || fast) {
        stream.pop_front();
        return false;
    }
    gf_setFlightState(ac, FlightState::taxi);
    return true;
}

}  // namespace

bool lf_endsWithUnderscore(std::string_view callsign) {
    return !callsign.empty() && callsign.back() == '_';
}

void lf_spawnGate(LiveAircraft& ac) {
    PointQueue& stream = ac.stream;
    if (stream.empty()) {
        ac.eraseNow = 1;
        return;
    }
    if (gf_simTick() < stream.front().time) return;
    if (stream.size() == 1) {
        // An aircraft that got no second message by now is not shown.
        stream.pop_front();
        ac.eraseNow = 1;
        return;
    }
    if (lf_endsWithUnderscore(ac.callsign) && lf_inGhostList(ac.callsign)) {
        ac.eraseNow = 1;
        return;
    }
    const double fieldAlt_ft = parkAirport.known() ? parkAirport.alt_ft : 0.0;
    if (lf_anyAirborne(stream) && stream.front().alt - fieldAlt_ft <= CLEAR_OF_FIELD_FT) {
        stream.pop_front();
        return;
    }
    if (lf_spawnCollision(ac)) return;
    if (liveCreates.size() >= CREATES_BACKLOG && ac.flightState == FlightState::birth) {
        stream.pop_front();
        return;
    }
    const OptionsPtr options = gf_options();
    if (options->MAX_LIVE_SEL == 0) {
        ac.eraseNow = 1;
        return;
    }
    if (options->MAX_LIVE_SEL != NO_LIVE_LIMIT && lf_liveInSim() >= options->MAX_LIVE_SEL) {
        const StreamPoint& front = stream.front();
        const double toUser_nm =
            gf_distanceNm({front.lat, front.lon}, {userAircraft.lat, userAircraft.lon});
        if (lf_isThisTheFurthestLive(toUser_nm)) {
            ac.eraseNow = 1;
            return;
        }
    }
    lf_completeAimo(ac);
    // The category may have come with the registration, or been switched off
    // since the first message.
    if (!gf_categoryEnabled(ac.category)) {
        ac.eraseNow = 1;
        return;
    }
    if (ac.callsign.empty()) {
        if (ac.regcode.empty()) {
            ac.eraseNow = 1;
            return;
        }
        ac.callsign = ac.regcode;
        ac.flightA = ac.regcode;
    }
    if (stream.front().alt <= 100.0 * options->TCAS_FL && gf_isRememberedNoMatch(ac)) {
        ac.eraseNow = 1;
        return;
    }
    if (lf_endsWithUnderscore(ac.callsign) && lf_realVersionExists(ac.callsign)) {
        ac.eraseNow = 1;
        return;
    }
    spawnLiveAc(ac);
}

void spawnLiveAc(LiveAircraft& ac) {
    PointQueue& stream = ac.stream;
    if (stream.size() < 2) {
        gf_logLine(fmt::format("{} sz:{}", "spawnLiveAc", stream.size()));
        return;
    }
    if (stream[1].same != 0) {
        stream[0].same = 1;
        stream[0].speed = 0;
        stream[1].speed = 0;
        if (stream.size() > 2 && stream[2].same != 0) stream[2].speed = 0;
    } else {
        stream[0].same = 0;
    }
    if (ac.flightState == FlightState::birth) {
        lf_chooseLivery(ac);
        if (!lf_chooseFirstState(ac)) return;
    }
    if (ac.eraseNow != 0) return;
    lf_initPosition(ac);
    ac.simState = SimState::adding2sim;
    spawnStack.push_back(ac.hexid);
    nameLookups.push_back(ac.hexid);
    if (!lf_endsWithUnderscore(ac.callsign)) lf_removeGhostWithUnderscoreIfPresent(ac.callsign);
}

void lf_initPosition(LiveAircraft& ac) {
    const StreamPoint& front = ac.stream.front();
    ac.lat = front.lat;
    ac.lon = front.lon;
    ac.alt = front.alt;
    ac.tas = front.tas;
    ac.vs = front.vs;
    if (front.inAir != 0) {
        // -3 degrees, minus 2.2 degrees per 600 ft/min; a descent counts half.
        double v = std::min(front.vs, 2400.0);
        if (v < 0) v = std::max(v, -3000.0) / 2;
        ac.pitch = -0.05235987755982989 - v / 600 * 0.038397243543875255;
    } else {
        ac.pitch = 0.010471975511965976;
    }
    ac.bank = front.bankValid != 0 ? front.bank : 0;
    if (ac.respawning != 0) {
        ac.heading = ac.respawnHeading;
        ac.respawning = 0;
    } else if (ac.flightState == FlightState::parked) {
        ac.heading = ac.standHeading;
    } else if (ac.stream.size() >= 2 && ac.stream[1].same == 0) {
        ac.heading = gf_bearing({front.lat, front.lon}, {ac.stream[1].lat, ac.stream[1].lon});
    } else {
        ac.heading = front.track * RAD_PER_DEG;
    }
    if (!std::isfinite(ac.heading)) ac.heading = 0;
    ac.stepHeading = 0;
    ac.spawnHeld = 0;
}

void lf_handleAddingStack() {
    if (spawnStack.empty()) return;
    const std::uint32_t hexid = spawnStack.back();
    spawnStack.pop_back();
    LiveAircraft* ac = gf_findLive(hexid);
    if (ac == nullptr || ac->eraseNow != 0 || ac->dropQueued != 0) return;
    if (ac->callsign.empty()) {
        gf_logLine(fmt::format("{} {} callsign empty", "lf_handleAddingStack", gf_logName(*ac)));
        return;
    }
    CreateRequest request;
    request.lat = ac->lat;
    request.lon = ac->lon;
    request.alt = ac->alt;
    request.pitch = ac->pitch * DEG_PER_RAD;
    request.bank = ac->bank * DEG_PER_RAD;
    request.heading = ac->heading * DEG_PER_RAD;
    request.onGround = false;
    request.callsign = ac->callsign;
    request.title = std::string(ac->livery);
    request.hexid = ac->hexid;
    liveCreates.push_back(std::move(request));
}

}  // namespace tfx
