// Ground motion: an aircraft on the ground keeps to the simulator's ground
// height, rounds the corners of its stream with curves, gets points inserted
// so that legs stay short, and eases speed in and out at the ends of legs.
#pragma once

#include <cstdint>

#include "sim/sim_message.h"
#include "traffic/aircraft.h"

namespace tfx {

struct Stand;

// The first handling of an aircraft created on the ground.
void hp_handleGroundTraffic(LiveAircraft& ac);
// A position report of an object (SimMessage kind 3).
void lf_onPositionReport(const SimMessage& message);

// Plans the leg from front to next of an aircraft on the ground, by state.
void nextPosGround(LiveAircraft& ac);
// The steps of a ground leg: configuration, attitude, curve or speed profile.
void lf_setGroundSteps(LiveAircraft& ac);
// Re-times a stop so that it keeps its length as the data have it.
void lf_retimeSame(LiveAircraft& ac);
// Times the leg front to next by its length and speed, and sets the turn
// rate so that a turn fits into the leg.
void lf_timeGroundLeg(LiveAircraft& ac);

// Whether, and how, the corner at next gets a curve; true when the leg was
// changed (a curve made, or a point inserted where the curve is to begin).
bool lf_planTurn(LiveAircraft& ac);
// A curve round the corner at next to the third point, which replaces next.
void makeTurnGnd(LiveAircraft& ac);
// A point halfway between front and next.
void lf_insertMidpoint(LiveAircraft& ac);
// A long leg gets a midpoint: with stopping, one that ends in a stop.
void lf_splitLongLeg(LiveAircraft& ac, bool stopping);

// The last stretch to a stand: a lead-in on the stand's axis where needed,
// the stand, and a stop on it.
void drive2Stand(LiveAircraft& ac, const Stand& stand);

// Leg speed profiles: 0 constant, 1 accelerating from rest, 2 decelerating
// to rest, 3 both, 4 from the front's speed evenly to the next's.
inline constexpr std::uint32_t EASE_NONE = 0, EASE_IN = 1, EASE_OUT = 2, EASE_BOTH = 3,
                               EASE_RAMP = 4;
// Share of the leg covered at time share t (0 .. 1) with the profile (1 .. 3).
double lf_ease(double t, std::uint32_t mode);
// The same for an even change of speed from v0 to v1 (both above 0).
double lf_rampShare(double t, double v0, double v1);
// The share of the nominal ground turn rate at a speed in knots.
double lf_turnFactor(double speed_kt);

}  // namespace tfx
