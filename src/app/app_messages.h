// The private messages that drive a session's start and the process's end.
// On Windows they are window messages; here the thread that plays the GUI
// thread's part waits on this queue.
#pragma once

#include <cstdint>
#include <optional>

namespace tfx {

enum class AppMessage : std::uint32_t {
    MSG_START = 0x8001,       // join the last main thread, reopen the log, start lf_main
    MSG_EXIT = 0x8002,        // join the main thread, save the window place, quit
    MSG_GUI_UPDATE = 0x8003,  // drain the window's update queue
    MSG_SWITCH_SIM = 0x8064,  // select the other simulator
};

// Any thread. Never blocks for long.
void gf_postAppMessage(AppMessage message);
// Waits up to timeout_ms for the next message; nothing when none came.
std::optional<AppMessage> gf_waitAppMessage(int timeout_ms);
// Drops whatever is queued (a fresh process state, for tests).
void gf_clearAppMessages();

}  // namespace tfx
