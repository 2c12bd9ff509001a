// The engine's clock and the week slot.
#pragma once

#include <atomic>
#include <cstdint>

namespace tfx {

// Hundredths of a second. The tick adds 1 at its end; a long blocking job on
// the tick's thread adds the time it took (gf_advanceSimTick).
extern std::atomic<std::int32_t> simTick;

inline std::int32_t gf_simTick() {
    return simTick.load(std::memory_order_relaxed);
}

// A job of ms milliseconds moves the clock on when it took 5 ms or more, so
// that the streams keep their pace.
void gf_advanceSimTick(std::int64_t ms);

// Week slot: the day (1 = Monday .. 7 = Sunday) in the low half, the half hour
// hh (0 .. 47) in the high half. Renewed once a second.
extern std::uint64_t weekNow;

constexpr std::uint64_t gf_weekSlot(std::uint32_t day, std::uint32_t hh) {
    return (static_cast<std::uint64_t>(hh) << 32) | day;
}
constexpr std::uint32_t gf_slotDay(std::uint64_t slot) {
    return static_cast<std::uint32_t>(slot & 0xFFFFFFFFu);
}
constexpr std::uint32_t gf_slotHalfHour(std::uint64_t slot) {
    return static_cast<std::uint32_t>(slot >> 32);
}
// Half hours from the earlier slot to the later one, modulo the week (336).
int gf_slotDifference(std::uint64_t later, std::uint64_t earlier);
// The slot of a UTC time in seconds since the epoch.
std::uint64_t gf_weekSlotOf(std::int64_t epochSeconds);
// weekNow from the week clock.
void gf_renewWeekNow();

// The clock of the week slot. Normally the wall clock; while the traffic is
// time shifted it is the feed's own time, so that stands are filled as they
// were at the hour being replayed. The owners of the shift and of the feed
// set these from their threads; the tick reads them.
void gf_setTimeShiftMode(bool on);
bool gf_timeShiftMode();
// The feed's latest time stamp, taken against the wall clock of its arrival
// (wallSeconds; the current wall clock when left out), so that the week clock
// runs on between stamps.
void gf_setFeedTimeStamp(std::int64_t epochSeconds);
void gf_setFeedTimeStamp(std::int64_t epochSeconds, std::int64_t wallSeconds);
void gf_forgetFeedTimeStamp();
// The week clock at the given wall clock: shifted by the feed's lag while the
// mode is on and a stamp is known, the wall clock itself otherwise.
std::int64_t gf_weekClockSeconds(std::int64_t wallSeconds);
// Wall clock, UTC seconds since the epoch.
std::int64_t gf_wallClockSeconds();

// Wall clock in 100 ns units, for stand times.
std::uint64_t gf_wallClock100ns();

}  // namespace tfx
