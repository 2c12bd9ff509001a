#include "app/tick_figures.h"

#include <chrono>
#include <cstdio>
#include <vector>

#include <fmt/format.h>

#include "app/log.h"
#include "feeds/rtapp/rtapp_readers.h"
#include "platform/file_open.h"
#include "platform/thread_times.h"
#include "traffic/traffic_counters.h"

namespace tfx {
namespace {

std::vector<TickSample> samples;  // the main thread's alone
std::size_t capacity = 0;
std::uint64_t notKept = 0;
double pendingLate_us = 0;
ThreadTimes atBegin;
std::chrono::steady_clock::time_point started;

}  // namespace

void gf_startTickFigures(std::size_t ticks) {
    samples.clear();
    samples.reserve(ticks);
    capacity = ticks;
    notKept = 0;
    pendingLate_us = 0;
    started = std::chrono::steady_clock::now();
}

bool gf_tickFiguresOn() {
    return capacity > 0;
}

void gf_noteTickStart(double late_us) {
    pendingLate_us = late_us;
}

void gf_noteTickBegin() {
    if (capacity > 0) atBegin = pf_threadTimes();
}

void gf_noteTickSample(double tick_us) {
    if (capacity == 0) return;
    const ThreadTimes atEnd = pf_threadTimes();
    if (samples.size() >= capacity) {
        ++notKept;
        return;
    }
    const auto since = std::chrono::steady_clock::now() - started;
    const std::uint64_t inSim = trafficCounters.created.load() - trafficCounters.removed.load();
    samples.push_back(
        {static_cast<float>(tick_us), static_cast<float>(atEnd.cpu_us - atBegin.cpu_us),
         static_cast<std::int32_t>(atEnd.waits < 0 ? -1 : atEnd.waits - atBegin.waits),
         static_cast<float>(pendingLate_us),
         static_cast<std::uint32_t>(
             std::chrono::duration_cast<std::chrono::milliseconds>(since).count()),
         static_cast<std::uint32_t>(inSim)});
}

bool gf_writeTickFigures(const std::filesystem::path& file) {
    if (capacity == 0) return true;
    std::filesystem::path working = file;
    working += ".part";
    std::FILE* out = pf_openFile(working, "wb");
    if (out == nullptr) {
        gf_logError(fmt::format("Tick figures: cannot write {}", working.string()));
        return false;
    }
    std::string text = "t_ms,tick_us,late_us,in_sim,cpu_us,waits\n";
    for (const TickSample& s : samples) {
        text += fmt::format("{},{:.1f},{:.1f},{},{:.0f},{}\n", s.t_ms, s.tick_us, s.late_us,
                            s.inSim, s.cpu_us, s.waits);
        if (text.size() > (1u << 16)) {
            std::fwrite(text.data(), 1, text.size(), out);
            text.clear();
        }
    }
    text += fmt::format(
        "# ticks not kept {}, datagrams {}, messages received {}, replaced unread {}, created {}, "
        "removed {}\n",
        notKept, gf_trafficDatagrams(), trafficCounters.received.load(),
        trafficCounters.replacedUnread.load(), trafficCounters.created.load(),
        trafficCounters.removed.load());
    std::fwrite(text.data(), 1, text.size(), out);
    const bool ok = std::fflush(out) == 0 && std::ferror(out) == 0;
    std::fclose(out);
    std::error_code ec;
    if (ok) std::filesystem::rename(working, file, ec);
    if (!ok || ec) {
        gf_logError(fmt::format("Tick figures: cannot write {}", file.string()));
        std::filesystem::remove(working, ec);
        return false;
    }
    gf_logLine(
        fmt::format("Tick figures of {} ticks written to {}", samples.size(), file.string()));
    return true;
}

}  // namespace tfx
