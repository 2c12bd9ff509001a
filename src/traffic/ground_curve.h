// The quadratic curve an aircraft follows round a corner on the ground: from
// where it is, over the corner as control point, to a point after the
// corner. Kept in metres north (y) and east (x) of its origin.
#pragma once

#include <cmath>
#include <limits>

#include "traffic/geometry.h"

namespace tfx {

struct GroundCurve {
    double originLat = 0, originLon = 0;  // start of the curve, degrees
    double tStart = 0, tEnd = 1;          // parameter range: shares of the curve's length
    double endY = 0, endX = 0;            // end point, metres north and east of the origin
    double ctrlX = std::numeric_limits<double>::quiet_NaN();  // control point, metres;
    double ctrlY = std::numeric_limits<double>::quiet_NaN();  // NaN: no valid curve
    double length_m = 0;                                      // along the curve

    bool valid() const { return !std::isnan(ctrlX) && !std::isnan(ctrlY); }
    void invalidate() { ctrlX = ctrlY = std::numeric_limits<double>::quiet_NaN(); }
};

// The curve from start over control to end.
GroundCurve gf_makeGroundCurve(LatLon start, LatLon control, LatLon end);
// The position and heading (radians, 0 .. 2 pi) at t, the share of the
// curve's length travelled, so that equal steps of t are equal distances;
// false when the curve is invalid or t lies outside its range.
bool lf_curveAt(const GroundCurve& curve, double t, LatLon& position, double& heading);

}  // namespace tfx
