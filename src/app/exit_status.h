// How the process ends. The user's own close ends with 0; every other way out
// ends non-zero with one line that says why, on the console and in the log.
#pragma once

#include <optional>
#include <string>

#include "app/exit_request.h"

namespace tfx {

// Exit codes of the ways out that aren't the user's own close.
inline constexpr int EXIT_FAILED = 1;       // a fault stopped the program
inline constexpr int EXIT_SIM_CLOSED = 2;   // the simulator link ended for good
inline constexpr int EXIT_NEW_VERSION = 3;  // a new version waits to be installed
inline constexpr int EXIT_ALREADY_RUNNING = -1;

struct ExitProblem {
    int code = EXIT_FAILED;
    std::string why;
};

// Records why the process ends badly. The first problem stands: it is the
// cause, what follows is its consequence.
void gf_setExitProblem(int code, std::string why);
std::optional<ExitProblem> gf_exitProblem();
// A new process (tests run several in one).
void gf_clearExitProblem();

// The problem a session's closing reason means when no restart follows;
// nothing for the user's close and for a job from the command line.
std::optional<ExitProblem> gf_problemOfReason(ExitReason reason);

}  // namespace tfx
