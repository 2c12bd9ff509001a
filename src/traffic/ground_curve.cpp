#include "traffic/ground_curve.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "traffic/units.h"

namespace tfx {

namespace {

// Metres per degree of latitude, and of longitude at the equator.
constexpr double METRES_PER_DEG = 111132.95;

struct Metres {
    double x = 0, y = 0;  // east, north
};

// A position in metres from the origin. The longitude difference is folded,
// so that a curve across the date line stays a short one.
Metres lf_toMetres(const GroundCurve& c, LatLon p) {
    double dLon = p.lon - c.originLon;
    if (dLon > 180) dLon -= 360;
    if (dLon < -180) dLon += 360;
    return {dLon * METRES_PER_DEG * std::cos(c.originLat * RAD_PER_DEG),
            (p.lat - c.originLat) * METRES_PER_DEG};
}

// The derivative of the curve at u (from (0, 0) over the control point to the end).
Metres lf_derivative(const GroundCurve& c, double u) {
    return {2 * (1 - u) * c.ctrlX + 2 * u * (c.endX - c.ctrlX),
            2 * (1 - u) * c.ctrlY + 2 * u * (c.endY - c.ctrlY)};
}

double lf_speed(const GroundCurve& c, double u) {
    const Metres d = lf_derivative(c, u);
    return std::hypot(d.x, d.y);
}

// Length of the curve from a to b (five-point Gauss-Legendre).
double lf_lengthBetween(const GroundCurve& c, double a, double b) {
    constexpr std::array<double, 5> x = {0, -0.5384693101056831, 0.5384693101056831,
                                         -0.9061798459386640, 0.9061798459386640};
    constexpr std::array<double, 5> w = {0.5688888888888889, 0.4786286704993665, 0.4786286704993665,
                                         0.2369268850561891, 0.2369268850561891};
    double sum = 0;
    for (std::size_t i = 0; i < x.size(); ++i)
        sum += w[i] * lf_speed(c, a + (b - a) / 2 * (x[i] + 1));
    return sum * (b - a) / 2;
}

// Length from 0 to u, in quarters: accurate to well under a percent for any
// corner a curve is made for (the speed along a sharp one dips in its middle).
double lf_lengthTo(const GroundCurve& c, double u) {
    double sum = 0;
    for (int k = 0; k < 4; ++k) sum += lf_lengthBetween(c, u * k / 4, u * (k + 1) / 4);
    return sum;
}

// The parameter at which the given share of the length is reached.
double lf_parameterAt(const GroundCurve& c, double share) {
    if (!(c.length_m > 0)) return share;
    double u = share;
    for (int i = 0; i < 4; ++i) {
        const double speed = lf_speed(c, u);
        if (!(speed > 1e-9)) break;
        u = std::clamp(u - (lf_lengthTo(c, u) - share * c.length_m) / speed, 0.0, 1.0);
    }
    return u;
}

}  // namespace

GroundCurve gf_makeGroundCurve(LatLon start, LatLon control, LatLon end) {
    GroundCurve c;
    c.originLat = start.lat;
    c.originLon = start.lon;
    const Metres ctrl = lf_toMetres(c, control);
    const Metres last = lf_toMetres(c, end);
    c.ctrlX = ctrl.x;
    c.ctrlY = ctrl.y;
    c.endX = last.x;
    c.endY = last.y;
    c.length_m = lf_lengthTo(c, 1);
    return c;
}

bool lf_curveAt(const GroundCurve& c, double t, LatLon& position, double& heading) {
    if (!c.valid() || !(t >= c.tStart && t <= c.tEnd) || !(c.tEnd > c.tStart)) return false;
    const double u = lf_parameterAt(c, (t - c.tStart) / (c.tEnd - c.tStart));
    const double v = 1 - u;
    const double x = 2 * v * u * c.ctrlX + u * u * c.endX;
    const double y = 2 * v * u * c.ctrlY + u * u * c.endY;
    const Metres d = lf_derivative(c, u);
    const double cosLat = std::cos(c.originLat * RAD_PER_DEG);
    const double lat = c.originLat + y / METRES_PER_DEG;
    const double lon = std::remainder(c.originLon + x / (METRES_PER_DEG * cosLat), 360.0);
    if (!std::isfinite(lat) || !std::isfinite(lon)) return false;
    position = {lat, lon};
    heading = gf_normalizeHeading(std::atan2(d.x, d.y));
    return true;
}

}  // namespace tfx
