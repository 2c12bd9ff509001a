#include <cmath>
#include <limits>

#include "traffic_fixture.h"

using namespace tfx;
using tfx::test::TrafficTest;

namespace {

std::vector<TrafficMessage> timedBatch(const std::vector<double>& times) {
    std::vector<TrafficMessage> batch(times.size());
    for (std::size_t i = 0; i < times.size(); ++i) batch[i].time = times[i];
    return batch;
}

std::vector<std::int32_t> stamps(const std::vector<TrafficMessage>& batch) {
    std::vector<std::int32_t> out;
    for (const auto& m : batch) out.push_back(m.point.time);
    return out;
}

constexpr double NaN = std::numeric_limits<double>::quiet_NaN();
constexpr double INF = std::numeric_limits<double>::infinity();

}  // namespace

TEST(StampBatch, MedianLiesDelayAheadAndTheBatchKeepsItsTiming) {
    auto odd = timedBatch({10, 30, 20.004});
    lf_stampBatch(odd, 1000, 30);  // median 20.004
    EXPECT_EQ(stamps(odd), (std::vector<std::int32_t>{3000, 5000, 4000}));

    auto even = timedBatch({50, 10, 20, 30});
    lf_stampBatch(even, 1000, 30);  // median 25, the mean of the middle two
    EXPECT_EQ(stamps(even), (std::vector<std::int32_t>{6500, 2500, 3500, 4500}));

    // Unusable times are left out of the median and get the batch's default.
    auto mixed = timedBatch({NaN, 20, INF, 21});
    lf_stampBatch(mixed, 1000, 30);  // median 20.5
    EXPECT_EQ(stamps(mixed), (std::vector<std::int32_t>{4000, 3950, 4000, 4050}));

    auto unusable = timedBatch({NaN, -INF});
    lf_stampBatch(unusable, -7, 6);
    EXPECT_EQ(stamps(unusable), (std::vector<std::int32_t>{593, 593}));

    auto far = timedBatch({0, 1e12, 1});
    lf_stampBatch(far, 0, 0);
    EXPECT_EQ(far[1].point.time, std::numeric_limits<std::int32_t>::max());
}

TEST_F(TrafficTest, AFirstBatchOf500IsTakenTwoPerTickOver2Point5Seconds) {
    std::vector<TrafficMessage> batch;
    for (std::uint32_t i = 0; i < 500; ++i) batch.push_back(airborne(0x400000 + i, "", 100, 50));
    gf_handleTrafficBatch(batch, 30, false);
    EXPECT_TRUE(batch.empty());
    tick(249);
    EXPECT_EQ(liveAircraft.size(), 498u);
    EXPECT_EQ(pendingMessages.size(), 2u);
    tick();
    EXPECT_EQ(liveAircraft.size(), 500u);
    EXPECT_TRUE(pendingMessages.empty());
    // Every message is played 30 seconds after its batch came in.
    EXPECT_EQ(liveAircraft.front().stream.front().time, START_TICK + 3000);
}

TEST_F(TrafficTest, ANewerBatchReplacesWhatIsStillPending) {
    std::vector<TrafficMessage> first;
    for (std::uint32_t i = 0; i < 5; ++i) first.push_back(airborne(0x4C0100 + i, "", 100, 50));
    gf_handleTrafficBatch(first, 30, false);
    tick();  // takes two of them
    std::vector<TrafficMessage> second = {airborne(0x4C0200, "", 101, 50)};
    gf_handleTrafficBatch(second, 30, false);
    EXPECT_TRUE(logged("replacing 3 pending traffic messages with 1 newer message ..."));
    std::vector<TrafficMessage> third = {airborne(0x4C0300, "", 102, 50)};
    gf_handleTrafficBatch(third, 30, false);
    EXPECT_TRUE(logged("replacing 1 pending traffic message with 1 newer message ..."));
    tick(5);
    EXPECT_EQ(liveAircraft.size(), 3u);  // two of the first batch and the last one
    EXPECT_NE(live(0x4C0300), nullptr);
    EXPECT_EQ(live(0x4C0200), nullptr);
    EXPECT_EQ(live(0x4C0102), nullptr);
}

TEST_F(TrafficTest, BatchesWhileNoFlightRunsAreDropped) {
    trafficOpen = 0;
    std::vector<TrafficMessage> fromApp = {airborne(0x4C0100, "", 100, 50)};
    gf_handleTrafficBatch(fromApp, 30, true);
    std::vector<TrafficMessage> fromApi = {airborne(0x4C0101, "", 100, 50)};
    gf_handleTrafficBatch(fromApi, 30, false);
    EXPECT_TRUE(fromApp.empty());
    EXPECT_TRUE(fromApi.empty());
    EXPECT_TRUE(pendingMessages.empty());
}

TEST_F(TrafficTest, RepeatsWithinASecondAndWrongSpeedsLeaveTheStreamAlone) {
    deliver(airborne(0x4C00A1, "DLH1", 100.0, 50.0), START_TICK + 10);
    deliver(airborne(0x4C00A1, "DLH1", 100.8, 50.1), START_TICK + 90);
    deliver(airborne(0x4C00A1, "DLH1", 101.0, 50.1), START_TICK + 110);
    ASSERT_EQ(live(0x4C00A1)->stream.size(), 1u);

    TrafficMessage tenTimes = airborne(0x4C00A1, "DLH1", 110, 50.2);
    tenTimes.point.speed = 2500;
    deliver(tenTimes, START_TICK + 1000);
    TrafficMessage fromStandstill = airborne(0x4C00A1, "DLH1", 111, 50.2);
    fromStandstill.point.speed = 3;
    deliver(fromStandstill, START_TICK + 1100);
    EXPECT_EQ(live(0x4C00A1)->stream.size(), 1u);

    deliver(airborne(0x4C00A1, "DLH1", 105, 50.1), START_TICK + 500);
    EXPECT_EQ(live(0x4C00A1)->stream.size(), 2u);
    EXPECT_DOUBLE_EQ(live(0x4C00A1)->lastMessageTime, 105);
}

TEST_F(TrafficTest, ASteadyAircraftThatHasNotMovedFarEnoughIsThinnedOut) {
    // 450 m at 400 kt take 2.19 s: a report 2 s later adds nothing, 3 s later does.
    TrafficMessage fast = airborne(0x4C00B1, "SWR9", 100, 50.0);
    fast.point.speed = 400;
    deliver(fast, START_TICK);
    fast.time = 102;
    deliver(fast, START_TICK + 200);
    EXPECT_EQ(live(0x4C00B1)->stream.size(), 1u);
    fast.time = 103;
    fast.point.lat = 50.01;
    deliver(fast, START_TICK + 300);
    EXPECT_EQ(live(0x4C00B1)->stream.size(), 2u);
}
