// The built-in simulator as the provider of a process that has no other.
#include "sim/sim_provider.h"

#include <filesystem>
#include <memory>
#include <mutex>

#include <fmt/format.h>

#include "app/log.h"
#include "platform/process_inputs.h"
#include "platform/wide_text.h"
#include "sim/builtin/builtin_sim.h"
#include "sim/builtin/installed_titles.h"

namespace tfx {
namespace {

std::mutex providerLock;
std::unique_ptr<BuiltinSim> builtinSim;
std::filesystem::path recordingFile;

// Parked at Oxford Kidlington.
Scenario lf_defaultScenario() {
    Scenario s;
    s.default_ground_ft = 270;
    s.airports.push_back({"EGTK", 51.8369, -1.3200, 270, 2});
    s.user.path.push_back({0, 51.8369, -1.3200, std::nullopt});
    return s;
}

std::filesystem::path lf_scenarioPath() {
    if (const auto env = pf_environmentText("ZEPT_SIM_SCENARIO")) return pf_pathFromUtf8(*env);
    if (std::filesystem::exists("sim_scenario.json")) return "sim_scenario.json";
    return {};
}

}  // namespace

bool gf_selectSimProvider() {
    std::lock_guard lock(providerLock);
    if (gf_simConnectApi() != nullptr) return false;
    if (!builtinSim) {
        builtinSim = std::make_unique<BuiltinSim>();
        builtinSim->setRecordingLimit(0);
        if (!recordingFile.empty()) builtinSim->startRecordingFile(recordingFile);
        // What is installed, as the simulator finds it; a scenario that lists
        // titles of its own replaces these.
        if (const auto packages = gf_simPackagesFolder()) {
            auto titles = gf_readInstalledTitles(*packages);
            gf_logLine(fmt::format("Built-in simulator: {} installed titles in {}", titles.size(),
                                   packages->string()));
            builtinSim->setKnownTitles(std::move(titles));
        }
        const std::filesystem::path path = lf_scenarioPath();
        if (path.empty() || !builtinSim->loadScenario(path)) {
            builtinSim->setScenario(lf_defaultScenario());
            gf_logLine("Built-in simulator: default flight at EGTK");
        } else {
            gf_logLine(fmt::format("Built-in simulator: scenario {}", path.string()));
        }
        builtinSim->startThread();
        builtinSim->run();
        builtinSim->loadFlight();
    }
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
    if (builtinSim && gf_simConnectApi() == builtinSim.get()) gf_setSimConnectApi(nullptr);
}

}  // namespace tfx
