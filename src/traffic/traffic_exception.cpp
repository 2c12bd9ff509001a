// Traffic exceptions: one aircraft's failure is logged and the tick goes on.
// Only the first 20 of a process are logged, so that a fault that repeats
// every tick cannot flood the log.
#include <atomic>
#include <exception>

#include <fmt/format.h>

#include "app/log.h"
#include "traffic/traffic_internal.h"

namespace tfx {

namespace {
constexpr int LOGGED_EXCEPTIONS = 20;
std::atomic<int> exceptionCount{0};
}  // namespace

std::string lf_currentExceptionText() {
    const std::exception_ptr current = std::current_exception();
    if (!current) return "unknown exception";
    try {
        std::rethrow_exception(current);
    } catch (const std::exception& e) {
        return e.what();
    } catch (...) {
        return "non-standard exception";
    }
}

void lf_trafficException(std::string_view where) {
    const int n = exceptionCount.fetch_add(1) + 1;
    if (n > LOGGED_EXCEPTIONS) return;
    try {
        gf_logLine(fmt::format(
            "Traffic exception in {}: {}{}", where, lf_currentExceptionText(),
            n == LOGGED_EXCEPTIONS ? " (further traffic exceptions will be suppressed)" : ""));
    } catch (...) {
        // Reporting must never throw into the tick.
    }
}

int gf_trafficExceptionCount() {
    return exceptionCount.load();
}

void gf_resetTrafficExceptionCount() {
    exceptionCount.store(0);
}

}  // namespace tfx
