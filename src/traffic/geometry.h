// Geometry shared by all traffic code. Positions are degrees; bearings and
// headings radians; distances nautical miles unless a name says otherwise.
#pragma once

namespace tfx {

struct LatLon {
    double lat = 0;
    double lon = 0;
};

// Haversine distance.
double gf_distanceNm(LatLon a, LatLon b);
// Great-circle initial bearing from a to b, 0 .. 2 pi.
double gf_bearing(LatLon a, LatLon b);
// The point reached from a along bearing over distance_ft.
LatLon gf_projectPosition(LatLon a, double bearing, double distance_ft);
// Flat clearance test of two circles: true when they touch or overlap.
bool gf_withinNm(LatLon a, double radiusA_nm, LatLon b, double radiusB_nm);

struct RelativePosition {
    double dist_m = 0;
    double relBearing = 0;  // radians, -pi .. pi, 0 is straight ahead
    double along_m = 0;     // negative is behind
    double cross_m = 0;     // positive is to the right
};
// Where b lies as seen from a with the given heading.
RelativePosition gf_relativePosition(LatLon a, double heading, LatLon b);

// x into 0 .. 2 pi; NaN or infinite gives 0.
double gf_normalizeHeading(double x);
// A heading difference folded into -pi .. pi (one turn added or taken).
double gf_foldAngle(double difference);
// Both coordinates closer than 1e-8 degrees.
bool gf_samePosition(LatLon a, LatLon b);

}  // namespace tfx
