// When the data of an aircraft fail, its stream is extended by points
// 3 seconds apart that carry on what it did: a climb-out, a descent, a roll,
// or a stop. The count of such points limits how long that may go on.
#include <algorithm>

#include "airports/airport_file.h"
#include "app/options.h"
#include "parking/parking_state.h"
#include "traffic/aircraft_base.h"
#include "traffic/clock.h"
#include "traffic/flight_motion.h"
#include "traffic/flight_motion_internal.h"
#include "traffic/user_aircraft.h"

namespace tfx {

namespace {

// One minute of 3-second points.
constexpr std::int32_t ONE_MINUTE_POINTS = 20;
// A parked aircraft needs no new point for a week.
constexpr std::int32_t WEEK_TICKS = 60480000;
constexpr double LANDING_DESCENT_FT = 31.682499999999997;
constexpr double LANDING_DESCENT_FPM = -633.65;
constexpr double MAX_ROLL_KT = 180;
constexpr double MAX_GAP_KT = 210;

double lf_rollAcceleration(double speed_kt) {
    if (speed_kt < 60) return 4;
    if (speed_kt < 120) return 3;
    return 2;
}

double lf_rollDeceleration(double speed_kt) {
    if (speed_kt >= 120) return 6;
    if (speed_kt >= 80) return 5;
    if (speed_kt >= 40) return 4;
    return 2.5;
}

void lf_extendInAir(LiveAircraft& ac, StreamPoint& p, std::int32_t count) {
    if (ac.flightState == FlightState::landing) {
        if (count >= 4) p.speed = std::max(1.0, p.speed * 0.94);
        if (ac.flarePhase == 0) {
            p.alt -= LANDING_DESCENT_FT;
            p.vs = LANDING_DESCENT_FPM;
        }
    } else {
        p.speed = std::max(1.0, p.speed * 0.9);
        if (ac.flightState == FlightState::takeoff) {
            p.alt += 75;
            p.vs = 1500;
        }
    }
    p.inAir = p.alt > 0 ? 1 : 0;
    p.alt = std::max(0.0, p.alt);
}

void lf_extendOnGround(const LiveAircraft& ac, StreamPoint& p) {
    if (ac.flightState == FlightState::takeoff_roll) {
        p.speed = std::min(MAX_ROLL_KT, p.speed + 3 * lf_rollAcceleration(p.speed));
        if (p.speed == 140) {
            p.vs = 600;
        } else if (p.speed > 140 && p.speed <= 170) {
            p.vs = 1200;
        } else if (p.speed > 170) {
            p.vs = 2400;
        }
    } else if (ac.flightState == FlightState::landing_roll) {
        p.vs = 0;
        p.speed = std::max(0.0, p.speed - 3 * lf_rollDeceleration(p.speed));
    } else {
        p.speed = 0;
        p.tas = 0;
        p.same = 1;
    }
}

}  // namespace

std::int32_t lf_extensionCount(LiveAircraft& ac) {
    if (!gf_categoryEnabled(ac.category)) return 0;
    switch (ac.flightState) {
        case FlightState::takeoff_roll:
        case FlightState::takeoff:
        case FlightState::landing:
        case FlightState::landing_roll:
            return ONE_MINUTE_POINTS;
        case FlightState::parked:
            return 1;
        case FlightState::pushed_back:
        case FlightState::taxi:
            ac.holdSinceTick = static_cast<std::uint32_t>(gf_simTick());
            ac.holding = 1;
            return gf_options()->MAX_HOLDING_MINUTES * ONE_MINUTE_POINTS;
        case FlightState::flying: {
            if (gf_userPositionUnknown()) return ONE_MINUTE_POINTS;
            const double range_nm = gf_options()->range_nm;
            const double dist_nm = gf_distanceNm(lf_pos(ac), {userAircraft.lat, userAircraft.lon});
            return dist_nm < range_nm - 0.5 ? ONE_MINUTE_POINTS : 0;
        }
        default:
            return 0;
    }
}

void lf_extendStream(LiveAircraft& ac, std::int32_t count) {
    ac.extensions = count;
    const StreamPoint& newest = ac.stream.back();
    StreamPoint p = newest;
    const bool parked = ac.flightState == FlightState::parked;
    if (newest.same == 0 && !parked) {
        if (ac.onGround == 0) {
            lf_extendInAir(ac, p, count);
        } else {
            lf_extendOnGround(ac, p);
        }
        if (p.speed > 0) {
            if (ac.flightState == FlightState::takeoff && ac.takeoffGap != 0) {
                p.speed = std::min(MAX_GAP_KT, p.speed * 1.015);
            }
            const LatLon to =
                gf_projectPosition(lf_pos(newest), ac.heading, p.speed * 3 * FEET_PER_NM / 3600);
            p.lat = to.lat;
            p.lon = to.lon;
            p.same = 0;
        } else {
            p.tas = 0;
            p.same = 1;
        }
    } else {
        p.speed = 0;
        p.tas = 0;
        p.same = 1;
    }
    p.time = newest.time + (parked ? WEEK_TICKS : EXTENSION_TICKS);
    if (parked) {
        // Not heard of since it parked: its stand's live mark goes.
        ac.atStandSeen = 0;
        if (Stand* stand = gf_standBySid(ac.sid)) stand->liveHere = false;
    }
    ac.stream.push_back(p);
}

}  // namespace tfx
