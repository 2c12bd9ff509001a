#include "traffic/controls.h"

#include <array>

#include "app/log.h"
#include "sim/sim_ids.h"
#include "sim/sim_queues.h"

namespace tfx {

namespace {

// Event values by index.
constexpr std::array<std::uint32_t, 5> THROTTLE_VALUES = {0, 4914, 8191, 11468, 16383};
constexpr std::array<std::uint32_t, 5> FLAPS_VALUES = {0, 3072, 10240, 16383, 0};

bool lf_isRotorcraft(const StaticAircraft& ac) {
    return ac.category == AircraftCategory::Rotorcraft;
}

}  // namespace

void gf_setThrottle(StaticAircraft& ac, std::uint32_t index) {
    if (index >= THROTTLE_VALUES.size() || ac.throttleIndex == index) return;
    ac.throttleIndex = index;
    gf_sendEvent(ac.objectid, EVENT_THROTTLE_SET, THROTTLE_VALUES[index]);
}

void gf_setFlaps(StaticAircraft& ac, std::uint32_t index) {
    if (index >= FLAPS_VALUES.size()) {
        gf_logLine("gf_setFlaps: invalid flaps index");
        return;
    }
    if (ac.flapsIndex == index || lf_isRotorcraft(ac)) return;
    ac.flapsIndex = index;
    gf_sendEvent(ac.objectid, EVENT_FLAPS_SET, FLAPS_VALUES[index]);
}

void gf_setSpoilers(const StaticAircraft& ac, bool on) {
    if (lf_isRotorcraft(ac)) return;
    gf_sendEvent(ac.objectid, EVENT_SPOILERS_SET, on ? 16383u : 0u);
}

void gf_setGear(const StaticAircraft& ac, bool down) {
    if (lf_isRotorcraft(ac)) return;
    gf_sendEvent(ac.objectid, EVENT_GEAR_SET, down ? 1u : 0u);
}

}  // namespace tfx
