// The system timer's resolution. Windows wakes sleeping threads on a coarse
// timer (about 15.6 ms) unless a process asks for a finer one; the 10 ms tick
// grid and the 1 ms dispatch pause need 1 ms. Elsewhere sleeps are already
// that fine, and these do nothing.
#pragma once

namespace tfx {

// Asks for a 1 ms system timer; true when granted. Each granted request must
// be ended once by pf_endMillisecondTimer.
bool pf_beginMillisecondTimer();
void pf_endMillisecondTimer();

// The request for a scope: ended on the way out only when it was granted.
struct MillisecondTimerScope {
    MillisecondTimerScope() : granted(pf_beginMillisecondTimer()) {}
    ~MillisecondTimerScope() {
        if (granted) pf_endMillisecondTimer();
    }
    MillisecondTimerScope(const MillisecondTimerScope&) = delete;
    MillisecondTimerScope& operator=(const MillisecondTimerScope&) = delete;

    bool granted;
};

}  // namespace tfx
