// Which simulator answers the simulator thread's calls. On Windows it is the
// simulator's client library, SimConnect.dll, looked for beside the program
// and in the simulator's SDK (simconnect_library.h); when none is found, ZEPT
// waits for it as for the simulator, unless the run word "--demo" asks for
// the built-in simulator instead. Elsewhere the built-in simulator answers,
// unless "--simconnect FILE" names a library to load. Tests install their
// own provider first.
#pragma once

#include <filesystem>

namespace tfx {

// Before the first session: the built-in simulator streams every position it
// is sent to this CSV file (nothing is kept in memory, so long runs stay flat).
void gf_setSimRecording(const std::filesystem::path& file);

// When no provider is set: installs the library or the built-in simulator
// (builtin/builtin_sim_start.h), each made at the first call and kept for
// the process, as a real simulator outlives a session. True when a provider
// was installed by this call.
bool gf_selectSimProvider();
// Takes the provider out again (the end of the thread that installed it),
// so that nothing calls it between sessions.
void gf_releaseSimProvider();
// At the end of the process: the recording file is closed and named.
void gf_endSimProvider();

}  // namespace tfx
