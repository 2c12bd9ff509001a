// How the position block of an accepted message enters an aircraft's stream:
// the checks by flight state, the stops that weren't, and the start of a
// takeoff roll.
#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "app/log.h"
#include "app/options.h"
#include "sim/sim_queues.h"
#include "traffic/aircraft_base.h"
#include "traffic/clock.h"
#include "traffic/controls.h"
#include "traffic/flight_motion.h"
#include "traffic/flight_motion_internal.h"
#include "traffic/removal.h"
#include "traffic/stand_leaving.h"

namespace tfx {

namespace {

constexpr std::size_t MAX_STREAM_POINTS = 200;
// A point this close to the newest one counts as standing still, degrees.
constexpr double NEAR_DEG = 0.00015;
// A parking aircraft whose data lie this far from its stand taxis on.
constexpr double PARKING_LEAVE_NM = 0.10799136069114472;
// A stop followed by a move within this time and speed was no stop.
constexpr std::int32_t FALSE_STOP_TICKS = 2200;
constexpr double FALSE_STOP_KT = 35;
// Both the newest and the new point this fast on the ground: takeoff roll.
constexpr double TAKEOFF_ROLL_KT = 43;

bool lf_emptyStream(const LiveAircraft& ac, const char* where) {
    if (!ac.stream.empty()) return false;
    gf_logLine(fmt::format("{} empty sz?", where));
    return true;
}

bool lf_inParked(LiveAircraft& ac, StreamPoint& p) {
    if (ac.simState < SimState::active) return false;
    return checkAtStandSituations(ac, p);
}

bool lf_inParking(LiveAircraft& ac, StreamPoint& p) {
    if (ac.simState != SimState::active) return false;
    if (gf_distanceNm(lf_pos(p), {ac.standLat, ac.standLon}) <= PARKING_LEAVE_NM) return false;
    gf_setFlightState(ac, FlightState::taxi);
    ac.prevState = FlightState::parking;
    p.same = 0;
    return true;
}

bool lf_inPushingBack(LiveAircraft& ac, StreamPoint& p) {
    ac.refLat = p.lat;
    ac.refLon = p.lon;
    ac.refValid = 1;
    ac.leaveValid = 0;
    ac.leaveCount = 0;
    return false;
}

bool lf_inPushedBack(LiveAircraft& ac, StreamPoint& p) {
    return lf_checkPushedBack(ac, p);
}

// Points behind the aircraft make no sense while it rolls one way: drop the
// newest ones the new point lies behind.
void lf_dropPointsBehind(LiveAircraft& ac, const StreamPoint& p, double limit_m) {
    if (lf_behind_m(ac, lf_pos(ac.stream.back()), p) <= limit_m) return;
    ac.stream.pop_back();
    if (ac.stream.size() >= 2 && lf_behind_m(ac, lf_pos(ac.stream.back()), p) > limit_m) {
        ac.stream.pop_back();
    }
}

bool checkNewPosDuringLanding(LiveAircraft& ac, StreamPoint& p) {
    if (lf_samePoint(p, ac.stream.back())) return false;
    if (ac.stream.size() >= 2) {
        lf_dropPointsBehind(ac, p, 20);
    } else if (ac.flightState == FlightState::landing) {
        if (lf_behind_m(ac, lf_pos(ac.stream.front()), p) > 20) return false;
    } else if (lf_behind_m(ac, lf_pos(ac.stream.front()), p) > 10) {
        if (ac.extensions > 0) return false;
        StreamPoint here = ac.stream.front();
        here.lat = ac.lat;
        here.lon = ac.lon;
        here.alt = ac.alt;
        here.time = gf_simTick() + 1;
        ac.stream.clear();
        ac.stream.push_back(here);
    }
    if (ac.extensions > 0) lf_endExtension(ac);
    const StreamPoint& last = ac.stream.back();
    p.same = lf_samePoint(p, last) ? 1 : 0;
    if (p.same != 0) return true;
    // A landing aircraft does not speed up.
    if (p.speed > last.speed && p.speed > 40) p.speed = last.speed;
    return true;
}

// While a gap in the takeoff data is bridged, points that would pull the
// aircraft back or slow it down sharply are left out.
bool lf_badPointInGap(const LiveAircraft& ac, const StreamPoint& p, double limit_m) {
    const std::int32_t now = gf_simTick();
    if (p.time <= now + 1) return true;
    const auto rel = gf_relativePosition(lf_pos(ac), ac.heading, lf_pos(p));
    if (rel.dist_m <= 0.1 || -rel.along_m > limit_m) return true;
    const double secs = (p.time - now) / static_cast<double>(TICKS_PER_SECOND);
    const StreamPoint& last = ac.stream.back();
    const double ref = last.speed > 1 ? last.speed : p.speed;
    const double implied = rel.dist_m * NM_PER_M / (secs / 3600.0);
    return secs >= 1 && ref >= 120 && implied < 100 && implied < 0.65 * ref;
}

bool checkNewPosDuringTakeoff(LiveAircraft& ac, StreamPoint& p) {
    const double limit_m = ac.flightState == FlightState::takeoff_roll ? 10 : 25;
    if (lf_samePoint(p, ac.stream.back())) return false;
    if (ac.stream.size() >= 2) {
        lf_dropPointsBehind(ac, p, limit_m);
    } else if (lf_behind_m(ac, lf_pos(ac.stream.front()), p) > limit_m) {
        return false;
    }
    if (ac.takeoffGap != 0 && ac.extensions > 0 && ac.flightState == FlightState::takeoff &&
        ac.onGround == 0 && lf_badPointInGap(ac, p, limit_m)) {
        return false;
    }
    if (ac.extensions > 0) lf_endExtension(ac);
    ac.takeoffGap = 0;
    const StreamPoint& last = ac.stream.back();
    p.same = lf_samePoint(p, last) ? 1 : 0;
    if (p.same != 0) return true;
    // Speed does not fall in a takeoff.
    if (last.speed > p.speed && last.speed > 40) p.speed = last.speed;
    return true;
}

bool lf_inLanding(LiveAircraft& ac, StreamPoint& p) {
    return checkNewPosDuringLanding(ac, p);
}

bool lf_inTakeoff(LiveAircraft& ac, StreamPoint& p) {
    return checkNewPosDuringTakeoff(ac, p);
}

bool lf_inOthers(LiveAircraft& ac, StreamPoint& p) {
    if (!lf_checkNewPos(ac, p)) return false;
    if (ac.extensions > 0 && !ac.stream.empty()) {
        if (ac.onGround == 0) {
            const auto rel = gf_relativePosition(lf_pos(ac), ac.heading, lf_pos(p));
            if (rel.dist_m > 0.1 && -rel.along_m > 50) return false;
        }
        lf_endExtension(ac);
        // Turn to the real data at once.
        ac.stream.front().time = gf_simTick() + 1;
    }
    return true;
}

using PointCheck = bool (*)(LiveAircraft&, StreamPoint&);

// What a new point meets, by the flight state.
constexpr std::array<PointCheck, FLIGHT_STATE_COUNT> POINT_CHECKS = {
    lf_inPushingBack,  // pushing_back
    lf_inPushedBack,   // pushed_back
    lf_inOthers,       // taxi
    lf_inTakeoff,      // takeoff_roll
    lf_inTakeoff,      // takeoff
    lf_inOthers,       // flying
    lf_inLanding,      // landing
    lf_inLanding,      // landing_roll
    lf_inParking,      // parking
    lf_inParked,       // parked
    lf_inOthers,       // birth
};

constexpr Lights TAKEOFF_LIGHTS = {true, true, true, true, true, true, false};

// A stop in the data that the next point shows was none: the stop points go.
void lf_dropFalseStop(LiveAircraft& ac, const StreamPoint& p) {
    auto& stream = ac.stream;
    if (stream.size() < 3) return;
    const std::size_t lowest = std::max<std::size_t>(1, stream.size() - 7);
    for (std::size_t i = stream.size() - 1; i-- > lowest;) {
        if (stream[i].same != 0) continue;
        const std::int32_t gap = p.time - stream[i].time;
        if (gap <= 0 || gap > FALSE_STOP_TICKS) return;
        const double speed_kt = gf_distanceNm(lf_pos(stream[i]), lf_pos(p)) / (gap / 360000.0);
        if (speed_kt <= FALSE_STOP_KT) stream.truncate(i + 1);
        return;
    }
}

void lf_takeoffStart(LiveAircraft& ac, const StreamPoint& p) {
    if (ac.onGround == 0 || ac.simState != SimState::active) return;
    const StreamPoint& last = ac.stream.back();
    if (ac.flightState == FlightState::landing_roll) {
        if (last.inAir == 0 || p.inAir == 0) return;
        // Touch and go.
        gf_setFlightState(ac, FlightState::takeoff_roll);
        ac.prevState = FlightState::landing_roll;
        gf_setThrottle(ac, 3);
        gf_setSpoilers(ac, true);
    } else if (ac.flightState == FlightState::taxi) {
        if (p.inAir == 0 && (p.speed < TAKEOFF_ROLL_KT || last.speed < TAKEOFF_ROLL_KT)) return;
        if (ac.towed != 0) gf_logLine(fmt::format("towed aircraft takes-off? {}", gf_logName(ac)));
        gf_setFlightState(ac, FlightState::takeoff_roll);
        gf_setThrottle(ac, 0);
        gf_setSpoilers(ac, false);
    } else {
        return;
    }
    gf_setFlaps(ac, 1);
    ac.goAround = 0;
    gf_setLights(ac.objectid, TAKEOFF_LIGHTS);
    ac.maxAdvance = DELAY_LIMIT_JUMP;
    ac.maxDelay = DELAY_LIMIT_TAKEOFF_ROLL;
}

}  // namespace

void lf_endExtension(LiveAircraft& ac) {
    ac.extensions = 0;
    ac.maxAdvance = DELAY_LIMIT_JUMP;
    ac.maxDelay =
        ac.flightState == FlightState::takeoff_roll ? DELAY_LIMIT_TAKEOFF_ROLL : DELAY_LIMIT_JUMP;
    ac.holdSinceTick = 0;
    ac.holding = 0;
    ac.takeoffGap = 0;
}

bool lf_checkNewPos(LiveAircraft& ac, StreamPoint& p) {
    const StreamPoint& last = ac.stream.back();
    p.same = lf_samePoint(p, last) ? 1 : 0;
    if (lf_isRotorcraft(ac)) return true;
    // A standing point is nonsense in the air, and in a fast takeoff roll.
    const auto refused = [&](double rollSpeed_kt) {
        if (p.inAir != 0) return true;
        if (ac.simState == SimState::active && ac.onGround == 0) return true;
        return ac.flightState == FlightState::takeoff_roll && p.speed > 0 &&
               last.speed >= rollSpeed_kt;
    };
    if (p.same != 0) {
        if (refused(30)) return false;
        p.speed = 0;
        return true;
    }
    if (std::abs(p.lat - last.lat) < NEAR_DEG && std::abs(p.lon - last.lon) < NEAR_DEG) {
        if (refused(50)) return false;
        const std::int32_t time = p.time;
        p = last;
        p.time = time;
        p.speed = 0;
        p.same = 1;
        return true;
    }
    return !(p.speed == 0 && (ac.flightState == FlightState::takeoff_roll || p.inAir != 0) &&
             last.speed >= 50);
}

bool checkExtendingSituations(LiveAircraft& ac, StreamPoint& p) {
    if (lf_emptyStream(ac, "checkExtendingSituations")) return false;
    const auto state = static_cast<std::size_t>(ac.flightState);
    if (state >= POINT_CHECKS.size()) return false;
    return POINT_CHECKS[state](ac, p);
}

void decodeExisting(LiveAircraft& ac, StreamPoint& p) {
    if (ac.stream.size() > MAX_STREAM_POINTS) {
        removeAircraftFromSim(ac);
        return;
    }
    if (ac.holding != 0 && ac.flightState == FlightState::taxi && !ac.stream.empty()) {
        const double threshold_m = gf_options()->HOLDING_THRESHOLD_METERS;
        if (gf_distanceNm(lf_pos(p), lf_pos(ac.stream.front())) * METRES_PER_NM > threshold_m) {
            // A new record will appear at the new position.
            ac.extensions = 0;
            ac.maxAdvance = DELAY_LIMIT_JUMP;
            ac.maxDelay = DELAY_LIMIT_JUMP;
            ac.holdSinceTick = 0;
            ac.holding = 0;
            removeAircraftFromSim(ac);
            return;
        }
    }
    if (ac.flightState == FlightState::birth) {
        if (!ac.stream.empty() && lf_checkNewPos(ac, p)) {
            if (p.time <= ac.stream.back().time) p.time = ac.stream.back().time + 1;
            ac.stream.push_back(p);
        }
        return;
    }
    if (!checkExtendingSituations(ac, p)) return;
    if (ac.stream.empty()) {
        ac.stream.push_back(p);
        return;
    }
    if (p.inAir == 0 && ac.stream.back().same != 0) {
        if (p.same != 0) {
            const bool allSame = std::all_of(ac.stream.begin(), ac.stream.end(),
                                             [](const StreamPoint& s) { return s.same != 0; });
            if (allSame) ac.stream.truncate(1);
        } else {
            lf_dropFalseStop(ac, p);
        }
    }
    if (p.time <= ac.stream.back().time) p.time = ac.stream.back().time + 1;
    if (ac.flightState != FlightState::takeoff_roll) lf_takeoffStart(ac, p);
    ac.stream.push_back(p);
    if (ac.stream.size() == 2 && ac.stream[0].same != 0 && ac.stream[1].same != 0) {
        // An aircraft that stands gets its next point at once.
        ac.stream.front().time = gf_simTick() + 1;
        ac.stream.front().speed = ac.stream[1].speed;
    }
}

}  // namespace tfx
