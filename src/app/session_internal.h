// Shared by the files of the program frame only: one session's start, main
// loop and closing down.
#pragma once

#include <cstdint>
#include <thread>

namespace tfx {

// One session on the main thread; closes down by whatever road it leaves.
void lf_main();
bool lf_init();
bool lf_startSimClient();
void lf_mainLoop();
// Never throws. Ends by posting the start of the next session or the exit.
void lf_closingDown();
// True when the restart may go ahead.
bool lf_restartCountdown(std::int32_t seconds);

// The session's simulator thread, joined first when the session closes.
extern std::jthread simClientThread;

// Tests shorten the waits of the frame; these are the real ones.
struct FrameTiming {
    int systemErrorWait_ms = 25000;  // reason 7 keeps the error readable
    int countdownStep_ms = 1000;     // one second of a restart countdown
};
extern FrameTiming frameTiming;

}  // namespace tfx
