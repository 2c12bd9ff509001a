// Plays the RealTraffic application on loopback from a scenario file, for
// running ZEPT on the road "RT App" without the real application.
//
//   rt_app_standin [--scenario FILE] [--tcp-port N] [--traffic-port N]
//                  [--weather-port N] [--cycle-ms N] [--qnh HPA] [--start S]
//                  [--once] [--no-loop] [--vanish] [--verbose]
//
// --start: the scenario's second at the connection (history lies before it).
// A looped scenario flies each round under other transponder codes.
#include <csignal>
#include <cstdlib>
#include <string>

#include <fmt/format.h>

#include "platform/sockets.h"
#include "rt_app_standin_lib.h"

namespace {

tfx::standin::App* running = nullptr;

void lf_onSignal(int) {
    if (running) running->stop = true;
}

int lf_usage() {
    fmt::print(stderr,
               "usage: rt_app_standin [--scenario FILE] [--tcp-port N] [--traffic-port N] "
               "[--weather-port N]\n"
               "                      [--cycle-ms N] [--qnh HPA] [--start S] [--once] [--no-loop] "
               "[--vanish] [--verbose]\n");
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    tfx::standin::App app;
    std::string path = "data/rt_scenario_egtk.csv";
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (arg == "--scenario" && hasValue)
            path = argv[++i];
        else if (arg == "--tcp-port" && hasValue)
            app.config.tcpPort = tfx::gf_portNumber(argv[++i]);
        else if (arg == "--traffic-port" && hasValue)
            app.config.trafficPort = tfx::gf_portNumber(argv[++i]);
        else if (arg == "--weather-port" && hasValue)
            app.config.weatherPort = tfx::gf_portNumber(argv[++i]);
        else if (arg == "--cycle-ms" && hasValue)
            app.config.cycle_ms = std::max(50, std::atoi(argv[++i]));
        else if (arg == "--qnh" && hasValue)
            app.config.qnh_hPa = std::atof(argv[++i]);
        else if (arg == "--start" && hasValue)
            app.config.startOffset_s = std::max(0.0, std::atof(argv[++i]));
        else if (arg == "--once")
            app.config.reconnect = false;
        else if (arg == "--no-loop")
            app.config.loop = false;
        else if (arg == "--vanish")
            app.config.vanish = true;
        else if (arg == "--verbose")
            app.config.verbose = true;
        else
            return lf_usage();
    }
    if (app.config.tcpPort == 0 || app.config.trafficPort == 0 || app.config.weatherPort == 0)
        return lf_usage();
    int bad = 0;
    auto scene = tfx::scenario::gf_readScenario(path, &bad);
    if (!scene) {
        fmt::print(stderr, "cannot read scenario {}\n", path);
        return 1;
    }
    app.scene = std::move(*scene);
    fmt::print("{}: {} reports, {} parked, {:.0f} s{}\n", path, app.scene.reports.size(),
               app.scene.parked.size(), app.scene.length_s(),
               bad ? fmt::format(", {} bad lines skipped", bad) : "");
    running = &app;
    std::signal(SIGINT, lf_onSignal);
    std::signal(SIGTERM, lf_onSignal);
    fmt::print("connecting to 127.0.0.1:{} ...\n", app.config.tcpPort);
    tfx::standin::gf_runStandin(app);
    fmt::print(
        "connections {}, positions {}, buffer requests {}, parked requests {}, live cycles {}, "
        "exits {}\n",
        app.stats.connections.load(), app.stats.positions.load(), app.stats.bufferRequests.load(),
        app.stats.parkedRequests.load(), app.stats.liveCycles.load(), app.stats.exits.load());
    return 0;
}
