#include "app/exit_request.h"

#include "app/run_flags.h"

namespace tfx {
namespace {

std::atomic<std::shared_ptr<const ExitRequest>> slot;

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
    std::shared_ptr<const ExitRequest> empty;
    auto request = std::make_shared<const ExitRequest>(ExitRequest{reason, seconds});
    slot.compare_exchange_strong(empty, request);
}

bool gf_keepRunning() {
    return !slot.load() && userClosing.load() == 0;
}

std::shared_ptr<const ExitRequest> gf_exitRequest() {
    return slot.load();
}

void gf_clearExitRequest() {
    slot.store(nullptr);
}

}  // namespace tfx
