// Ctrl-C, termination requests and a closed terminal. A console user stops the
// program the way the window's close button would.
#pragma once

#include <functional>

namespace tfx {

// Blocks SIGINT, SIGTERM and SIGHUP for the calling thread and every thread it starts
// afterwards (call it first in main), and starts a watcher thread that calls
// onStop, on that thread, for each such signal.
void pf_startStopSignalWatcher(std::function<void(int signal)> onStop);
// Ends the watcher thread (within about 200 ms) and joins it.
// On Windows the console's control events take the place of the signals:
// Ctrl-C and Ctrl-Break call onStop(SIGINT), closing the console window,
// logging off and shutting down call onStop(SIGTERM), each on a thread the
// system starts for it.
void pf_stopStopSignalWatcher();

}  // namespace tfx
