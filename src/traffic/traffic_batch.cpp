// From a feed's batch to the tick's queues: every message gets the tick at
// which its aircraft is to be there, the batch's median lying delay seconds
// ahead, so that the batch keeps its own internal timing. Live cycles replace
// what is pending; history pieces queue up in order. Only the tick's thread
// touches the aircraft tables.
#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include <fmt/format.h>

#include "app/log.h"
#include "app/run_state.h"
#include "traffic/clock.h"
#include "traffic/traffic.h"
#include "traffic/traffic_counters.h"
#include "traffic/traffic_internal.h"
#include "traffic/traffic_tables.h"

namespace tfx {

namespace {

constexpr int LIVE_DELAY_S = 30;
// History comes all at once at the start and is due at once: the tick takes
// it in steps, bounded so that one tick stays short. A new aircraft costs up
// to some 25 us (its livery is matched): a large region's half minute of
// history (tens of thousands of reports) is taken in a few seconds, each
// tick within a few milliseconds.
constexpr std::size_t HISTORY_PER_TICK = 100;

// Tick thread: the history being worked off, and how far.
std::vector<TrafficMessage> historyBacklog;
std::size_t historyNext = 0;

std::int32_t lf_clampTick(double value) {
    constexpr double lo = std::numeric_limits<std::int32_t>::min();
    constexpr double hi = std::numeric_limits<std::int32_t>::max();
    return static_cast<std::int32_t>(std::clamp(value, lo, hi));
}

const char* lf_plural(std::size_t n) {
    return n == 1 ? "" : "s";
}

}  // namespace

void gf_clearHistory() {
    historyBacklog.clear();
    historyNext = 0;
    std::lock_guard lock(historyLock);
    historyMessages.clear();
}

void lf_stampBatch(std::vector<TrafficMessage>& batch, std::int32_t now, int delay_s) {
    thread_local std::vector<double> times;
    times.clear();
    for (const auto& m : batch) {
        if (std::isfinite(m.time)) times.push_back(m.time);
    }
    const double base = static_cast<double>(now) + 100.0 * delay_s;
    if (times.empty()) {
        for (auto& m : batch) m.point.time = lf_clampTick(base);
        return;
    }
    std::sort(times.begin(), times.end());
    const std::size_t mid = times.size() / 2;
    const double median = times.size() % 2 == 1 ? times[mid] : (times[mid - 1] + times[mid]) / 2;
    gf_setFeedTimeStamp(std::llround(median));
    for (auto& m : batch) {
        m.point.time = std::isfinite(m.time)
                           ? lf_clampTick(base + std::round((m.time - median) * 100))
                           : lf_clampTick(base);
    }
}

void gf_handleHistoryBatch(std::vector<TrafficMessage>& batch, int delay_s, bool) {
    if (batch.empty()) return;
    trafficCounters.received += batch.size();
    lf_stampBatch(batch, gf_simTick(), delay_s);
    {
        std::lock_guard lock(historyLock);
        if (historyMessages.empty()) {
            historyMessages.swap(batch);
        } else {
            historyMessages.insert(historyMessages.end(), std::make_move_iterator(batch.begin()),
                                   std::make_move_iterator(batch.end()));
        }
    }
    batch.clear();
}

void gf_handleTrafficBatch(std::vector<TrafficMessage>& batch, int delay_s, bool fromRtApp) {
    if (batch.empty()) return;
    if (delay_s != LIVE_DELAY_S) {
        gf_handleHistoryBatch(batch, delay_s, fromRtApp);
        return;
    }
    trafficCounters.received += batch.size();
    const bool flightRuns = trafficOpen.load() != 0;
    if (fromRtApp && !flightRuns) {
        batch.clear();
        return;
    }
    lf_stampBatch(batch, gf_simTick(), delay_s);
    if (flightRuns) {
        std::size_t replaced = 0;
        const std::size_t newer = batch.size();
        {
            std::lock_guard lock(pendingLock);
            replaced = pendingMessages.size();
            pendingMessages.swap(batch);
        }
        if (replaced > 0) {
            trafficCounters.replacedUnread.fetch_add(replaced, std::memory_order_relaxed);
            gf_logLine(
                fmt::format("replacing {} pending traffic message{} with {} newer message{} ...",
                            replaced, lf_plural(replaced), newer, lf_plural(newer)));
        }
    }
    batch.clear();
}

void lf_takeHistory() {
    if (historyNext >= historyBacklog.size()) {
        historyBacklog.clear();
        historyNext = 0;
        std::lock_guard lock(historyLock);
        if (historyMessages.empty()) return;
        historyBacklog.swap(historyMessages);
    }
    // In the order the pieces came, oldest first: a newer report of an
    // aircraft must not come before an older one.
    const std::size_t end = std::min(historyBacklog.size(), historyNext + HISTORY_PER_TICK);
    for (; historyNext < end; ++historyNext) {
        try {
            lf_handleTrafficMessage(historyBacklog[historyNext]);
        } catch (...) {
            lf_trafficException("lf_handleTrafficMessage");
        }
    }
}

void lf_takePendingMessages() {
    constexpr int MESSAGES_PER_TICK = 2;
    thread_local TrafficMessage message;
    for (int i = 0; i < MESSAGES_PER_TICK; ++i) {
        {
            std::lock_guard lock(pendingLock);
            if (pendingMessages.empty()) return;
            message = std::move(pendingMessages.back());
            pendingMessages.pop_back();
        }
        try {
            lf_handleTrafficMessage(message);
        } catch (...) {
            lf_trafficException("lf_handleTrafficMessage");
        }
    }
}

}  // namespace tfx
