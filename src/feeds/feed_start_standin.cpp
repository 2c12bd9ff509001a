// Stand-in for the feed start until the readers exist: two idle reader
// threads that end on their stop flag, so that a session's start and its
// closing order are the real ones.
#include <atomic>
#include <chrono>
#include <thread>

#include "app/exit_request.h"
#include "feeds/feed_start.h"

namespace tfx {
namespace {

std::atomic<bool> trafficStop{false};
std::atomic<bool> weatherStop{false};
std::thread trafficThread;
std::thread weatherThread;

void lf_idleReader(const std::atomic<bool>& stop) {
    while (!stop.load() && gf_keepRunning())
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
}

bool lf_startReaders() {
    trafficStop = false;
    weatherStop = false;
    weatherThread = std::thread(lf_idleReader, std::cref(weatherStop));
    trafficThread = std::thread(lf_idleReader, std::cref(trafficStop));
    return gf_keepRunning();
}

}  // namespace

bool lf_startRTAppFeeds() {
    return lf_startReaders();
}
bool lf_startRTAPIFeeds() {
    return lf_startReaders();
}

void gf_stopFeedReaders() {
    trafficStop = true;
    weatherStop = true;
    if (weatherThread.joinable()) weatherThread.join();
    if (trafficThread.joinable()) trafficThread.join();
}

void gf_closeRTApp() {}

}  // namespace tfx
