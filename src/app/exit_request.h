// The one way a session ends: a single exit request, in which the first
// request of a session wins and every later one is dropped.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <string_view>

namespace tfx {

enum class ExitReason : std::int32_t {
    NotYetSet = 0,        // process ends
    SimWasClosed = 1,     // process ends
    NewFlight = 2,        // restart
    NewSettings = 3,      // restart
    UserClosedSim = 4,    // process ends
    SimConnectError = 5,  // restart
    ReaderError = 6,      // restart
    SystemError = 7,      // process ends, after up to 25 seconds
    NewVersion = 8,       // process ends
};

struct ExitRequest {
    ExitReason reason = ExitReason::NotYetSet;
    std::int32_t seconds = 0;  // length of the restart countdown
};

// "NOT YET SET", "SIM WAS CLOSED", ...; the texts of the closing log line.
std::string_view gf_exitReasonText(ExitReason reason);
// Whether a session closed for this reason is followed by another.
bool gf_reasonRestarts(ExitReason reason);

// Installs the request unless one stands already. Reason 4 also marks the
// user's close, which beats any restart, and wakes a pending accept of the
// RealTraffic application link.
void gf_requestExit(ExitReason reason, std::int32_t seconds);
inline void gf_requestExit(int reason, std::int32_t seconds) {
    gf_requestExit(static_cast<ExitReason>(reason), seconds);
}

// True while no exit is requested and the user hasn't closed. Every long
// operation of every thread polls it.
bool gf_keepRunning();

// The standing request, or nothing.
std::shared_ptr<const ExitRequest> gf_exitRequest();
// Empties the slot for the next session.
void gf_clearExitRequest();

}  // namespace tfx
