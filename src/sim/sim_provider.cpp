// Which simulator answers the simulator thread's calls: the simulator's own
// client library, or the built-in simulator.
#include "sim/sim_provider.h"

#include <memory>
#include <mutex>

#include "app/log.h"
#include "app/run_state.h"
#include "app/run_words.h"
#include "sim/builtin/builtin_sim_start.h"
#include "sim/simconnect_library.h"

namespace tfx {
namespace {

std::mutex providerLock;
std::unique_ptr<BuiltinSim> builtinSim;
std::unique_ptr<SimConnectLibrary> library;
std::filesystem::path recordingFile;

// The library provider, loaded if it can be; nullptr when the built-in
// simulator is to answer instead.
SimConnectApi* lf_libraryProvider() {
    auto files = gf_simConnectLibraryFiles(runWords.simconnectLibrary, gf_isMSFS2020());
    if (files.empty()) return nullptr;
    if (!library)
        library = std::make_unique<SimConnectLibrary>(std::move(files));
    else if (!library->loaded())
        library->setFiles(std::move(files));
    if (library->load()) return library.get();
    if (runWords.demo) {
        gf_logLine("No SimConnect library: the built-in simulator answers (--demo)");
        return nullptr;
    }
    return library.get();  // waits for the library as for the simulator
}

}  // namespace

bool gf_selectSimProvider() {
    std::lock_guard lock(providerLock);
    if (gf_simConnectApi() != nullptr) return false;
    if (SimConnectApi* api = lf_libraryProvider()) {
        gf_setSimConnectApi(api);
        return true;
    }
    if (!builtinSim) builtinSim = gf_startBuiltinSim(recordingFile);
    gf_setSimConnectApi(builtinSim.get());
    return true;
}

void gf_setSimRecording(const std::filesystem::path& file) {
    std::lock_guard lock(providerLock);
    recordingFile = file;
}

void gf_endSimProvider() {
    std::lock_guard lock(providerLock);
    if (builtinSim) builtinSim->endRecordingFile();
}

void gf_releaseSimProvider() {
    std::lock_guard lock(providerLock);
    SimConnectApi* api = gf_simConnectApi();
    if (api != nullptr && (api == builtinSim.get() || api == library.get()))
        gf_setSimConnectApi(nullptr);
}

}  // namespace tfx
