// The steps of an airborne leg: altitude by where the two points are, pitch
// from the vertical speed, heading and bank from the turn ahead, and the
// configuration (lights, gear, flaps, throttle) by height.
#include <algorithm>
#include <cmath>

#include "feeds/qnh.h"
#include "parking/park_airport.h"
#include "sim/sim_queues.h"
#include "traffic/aircraft_base.h"
#include "traffic/clock.h"
#include "traffic/controls.h"
#include "traffic/flight_motion.h"
#include "traffic/flight_motion_internal.h"
#include "traffic/motion_limits.h"
#include "traffic/traffic_tables.h"

namespace tfx {

namespace {

// Pitch of level flight, and the change per 600 feet per minute, radians.
constexpr double LEVEL_PITCH = -0.05235987755982989;
constexpr double PITCH_PER_600FPM = 0.038397243543875255;
constexpr double MAX_CLIMB_FPM = 2400;
constexpr double MAX_DESCENT_FPM = -3000;
// Feet per minute into feet per tick.
constexpr double FPM_PER_FT_PER_TICK = 6000;
constexpr double HIGH_ALT_FT = 10000;
constexpr double NEAR_PARK_AIRPORT_NM = 10;

constexpr Lights HIGH_LIGHTS = {true, true, false, false, true, false, true};
constexpr Lights LOW_LIGHTS = {true, true, true, true, true, true, true};

std::uint32_t lf_throttleFor(const LiveAircraft& ac, std::uint32_t index) {
    return lf_isRotorcraft(ac) ? 4 : index;
}

// Presses an aircraft down that its own data place on the ground, fpm.
double lf_groundDescent(const LiveAircraft& ac) {
    if (ac.agl > 100) {
        const StreamPoint& front = ac.stream.front();
        const StreamPoint& next = ac.stream[1];
        return std::min(-601.0, (front.vs + next.vs) / 2 - (qnh.load() - 1013.25) * 6);
    }
    return -600;
}

double lf_climbStep(const LiveAircraft& ac) {
    const StreamPoint& next = ac.stream[1];
    if (ac.alt >= next.alt) return 0;
    return std::min((next.alt - ac.alt) / lf_ticksToNext(ac), ac.maxClimbStep);
}

void lf_setDescent(LiveAircraft& ac, double vs_fpm) {
    ac.stream[1].vs = vs_fpm;
    ac.nextVs = vs_fpm;
    ac.stepAlt = vs_fpm / FPM_PER_FT_PER_TICK;
}

// A ground leg followed by airborne points: go straight to the first of them.
bool lf_skipToAirborne(LiveAircraft& ac, std::size_t i) {
    if (ac.stream.size() < i || ac.stream[i - 1].inAir == 0) return false;
    ac.stream.erase(1, i - 1);
    lf_retime(ac, gf_distanceNm(lf_pos(ac), lf_pos(ac.stream[1])) * 360000.0 / lf_legSpeed(ac));
    const double dt = lf_ticksToNext(ac);
    ac.stepLat = (ac.stream[1].lat - ac.lat) / dt;
    ac.stepLon = gf_foldAngle((ac.stream[1].lon - ac.lon) * RAD_PER_DEG) * DEG_PER_RAD / dt;
    ac.nextTas = ac.stream[1].tas;
    ac.nextVs = ac.stream[1].vs;
    ac.stepAlt = lf_climbStep(ac);
    return true;
}

void lf_altitudeStep(LiveAircraft& ac) {
    StreamPoint& front = ac.stream.front();
    StreamPoint& next = ac.stream[1];
    const double dt = lf_ticksToNext(ac);
    if (front.inAir == 0 && next.inAir == 0) {
        double vsSum = 0;
        for (const auto& p : ac.stream) vsSum += p.vs;
        if (ac.flightState != FlightState::landing && vsSum > 100) {
            const std::size_t top = std::min<std::size_t>(ac.stream.size() - 1, 10);
            for (std::size_t i = 3; i <= top; ++i) {
                if (lf_skipToAirborne(ac, i)) return;
            }
            lf_setDescent(ac, std::max(next.vs, 601.0));
        } else {
            lf_setDescent(ac, lf_groundDescent(ac));
        }
        gf_setGear(ac, true);
        return;
    }
    if (front.inAir == 0) {
        ac.stepAlt = lf_climbStep(ac);
        return;
    }
    if (next.inAir == 0) {
        if (qnh.load() > 1013) {
            lf_setDescent(ac, lf_groundDescent(ac));
        } else if (parkAirport.known()) {
            ac.stepAlt = (parkAirport.alt_ft - ac.alt) / dt;
        } else {
            lf_setDescent(ac, -601);
        }
        gf_setGear(ac, true);
        return;
    }
    const double base = (next.alt - ac.alt) / dt;
    switch (ac.flightState) {
        case FlightState::flying:
            ac.stepAlt = base;
            break;
        case FlightState::takeoff:
            ac.stepAlt = ac.agl <= 1000 ? std::min(ac.maxClimbStep, std::max(base, 0.2))
                                        : std::min(base, ac.maxClimbStep);
            break;
        case FlightState::landing:
            if (front.alt == next.alt && ac.agl <= 1000 && next.vs + front.vs <= 100) {
                lf_setDescent(ac, lf_groundDescent(ac));
            } else {
                ac.stepAlt = base;
            }
            break;
        default:
            break;
    }
}

void lf_pitchStep(LiveAircraft& ac) {
    double v = ac.stream[1].vs;
    v = v > 0 ? std::min(v, MAX_CLIMB_FPM) : std::max(v, MAX_DESCENT_FPM) / 2;
    const double target = LEVEL_PITCH - v / 600 * PITCH_PER_600FPM;
    const double rate = lf_pitchRatePerTick(ac);
    ac.stepPitch = std::clamp((target - ac.pitch) / lf_ticksToNext(ac), -rate, rate);
}

void lf_attitudeStep(LiveAircraft& ac) {
    const StreamPoint& next = ac.stream[1];
    const double dt = lf_ticksToNext(ac);
    const double attitudeBelow_ft = ac.flightState == FlightState::landing ? 2000 : 1000;
    if (next.hasAttitude != 0 && next.bankValid != 0 && next.headingValid != 0 &&
        ac.agl < attitudeBelow_ft) {
        ac.stepHeading = gf_foldAngle(next.heading - ac.heading) / dt;
        ac.stepBank = (next.bank - ac.bank) / dt;
        return;
    }
    double d = 0;
    if (ac.stream.size() >= 3) {
        d = gf_foldAngle(gf_bearing(lf_pos(next), lf_pos(ac.stream[2])) - ac.heading);
    }
    ac.stepHeading = d / dt;
    if (next.bankValid != 0) {
        ac.stepBank = (next.bank - ac.bank) / dt;
        return;
    }
    // Bank by the turn ahead.
    const double limit = lf_bankLimit(ac);
    const double rate = lf_bankRatePerTick(ac);
    const double target = -std::clamp(d, -limit, limit);
    ac.stepBank = std::clamp((target - ac.bank) / dt, -rate, rate);
}

void lf_highConfiguration(LiveAircraft& ac) {
    if (ac.highSet != 0) return;
    ac.highSet = 1;
    ac.lowSet = 0;
    gf_setLights(ac.objectid, HIGH_LIGHTS);
    gf_setThrottle(ac, lf_throttleFor(ac, 3));
    ac.maxAdvance = DELAY_LIMIT_REST;
    ac.maxDelay = DELAY_LIMIT_REST;
    gf_setGear(ac, false);
    gf_setFlaps(ac, 0);
}

void lf_startLanding(LiveAircraft& ac) {
    gf_setFlightState(ac, FlightState::landing);
    gf_setThrottle(ac, lf_throttleFor(ac, 1));
    gf_setFlaps(ac, 3);
    gf_setGear(ac, true);
    nameLookups.push_back(ac.hexid);
    ac.goAround = 0;
    ac.sid = 0;
    ac.standLat = ac.standLon = ac.standHeading = 0;
    ac.standCargo = 0;
    ac.standIsGate = 0;
    ac.maxAdvance = DELAY_LIMIT_JUMP;
    ac.maxDelay = DELAY_LIMIT_JUMP;
    ac.counter = 1;
}

std::uint32_t lf_flapsNow(const LiveAircraft& ac) {
    // 4 retracts like 0, and stands for none commanded yet.
    return ac.flapsIndex >= 4 ? 0 : ac.flapsIndex;
}

}  // namespace

void lf_lowConfiguration(LiveAircraft& ac) {
    if (ac.lowSet == 0) {
        ac.lowSet = 1;
        ac.highSet = 0;
        gf_setLights(ac.objectid, LOW_LIGHTS);
        ac.maxAdvance = DELAY_LIMIT_REST;
        ac.maxDelay = DELAY_LIMIT_REST;
    }
    const StreamPoint& front = ac.stream.front();
    const auto category = static_cast<std::uint32_t>(ac.category);
    const double band_ft = category >= 1 && category <= 3 ? 2050 : 625;
    if (ac.agl <= band_ft) {
        gf_setCabinLight(ac.objectid, false);
        const bool near =
            parkAirport.known() &&
            gf_distanceNm(lf_pos(ac), {parkAirport.lat, parkAirport.lon}) <= NEAR_PARK_AIRPORT_NM;
        if (front.vs <= -250 && ac.flightState == FlightState::flying && near) {
            lf_startLanding(ac);
        }
        if ((front.vs > 600 || (ac.flightState == FlightState::landing && !near)) &&
            ac.goAround == 0) {
            ac.goAround = 1;
            gf_setThrottle(ac, 4);
            gf_setGear(ac, false);
            gf_setFlaps(ac, 0);
            ac.flarePhase = 0;
        }
        return;
    }
    ac.maxAdvance = lf_towardsRest(ac.maxAdvance);
    ac.maxDelay = lf_towardsRest(ac.maxDelay);
    gf_setCabinLight(ac.objectid, true);
    if (front.vs <= -250 && ac.throttleIndex == 3) gf_setThrottle(ac, lf_throttleFor(ac, 2));
    if (front.vs > 400 && ac.throttleIndex == 4) gf_setThrottle(ac, lf_throttleFor(ac, 3));
    if (ac.agl >= 2400) {
        gf_setGear(ac, false);
        gf_setFlaps(ac, 0);
    } else if (front.vs <= 100) {
        const std::uint32_t flaps = lf_flapsNow(ac);
        if (flaps == 0 || (flaps == 1 && ac.agl < 2000)) gf_setFlaps(ac, flaps + 1);
    }
}

void lf_setAirSteps(LiveAircraft& ac) {
    ac.nextTas = ac.stream[1].tas;
    ac.nextVs = ac.stream[1].vs;
    if (ac.flarePhase == 0) {
        lf_altitudeStep(ac);
        if (ac.flightState != FlightState::takeoff) lf_pitchStep(ac);
    }
    lf_limitVerticalSpeed(ac);
    lf_attitudeStep(ac);
    if (ac.stream.front().alt >= HIGH_ALT_FT) {
        lf_highConfiguration(ac);
    } else {
        lf_lowConfiguration(ac);
    }
}

}  // namespace tfx
