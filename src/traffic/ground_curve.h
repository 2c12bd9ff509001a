// The quadratic curve an aircraft follows in a ground turn: from the start
// over the control point to the end. Invalid while the control point is NaN.
#pragma once

#include <cmath>
#include <limits>

namespace tfx {

struct GroundCurve {
    double startLat = 0, startLon = 0;
    double controlLat = std::numeric_limits<double>::quiet_NaN();
    double controlLon = std::numeric_limits<double>::quiet_NaN();
    double endLat = 0, endLon = 0;

    bool valid() const { return !std::isnan(controlLat) && !std::isnan(controlLon); }
    void invalidate() { controlLat = controlLon = std::numeric_limits<double>::quiet_NaN(); }
};

}  // namespace tfx
