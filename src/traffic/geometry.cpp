#include "traffic/geometry.h"

#include <cmath>

#include "traffic/units.h"

namespace tfx {

namespace {
// Twice the earth's radius in nautical miles.
constexpr double EARTH_DIAMETER_NM = 6875.493541569878;
// Radians of arc per foot along the earth's surface.
constexpr double RAD_PER_FOOT = 4.787404208238998e-8;
}  // namespace

double gf_distanceNm(LatLon a, LatLon b) {
    const double lat1 = a.lat * RAD_PER_DEG;
    const double lat2 = b.lat * RAD_PER_DEG;
    const double sinDLat = std::sin((lat2 - lat1) / 2);
    const double sinDLon = std::sin((b.lon - a.lon) * RAD_PER_DEG / 2);
    const double h = sinDLat * sinDLat + std::cos(lat1) * std::cos(lat2) * sinDLon * sinDLon;
    return EARTH_DIAMETER_NM * std::atan2(std::sqrt(h), std::sqrt(1 - h));
}

double gf_bearing(LatLon a, LatLon b) {
    const double lat1 = a.lat * RAD_PER_DEG;
    const double lat2 = b.lat * RAD_PER_DEG;
    const double dLon = (b.lon - a.lon) * RAD_PER_DEG;
    const double y = std::sin(dLon) * std::cos(lat2);
    const double x =
        std::cos(lat1) * std::sin(lat2) - std::sin(lat1) * std::cos(lat2) * std::cos(dLon);
    return gf_normalizeHeading(std::atan2(y, x));
}

LatLon gf_projectPosition(LatLon a, double bearing, double distance_ft) {
    const double d = distance_ft * RAD_PER_FOOT;
    const double lat1 = a.lat * RAD_PER_DEG;
    const double lon1 = a.lon * RAD_PER_DEG;
    const double lat2 =
        std::asin(std::sin(lat1) * std::cos(d) + std::cos(lat1) * std::sin(d) * std::cos(bearing));
    const double lon2 = lon1 + std::atan2(std::sin(bearing) * std::sin(d) * std::cos(lat1),
                                          std::cos(d) - std::sin(lat1) * std::sin(lat2));
    return {lat2 * DEG_PER_RAD, std::remainder(lon2, TWO_PI) * DEG_PER_RAD};
}

bool gf_withinNm(LatLon a, double radiusA_nm, LatLon b, double radiusB_nm) {
    const double r = radiusA_nm + radiusB_nm;
    if (!(r > 0)) return false;
    const double dLat = (b.lat - a.lat) * 60;
    const double dLon = std::cos(a.lat * RAD_PER_DEG) * (b.lon - a.lon) * 60;
    return r * r >= dLat * dLat + dLon * dLon;
}

RelativePosition gf_relativePosition(LatLon a, double heading, LatLon b) {
    RelativePosition r;
    r.dist_m = gf_distanceNm(a, b) * METRES_PER_NM;
    if (r.dist_m <= 0.1) return r;
    r.relBearing = gf_foldAngle(gf_bearing(a, b) - heading);
    r.along_m = std::cos(r.relBearing) * r.dist_m;
    r.cross_m = std::sin(r.relBearing) * r.dist_m;
    return r;
}

double gf_normalizeHeading(double x) {
    if (!std::isfinite(x)) return 0;
    double h = std::fmod(x, TWO_PI);
    if (h < 0) h += TWO_PI;
    if (h >= TWO_PI) h = 0;  // a tiny negative x rounds up to a full turn
    return h;
}

double gf_foldAngle(double difference) {
    if (difference > PI) return difference - TWO_PI;
    if (difference < -PI) return difference + TWO_PI;
    return difference;
}

bool gf_samePosition(LatLon a, LatLon b) {
    return std::fabs(a.lat - b.lat) < 1e-8 && std::fabs(a.lon - b.lon) < 1e-8;
}

}  // namespace tfx
