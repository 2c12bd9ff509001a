// What the motion may do whatever the reports say: the fastest ground speed
// and vertical speeds of each category, and how much faster than reported a
// leg may be flown while an aircraft catches up with its data.
#pragma once

#include <array>

#include "traffic/aircraft.h"

namespace tfx {

struct MotionLimits {
    double maxSpeed_kt;     // ground speed, with the strongest tailwinds
    double maxClimb_fpm;    // vertical speed up
    double maxDescent_fpm;  // vertical speed down (a positive number)
};

// Indexed by AircraftCategory.
inline constexpr std::array<MotionLimits, 6> MOTION_LIMITS = {{
    {350, 4000, 5000},     // Light
    {650, 8000, 8000},     // Bizjet
    {750, 6000, 8000},     // Large
    {800, 5000, 7000},     // Heavy
    {1600, 40000, 40000},  // HighPerf
    {250, 5000, 4000},     // Rotorcraft
}};

// A leg is flown at most this much faster than its reported speed.
inline constexpr double CATCH_UP_FACTOR = 1.2;

const MotionLimits& gf_motionLimits(AircraftCategory category);

// Pushes the time of the next point back so that the leg from where the
// aircraft is now is flown no faster than its speed allows (tick thread).
void lf_limitLegSpeed(LiveAircraft& ac);
// Keeps the altitude step and the vertical speed within the category's limits.
void lf_limitVerticalSpeed(LiveAircraft& ac);

}  // namespace tfx
