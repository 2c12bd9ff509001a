// The tick never allocates once traffic runs steadily: the tables have their
// capacities from the start of the session, and the engine counts what its
// ticks allocate so that the running program can show it.
#include "traffic/allocation_count.h"
#include "traffic/traffic_counters.h"
#include "traffic_fixture.h"

using namespace tfx;
using tfx::test::TrafficTest;

namespace {

TrafficMessage lf_report(std::uint32_t i, int n) {
    TrafficMessage m;
    m.hexid = 0x700000 + i;
    m.callsign = "AL" + std::to_string(i);
    m.aimo.model = gf_modelIndex("A320");
    m.time = 1000.0 + 5 * n;
    m.point.lat = 45.0 + 0.02 * (i % 50) + 0.005 * n;
    m.point.lon = 2.0 + 0.02 * static_cast<double>(i / 50);
    m.point.alt = 12000 + 10.0 * i;
    m.point.speed = 250;
    m.point.tas = 280;
    m.point.inAir = 1;
    return m;
}

}  // namespace

TEST_F(TrafficTest, ASessionStartsWithTheTablesAtTheirCapacities) {
    // As at process start: nothing reserved. The session's start clears the
    // traffic, and the tables must come out of it ready.
    std::vector<LiveAircraft>().swap(liveAircraft);
    std::vector<StaticAircraft>().swap(staticAircraft);
    gf_stopTraffic();
    EXPECT_GE(liveAircraft.capacity(), 512u);
    EXPECT_GE(staticAircraft.capacity(), 256u);

    // 400 aircraft arrive through the feed; the table never moves.
    const LiveAircraft* table = liveAircraft.data();
    std::vector<TrafficMessage> batch;
    for (std::uint32_t i = 0; i < 400; ++i) batch.push_back(lf_report(i, 0));
    gf_handleTrafficBatch(batch, 30, false);
    tick(250);
    EXPECT_EQ(liveAircraft.size(), 400u);
    EXPECT_EQ(liveAircraft.data(), table);
}

TEST_F(TrafficTest, SteadyTicksAllocateNothing) {
    if (!gf_allocationsCounted()) GTEST_SKIP() << "no allocation count under a sanitizer";
    constexpr std::uint32_t COUNT = 300;
    for (int n = 0; n < 40; ++n) {
        for (std::uint32_t i = 0; i < COUNT; ++i) {
            TrafficMessage m = lf_report(i, n);
            m.point.time = gf_simTick() + 500 * n;
            lf_handleTrafficMessage(m);
        }
    }
    std::uint32_t objectid = 100;
    for (auto& ac : liveAircraft) {
        lf_initPosition(ac);
        ac.livery = "steady livery";
        ac.simState = SimState::active;
        ac.flightState = FlightState::flying;
        ac.objectid = objectid++;
    }
    SimCommands drained;
    drained.reserve();
    std::vector<TrafficMessage> batch;
    batch.reserve(COUNT);
    tick(500);  // the one-time growth of spares stays out of the count
    const std::uint64_t before = trafficCounters.tickAllocations.load();
    const std::uint64_t ticksBefore = trafficCounters.allocatingTicks.load();
    for (int cycle = 0; cycle < 4; ++cycle) {
        for (std::uint32_t i = 0; i < COUNT; ++i) batch.push_back(lf_report(i, 40 + cycle));
        gf_handleTrafficBatch(batch, 30, false);
        for (int t = 0; t < 500; ++t) {
            tick();
            if (t % 100 == 0) {
                drained.clear();
                gf_takeSimCommands(drained);
            }
        }
    }
    EXPECT_EQ(liveAircraft.size(), COUNT);
    EXPECT_EQ(trafficCounters.tickAllocations.load() - before, 0u);
    EXPECT_EQ(trafficCounters.allocatingTicks.load() - ticksBefore, 0u);

    // And the count does see an allocation made inside a tick: a newcomer.
    batch.push_back(lf_report(COUNT, 0));
    gf_handleTrafficBatch(batch, 30, false);
    tick();
    EXPECT_GT(trafficCounters.tickAllocations.load() - before, 0u);
}
