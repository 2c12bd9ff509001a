// Output that a thread may leave to the log's own writer thread: the main
// loop's, whose tick must never wait on a disk, a console, or the lock of a
// thread that is writing to one. Log.txt's lines keep their order either way.
#pragma once

#include <string_view>

namespace tfx {

// A line for the console (the headless program's window): written at once,
// or by the log's writer when this thread defers its output.
void gf_consoleLine(std::string_view text, bool error = false);
// For the calling thread: its log and console lines are written by the log's
// writer instead of by itself. Warnings are then on disk within moments,
// not before the call returns.
void gf_deferOutput(bool on);

}  // namespace tfx
