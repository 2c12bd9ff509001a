#include "platform/stop_signals.h"

#include <signal.h>

#include <atomic>
#include <ctime>
#include <thread>

namespace tfx {
namespace {

std::thread watcher;
std::atomic<bool> watcherStop{false};

sigset_t lf_stopSet() {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    sigaddset(&set, SIGHUP);  // the terminal closed
    return set;
}

}  // namespace

void pf_startStopSignalWatcher(std::function<void(int)> onStop) {
    const sigset_t set = lf_stopSet();
    // Blocked here, so that every later thread inherits the mask and only the
    // watcher ever takes these signals, in ordinary thread context.
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    watcherStop = false;
    watcher = std::thread([set, onStop = std::move(onStop)] {
        const timespec wait{0, 200'000'000};
        while (!watcherStop.load()) {
            const int sig = sigtimedwait(&set, nullptr, &wait);
            if (sig > 0) onStop(sig);
        }
    });
}

void pf_stopStopSignalWatcher() {
    watcherStop = true;
    if (watcher.joinable()) watcher.join();
}

}  // namespace tfx
