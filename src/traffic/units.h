// Unit constants of the traffic engine. Altitudes are feet, distances nautical
// miles, speeds knots, vertical speeds feet per minute, attitudes radians.
#pragma once

namespace tfx {

inline constexpr double METRES_PER_NM = 1852.0;
inline constexpr double FEET_PER_NM = 6076.11549;
inline constexpr double KNOTS_PER_MPS = 1.9438444924406046;
inline constexpr double NM_PER_M = 0.0005399568034557236;
inline constexpr double DEG_PER_RAD = 57.29577951308232;
inline constexpr double RAD_PER_DEG = 0.017453292519943295;
inline constexpr double PI = 3.141592653589793;
inline constexpr double TWO_PI = 6.283185307179586;

// The engine clock counts hundredths of a second.
inline constexpr int TICKS_PER_SECOND = 100;

}  // namespace tfx
