// Every tick's duration and how late it started, kept for a measured run
// ("--tick-figures FILE") and written when the main loop ends, so that a
// load run can give percentiles rather than a period's mean and maximum.
// The table is sized once before the loop: noting a tick never allocates.
#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>

namespace tfx {

struct TickSample {
    float tick_us = 0;        // gf_trafficTick's time from start to end
    float cpu_us = 0;         // of it, the processor time of the tick's thread
    std::int32_t waits = 0;   // times the tick gave the processor up itself (-1: not counted)
    float late_us = 0;        // the tick's start behind its place on the grid
    std::uint32_t t_ms = 0;   // since the table was started
    std::uint32_t inSim = 0;  // live objects the simulator confirmed and still holds
};

// Room for this many ticks; later ticks are counted, not kept.
void gf_startTickFigures(std::size_t ticks);
bool gf_tickFiguresOn();
// Around gf_trafficTick; each costs a system call while the table is on.
void gf_noteTickStart(double late_us);
void gf_noteTickBegin();
void gf_noteTickSample(double tick_us);
// Writes the table as CSV beside the file and renames it in, with the feed's
// and the engine's counters at the end; false (and a log line) on failure.
bool gf_writeTickFigures(const std::filesystem::path& file);

}  // namespace tfx
