// Helpers shared by the files of the flight motion. Tick thread only.
#pragma once

#include <cstdint>

#include "traffic/aircraft.h"
#include "traffic/aircraft_tables.h"
#include "traffic/geometry.h"
#include "traffic/units.h"

namespace tfx {

// The shortest time any leg gets, ticks.
inline constexpr std::int32_t SHORTEST_LEG_TICKS = 25;
// Limits of the re-planning window, ticks: at rest, and after a jump in the data.
inline constexpr std::int32_t DELAY_LIMIT_REST = 900;
inline constexpr std::int32_t DELAY_LIMIT_JUMP = 2700;
inline constexpr std::int32_t DELAY_LIMIT_TAKEOFF_ROLL = 4500;
// One extrapolated point stands for this many ticks.
inline constexpr std::int32_t EXTENSION_TICKS = 300;
// Largest heading change accepted in one tick, radians.
inline constexpr double MAX_HEADING_STEP = 0.06283185307179587;

inline LatLon lf_pos(const StreamPoint& p) {
    return {p.lat, p.lon};
}
inline LatLon lf_pos(const LiveAircraft& ac) {
    return {ac.lat, ac.lon};
}
inline bool lf_samePoint(const StreamPoint& a, const StreamPoint& b) {
    return gf_samePosition(lf_pos(a), lf_pos(b));
}
inline bool lf_isRotorcraft(const AircraftBase& ac) {
    return ac.category == AircraftCategory::Rotorcraft;
}
inline const CategoryRow& lf_categoryRow(const AircraftBase& ac) {
    return CATEGORY_TABLE[static_cast<std::size_t>(ac.category) % CATEGORY_TABLE.size()];
}
// Limits of the category, radians and radians per tick.
inline double lf_bankLimit(const AircraftBase& ac) {
    return lf_categoryRow(ac).bankLimit_deg * RAD_PER_DEG;
}
inline double lf_pitchRatePerTick(const AircraftBase& ac) {
    return lf_categoryRow(ac).pitchRateLimit_degps * RAD_PER_DEG / TICKS_PER_SECOND;
}
inline double lf_bankRatePerTick(const AircraftBase& ac) {
    return lf_categoryRow(ac).bankRateLimit_degps * RAD_PER_DEG / TICKS_PER_SECOND;
}
// Metres that p lies behind `from` along the aircraft's heading (negative: ahead).
inline double lf_behind_m(const LiveAircraft& ac, LatLon from, const StreamPoint& p) {
    return -gf_relativePosition(from, ac.heading, lf_pos(p)).along_m;
}
// A value one step of 100 ticks closer to the resting limit.
inline std::int32_t lf_towardsRest(std::int32_t limit) {
    if (limit > DELAY_LIMIT_REST)
        return limit - 100 < DELAY_LIMIT_REST ? DELAY_LIMIT_REST : limit - 100;
    return limit;
}

// The extrapolation ends: the stream is real again.
void lf_endExtension(LiveAircraft& ac);
// Whether a new point is taken up, by position against the newest point.
bool lf_checkNewPos(LiveAircraft& ac, StreamPoint& p);
// The step from front to next.
void lf_nextPos(LiveAircraft& ac);
// Steps of altitude, pitch, heading and bank for an airborne leg, and the
// configuration that goes with it.
void lf_setAirSteps(LiveAircraft& ac);
// Lights, gear, flaps and throttle below 10,000 feet; may start a landing.
void lf_lowConfiguration(LiveAircraft& ac);
// Removal of an aircraft whose stream has ended.
void lf_noMoreNextPos(LiveAircraft& ac);

}  // namespace tfx
