// The stand under the user's aircraft: found in a read-only list of the park
// airport's stand positions, which any thread may read.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "airports/airport_file.h"
#include "traffic/geometry.h"

namespace tfx {

struct StandPosition {
    std::string id;
    double lat = 0, lon = 0;  // degrees
};
using StandPositions = std::vector<StandPosition>;

// Replaces the list whole after a load; an empty stand list clears it.
void gf_publishStandPositions(const std::vector<Stand>& stands);
std::shared_ptr<const StandPositions> gf_standPositions();

// The stand within 20 m of the user's aircraft on the ground, or nothing.
// Any thread; each keeps its last answer for the same list and place.
std::optional<std::string> gf_closestStandToUser(LatLon position);

}  // namespace tfx
