// The built-in simulator's ground: field elevation around the scenario's
// airports, tilted and gently rolling as real airfields are, blending to a
// default height away from them, and the height and pitch at which each
// aircraft model stands on it.
#pragma once

#include <string_view>
#include <vector>

#include "sim/builtin/builtin_sim_scenario.h"

namespace tfx::bsim {

// Great-circle helpers on a sphere, degrees and nautical miles.
double gf_greatCircleNm(double lat1_deg, double lon1_deg, double lat2_deg, double lon2_deg);
double gf_initialBearingDeg(double lat1_deg, double lon1_deg, double lat2_deg, double lon2_deg);
void gf_moveAlong(double& lat_deg, double& lon_deg, double bearing_deg, double distance_nm);

// Ground altitude in feet at a position.
double gf_groundAltitudeFt(const Scenario& world, double lat_deg, double lon_deg);
// The lie of the land around an airfield, feet above or below its field
// elevation: a plane rising 0.4 % towards 060 degrees through the reference
// point, with a swell of 0.3 m every 400 m across it. Whatever stands on the
// ground must follow it; a constant height floats or sinks.
double gf_fieldReliefFt(double fieldLat_deg, double fieldLon_deg, double lat_deg, double lon_deg);

// How a model stands on the ground: height of its reference point above the
// ground and its pitch.
struct StaticAttitude {
    double cg_ft = 6.0;
    double pitch_deg = 0.5;
};
// By type code ("A20N", "B738", ...); a model not in the table gets the default.
StaticAttitude gf_staticAttitudeOfModel(std::string_view model);
StaticAttitude gf_staticAttitudeOf(const KnownTitle& title);

}  // namespace tfx::bsim
