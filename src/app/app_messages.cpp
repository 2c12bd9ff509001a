#include "app/app_messages.h"

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>

namespace tfx {
namespace {

std::mutex queueMutex;
std::condition_variable queueSignal;
std::deque<AppMessage> queue;

}  // namespace

void gf_postAppMessage(AppMessage message) {
    {
        std::lock_guard lock(queueMutex);
        queue.push_back(message);
    }
    queueSignal.notify_one();
}

std::optional<AppMessage> gf_waitAppMessage(int timeout_ms) {
    std::unique_lock lock(queueMutex);
    if (!queueSignal.wait_for(lock, std::chrono::milliseconds(timeout_ms),
                              [] { return !queue.empty(); }))
        return std::nullopt;
    const AppMessage message = queue.front();
    queue.pop_front();
    return message;
}

void gf_clearAppMessages() {
    std::lock_guard lock(queueMutex);
    queue.clear();
}

}  // namespace tfx
