// The user aircraft of the built-in simulator, flown by the scenario's path.
#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

#include "sim/builtin/builtin_sim_internal.h"
#include "sim/builtin/builtin_sim_terrain.h"

namespace tfx::bsim {

namespace {

constexpr double kFeetPerSecondPerKnot = 1.68781;
constexpr double kMetresPerSecondPerKnot = 0.514444;
constexpr double kGravity_mps2 = 9.80665;
constexpr double kMaxBank_deg = 30;
constexpr double kRadToDeg = 180.0 / std::numbers::pi;

struct Fix {
    double lat_deg, lon_deg, alt_ft;
    bool onGround;
};

Fix lf_fix(const Scenario& world, const PathPoint& p, double cg_ft) {
    if (p.alt_ft) return {p.lat_deg, p.lon_deg, *p.alt_ft, false};
    return {p.lat_deg, p.lon_deg, gf_groundAltitudeFt(world, p.lat_deg, p.lon_deg) + cg_ft, true};
}

void lf_standStill(SimObject& u, const Fix& at, double heading_deg) {
    u.lat_deg = at.lat_deg;
    u.lon_deg = at.lon_deg;
    u.alt_ft = at.alt_ft;
    u.heading_deg = u.track_deg = heading_deg;
    u.gs_kt = u.tas_kt = u.vs_fpm = 0;
    u.pitch_deg = at.onGround ? u.staticPitch_deg : 0;
    u.bank_deg = 0;
}

// The heading on the leg from a to b: its bearing, or the reverse on a leg
// driven backwards (pushed back by a tug).
double lf_bearing(const PathPoint& a, const PathPoint& b, double fallback_deg) {
    if (gf_greatCircleNm(a.lat_deg, a.lon_deg, b.lat_deg, b.lon_deg) < 1e-6) return fallback_deg;
    const double bearing_deg = gf_initialBearingDeg(a.lat_deg, a.lon_deg, b.lat_deg, b.lon_deg);
    return b.backwards ? std::fmod(bearing_deg + 180, 360.0) : bearing_deg;
}

// The bank of a coordinated turn from this leg's heading to the next one's,
// spread over this leg.
double lf_bankDeg(const std::vector<PathPoint>& path, std::size_t leg, bool loop,
                  double heading_deg, double gs_kt) {
    std::size_t next = leg + 1;
    if (next + 1 >= path.size()) {
        if (!loop) return 0;
        next = 0;
    }
    const double nextHeading_deg = lf_bearing(path[next], path[next + 1], heading_deg);
    const double turn_deg = std::remainder(nextHeading_deg - heading_deg, 360.0);
    const double legTime_s = path[leg + 1].t_s - path[leg].t_s;
    if (legTime_s <= 0) return 0;
    const double rate_rad_s = turn_deg / kRadToDeg / legTime_s;
    const double bank_deg =
        std::atan(gs_kt * kMetresPerSecondPerKnot * rate_rad_s / kGravity_mps2) * kRadToDeg;
    return -std::clamp(bank_deg, -kMaxBank_deg, kMaxBank_deg);
}

}  // namespace

void gf_resetUserAircraft(SimWorld& world) {
    SimObject& u = gf_userAircraft(world);
    const UserScenario& s = world.scenario.user;
    u.objectId = world.config.user_object_id;
    u.isUser = true;
    u.title = s.title;
    u.atcModel = s.atc_model;
    u.atcId = s.atc_id;
    StaticAttitude attitude = gf_staticAttitudeOfModel(s.model);
    if (s.static_cg_ft) attitude.cg_ft = *s.static_cg_ft;
    if (s.static_pitch_deg) attitude.pitch_deg = *s.static_pitch_deg;
    u.staticCg_ft = attitude.cg_ft;
    u.staticPitch_deg = attitude.pitch_deg;
    u.lightsMask = s.lights_mask;
    u.gearDown = true;
    u.enginesRunning = s.path.size() > 1;
    gf_placeUserAircraft(world);
}

void gf_placeUserAircraft(SimWorld& world) {
    SimObject& u = gf_userAircraft(world);
    const UserScenario& s = world.scenario.user;
    const Scenario& sc = world.scenario;
    if (!world.flightLoaded || s.path.empty()) {  // the menu: nowhere
        lf_standStill(u, {0, 0, gf_groundAltitudeFt(sc, 0, 0) + u.staticCg_ft, true}, 0);
        return;
    }
    const auto& path = s.path;
    if (path.size() == 1) {
        lf_standStill(u, lf_fix(sc, path.front(), u.staticCg_ft), s.heading_deg);
        return;
    }
    double t_s = static_cast<double>(world.flightTime_us) / 1e6;
    const double span_s = path.back().t_s - path.front().t_s;
    if (s.loop && t_s > path.back().t_s) {
        t_s = path.front().t_s + std::fmod(t_s - path.front().t_s, span_s);
    }
    if (t_s <= path.front().t_s) {
        lf_standStill(u, lf_fix(sc, path[0], u.staticCg_ft),
                      lf_bearing(path[0], path[1], s.heading_deg));
        return;
    }
    const std::size_t last = path.size() - 1;
    if (t_s >= path[last].t_s) {
        lf_standStill(u, lf_fix(sc, path[last], u.staticCg_ft),
                      lf_bearing(path[last - 1], path[last], s.heading_deg));
        return;
    }
    std::size_t i = 0;
    while (path[i + 1].t_s <= t_s) ++i;
    const PathPoint& a = path[i];
    const PathPoint& b = path[i + 1];
    const Fix fa = lf_fix(sc, a, u.staticCg_ft);
    const Fix fb = lf_fix(sc, b, u.staticCg_ft);
    const double dt_s = b.t_s - a.t_s;
    const double f = (t_s - a.t_s) / dt_s;
    u.lat_deg = a.lat_deg + f * (b.lat_deg - a.lat_deg);
    u.lon_deg = a.lon_deg + f * (b.lon_deg - a.lon_deg);
    const bool onGround = fa.onGround && fb.onGround;
    u.alt_ft = onGround ? gf_groundAltitudeFt(sc, u.lat_deg, u.lon_deg) + u.staticCg_ft
                        : fa.alt_ft + f * (fb.alt_ft - fa.alt_ft);
    u.heading_deg = lf_bearing(a, b, u.heading_deg);
    u.track_deg = b.backwards ? std::fmod(u.heading_deg + 180, 360.0) : u.heading_deg;
    u.gs_kt = u.tas_kt =
        gf_greatCircleNm(a.lat_deg, a.lon_deg, b.lat_deg, b.lon_deg) / (dt_s / 3600.0);
    u.vs_fpm = onGround ? 0 : (fb.alt_ft - fa.alt_ft) / (dt_s / 60.0);
    // The simulator's signs: nose up is a negative pitch, a right turn a
    // negative bank.
    u.pitch_deg = onGround
                      ? u.staticPitch_deg
                      : -std::atan2(u.vs_fpm / 60.0, u.gs_kt * kFeetPerSecondPerKnot) * kRadToDeg;
    u.bank_deg = onGround ? 0 : lf_bankDeg(path, i, s.loop, u.heading_deg, u.gs_kt);
}

}  // namespace tfx::bsim
