#include "app/exit_status.h"

#include <mutex>

#include <fmt/format.h>

#include "app/log.h"

namespace tfx {
namespace {

std::mutex problemMutex;
std::optional<ExitProblem> problem;

}  // namespace

void gf_setExitProblem(int code, std::string why) {
    std::lock_guard lock(problemMutex);
    if (!problem) problem = ExitProblem{code, std::move(why)};
}

std::optional<ExitProblem> gf_exitProblem() {
    std::lock_guard lock(problemMutex);
    return problem;
}

void gf_clearExitProblem() {
    std::lock_guard lock(problemMutex);
    problem.reset();
}

std::optional<ExitProblem> gf_problemOfReason(ExitReason reason) {
    switch (reason) {
        case ExitReason::UserClosedSim:
            return std::nullopt;
        case ExitReason::SimWasClosed:
            return ExitProblem{EXIT_SIM_CLOSED,
                               "Flight Simulator no longer connected (see Log.txt)"};
        case ExitReason::NewVersion:
            return ExitProblem{EXIT_NEW_VERSION,
                               fmt::format("a new version of {} was downloaded", PROGRAM_NAME)};
        case ExitReason::SystemError:
            return ExitProblem{EXIT_FAILED, "a system error stopped the session (see Log.txt)"};
        default:
            return ExitProblem{EXIT_FAILED, fmt::format("the session ended ({}) before it could "
                                                        "run (see Log.txt)",
                                                        gf_exitReasonText(reason))};
    }
}

}  // namespace tfx
