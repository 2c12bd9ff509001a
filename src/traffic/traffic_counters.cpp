#include "traffic/traffic_counters.h"

#include <algorithm>

#include "traffic/traffic_tables.h"

namespace tfx {

TrafficCounters trafficCounters;

std::int64_t gf_liveCountIn(SimState state) {
    return std::count_if(liveAircraft.begin(), liveAircraft.end(),
                         [state](const LiveAircraft& ac) { return ac.simState == state; });
}

}  // namespace tfx
