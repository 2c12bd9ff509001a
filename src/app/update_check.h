// Keeping the program and its data files current from the web server.
#pragma once

namespace tfx {

// True when the session may go on; false when a new version stands ready
// and the process is ending.
bool gf_updateCheck();

}  // namespace tfx
