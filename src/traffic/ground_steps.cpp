// The steps of a leg on the ground: throttle and configuration by state (the
// roll-out ends in taxi once the aircraft turns off), the attitude of a
// rolling aircraft, the curve or the speed profile, and on the takeoff roll
// the test whether the aircraft rotates.
#include <algorithm>

#include "sim/sim_queues.h"
#include "traffic/aircraft_base.h"
#include "traffic/clock.h"
#include "traffic/controls.h"
#include "traffic/flight_motion.h"
#include "traffic/flight_motion_internal.h"
#include "traffic/ground_motion.h"
#include "traffic/removal.h"

namespace tfx {

namespace {

constexpr double ROTATION_VS_FPM = 256;
constexpr std::int32_t LONGEST_ROLL_TICKS = 12000;
// Turned this far from the touchdown heading, the roll-out is over, degrees.
constexpr double TURNED_OFF_DEG = 15;
// The rotation is looked at from this speed of the roll, knots.
constexpr double ROTATION_CHECK_KT = 43;
constexpr std::int32_t LONGEST_EASED_TICKS = 60000;

std::uint32_t lf_taxiThrottle(const LiveAircraft& ac) {
    return lf_isRotorcraft(ac) ? 4 : 0;
}

std::uint32_t lf_takeoffRollThrottle(const LiveAircraft& ac) {
    const double front = ac.stream.front().speed;
    const double next = ac.stream[1].speed;
    if (lf_isRotorcraft(ac) || front >= 25 || next >= 30) return 4;
    if (front >= 20 || next >= 25) return 2;
    if (front >= 15 || next >= 20) return 1;
    return 0;
}

void lf_rollOut(LiveAircraft& ac) {
    const bool light = ac.category == AircraftCategory::Light;
    const double turned = std::abs(gf_foldAngle(gf_normalizeHeading(ac.heading) -
                                                gf_normalizeHeading(ac.touchdownHeading))) *
                          DEG_PER_RAD;
    if (turned >= TURNED_OFF_DEG) {
        gf_setFlaps(ac, 0);
        gf_setFlightState(ac, FlightState::taxi);
        ac.touchdownHeading = 0;
        gf_setThrottle(ac, lf_taxiThrottle(ac));
        gf_setSpoilers(ac, false);
        if (!light) gf_setReverseThrust(ac.objectid, false, ac.fsltlLivery);
        gf_setLights(ac.objectid, {.nav = true,
                                   .beacon = true,
                                   .landing = false,
                                   .taxi = true,
                                   .strobes = false,
                                   .logo = true,
                                   .cabin = true});
        return;
    }
    const double speed = ac.stream.front().speed;
    if (speed <= 30) {
        gf_setFlaps(ac, 0);
    } else if (speed <= 90) {
        gf_setSpoilers(ac, false);
        if (!light) gf_setReverseThrust(ac.objectid, false, ac.fsltlLivery);
        gf_setFlaps(ac, 1);
    }
}

bool lf_allBehindFront(const LiveAircraft& ac, bool (*test)(const StreamPoint&)) {
    for (std::size_t i = 1; i < ac.stream.size(); ++i) {
        if (!test(ac.stream[i])) return false;
    }
    return true;
}

bool lf_airborne(const StreamPoint& p) {
    return p.inAir != 0;
}

void lf_rotationTest(LiveAircraft& ac) {
    const bool allClimbing =
        std::all_of(ac.stream.begin(), ac.stream.end(),
                    [](const StreamPoint& p) { return p.vs > ROTATION_VS_FPM; });
    const double dt = lf_ticksToNext(ac);
    if (allClimbing && lf_allBehindFront(ac, lf_airborne)) {
        ac.stepAlt = std::max(ac.stream[1].alt - ac.alt, 0.1 * dt) / dt;
        lf_startRotation(ac);
        return;
    }
    if (allClimbing && ac.stream.back().inAir != 0) {
        ac.stepAlt = ac.maxClimbStep;
        lf_startRotation(ac);
        return;
    }
    const double rotate_kt = lf_categoryRow(ac).rotateSpeed_kt;
    bool rotateSpeed = true;
    for (std::size_t i = 1; i < ac.stream.size(); ++i) {
        if (ac.stream[i].speed < rotate_kt) rotateSpeed = false;
    }
    if (rotateSpeed && ac.stream.size() >= 2 && lf_allBehindFront(ac, lf_airborne)) {
        ac.stepAlt = ac.maxClimbStep;
        lf_startRotation(ac);
        return;
    }
    // A roll that never rotates must not block the runway.
    if (gf_simTick() - ac.stateTick > LONGEST_ROLL_TICKS) removeAircraftFromSim(ac);
}

}  // namespace

void lf_setGroundSteps(LiveAircraft& ac) {
    const StreamPoint& next = ac.stream[1];
    switch (ac.flightState) {
        case FlightState::taxi:
            gf_setThrottle(ac, lf_taxiThrottle(ac));
            break;
        case FlightState::takeoff_roll:
            gf_setThrottle(ac, lf_takeoffRollThrottle(ac));
            break;
        case FlightState::landing_roll:
            lf_rollOut(ac);
            break;
        default:
            break;
    }
    if (ac.flightState != FlightState::takeoff_roll &&
        ac.flightState != FlightState::landing_roll) {
        ac.maxAdvance = lf_towardsRest(ac.maxAdvance);
        ac.maxDelay = lf_towardsRest(ac.maxDelay);
    }
    if (ac.flarePhase == 0 && ac.flightState != FlightState::takeoff) {
        ac.pitch = ac.staticPitch;
        ac.stepPitch = ac.bank = ac.stepBank = 0;
    }
    const std::int32_t dt = lf_ticksToNext(ac);
    if (ac.curve.valid()) {
        ac.curveStep = 1.0 / dt;
    } else {
        ac.stepHeading = 0;
    }
    // A leg planned further ahead than any profile needs goes at one pace.
    // The shares per tick move a curve on as they move a straight leg.
    if (ac.legEase != EASE_NONE && dt <= LONGEST_EASED_TICKS) {
        if (!ac.curve.valid()) {
            ac.legLat = next.lat - ac.lat;
            ac.legLon = gf_foldAngle((next.lon - ac.lon) * RAD_PER_DEG) * DEG_PER_RAD;
            ac.stepLat = ac.stepLon = 0;
        }
        const double v0 = ac.stream.front().speed, v1 = next.speed;
        const auto share = [&](double t) {
            return ac.legEase == EASE_RAMP ? lf_rampShare(t, v0, v1) : lf_ease(t, ac.legEase);
        };
        ac.legSteps.resize(static_cast<std::size_t>(dt));
        for (std::int32_t i = 0; i < dt; ++i) {
            ac.legSteps[static_cast<std::size_t>(i)] =
                share(static_cast<double>(i + 1) / dt) - share(static_cast<double>(i) / dt);
        }
        ac.legStepIndex = 0;
    } else {
        ac.legEase = EASE_NONE;
    }
    ac.nextVs = next.vs;
    ac.nextTas = ac.flightState == FlightState::pushing_back ? -next.speed : next.speed;
    if (ac.flightState == FlightState::takeoff_roll && ac.stream.front().speed >= ROTATION_CHECK_KT)
        lf_rotationTest(ac);
}

}  // namespace tfx
