// No aircraft moves faster than its speed allows: a leg that the timing of
// the data (or a late start) would compress is stretched instead, and the
// aircraft catches up at most a fifth faster than reported. A report beyond
// what the category can do is followed only at the category's limit.
#include "traffic/motion_limits.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "traffic/clock.h"
#include "traffic/flight_motion.h"
#include "traffic/flight_motion_internal.h"

namespace tfx {

namespace {

constexpr double FPM_PER_FT_PER_TICK = 6000;

double lf_positiveOr0(double v) {
    return std::isfinite(v) && v > 0 ? v : 0;
}

}  // namespace

const MotionLimits& gf_motionLimits(AircraftCategory category) {
    return MOTION_LIMITS[static_cast<std::size_t>(category) % MOTION_LIMITS.size()];
}

void lf_limitLegSpeed(LiveAircraft& ac) {
    if (ac.stream.size() < 2) return;
    StreamPoint& next = ac.stream[1];
    if (next.same != 0) return;
    double reported_kt =
        std::max(lf_positiveOr0(ac.stream.front().speed), lf_positiveOr0(next.speed));
    if (reported_kt <= 0) reported_kt = lf_legSpeed(ac);
    const double allowed_kt =
        std::min(reported_kt * CATCH_UP_FACTOR, gf_motionLimits(ac.category).maxSpeed_kt);
    // On the ground the way may be a curve, and a leg that eases in or out
    // is at its fastest faster than on average: the limit holds there.
    const bool curve = ac.onGround != 0 && ac.curve.valid();
    const double dist_nm =
        curve ? ac.curve.length_m * NM_PER_M : gf_distanceNm(lf_pos(ac), lf_pos(next));
    double peak = 1;
    if (ac.onGround != 0) {
        const double v0 = lf_positiveOr0(ac.stream.front().speed), v1 = lf_positiveOr0(next.speed);
        if (ac.legEase == 1 || ac.legEase == 2) peak = 2;
        if (ac.legEase == 3) peak = 1.5;
        if (ac.legEase == 4 && v0 + v1 > 0) peak = std::max(v0, v1) / ((v0 + v1) / 2);
    }
    const double shortest = dist_nm * peak / allowed_kt * 360000.0;
    if (!std::isfinite(shortest)) return;
    const std::int64_t earliest =
        static_cast<std::int64_t>(gf_simTick()) + static_cast<std::int64_t>(std::ceil(shortest));
    if (next.time >= earliest) return;
    next.time = static_cast<std::int32_t>(
        std::min<std::int64_t>(earliest, std::numeric_limits<std::int32_t>::max()));
}

void lf_limitVerticalSpeed(LiveAircraft& ac) {
    const MotionLimits& limits = gf_motionLimits(ac.category);
    ac.stepAlt = std::clamp(ac.stepAlt, -limits.maxDescent_fpm / FPM_PER_FT_PER_TICK,
                            limits.maxClimb_fpm / FPM_PER_FT_PER_TICK);
    ac.nextVs = std::clamp(ac.nextVs, -limits.maxDescent_fpm, limits.maxClimb_fpm);
}

}  // namespace tfx
