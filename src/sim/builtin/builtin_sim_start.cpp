#include "sim/builtin/builtin_sim_start.h"

#include <optional>

#include <fmt/format.h>

#include "app/log.h"
#include "platform/process_inputs.h"
#include "sim/builtin/installed_titles.h"

namespace tfx {
namespace {

// Parked at Oxford Kidlington.
Scenario lf_defaultScenario() {
    Scenario s;
    s.default_ground_ft = 270;
    s.airports.push_back({"EGTK", 51.8369, -1.3200, 270, 2});
    s.user.path.push_back({0, 51.8369, -1.3200, std::nullopt});
    return s;
}

std::filesystem::path lf_scenarioPath() {
    if (auto named = pf_environmentPath("ZEPT_SIM_SCENARIO")) return *named;
    if (std::filesystem::exists("sim_scenario.json")) return "sim_scenario.json";
    return {};
}

}  // namespace

std::unique_ptr<BuiltinSim> gf_startBuiltinSim(const std::filesystem::path& recording) {
    auto sim = std::make_unique<BuiltinSim>();
    sim->setRecordingLimit(0);
    if (!recording.empty()) sim->startRecordingFile(recording);
    // What is installed, as the simulator finds it; a scenario that lists
    // titles of its own replaces these.
    if (const auto packages = gf_simPackagesFolder()) {
        auto titles = gf_readInstalledTitles(*packages);
        gf_logLine(fmt::format("Built-in simulator: {} installed titles in {}", titles.size(),
                               packages->string()));
        sim->setKnownTitles(std::move(titles));
    }
    const std::filesystem::path path = lf_scenarioPath();
    if (path.empty() || !sim->loadScenario(path)) {
        sim->setScenario(lf_defaultScenario());
        gf_logLine("Built-in simulator: default flight at EGTK");
    } else {
        gf_logLine(fmt::format("Built-in simulator: scenario {}", path.string()));
    }
    sim->startThread();
    sim->run();
    sim->loadFlight();
    return sim;
}

}  // namespace tfx
