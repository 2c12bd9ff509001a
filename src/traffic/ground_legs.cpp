// Planning a leg on the ground: by state, the turn round the next corner, a
// point inserted where the heading is off or the leg long, the stand search
// of an aircraft that slows to a stop, the speed profile of the leg, and its
// timing with the turn rate that fits it.
#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "airports/loaded_airport.h"
#include "app/log.h"
#include "parking/park_airport.h"
#include "sim/sim_queues.h"
#include "traffic/aircraft_base.h"
#include "traffic/clock.h"
#include "traffic/controls.h"
#include "traffic/flight_motion.h"
#include "traffic/flight_motion_internal.h"
#include "traffic/ground_motion.h"
#include "traffic/motion_limits.h"
#include "traffic/stand_claims.h"
#include "traffic/stand_leaving.h"

namespace tfx {

namespace {

// Slower than this, every point but the newest: the aircraft is stopping.
constexpr double STOPPING_KT = 6;
// A newest point this slow ends the stop: look for a stand.
constexpr double STOPPED_KT = 0.5;
// A heading this far off the leg gets a curve onto it, degrees.
constexpr double OFF_LEG_DEG = 15;
// Smallest heading difference turned on the spot, degrees.
constexpr double ON_SPOT_DEG = 3;
// The speed above which a leg's end counts as moving, knots.
constexpr double MOVING_KT = 2;
// Speeds further apart than this at the ends of a leg are ramped, knots.
constexpr double RAMP_FROM_KT = 1;

bool lf_standsLoaded() {
    return parkAirport.known() && !loadedAirport.file.stands.empty();
}

double lf_legLength_m(const StreamPoint& a, const StreamPoint& b) {
    return gf_distanceNm(lf_pos(a), lf_pos(b)) * METRES_PER_NM;
}

double lf_headingDifference_deg(double a, double b) {
    return std::abs(gf_foldAngle(gf_normalizeHeading(a) - gf_normalizeHeading(b))) * DEG_PER_RAD;
}

bool lf_isStopping(const LiveAircraft& ac) {
    if (ac.flightState != FlightState::taxi || ac.prevState == FlightState::pushed_back ||
        ac.prevState == FlightState::parked || !lf_standsLoaded()) {
        return false;
    }
    for (std::size_t i = 0; i + 1 < ac.stream.size(); ++i) {
        if (ac.stream[i].speed > STOPPING_KT) return false;
    }
    return true;
}

// A heading well off the leg to next: a midpoint and a curve onto the leg.
bool lf_curveOntoLeg(LiveAircraft& ac) {
    const StreamPoint& front = ac.stream.front();
    const StreamPoint& next = ac.stream[1];
    if (ac.stream.size() == 2 && front.inserted != 0 && next.inserted != 0) return false;
    const double a = lf_headingDifference_deg(ac.heading, gf_bearing(lf_pos(ac), lf_pos(next)));
    if (a <= OFF_LEG_DEG) return false;
    const double x = std::clamp((a - OFF_LEG_DEG) / 75, 0.0, 1.0);
    const double r_m = 45 - 35 * x * x;
    if (lf_legLength_m(front, next) < r_m) return false;
    lf_insertMidpoint(ac);
    ac.stream[1].inserted = 0;  // the midpoint is the corner of the curve onto the leg
    return lf_planTurn(ac);
}

// Without a curve the heading turns to the target heading where they differ.
void lf_turnOnSpotIf(LiveAircraft& ac) {
    if (ac.curve.valid()) {
        ac.turningOnSpot = 0;
    } else {
        ac.inPlaceAngle = lf_headingDifference_deg(ac.targetHeading, ac.heading);
        ac.turningOnSpot = ac.inPlaceAngle > ON_SPOT_DEG ? 1 : 0;
    }
}

std::uint32_t lf_legEaseOf(const LiveAircraft& ac) {
    const StreamPoint& front = ac.stream.front();
    const StreamPoint& next = ac.stream[1];
    if (ac.flightState == FlightState::parking) {
        if (front.speed == 0 && next.speed == 0) return EASE_BOTH;
        if (front.speed > MOVING_KT && next.speed == 0) return EASE_OUT;
        return EASE_NONE;
    }
    // Between two speeds on the roll or in taxi the speed changes evenly
    // along the leg, not in a step at its start.
    const bool ramp = front.speed > MOVING_KT && next.speed > MOVING_KT &&
                      std::abs(front.speed - next.speed) > RAMP_FROM_KT;
    if (ac.flightState == FlightState::landing_roll) return ramp ? EASE_RAMP : EASE_NONE;
    if (ac.flightState != FlightState::taxi && ac.flightState != FlightState::takeoff_roll)
        return EASE_NONE;
    if (front.speed == 0 && next.speed > MOVING_KT) return EASE_IN;
    if (front.speed > MOVING_KT && next.speed == 0) return EASE_OUT;
    // A stop after next: the aircraft comes to rest at next, whatever speed
    // the data gave that point (a slow point close to the one before is
    // taken for a stop there).
    if (front.speed > MOVING_KT && ac.stream.size() >= 3 && ac.stream[2].same != 0) return EASE_OUT;
    return ramp ? EASE_RAMP : EASE_NONE;
}

void lf_pushbackOver(LiveAircraft& ac) {
    ac.targetHeading = ac.heading;
    gf_startEngines(ac.objectid);
    gf_setThrottle(ac, 0);
    gf_setFlaps(ac, 1);
    gf_setFlightState(ac, FlightState::pushed_back);
    ac.extensions = 0;
    ac.leaving = 0;
    ac.holdSinceTick = static_cast<std::uint32_t>(gf_simTick());
    ac.legEase = EASE_NONE;
    lf_timeGroundLeg(ac);
}

void lf_parkedLeg(LiveAircraft& ac) {
    ac.maxAdvance = DELAY_LIMIT_JUMP;
    ac.maxDelay = DELAY_LIMIT_JUMP;
    if (ac.leaving != 0) {
        if (ac.leaveMode == 1) {
            lf_pullOut(ac);
        } else {
            initiatePushBack(ac);
        }
        ac.legEase = ac.flightState == FlightState::pushing_back ? EASE_BOTH : EASE_NONE;
    } else if (lf_samePoint(ac.stream[1], ac.stream.front())) {
        ac.stream[1].same = 1;
    }
    if (ac.stream.size() >= 2) lf_timeGroundLeg(ac);
}

void lf_movingLeg(LiveAircraft& ac) {
    const bool stopping = lf_isStopping(ac);
    bool turned = false;
    if (ac.stream[1].same == 0 && ac.onGround != 0) {
        if (ac.stream.size() >= 3 && ac.stream[2].same == 0) turned = lf_planTurn(ac);
        if (!turned) turned = lf_curveOntoLeg(ac);
        if (!turned && !(ac.stream.size() < 3 && ac.extensions > 0)) {
            lf_splitLongLeg(ac, stopping);
        }
    }
    lf_turnOnSpotIf(ac);
    if (stopping && (ac.stream.empty() || ac.stream.back().speed <= STOPPED_KT)) {
        if (ac.stream.empty()) {
            gf_logLine(fmt::format("{} empty sz?", "try2Park"));
            return;
        }
        try2Park(ac);
        if (ac.stream.size() < 2) return;
        // Driving onto a stand, the heading turns to the stand's on the way.
        if (ac.flightState == FlightState::parking) lf_turnOnSpotIf(ac);
    }
    ac.legEase = lf_legEaseOf(ac);
    lf_timeGroundLeg(ac);
}

}  // namespace

double lf_ease(double t, std::uint32_t mode) {
    t = std::clamp(t, 0.0, 1.0);
    switch (mode) {
        case EASE_IN:
            return t * t;
        case EASE_OUT:
            return 1 - (1 - t) * (1 - t);
        case EASE_BOTH:
            return (3 - 2 * t) * t * t;
        default:
            return t;
    }
}

double lf_rampShare(double t, double v0, double v1) {
    t = std::clamp(t, 0.0, 1.0);
    return (v0 * t + (v1 - v0) * t * t / 2) / ((v0 + v1) / 2);
}

double lf_turnFactor(double v) {
    if (!(v > 8)) return 1.2;
    if (v < 15) return 1.2 - 0.2 * (v - 8) / 7;
    if (v <= 20) return 1.0;
    if (v < 30) return 1.0 - 0.4 * (v - 20) / 10;
    return 0.6;
}

void nextPosGround(LiveAircraft& ac) {
    switch (ac.flightState) {
        case FlightState::pushing_back:
            lf_pushbackOver(ac);
            return;
        case FlightState::parked:
            lf_parkedLeg(ac);
            return;
        default:
            lf_movingLeg(ac);
    }
}

void lf_retimeSame(LiveAircraft& ac) {
    const std::int32_t span =
        ac.stream.size() < 2 ? SHORTEST_LEG_TICKS
                             : std::max(SHORTEST_LEG_TICKS, ac.stream[1].time - ac.stream[0].time);
    lf_retime(ac, std::max(SHORTEST_LEG_TICKS, span + ac.stream[0].time - gf_simTick()));
}

void lf_timeGroundLeg(LiveAircraft& ac) {
    const StreamPoint& front = ac.stream.front();
    const StreamPoint& next = ac.stream[1];
    if (next.same != 0) {
        lf_retimeSame(ac);
        return;
    }
    ac.turnRateNow = ac.turnRate * lf_turnFactor(front.speed);
    const double d_nm = gf_distanceNm(lf_pos(front), lf_pos(next));
    const double s = lf_legSpeed(ac);
    if (!(std::isfinite(d_nm) && d_nm > 0) || !(std::isfinite(s) && s > 0)) {
        lf_retime(ac, SHORTEST_LEG_TICKS);
        return;
    }
    double legTicks = std::round(d_nm * 360000.0 / s);
    // A leg that starts or ends at rest is flown at twice its mean speed at
    // the moving end: it is given the time in which this end keeps the
    // speed of the data, as far as the data's own time allows, and never so
    // little that it goes faster than a catching-up aircraft may.
    const double movingEnd = ac.legEase == EASE_IN ? next.speed : front.speed;
    if ((ac.legEase == EASE_IN || ac.legEase == EASE_OUT) && movingEnd > MOVING_KT) {
        const double even = 2 * d_nm * 360000.0 / movingEnd;
        const double data = std::max<double>(next.time - front.time, even / CATCH_UP_FACTOR);
        legTicks = std::round(std::max(legTicks, std::min(even, data)));
    }
    if (!ac.curve.valid() && ac.turningOnSpot == 0) {
        lf_retime(ac, legTicks);
        return;
    }
    const double a = ac.turningOnSpot != 0 ? ac.inPlaceAngle : ac.turnAngle;
    const double turnTicks = ac.turnRateNow > 0 ? std::round(a * RAD_PER_DEG / ac.turnRateNow) : 0;
    const double ratio = std::max<double>(SHORTEST_LEG_TICKS, legTicks) /
                         std::max<double>(SHORTEST_LEG_TICKS, turnTicks);
    if (a <= 45) {
        const double d_m = d_nm * METRES_PER_NM;
        ac.turnRateNow /=
            ratio >= 1.2 ? std::min({ratio, ratio * 10 / a, ratio * 30 / d_m}) : ratio;
    } else {
        ac.turnRateNow *= std::min(ratio, std::min(a, 90.0) / 30);
        const double x = std::clamp((a - 30) / 70, 0.0, 1.0);
        const double rollFactor = ac.flightState == FlightState::takeoff_roll ? 4 : 2;
        ac.maxAdvance = std::max(
            ac.maxAdvance, static_cast<std::int32_t>(std::lround((2 * x + 1) * DELAY_LIMIT_REST)));
        ac.maxDelay = std::max(
            ac.maxDelay,
            static_cast<std::int32_t>(std::lround((rollFactor * x + 1) * DELAY_LIMIT_REST)));
    }
    lf_retime(ac, legTicks);
}

void lf_insertMidpoint(LiveAircraft& ac) {
    if (ac.stream.size() < 2) return;
    const StreamPoint& front = ac.stream.front();
    const StreamPoint& next = ac.stream[1];
    StreamPoint mid = front;
    mid.lat = (front.lat + next.lat) / 2;
    mid.lon = front.lon + gf_foldAngle((next.lon - front.lon) * RAD_PER_DEG) * DEG_PER_RAD / 2;
    mid.alt = (front.alt + next.alt) / 2;
    mid.speed = (front.speed + next.speed) / 2;
    mid.time =
        static_cast<std::int32_t>(std::lround((static_cast<double>(front.time) + next.time) / 2));
    mid.inAir = mid.alt > 0 ? 1 : 0;
    mid.same = 0;
    ac.stream.insert(1, mid);
}

void lf_splitLongLeg(LiveAircraft& ac, bool stopping) {
    const StreamPoint& front = ac.stream.front();
    const StreamPoint& next = ac.stream[1];
    if (front.speed == 0 && next.speed == 0) return;
    double limit_m = 0;
    if (stopping) {
        limit_m = ac.prevState == FlightState::landing_roll ? 40 : 50;
    } else {
        if (std::abs(front.speed - next.speed) <= 5) return;
        limit_m = 60 + 60 * std::min(std::max(front.speed, next.speed) / 25, 1.0);
    }
    if (lf_legLength_m(front, next) >= limit_m) lf_insertMidpoint(ac);
}

}  // namespace tfx
