// The per-tick step of an aircraft along its present leg: position, heading,
// and by phase the altitude and attitude: the flare, the nose coming down
// after touchdown, and the rotation and climb-out of a takeoff.
#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "app/log.h"
#include "parking/park_airport.h"
#include "traffic/aircraft_base.h"
#include "traffic/clock.h"
#include "traffic/controls.h"
#include "traffic/flight_motion.h"
#include "traffic/flight_motion_internal.h"
#include "traffic/ground_curve.h"

namespace tfx {

namespace {

// Flare pitch, the lowest pitch (nose highest) in a flare, radians.
constexpr double FLARE_PITCH = -0.06981317007977318;
constexpr double FLARE_START_AGL_FT = 400;
// A curve whose tangent differs by less than this is not steered to, degrees.
constexpr double TANGENT_TOLERANCE = 0.5 * RAD_PER_DEG;
constexpr std::int32_t COUNTER_FLOOR = -1000;

struct FlareStage {
    double aboveCg_ft;  // the stage begins at this height over the reference point
    double stepAlt_ft;  // feet per tick
    double frontVs_fpm;
};

// The flare in stages, by phase 1 .. 4 (phase 0 is none).
constexpr FlareStage FLARE_STAGES[] = {
    {30, -0.1, -601},    // phase 1: nose up
    {20, -0.075, -450},  // phase 2
    {10, -0.05, -300},   // phase 3: throttle back
    {3, -0.025, -150},   // phase 4
};

// Turns heading towards target at rate per tick the short way round.
double lf_turnTowards(double heading, double target, double rate) {
    const double diff = gf_foldAngle(target - heading);
    if (std::abs(diff) <= rate) return gf_normalizeHeading(target);
    return gf_normalizeHeading(heading + (diff > 0 ? rate : -rate));
}

// Along the curve of a ground turn; the heading follows its tangent at the
// turn rate in force.
void lf_curveStep(LiveAircraft& ac) {
    double step = ac.curveStep;
    if (ac.legEase != 0 && ac.legStepIndex < ac.legSteps.size())
        step = ac.legSteps[ac.legStepIndex++];
    ac.curveProgress = std::clamp(ac.curveProgress + step, 0.0, 0.999999);
    LatLon at;
    double tangent = 0;
    if (!lf_curveAt(ac.curve, ac.curveProgress, at, tangent)) {
        gf_logLine(
            fmt::format("{} error in curve at index: {:.2F}", gf_logName(ac), ac.curveProgress));
        return;
    }
    ac.lat = at.lat;
    ac.lon = at.lon;
    // The heading keeps up with the curve's own turn and makes up any lag
    // at the turn rate in force: a wheeled aircraft does not slide sideways.
    LatLon before;
    double tangentBefore = tangent;
    const double previous = std::max(0.0, ac.curveProgress - step);
    if (!lf_curveAt(ac.curve, previous, before, tangentBefore)) tangentBefore = tangent;
    const double curveTurn = std::abs(gf_foldAngle(tangent - tangentBefore));
    if (std::abs(gf_foldAngle(tangent - ac.heading)) > TANGENT_TOLERANCE) {
        ac.heading = lf_turnTowards(ac.heading, tangent,
                                    std::min(ac.turnRateNow + curveTurn, MAX_HEADING_STEP));
    }
}

void lf_positionStep(LiveAircraft& ac) {
    if (ac.curve.valid()) {
        lf_curveStep(ac);
        return;
    }
    if (ac.legEase != 0 && ac.legStepIndex < ac.legSteps.size()) {
        const double share = ac.legSteps[ac.legStepIndex++];
        ac.lat += ac.legLat * share;
        ac.lon += ac.legLon * share;
    } else if (ac.flightState != FlightState::pushed_back) {
        ac.lat += ac.stepLat;
        ac.lon += ac.stepLon;
    }
    if (ac.onGround == 0) {
        if (std::abs(ac.stepHeading) <= MAX_HEADING_STEP) {
            ac.heading = gf_normalizeHeading(ac.heading + ac.stepHeading);
        }
    } else if (ac.turningOnSpot != 0 &&
               std::abs(gf_foldAngle(ac.targetHeading - ac.heading)) > TANGENT_TOLERANCE) {
        ac.heading = lf_turnTowards(ac.heading, ac.targetHeading,
                                    std::min(ac.turnRateNow, MAX_HEADING_STEP));
    }
}

void lf_flareCheck(LiveAircraft& ac) {
    if (ac.flarePhase == 0) {
        if (ac.groundAltitudeValid == 0 && parkAirport.known()) {
            ac.groundAltitude = parkAirport.alt_ft;
            ac.groundAltitudeValid = 1;
        }
        ac.aglByAlt = ac.groundAltitudeValid != 0 ? ac.alt - ac.groundAltitude : ac.agl;
        if (std::min(ac.agl, ac.aglByAlt) > ac.cgHeight + FLARE_STAGES[0].aboveCg_ft) return;
        ac.stepPitch = (FLARE_PITCH - ac.pitch) / std::max(1, ac.flareTicks);
    } else if (ac.flarePhase >= std::size(FLARE_STAGES) ||
               ac.agl > ac.cgHeight + FLARE_STAGES[ac.flarePhase].aboveCg_ft) {
        return;
    }
    const FlareStage& stage = FLARE_STAGES[ac.flarePhase];
    if (ac.flarePhase == 2) gf_setThrottle(ac, 0);
    ac.stepAlt = stage.stepAlt_ft;
    if (!ac.stream.empty()) ac.stream.front().vs = stage.frontVs_fpm;
    ++ac.flarePhase;
}

void lf_attitudeStep(LiveAircraft& ac) {
    if (ac.flightState == FlightState::landing && ac.onGround == 0 &&
        ac.agl <= FLARE_START_AGL_FT) {
        lf_flareCheck(ac);
    }
    if (ac.derotating != 0) {
        ac.pitch += ac.stepPitch;
        const bool passed =
            ac.stepPitch >= 0 ? ac.pitch >= ac.staticPitch : ac.pitch <= ac.staticPitch;
        if (passed) {
            ac.pitch = ac.staticPitch;
            ac.stepPitch = ac.stepBank = ac.bank = 0;
            ac.derotating = 0;
            ac.flarePhase = 0;
        }
        ac.bank += ac.stepBank;
    } else if (ac.flarePhase > 0) {
        ac.bank = std::clamp(ac.bank + ac.stepBank, -PI, PI);
        ac.pitch = std::max(ac.pitch + ac.stepPitch, FLARE_PITCH);
        ac.alt += ac.stepAlt;
    } else if (ac.onGround != 0) {
        ac.pitch = ac.staticPitch;
        ac.bank = 0;
    } else {
        ac.bank += ac.stepBank;
        ac.pitch += ac.stepPitch;
        ac.alt += ac.stepAlt;
    }
}

// The altitude step is phased in over three seconds after the rotation.
double lf_climbShare(std::int32_t counter) {
    if (counter >= -99) return 0.1;
    if (counter >= -199) return 0.2;
    if (counter >= -299) return 0.5;
    return 1;
}

void lf_takeoffStep(LiveAircraft& ac) {
    ac.counter = std::max(COUNTER_FLOOR, ac.counter - 1);
    if (ac.counter >= 1) {
        ac.onGround = 0;
        if (ac.pitch > ac.rotationPitch)
            ac.pitch = std::max(ac.pitch + ac.stepPitch, ac.rotationPitch);
        return;
    }
    ac.bank = std::clamp(ac.bank + ac.stepBank, -PI, PI);
    if (ac.pitch > ac.climbPitch) {
        const double step = (ac.climbPitch - ac.rotationPitch) / std::max(1, ac.climbPitchTicks);
        ac.pitch = std::max(ac.pitch + step, ac.climbPitch);
    }
    ac.alt += ac.stepAlt * lf_climbShare(ac.counter);
    if (ac.counter == -300) gf_setGear(ac, false);
    if (ac.counter < -300 && ac.pitch <= ac.climbPitch) {
        ac.stepPitch = 0;
        if (ac.agl >= 800) {
            gf_setThrottle(ac, lf_isRotorcraft(ac) ? 4 : 3);
            gf_setFlightState(ac, FlightState::flying);
            ac.counter = 1;
        }
    }
}

void lf_wrapPosition(LiveAircraft& ac) {
    if (ac.lat > 90) {
        ac.lat = 180 - ac.lat;
        ac.lon += 180;
    } else if (ac.lat < -90) {
        ac.lat = -180 - ac.lat;
        ac.lon += 180;
    }
    ac.lon = std::remainder(ac.lon, 360.0);
}

}  // namespace

void lf_stepAircraft(LiveAircraft& ac) {
    lf_positionStep(ac);
    if (ac.flightState == FlightState::takeoff) {
        lf_takeoffStep(ac);
    } else {
        lf_attitudeStep(ac);
    }
    lf_wrapPosition(ac);
}

void lf_startRotation(LiveAircraft& ac) {
    // Read before the state changes: afterwards prevState is the roll itself.
    const bool touchAndGo = ac.prevState == FlightState::landing_roll;
    ac.counter = std::max(1, ac.rotationTicks);
    ac.bank = 0;
    ac.stepBank = 0;
    ac.stepPitch = (ac.rotationPitch - ac.pitch) / ac.counter;
    gf_setFlightState(ac, FlightState::takeoff);
    ac.curve.invalidate();
    ac.stepHeading = 0;
    if (touchAndGo) {
        // The roll started with the landing's spoilers out: the climb-out
        // goes at full throttle with them stowed.
        gf_setThrottle(ac, 4);
        gf_setSpoilers(ac, false);
        gf_setFlaps(ac, 1);
    }
}

}  // namespace tfx
