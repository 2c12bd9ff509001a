// The clock of the week slot: the wall clock, or the feed's own time while
// the traffic is time shifted.
#include "traffic_fixture.h"

namespace tfx::test {

namespace {

// Tuesday 14 November 2023, 22:13:20 UTC.
constexpr std::int64_t WALL_S = 1700000000;
// Two days, five hours and a quarter earlier: Sunday, 17:00 UTC, half hour 34.
constexpr std::int64_t FEED_S = WALL_S - 2 * 86400 - 5 * 3600 - 13 * 60 - 20;

class WeekClockTest : public TrafficTest {
protected:
    void TearDown() override {
        gf_setTimeShiftMode(false);
        gf_forgetFeedTimeStamp();
        TrafficTest::TearDown();
    }
};

}  // namespace

TEST_F(WeekClockTest, TheFeedsTimeCountsOnlyWhileShiftedAndKnown) {
    ASSERT_EQ(gf_weekSlotOf(FEED_S), gf_weekSlot(7, 34));

    gf_setFeedTimeStamp(FEED_S, WALL_S);
    EXPECT_EQ(gf_weekClockSeconds(WALL_S), WALL_S) << "a stamp without the mode changes nothing";

    gf_setTimeShiftMode(true);
    EXPECT_EQ(gf_weekClockSeconds(WALL_S), FEED_S);
    // Between stamps the feed's clock runs on with the wall clock.
    EXPECT_EQ(gf_weekClockSeconds(WALL_S + 600), FEED_S + 600);
    gf_setFeedTimeStamp(FEED_S + 900, WALL_S + 600);
    EXPECT_EQ(gf_weekClockSeconds(WALL_S + 600), FEED_S + 900);

    // A stopped traffic forgets the stamp: the next session's feed may lag
    // by another shift, and until its first stamp the wall clock counts.
    gf_stopTraffic();
    EXPECT_TRUE(gf_timeShiftMode());
    EXPECT_EQ(gf_weekClockSeconds(WALL_S), WALL_S);

    gf_setFeedTimeStamp(FEED_S, WALL_S);
    gf_setTimeShiftMode(false);
    EXPECT_EQ(gf_weekClockSeconds(WALL_S), WALL_S);
}

TEST_F(WeekClockTest, TheSecondsWorkSetsTheWeekSlotFromTheShiftedClock) {
    // A stamp in the middle of a half hour, so that the second this test
    // takes cannot carry it into the next slot.
    const std::int64_t feed_s = FEED_S + 15 * 60;
    gf_setTimeShiftMode(true);
    gf_setFeedTimeStamp(feed_s);
    gf_trafficEverySecond();
    EXPECT_EQ(weekNow, gf_weekSlot(7, 34));

    gf_setTimeShiftMode(false);
    const std::uint64_t before = gf_weekSlotOf(gf_wallClockSeconds());
    gf_trafficEverySecond();
    const std::uint64_t after = gf_weekSlotOf(gf_wallClockSeconds());
    EXPECT_TRUE(weekNow == before || weekNow == after);
}

}  // namespace tfx::test
