// The traffic tick with 100 to 2000 active airborne aircraft: time per tick,
// per aircraft, and heap allocations per tick (the engine's own count of
// what is allocated inside its ticks). And the intake of feed messages into
// the streams.
#include <benchmark/benchmark.h>

#include <cmath>
#include <vector>

#include <fmt/format.h>

#include "app/log.h"
#include "app/options.h"
#include "app/parameters.h"
#include "app/run_state.h"
#include "liveries/reference_db.h"
#include "sim/sim_queues.h"
#include "traffic/allocation_count.h"
#include "traffic/clock.h"
#include "traffic/traffic.h"
#include "traffic/traffic_counters.h"
#include "traffic/traffic_internal.h"
#include "traffic/traffic_tables.h"

namespace {

using namespace tfx;

constexpr int POINT_SPACING_S = 5;
constexpr int FEED_CYCLE_TICKS = 500;  // a new feed batch every 5 seconds
constexpr int FIRST_POINTS = 60;       // five minutes of stream at the start

// Aircraft i flies straight at 250 kt on its own heading, spread over a
// circle of 40 NM round the user.
TrafficMessage lf_report(std::uint32_t i, int n, std::int32_t aircraftCount) {
    const double heading = 6.283185307179586 * i / aircraftCount;
    const double ring_deg = 40.0 / 60 * (0.3 + 0.7 * (i % 97) / 97.0);
    const double step_deg = 250.0 * POINT_SPACING_S / 3600 / 60;  // per point
    TrafficMessage m;
    m.hexid = 0x400000 + i;
    m.callsign = fmt::format("TST{}", i);
    m.aimo.model = static_cast<std::uint16_t>(1 + i % 50);
    m.time = 1000.0 + POINT_SPACING_S * n;
    m.point.lat = 50.0 + ring_deg * std::cos(heading) + step_deg * n * std::cos(heading);
    m.point.lon = 8.0 + (ring_deg * std::sin(heading) + step_deg * n * std::sin(heading)) / 0.64;
    m.point.alt = 8000 + 50.0 * (i % 200);
    m.point.speed = 250;
    m.point.tas = 280;
    m.point.track = heading * 57.29577951308232;
    m.point.inAir = 1;
    return m;
}

void lf_freshEngine() {
    params.resetToDefaults();
    gf_buildOptions();
    gf_clearReferenceData();
    gf_modelIndex("");
    for (int i = 1; i <= 50; ++i) gf_modelIndex(fmt::format("M{:02}", i));
    gf_stopTraffic();
    gf_initTraffic();
    gf_clearSimBuffers();
    simTick = 1000;
    trafficOpen = 1;
    SimRunState = 2;
}

// count aircraft, active, each with FIRST_POINTS points 5 seconds apart.
void lf_activeAircraft(std::int32_t count) {
    lf_freshEngine();
    for (int n = 0; n < FIRST_POINTS; ++n) {
        for (std::int32_t i = 0; i < count; ++i) {
            TrafficMessage m = lf_report(static_cast<std::uint32_t>(i), n, count);
            m.point.time = gf_simTick() + n * POINT_SPACING_S * 100;
            lf_handleTrafficMessage(m);
        }
    }
    std::uint32_t objectid = 100;
    for (auto& ac : liveAircraft) {
        lf_initPosition(ac);
        ac.livery = "bench livery";
        ac.simState = SimState::active;
        ac.flightState = FlightState::flying;
        ac.objectid = objectid++;
    }
}

void BM_TrafficTick(benchmark::State& state) {
    const auto count = static_cast<std::int32_t>(state.range(0));
    lf_activeAircraft(count);
    int nextPoint = FIRST_POINTS;
    std::vector<TrafficMessage> batch;
    SimCommands drained;
    drained.reserve();  // handed back to the producers at the first drain
    // Warm-up: the one-time growth of tables and spares stays out of the count.
    for (int i = 0; i < FEED_CYCLE_TICKS; ++i) gf_trafficTick();
    std::int64_t ticks = 0;
    const std::uint64_t start = trafficCounters.tickAllocations.load();
    for (auto _ : state) {
        if (ticks % FEED_CYCLE_TICKS == 0) {
            // The feed thread's batch and the simulator thread's flush.
            state.PauseTiming();
            batch.clear();
            for (std::int32_t i = 0; i < count; ++i) {
                batch.push_back(lf_report(static_cast<std::uint32_t>(i), nextPoint, count));
            }
            ++nextPoint;
            gf_handleTrafficBatch(batch, 30, false);
            drained.clear();
            gf_takeSimCommands(drained);
            state.ResumeTiming();
        }
        gf_trafficTick();
        ++ticks;
    }
    const double inTicks = static_cast<double>(trafficCounters.tickAllocations.load() - start);
    state.counters["aircraft"] = static_cast<double>(liveAircraft.size());
    state.counters["ns_per_aircraft"] = benchmark::Counter(
        static_cast<double>(count),
        benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
    state.counters["allocs_per_tick"] =
        gf_allocationsCounted() ? inTicks / static_cast<double>(ticks) : -1.0;
    gf_stopTraffic();
}

// Messages per second from a feed's batch into the streams of 2000 aircraft.
void BM_TrafficIntake(benchmark::State& state) {
    constexpr std::int32_t COUNT = 2000;
    lf_activeAircraft(COUNT);
    int nextPoint = FIRST_POINTS;
    std::vector<TrafficMessage> batch;
    for (auto _ : state) {
        state.PauseTiming();
        for (auto& ac : liveAircraft) {
            while (ac.stream.size() > 8) ac.stream.pop_front();
        }
        batch.clear();
        for (std::int32_t i = 0; i < COUNT; ++i) {
            batch.push_back(lf_report(static_cast<std::uint32_t>(i), nextPoint, COUNT));
        }
        ++nextPoint;
        state.ResumeTiming();
        gf_handleTrafficBatch(batch, 30, false);
        for (std::int32_t i = 0; i < COUNT / 2; ++i) lf_takePendingMessages();
    }
    state.counters["messages_per_s"] =
        benchmark::Counter(COUNT, benchmark::Counter::kIsIterationInvariantRate);
    gf_stopTraffic();
}

}  // namespace

BENCHMARK(BM_TrafficTick)
    ->Arg(100)
    ->Arg(500)
    ->Arg(1000)
    ->Arg(2000)
    ->Iterations(20000)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_TrafficIntake)->Unit(benchmark::kMillisecond);
