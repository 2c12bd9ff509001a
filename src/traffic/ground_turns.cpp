// Corners on the ground: whether the corner at next gets a curve, where the
// curve begins, and the curve itself, which replaces the corner point.
#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "app/log.h"
#include "traffic/flight_motion_internal.h"
#include "traffic/ground_curve.h"
#include "traffic/ground_motion.h"

namespace tfx {

namespace {

// Corners this small are driven straight through, degrees.
constexpr double SMALLEST_TURN_DEG = 3;
// Corners larger than this are turned on the spot, degrees.
constexpr double LARGEST_CURVE_DEG = 120;
// Above this speed a corner is rounded where it is, knots.
constexpr double FAST_TURN_KT = 43;
// The curve begins this far before the corner, metres.
constexpr double LEAD_MIN_M = 12, LEAD_MAX_M = 90;
// A bend this small after a curve is left to the heading to follow, radians.
constexpr double SMALL_BEND_AFTER = 10 * RAD_PER_DEG;

bool lf_makeTurnIf(LiveAircraft& ac, double a_deg) {
    if (a_deg > LARGEST_CURVE_DEG) return false;
    const StreamPoint& third = ac.stream[2];
    if (lf_samePoint(third, ac.stream.front()) || lf_samePoint(third, ac.stream[1])) return false;
    makeTurnGnd(ac);
    ac.turnAngle = a_deg;
    return true;
}

}  // namespace

bool lf_planTurn(LiveAircraft& ac) {
    if (ac.stream.size() < 3) return false;
    const StreamPoint& front = ac.stream.front();
    const StreamPoint& next = ac.stream[1];
    // An inserted next point is no corner. An inserted front point is where
    // an earlier plan put the start of this very curve: the curve is made
    // there (refusing it too would leave the corner to a turn on the spot).
    if (next.inserted != 0) return false;
    const double out = gf_bearing(lf_pos(next), lf_pos(ac.stream[2]));
    const double a = std::abs(gf_foldAngle(out - gf_normalizeHeading(ac.heading))) * DEG_PER_RAD;
    if (a <= SMALLEST_TURN_DEG) return false;
    if (front.speed > FAST_TURN_KT) return lf_makeTurnIf(ac, a);
    const double r = ac.turnRate * DEG_PER_RAD * TICKS_PER_SECOND * lf_turnFactor(front.speed);
    if (!(r > 0)) return false;
    const double L = gf_distanceNm(lf_pos(front), lf_pos(next)) * METRES_PER_NM;
    if (L < (front.speed >= 10 ? 12 : 5)) return lf_makeTurnIf(ac, a);
    const double lead = std::clamp(front.speed / KNOTS_PER_MPS * std::clamp(a / r, 1.5, 6.0),
                                   LEAD_MIN_M, LEAD_MAX_M);
    if (lead >= 0.75 * L) return lf_makeTurnIf(ac, a);
    if (a <= 45 && L < 50) return lf_makeTurnIf(ac, a);
    // The curve must begin later: a point where it is to begin.
    const double f = std::clamp((L - lead) / L, 0.0, 1.0);
    StreamPoint start = front;
    start.lat = front.lat + (next.lat - front.lat) * f;
    start.lon = front.lon + gf_foldAngle((next.lon - front.lon) * RAD_PER_DEG) * DEG_PER_RAD * f;
    // Its speed lies between those of the leg's ends, as its time does: a
    // copy of a front at rest would time the leg as if it stood still.
    start.speed = front.speed + (next.speed - front.speed) * f;
    start.inserted = 1;
    start.same = 0;
    start.time = front.time + static_cast<std::int32_t>(std::lround((next.time - front.time) * f));
    ac.stream.insert(1, start);
    return true;
}

void makeTurnGnd(LiveAircraft& ac) {
    if (ac.stream.size() < 3) return;
    StreamPoint& third = ac.stream[2];
    if (third.same != 0) {
        gf_logLine(fmt::format("{}: unexpected same at stream[2], {}", "makeTurnGnd", ac.callsign));
        return;
    }
    if (third.speed <= 0.1) third.speed = (ac.stream.front().speed + ac.stream[1].speed) / 2;
    // The curve ends on the leg after the corner, as far past the corner as
    // it begins before it. Where the way bends on at the point after, at
    // most halfway, where the curve round that bend begins: consecutive
    // curves then join without a kink.
    StreamPoint& corner = ac.stream[1];
    const double in_m = gf_distanceNm(lf_pos(ac), lf_pos(corner)) * METRES_PER_NM;
    const double out_m = gf_distanceNm(lf_pos(corner), lf_pos(third)) * METRES_PER_NM;
    double bendAfter = 0;
    if (ac.stream.size() >= 4 && ac.stream[3].same == 0 && !lf_samePoint(third, ac.stream[3])) {
        bendAfter = std::abs(gf_foldAngle(gf_bearing(lf_pos(third), lf_pos(ac.stream[3])) -
                                          gf_bearing(lf_pos(corner), lf_pos(third))));
    }
    const double most = bendAfter > SMALL_BEND_AFTER ? 0.5 : 1.0;
    const double f = out_m > 0 ? std::clamp(in_m / out_m, 0.0, most) : 1.0;
    StreamPoint end = third;
    end.lat = corner.lat + (third.lat - corner.lat) * f;
    end.lon = corner.lon + gf_foldAngle((third.lon - corner.lon) * RAD_PER_DEG) * DEG_PER_RAD * f;
    end.alt = corner.alt + (third.alt - corner.alt) * f;
    end.speed = corner.speed + (third.speed - corner.speed) * f;
    end.time = corner.time + static_cast<std::int32_t>(std::lround((third.time - corner.time) * f));
    end.inserted = f < 1 ? 1 : third.inserted;
    ac.curve = gf_makeGroundCurve(lf_pos(ac), lf_pos(corner), lf_pos(end));
    if (f < 1) {
        corner = end;
    } else {
        ac.stream.erase(1);
    }
}

}  // namespace tfx
