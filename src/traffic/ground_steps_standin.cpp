// STAND-IN for the ground legs: straight legs timed by speed and distance,
// the heading set at once at each point, the rotation test of the takeoff
// roll, and nothing else: no curves, no inserted points, no speed profile,
// no roll-out or stand work. The real bodies replace this file.
#include <algorithm>

#include "traffic/aircraft_tables.h"
#include "traffic/clock.h"
#include "traffic/flight_motion.h"
#include "traffic/flight_motion_internal.h"
#include "traffic/ground_motion.h"
#include "traffic/removal.h"

namespace tfx {

namespace {

constexpr double ROTATION_VS_FPM = 256;
constexpr std::int32_t LONGEST_ROLL_TICKS = 12000;

bool lf_allBehindFront(const LiveAircraft& ac, bool (*test)(const StreamPoint&)) {
    for (std::size_t i = 1; i < ac.stream.size(); ++i) {
        if (!test(ac.stream[i])) return false;
    }
    return true;
}

void lf_rotationTest(LiveAircraft& ac) {
    const bool allClimbing =
        std::all_of(ac.stream.begin(), ac.stream.end(),
                    [](const StreamPoint& p) { return p.vs > ROTATION_VS_FPM; });
    const auto airborne = [](const StreamPoint& p) { return p.inAir != 0; };
    const double dt = lf_ticksToNext(ac);
    if (allClimbing && lf_allBehindFront(ac, airborne)) {
        ac.stepAlt = std::max(ac.stream[1].alt - ac.alt, 0.1 * dt) / dt;
        lf_startRotation(ac);
        return;
    }
    if (allClimbing && ac.stream.back().inAir != 0) {
        ac.stepAlt = ac.maxClimbStep;
        lf_startRotation(ac);
        return;
    }
    const double rotate_kt = CATEGORY_TABLE[static_cast<std::size_t>(ac.category)].rotateSpeed_kt;
    const bool fast = lf_allBehindFront(ac, [](const StreamPoint&) { return true; }) &&
                      std::all_of(++ac.stream.begin(), ac.stream.end(),
                                  [&](const StreamPoint& p) { return p.speed >= rotate_kt; });
    if (fast && ac.stream.size() >= 2 && lf_allBehindFront(ac, airborne)) {
        ac.stepAlt = ac.maxClimbStep;
        lf_startRotation(ac);
        return;
    }
    if (gf_simTick() - ac.stateTick > LONGEST_ROLL_TICKS) removeAircraftFromSim(ac);
}

}  // namespace

void lf_retimeSame(LiveAircraft& ac) {
    const std::int32_t span =
        ac.stream.size() < 2 ? SHORTEST_LEG_TICKS
                             : std::max(SHORTEST_LEG_TICKS, ac.stream[1].time - ac.stream[0].time);
    lf_retime(ac, std::max(SHORTEST_LEG_TICKS, span + ac.stream[0].time - gf_simTick()));
}

void nextPosGround(LiveAircraft& ac) {
    const StreamPoint& next = ac.stream[1];
    if (next.same != 0) {
        lf_retimeSame(ac);
        return;
    }
    ac.heading = ac.targetHeading;
    lf_retime(ac, gf_distanceNm(lf_pos(ac), lf_pos(next)) * 360000.0 / lf_legSpeed(ac));
    if (ac.flightState == FlightState::takeoff_roll) lf_rotationTest(ac);
}

void lf_setGroundSteps(LiveAircraft& ac) {
    ac.nextTas = ac.stream[1].tas;
    ac.nextVs = ac.stream[1].vs;
    ac.stepHeading = 0;
    if (ac.flightState != FlightState::takeoff) ac.stepAlt = 0;
}

}  // namespace tfx
