// Ground altitude and static attitude of the built-in simulator.
#include "sim/builtin/builtin_sim_terrain.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace tfx::bsim {

namespace {

constexpr double kEarthRadiusNm = 3440.065;
constexpr double kRad = std::numbers::pi / 180.0;
constexpr double kMetresPerDeg = 111132.95;
constexpr double kFeetPerMetre = 3.280839895013123;
// The tilt of the airfield: grade, and the bearing it rises towards.
constexpr double kTiltGrade = 0.004;
constexpr double kTiltBearingDeg = 60;
// The swell across it: height either way and wavelength, metres, and the
// bearing along which it rolls.
constexpr double kSwellM = 0.3;
constexpr double kSwellWavelengthM = 400;
constexpr double kSwellBearingDeg = 150;

struct ModelAttitude {
    std::string_view model;
    StaticAttitude attitude;
};

// Rough figures by size class: what matters is that they differ per model
// and stay put, so that a client's ground clamp can be checked.
constexpr ModelAttitude kModels[] = {
    {"C172", {3.1, 1.0}},  {"C208", {4.2, 0.8}},  {"DA62", {3.4, 0.3}},  {"TBM9", {4.0, 0.6}},
    {"CRJ7", {6.3, 0.6}},  {"E190", {7.1, 0.5}},  {"E195", {7.2, 0.5}},  {"A319", {8.0, 0.4}},
    {"A320", {8.1, 0.4}},  {"A20N", {8.2, 0.4}},  {"A321", {8.4, 0.3}},  {"A21N", {8.5, 0.3}},
    {"B737", {7.4, 0.7}},  {"B738", {7.6, 0.7}},  {"B38M", {7.7, 0.7}},  {"B739", {7.8, 0.6}},
    {"B752", {9.0, 0.5}},  {"B763", {10.2, 0.4}}, {"B772", {11.5, 0.3}}, {"B77W", {11.8, 0.3}},
    {"B788", {10.9, 0.4}}, {"B789", {11.0, 0.4}}, {"B78X", {11.2, 0.4}}, {"A332", {10.8, 0.3}},
    {"A333", {10.9, 0.3}}, {"A359", {11.3, 0.3}}, {"A388", {13.5, 0.2}}, {"B748", {13.0, 0.2}},
    {"B744", {12.8, 0.2}},
};

}  // namespace

double gf_greatCircleNm(double lat1_deg, double lon1_deg, double lat2_deg, double lon2_deg) {
    const double dLat = (lat2_deg - lat1_deg) * kRad;
    const double dLon = (lon2_deg - lon1_deg) * kRad;
    const double a = std::sin(dLat / 2) * std::sin(dLat / 2) +
                     std::cos(lat1_deg * kRad) * std::cos(lat2_deg * kRad) * std::sin(dLon / 2) *
                         std::sin(dLon / 2);
    return 2 * kEarthRadiusNm * std::asin(std::min(1.0, std::sqrt(a)));
}

double gf_initialBearingDeg(double lat1_deg, double lon1_deg, double lat2_deg, double lon2_deg) {
    const double p1 = lat1_deg * kRad, p2 = lat2_deg * kRad;
    const double dLon = (lon2_deg - lon1_deg) * kRad;
    const double y = std::sin(dLon) * std::cos(p2);
    const double x = std::cos(p1) * std::sin(p2) - std::sin(p1) * std::cos(p2) * std::cos(dLon);
    const double deg = std::atan2(y, x) / kRad;
    return deg < 0 ? deg + 360 : deg;
}

void gf_moveAlong(double& lat_deg, double& lon_deg, double bearing_deg, double distance_nm) {
    const double d = distance_nm / kEarthRadiusNm;
    const double b = bearing_deg * kRad;
    const double p1 = lat_deg * kRad, l1 = lon_deg * kRad;
    const double p2 =
        std::asin(std::sin(p1) * std::cos(d) + std::cos(p1) * std::sin(d) * std::cos(b));
    const double l2 = l1 + std::atan2(std::sin(b) * std::sin(d) * std::cos(p1),
                                      std::cos(d) - std::sin(p1) * std::sin(p2));
    lat_deg = p2 / kRad;
    lon_deg = std::remainder(l2 / kRad, 360.0);
}

double gf_groundAltitudeFt(const Scenario& world, double lat_deg, double lon_deg) {
    // The nearest airport whose blend ring reaches the position decides.
    const ScenarioAirport* nearest = nullptr;
    double nearestNm = 0;
    for (const ScenarioAirport& a : world.airports) {
        const double nm = gf_greatCircleNm(lat_deg, lon_deg, a.lat_deg, a.lon_deg);
        if (nm < 2 * a.radius_nm && (nearest == nullptr || nm < nearestNm)) {
            nearest = &a;
            nearestNm = nm;
        }
    }
    if (nearest == nullptr) return world.default_ground_ft;
    const double relief = gf_fieldReliefFt(nearest->lat_deg, nearest->lon_deg, lat_deg, lon_deg);
    if (nearestNm <= nearest->radius_nm) return nearest->elevation_ft + relief;
    const double share = (nearestNm - nearest->radius_nm) / nearest->radius_nm;  // 0..1
    return nearest->elevation_ft + (1 - share) * relief +
           share * (world.default_ground_ft - nearest->elevation_ft);
}

double gf_fieldReliefFt(double fieldLat_deg, double fieldLon_deg, double lat_deg, double lon_deg) {
    const double north = (lat_deg - fieldLat_deg) * kMetresPerDeg;
    const double east = std::remainder(lon_deg - fieldLon_deg, 360.0) * kMetresPerDeg *
                        std::cos(fieldLat_deg * kRad);
    const auto along = [&](double bearing_deg) {
        return north * std::cos(bearing_deg * kRad) + east * std::sin(bearing_deg * kRad);
    };
    const double tilt_m = kTiltGrade * along(kTiltBearingDeg);
    const double swell_m =
        kSwellM * std::sin(2 * std::numbers::pi * along(kSwellBearingDeg) / kSwellWavelengthM);
    return (tilt_m + swell_m) * kFeetPerMetre;
}

StaticAttitude gf_staticAttitudeOfModel(std::string_view model) {
    for (const ModelAttitude& m : kModels) {
        if (m.model == model) return m.attitude;
    }
    return StaticAttitude{};
}

StaticAttitude gf_staticAttitudeOf(const KnownTitle& title) {
    StaticAttitude a = gf_staticAttitudeOfModel(title.model);
    if (title.static_cg_ft) a.cg_ft = *title.static_cg_ft;
    if (title.static_pitch_deg) a.pitch_deg = *title.static_pitch_deg;
    return a;
}

}  // namespace tfx::bsim
