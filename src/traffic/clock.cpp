#include "traffic/clock.h"

#include <chrono>
#include <limits>

namespace tfx {

std::atomic<std::int32_t> simTick{0};
std::uint64_t weekNow = 0;

namespace {

// The feed's time minus the wall clock at its arrival, one value so that a
// reader never sees half of an update.
constexpr std::int64_t NO_FEED_STAMP = std::numeric_limits<std::int64_t>::min();
std::atomic<std::int64_t> feedLag_s{NO_FEED_STAMP};
std::atomic<bool> timeShiftOn{false};

}  // namespace

void gf_advanceSimTick(std::int64_t ms) {
    if (ms < 5) return;
    simTick.fetch_add(static_cast<std::int32_t>((ms + 5) / 10), std::memory_order_relaxed);
}

int gf_slotDifference(std::uint64_t later, std::uint64_t earlier) {
    const int days = static_cast<int>(gf_slotDay(later)) - static_cast<int>(gf_slotDay(earlier));
    const int halfHours =
        static_cast<int>(gf_slotHalfHour(later)) - static_cast<int>(gf_slotHalfHour(earlier));
    const int d = (days * 48 + halfHours) % 336;
    return d < 0 ? d + 336 : d;
}

std::uint64_t gf_weekSlotOf(std::int64_t epochSeconds) {
    const std::int64_t days =
        epochSeconds >= 0 ? epochSeconds / 86400 : (epochSeconds - 86399) / 86400;
    const std::int64_t secondOfDay = epochSeconds - days * 86400;
    // 1 January 1970 was a Thursday, day 4.
    const std::int64_t dow = ((days + 3) % 7 + 7) % 7 + 1;
    return gf_weekSlot(static_cast<std::uint32_t>(dow),
                       static_cast<std::uint32_t>(secondOfDay / 1800));
}

void gf_renewWeekNow() {
    weekNow = gf_weekSlotOf(gf_weekClockSeconds(gf_wallClockSeconds()));
}

void gf_setTimeShiftMode(bool on) {
    timeShiftOn.store(on, std::memory_order_relaxed);
}

bool gf_timeShiftMode() {
    return timeShiftOn.load(std::memory_order_relaxed);
}

void gf_setFeedTimeStamp(std::int64_t epochSeconds) {
    gf_setFeedTimeStamp(epochSeconds, gf_wallClockSeconds());
}

void gf_setFeedTimeStamp(std::int64_t epochSeconds, std::int64_t wallSeconds) {
    feedLag_s.store(epochSeconds - wallSeconds, std::memory_order_relaxed);
}

void gf_forgetFeedTimeStamp() {
    feedLag_s.store(NO_FEED_STAMP, std::memory_order_relaxed);
}

std::int64_t gf_weekClockSeconds(std::int64_t wallSeconds) {
    const std::int64_t lag_s = feedLag_s.load(std::memory_order_relaxed);
    if (!gf_timeShiftMode() || lag_s == NO_FEED_STAMP) return wallSeconds;
    return wallSeconds + lag_s;
}

std::int64_t gf_wallClockSeconds() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::seconds>(now).count();
}

std::uint64_t gf_wallClock100ns() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::nanoseconds>(now).count() / 100);
}

}  // namespace tfx
