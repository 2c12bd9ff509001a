// The program frame: the process entry and the sessions it runs.
#pragma once

namespace tfx {

// Runs the program: single instance, sessions until the last one ends.
// Returns the process's exit code (-1 when another instance runs).
int gf_programEntry(int argc, char** argv);

// Sessions started in this process, the first one included.
int gf_sessionCount();

}  // namespace tfx
