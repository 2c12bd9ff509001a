#include "platform/stop_signals.h"

#include <csignal>

#include "platform/windows_headers.h"

namespace tfx {
namespace {

std::function<void(int)> stopHandler;

// Windows ends the process once the handler of a close, logoff or shutdown
// event returns, and at the latest about 5 s after the event. The handler
// therefore holds on for a little less than that, so the program can close
// down and return from main first, which ends the process with it.
constexpr DWORD CLOSE_WAIT_MS = 4500;

BOOL WINAPI lf_onConsoleEvent(DWORD event) {
    switch (event) {
        case CTRL_C_EVENT:
        case CTRL_BREAK_EVENT:
            if (stopHandler) stopHandler(SIGINT);
            return TRUE;
        case CTRL_CLOSE_EVENT:
        case CTRL_LOGOFF_EVENT:
        case CTRL_SHUTDOWN_EVENT:
            if (stopHandler) stopHandler(SIGTERM);
            ::Sleep(CLOSE_WAIT_MS);
            return TRUE;
        default:
            return FALSE;
    }
}

}  // namespace

void pf_startStopSignalWatcher(std::function<void(int)> onStop) {
    stopHandler = std::move(onStop);
    ::SetConsoleCtrlHandler(lf_onConsoleEvent, TRUE);
}

void pf_stopStopSignalWatcher() {
    ::SetConsoleCtrlHandler(lf_onConsoleEvent, FALSE);
}

}  // namespace tfx
