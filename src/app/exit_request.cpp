#include "app/exit_request.h"

#include <mutex>

#include "app/run_flags.h"

namespace tfx {
namespace {

// The slot is a shared pointer under a mutex held only for the swap, with a
// flag beside it for the lock-free poll. (The library's atomic shared pointer
// releases its internal lock without ordering after a load, which the thread
// sanitizer rightly reports as a race with the next exchange.)
std::mutex slotMutex;
std::shared_ptr<const ExitRequest> slot;
std::atomic<bool> requested{false};

// Text of each reason, in the order of the enumeration.
constexpr std::string_view REASON_TEXTS[] = {
    "NOT YET SET",       // 0
    "SIM WAS CLOSED",    // 1
    "NEW FLIGHT",        // 2
    "NEW SETTINGS",      // 3
    "USER CLOSED SIM",   // 4
    "SIMCONNECT ERROR",  // 5
    "READER ERROR",      // 6
    "SYSTEM ERROR",      // 7
    "NEW VERSION",       // 8
};

}  // namespace

std::string_view gf_exitReasonText(ExitReason reason) {
    const auto i = static_cast<std::size_t>(reason);
    return i < std::size(REASON_TEXTS) ? REASON_TEXTS[i] : "UNKNOWN";
}

bool gf_reasonRestarts(ExitReason reason) {
    return reason == ExitReason::NewFlight || reason == ExitReason::NewSettings ||
           reason == ExitReason::SimConnectError || reason == ExitReason::ReaderError;
}

void gf_requestExit(ExitReason reason, std::int32_t seconds) {
    if (reason == ExitReason::UserClosedSim) {
        userClosing.store(1);
        if (gf_onUserClosing) gf_onUserClosing();
    }
    auto request = std::make_shared<const ExitRequest>(ExitRequest{reason, seconds});
    std::lock_guard lock(slotMutex);
    if (slot) return;  // the first request of a session wins
    slot = std::move(request);
    requested.store(true);
}

bool gf_keepRunning() {
    return !requested.load() && userClosing.load() == 0;
}

std::shared_ptr<const ExitRequest> gf_exitRequest() {
    std::lock_guard lock(slotMutex);
    return slot;
}

void gf_clearExitRequest() {
    std::lock_guard lock(slotMutex);
    slot.reset();
    requested.store(false);
}

}  // namespace tfx
