// Taking the next point of the stream: the leg from front to next is timed
// by speed and distance within the limits of the data, and the aircraft's
// steps are set for it. When the stream runs dry it is extended or ends.
#include <algorithm>
#include <cmath>
#include <limits>
#include <stdexcept>

#include <fmt/format.h>

#include "app/log.h"
#include "traffic/aircraft_base.h"
#include "traffic/clock.h"
#include "traffic/flight_motion.h"
#include "traffic/flight_motion_internal.h"
#include "traffic/ground_motion.h"
#include "traffic/motion_limits.h"
#include "traffic/removal.h"
#include "traffic/stand_claims.h"
#include "traffic/traffic_internal.h"

namespace tfx {

namespace {

constexpr int NEXT_POS_GUARD = 32;
// Slower than this between two airborne points: the aircraft stopped in the air.
constexpr double STOPPED_IN_AIR_KT = 0.4;
constexpr double FALLBACK_SPEED_KT = 100;
// A takeoff point that implies this slow a climb-out is a bad one.
constexpr double TAKEOFF_CHECK_KT = 120;

bool lf_isFinitePositive(double v) {
    return std::isfinite(v) && v > 0;
}

// Rethrows the exception being handled with the context of the leg.
[[noreturn]] void lf_rethrowWith(const char* where, const LiveAircraft& ac) {
    throw std::runtime_error(fmt::format("{}: {}, {}, sz:{}", where, lf_currentExceptionText(),
                                         gf_logName(ac), ac.stream.size()));
}

// In takeoff, a next point that would slow the climb-out is left out.
bool lf_badTakeoffPoint(const LiveAircraft& ac) {
    const StreamPoint& front = ac.stream.front();
    const StreamPoint& next = ac.stream[1];
    const double secs = (next.time - gf_simTick()) / static_cast<double>(TICKS_PER_SECOND);
    if (secs < 5 || front.speed < TAKEOFF_CHECK_KT) return false;
    const double dist_nm = gf_distanceNm(lf_pos(ac), lf_pos(next));
    if (dist_nm * METRES_PER_NM <= 1.0) return false;
    const double implied = dist_nm / (secs / 3600.0);
    return implied < 100 && implied < 0.65 * front.speed;
}

void lf_nextPosMainLoop(LiveAircraft& ac) {
    for (int guard = 0; guard < NEXT_POS_GUARD;) {
        if (ac.stream.size() >= 2) {
            if (ac.onGround == 0 && ac.stream[1].same != 0 && !lf_isRotorcraft(ac)) {
                ac.stream.erase(1);
                ++guard;
                continue;
            }
            if (ac.flightState != FlightState::takeoff || ac.extensions > 0 ||
                !lf_badTakeoffPoint(ac)) {
                lf_nextPos(ac);
                return;
            }
            ac.stream.truncate(1);
            ac.takeoffGap = 1;
            ++guard;
            continue;
        }
        if (ac.flightState == FlightState::parking) {
            if (!lf_arrivedAtStand(ac)) lf_noMoreNextPos(ac);
            return;
        }
        std::int32_t count = 0;
        if (ac.extensions < 0) {
            lf_noMoreNextPos(ac);
            return;
        }
        if (ac.extensions == 1) {
            ac.extensions = -1;
            lf_noMoreNextPos(ac);
            return;
        }
        count = ac.extensions > 1 ? ac.extensions - 1 : lf_extensionCount(ac);
        if (count < 1) {
            lf_noMoreNextPos(ac);
            return;
        }
        lf_extendStream(ac, count);
        ++guard;
    }
    gf_logLine(fmt::format("{}: guard exceeded {}, sz:{}, fs:{}, st:{}", "nextPosMain",
                           gf_logName(ac), ac.stream.size(), gf_flightStateName(ac.flightState),
                           gf_simStateName(ac.simState)));
    lf_noMoreNextPos(ac);
}

}  // namespace

void lf_noMoreNextPos(LiveAircraft& ac) {
    try {
        removeAircraftFromSim(ac);
    } catch (...) {
        lf_trafficException("noMoreNextPos");
    }
}

std::int32_t lf_ticksToNext(const LiveAircraft& ac) {
    if (ac.stream.size() < 2) return SHORTEST_LEG_TICKS;
    return std::max(SHORTEST_LEG_TICKS, ac.stream[1].time - gf_simTick());
}

double lf_legSpeed(const LiveAircraft& ac) {
    if (ac.stream.empty()) return 1;
    const StreamPoint& front = ac.stream.front();
    const bool hasNext = ac.stream.size() >= 2;
    const double a = front.speed;
    const double b = hasNext ? ac.stream[1].speed : std::numeric_limits<double>::quiet_NaN();
    if (lf_isFinitePositive(a) && lf_isFinitePositive(b)) return std::max(1.0, (a + b) / 2);
    if (lf_isFinitePositive(a)) return std::max(1.0, a);
    if (lf_isFinitePositive(b)) return std::max(1.0, b);
    if (!hasNext) return 1;
    const StreamPoint& next = ac.stream[1];
    const double ticks = std::max(SHORTEST_LEG_TICKS, next.time - front.time);
    const double speed = gf_distanceNm(lf_pos(front), lf_pos(next)) / (ticks / 360000.0);
    return lf_isFinitePositive(speed) ? std::max(1.0, speed) : 1;
}

void lf_retime(LiveAircraft& ac, double ticks) {
    if (ac.extensions > 0 || ac.stream.size() < 2) return;
    StreamPoint& next = ac.stream[1];
    const std::int32_t now = gf_simTick();
    const double wanted = std::isfinite(ticks) ? std::clamp(ticks, 0.0, 1e9) : 0.0;
    std::int64_t t = now + std::max<std::int64_t>(SHORTEST_LEG_TICKS, std::llround(wanted));
    t = std::clamp<std::int64_t>(t, static_cast<std::int64_t>(next.time) - ac.maxAdvance,
                                 static_cast<std::int64_t>(next.time) + ac.maxDelay);
    t = std::max<std::int64_t>(t, now + 1);
    next.time = static_cast<std::int32_t>(t);
}

void nextPosAir(LiveAircraft& ac) {
    const StreamPoint& front = ac.stream.front();
    const StreamPoint& next = ac.stream[1];
    if (next.same != 0) {
        if (lf_isRotorcraft(ac)) {
            lf_retimeSame(ac);
        } else {
            removeAircraftFromSim(ac);
        }
        return;
    }
    if (!lf_isRotorcraft(ac)) {
        const double ticks = std::max(1, next.time - front.time);
        const double implied = gf_distanceNm(lf_pos(front), lf_pos(next)) / (ticks / 360000.0);
        if (implied < STOPPED_IN_AIR_KT) {
            removeAircraftFromSim(ac);
            return;
        }
    }
    double speed = 0;
    if (ac.flightState == FlightState::landing && next.inAir == 0) {
        speed = front.speed;
        if (!(speed > 0)) speed = FALLBACK_SPEED_KT;
    } else {
        speed = lf_legSpeed(ac);
        if (!(speed > 1)) speed = FALLBACK_SPEED_KT;
    }
    lf_retime(ac, gf_distanceNm(lf_pos(ac), lf_pos(next)) * 360000.0 / speed);
}

void lf_nextPos(LiveAircraft& ac) {
    ac.curveProgress = 0;
    ac.curve.invalidate();
    StreamPoint& next = ac.stream[1];
    if (next.same == 0) {
        if (lf_samePoint(next, ac.stream.front())) {
            next.same = 1;
        } else {
            ac.targetHeading = gf_bearing(lf_pos(ac.stream.front()), lf_pos(next));
        }
    }
    const bool ground = ac.onGround != 0;
    try {
        if (ground) {
            nextPosGround(ac);
        } else {
            nextPosAir(ac);
        }
    } catch (...) {
        lf_rethrowWith(ground ? "nextPosGround" : "nextPosAir", ac);
    }
    if (ac.simState == SimState::removingfromsim || ac.eraseNow != 0 || ac.dropQueued != 0 ||
        ac.stream.size() < 2) {
        return;
    }
    lf_limitLegSpeed(ac);
    const StreamPoint& target = ac.stream[1];
    if (target.same != 0) {
        ac.stepLat = ac.stepLon = 0;
        ac.maxAdvance = lf_towardsRest(ac.maxAdvance);
        ac.maxDelay = lf_towardsRest(ac.maxDelay);
    } else {
        const double dt = lf_ticksToNext(ac);
        ac.stepLat = (target.lat - ac.lat) / dt;
        ac.stepLon = gf_foldAngle((target.lon - ac.lon) * RAD_PER_DEG) * DEG_PER_RAD / dt;
        if (ground) {
            lf_setGroundSteps(ac);
        } else {
            lf_setAirSteps(ac);
        }
    }
    ac.stream.pop_front();
}

void nextPosMain(LiveAircraft& ac) {
    try {
        lf_nextPosMainLoop(ac);
    } catch (...) {
        throw std::runtime_error(fmt::format("{}: {} {}, sz:{}, fs:{}, st:{}", "nextPosMain",
                                             lf_currentExceptionText(), gf_logName(ac),
                                             ac.stream.size(), gf_flightStateName(ac.flightState),
                                             gf_simStateName(ac.simState)));
    }
}

}  // namespace tfx
