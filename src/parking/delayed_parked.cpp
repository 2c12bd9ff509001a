// A live aircraft that has arrived at its stand shuts down as a crew would:
// engines off after a while, then the turnaround lights, then the lights of
// a parked aircraft, each at a time of its own.
#include <algorithm>
#include <vector>

#include "app/options.h"
#include "parking/parking_applier.h"
#include "parking/parking_state.h"
#include "sim/sim_queues.h"
#include "traffic/clock.h"
#include "traffic/traffic_tables.h"

namespace tfx {

namespace {

enum class DelayedKind : std::uint8_t { enginesOff = 0, turnaroundLights = 1, parkedLights = 2 };

struct DelayedParked {
    std::uint32_t hexid;
    std::int32_t dueTick;
    DelayedKind kind;
};

// Latest first, so that the due entry is at the back.
std::vector<DelayedParked> delayedParked = [] {
    std::vector<DelayedParked> v;
    v.reserve(24);
    return v;
}();

void lf_carryOut(const LiveAircraft& ac, DelayedKind kind) {
    const OptionsPtr options = gf_options();
    switch (kind) {
        case DelayedKind::enginesOff:
            gf_stopEngines(ac.objectid);
            return;
        case DelayedKind::turnaroundLights:
            gf_setLights(ac.objectid, {true, false, false, true, false, true, true});
            return;
        case DelayedKind::parkedLights: {
            const bool cabin = ac.standCargo == 0 && gf_randomBelow(10) < 9;
            gf_setLights(ac.objectid, {options->NAV_LIGHTS_WHILE_PARKED, false, false, false, false,
                                       true, cabin});
            return;
        }
    }
}

}  // namespace

void gf_addDelayedParkedCommands(const LiveAircraft& ac) {
    const std::int32_t t = ac.stream.empty() ? gf_simTick() : ac.stream.front().time;
    const auto a = static_cast<std::int32_t>(gf_randomBelow(10));
    const auto b = static_cast<std::int32_t>(gf_randomBelow(5));
    const auto c = static_cast<std::int32_t>(gf_randomBelow(100));
    delayedParked.push_back({ac.hexid, t + 1000 + a * 100, DelayedKind::enginesOff});
    delayedParked.push_back({ac.hexid, t + 1500 + (a + b) * 100, DelayedKind::turnaroundLights});
    delayedParked.push_back({ac.hexid, t + 3000 + (a + c) * 100, DelayedKind::parkedLights});
    std::stable_sort(
        delayedParked.begin(), delayedParked.end(),
        [](const DelayedParked& x, const DelayedParked& y) { return x.dueTick > y.dueTick; });
}

void lf_checkDelayedParked() {
    if (delayedParked.empty()) return;
    const DelayedParked due = delayedParked.back();
    if (due.dueTick > gf_simTick()) return;
    delayedParked.pop_back();
    const LiveAircraft* ac = gf_findLive(due.hexid);
    if (ac != nullptr && ac->flightState == FlightState::parked && ac->objectid != 0)
        lf_carryOut(*ac, due.kind);
}

void gf_dropDelayedParked(std::uint32_t hexid) {
    std::erase_if(delayedParked, [hexid](const DelayedParked& d) { return d.hexid == hexid; });
}

void gf_clearDelayedParked() {
    delayedParked.clear();
}

}  // namespace tfx
