#include "traffic/clock.h"

#include <chrono>

namespace tfx {

std::atomic<std::int32_t> simTick{0};
std::uint64_t weekNow = 0;

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

std::uint64_t gf_wallClock100ns() {
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    return static_cast<std::uint64_t>(
        std::chrono::duration_cast<std::chrono::nanoseconds>(now).count() / 100);
}

}  // namespace tfx
