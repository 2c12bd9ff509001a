// The last stretch to a stand. An aircraft that stopped short of it, beside
// it or turned away from it drives in slowly over a point on the stand's
// axis: a lead-in point 10 m out when it must line up first, else one
// halfway back, so that it arrives lined up. One that stopped just past it,
// lined up, stays where it is.
#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "airports/airport_file.h"
#include "app/log.h"
#include "traffic/flight_motion_internal.h"
#include "traffic/ground_motion.h"

namespace tfx {

namespace {

// The lead-in point lies this far before the stand on its axis.
constexpr double LEAD_IN_FT = 32.808398950131235;  // 10 m
// Ticks for the 10 m from the lead-in point at one knot.
constexpr double LEAD_IN_TICKS_AT_1KT = 1943.8444924406049;
constexpr std::int32_t SHORTEST_STRETCH_TICKS = 100;
constexpr std::int32_t FINAL_STOP_TICKS = 50;
// Past the stand by more than this counts as ahead of it, metres.
constexpr double AHEAD_M = 3;
constexpr double FEET_PER_M = 3.280839895013123;
// The axis point of a short approach lies at least this far back, metres.
constexpr double AXIS_MIN_M = 1;

// Heading tolerance of an aircraft that stands just past the stand: 4 degrees
// at 12 m, rising to 10 degrees at 3.5 m and closer.
double lf_lineUpTolerance_deg(double d_m) {
    const double x = (std::clamp(d_m, 3.5, 12.0) - 3.5) / (12.0 - 3.5);
    return 10 - 6 * x;
}

std::int32_t lf_ticksAt(double dist_nm, double speed_kt) {
    return std::max(SHORTEST_STRETCH_TICKS,
                    static_cast<std::int32_t>(std::lround(dist_nm * 360000.0 / speed_kt)));
}

StreamPoint lf_standPoint(const LiveAircraft& ac, LatLon at, double heading, double speed_kt) {
    StreamPoint p;
    p.lat = at.lat;
    p.lon = at.lon;
    p.alt = ac.alt;
    p.speed = speed_kt;
    p.tas = speed_kt;
    p.track = heading * DEG_PER_RAD;
    p.hasAttitude = ac.stream.front().hasAttitude;
    p.bank = ac.bank;
    p.bankValid = 1;
    p.heading = heading;
    p.headingValid = 1;
    return p;
}

}  // namespace

void drive2Stand(LiveAircraft& ac, const Stand& stand) {
    if (ac.stream.size() != 1) {
        gf_logLine(fmt::format("{} unexpected stream size: {}, {}", "drive2Stand", ac.stream.size(),
                               ac.callsign));
        ac.stream.truncate(1);
        if (ac.stream.empty()) return;
    }
    const LatLon standPos{stand.latitude, stand.longitude};
    const RelativePosition r = gf_relativePosition(standPos, stand.heading, lf_pos(ac));
    const double h_deg = std::abs(gf_foldAngle(gf_normalizeHeading(stand.heading) -
                                               gf_normalizeHeading(ac.heading))) *
                         DEG_PER_RAD;
    const double v = std::max(ac.pushbackSpeed * 0.8, 1.0);
    const bool ahead = r.along_m > AHEAD_M;
    const bool linedUp = ahead && r.dist_m <= 12 && h_deg <= lf_lineUpTolerance_deg(r.dist_m);
    if (!linedUp) {
        const bool detour = !ahead && (r.dist_m > 15 || h_deg >= 45 || std::abs(r.cross_m) > 8);
        std::int32_t lastTicks = 0;
        if (detour) {
            const LatLon leadIn = gf_projectPosition(standPos, stand.heading + PI, LEAD_IN_FT);
            StreamPoint p = lf_standPoint(ac, leadIn, stand.heading, v);
            p.time = ac.stream.front().time + lf_ticksAt(gf_distanceNm(lf_pos(ac), leadIn), v);
            ac.stream.push_back(p);
            ac.maxAdvance = DELAY_LIMIT_JUMP;
            ac.maxDelay = ac.flightState == FlightState::takeoff_roll ? DELAY_LIMIT_TAKEOFF_ROLL
                                                                      : DELAY_LIMIT_JUMP;
            lastTicks = std::max(SHORTEST_STRETCH_TICKS,
                                 static_cast<std::int32_t>(std::lround(LEAD_IN_TICKS_AT_1KT / v)));
        } else if (ahead) {
            lastTicks = lf_ticksAt(r.dist_m * NM_PER_M, v);
            ac.stream.back().speed = ac.stream.back().tas = 0;
        } else {
            // Short of the stand, a point on its axis halfway back lets the
            // aircraft curve onto the axis and arrive lined up, rather than
            // crabbing over to the stand.
            const double back_m = std::clamp(-r.along_m / 2, AXIS_MIN_M, LEAD_IN_FT / FEET_PER_M);
            const LatLon onAxis =
                gf_projectPosition(standPos, stand.heading + PI, back_m * FEET_PER_M);
            StreamPoint p = lf_standPoint(ac, onAxis, stand.heading, v);
            p.time = ac.stream.front().time + lf_ticksAt(gf_distanceNm(lf_pos(ac), onAxis), v);
            ac.stream.push_back(p);
            lastTicks = lf_ticksAt(back_m * NM_PER_M, v);
        }
        StreamPoint p = lf_standPoint(ac, standPos, stand.heading, 0);
        p.time = ac.stream.back().time + lastTicks;
        ac.stream.push_back(p);
    }
    StreamPoint stop = ac.stream.back();
    stop.same = 1;
    stop.time += FINAL_STOP_TICKS;
    ac.stream.push_back(stop);
    ac.targetHeading = stand.heading;
    if (ac.extensions > 0) lf_endExtension(ac);
}

}  // namespace tfx
