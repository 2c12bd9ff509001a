// Flight along the position stream: how an accepted message enters the
// stream, how the next point is taken, the air steps, the extrapolation when
// data fail, and the per-tick step.
#pragma once

#include <cstdint>

#include "traffic/aircraft.h"

namespace tfx {

// Takes the position block of an accepted message into the stream.
void decodeExisting(LiveAircraft& ac, StreamPoint& p);
// Whether to go on with p, by the flight state; may change p.
bool checkExtendingSituations(LiveAircraft& ac, StreamPoint& p);
// Called when the front point is due: plans the leg to the next point.
void nextPosMain(LiveAircraft& ac);
// Timing of an airborne leg.
void nextPosAir(LiveAircraft& ac);
// One step of the present leg, every tick.
void lf_stepAircraft(LiveAircraft& ac);
// Speed of the leg front to next, knots, at least 1: all timing uses it.
double lf_legSpeed(const LiveAircraft& ac);
// Moves the next point's time to now + ticks, within maxAdvance and maxDelay.
void lf_retime(LiveAircraft& ac, double ticks);
// Ticks to the next point, at least the shortest leg.
std::int32_t lf_ticksToNext(const LiveAircraft& ac);
// How many 3-second points an aircraft without data may extrapolate.
std::int32_t lf_extensionCount(LiveAircraft& ac);
// Appends one extrapolated point; extensions = count.
void lf_extendStream(LiveAircraft& ac, std::int32_t count);
// The end of the takeoff roll: the nose comes up.
void lf_startRotation(LiveAircraft& ac);

}  // namespace tfx
