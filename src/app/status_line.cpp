#include "app/status_line.h"

#include <algorithm>
#include <cstdio>

#include <fmt/format.h>

#include "app/deferred_output.h"
#include "app/log.h"
#include "app/run_state.h"
#include "feeds/rtapp/rt_app_position.h"
#include "feeds/rtapp/rtapp_readers.h"
#include "parking/park_airport.h"
#include "parking/parking_state.h"
#include "traffic/allocation_count.h"
#include "traffic/traffic_counters.h"
#include "traffic/traffic_tables.h"

namespace tfx {

namespace {

TickTiming timing;
std::int32_t secondsSinceLine = 0;
// The allocation counters at the last line.
std::uint64_t allocationsAtLine = 0;
std::uint64_t allocatingTicksAtLine = 0;

std::string lf_feedText() {
    if (gf_isRTDirect()) return "RT Direct";
    if (!rtAppFeedConnected.load()) return "RT App waiting for the application";
    if (gf_trafficSilent())
        return fmt::format("RT App silent for {} s ({} datagrams)", gf_trafficSilence_s(),
                           gf_trafficDatagrams());
    return fmt::format("RT App connected ({} datagrams)", gf_trafficDatagrams());
}

// The park airport and its static aircraft standing in the simulator.
std::string lf_parkText() {
    if (!parkAirport.known()) return "park: none";
    std::int64_t parked = 0;
    for (const StaticAircraft& ac : staticAircraft)
        if (ac.simState == SimState::active) ++parked;
    if (parking.wantedParked < 0)
        return fmt::format("park: {}, no stands", parkAirport.code.text());
    return fmt::format("park: {}, {} parked of {}", parkAirport.code.text(), parked,
                       parking.wantedParked);
}

}  // namespace

void gf_noteTickTime(double tick_us) {
    ++timing.ticks;
    timing.total_us += tick_us;
    timing.max_us = std::max(timing.max_us, tick_us);
}

std::string gf_statusLineText(const TickTiming& t) {
    const double mean_us = t.ticks == 0 ? 0.0 : t.total_us / static_cast<double>(t.ticks);
    const std::string allocations =
        gf_allocationsCounted()
            ? fmt::format("{} allocations in {} ticks", t.allocations, t.allocatingTicks)
            : std::string("allocations not counted");
    return fmt::format(
        "feed: {} | {} | received {} | waiting {} | created {} | refused {} | active {} | "
        "removed {} | tick {:.0f} us mean, {:.0f} us max over {} ticks, {}",
        lf_feedText(), lf_parkText(), trafficCounters.received.load(),
        gf_liveCountIn(SimState::buffer), trafficCounters.created.load(),
        trafficCounters.createFailed.load(), gf_liveCountIn(SimState::active),
        trafficCounters.removed.load(), mean_us, t.max_us, t.ticks, allocations);
}

void gf_statusLineEverySecond(std::int32_t status_s) {
    if (status_s <= 0 || ++secondsSinceLine < status_s) return;
    secondsSinceLine = 0;
    const std::uint64_t allocationsNow = trafficCounters.tickAllocations.load();
    const std::uint64_t allocatingNow = trafficCounters.allocatingTicks.load();
    timing.allocations = allocationsNow - allocationsAtLine;
    timing.allocatingTicks = allocatingNow - allocatingTicksAtLine;
    allocationsAtLine = allocationsNow;
    allocatingTicksAtLine = allocatingNow;
    gf_consoleLine(fmt::format("{} {}", gf_nowText(), gf_statusLineText(timing)));
    timing = {};
}

}  // namespace tfx
