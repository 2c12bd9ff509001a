// Plays the RealTraffic application on loopback from a scenario file, for
// running ZEPT on the road "RT App" without the real application.
//
//   rt_app_standin [--mode today|public] [--unicast] [--lan] [--no-markers]
//                  [--loss P] [--duplicate P] [--reorder P] [--positions FILE]
//                  [--freeze AFTER_S FOR_S]
//                  [--scenario FILE] [--parked FILE] [--tcp-port N] [--traffic-port N]
//                  [--weather-port N] [--cycle-ms N] [--qnh HPA] [--start S]
//                  [--once] [--no-loop] [--vanish] [--verbose]
//
// --mode public: the real application's public forms (see
// rt_app_standin_forms.h), broadcast on the loopback network unless --unicast, on the LAN
// with --lan.
// --positions: where to write the user positions ZEPT reported (lat,lon).
// --start: the scenario's second at the connection (history lies before it).
// --parked: a week of parked aircraft at one airport (data/parked/*.csv);
// parked requests get those on their stands now instead of the scenario's list.
// A looped scenario flies each round under other transponder codes.
#include <csignal>
#include <cstdlib>
#include <fstream>
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
               "usage: rt_app_standin [--mode today|public] [--unicast] [--lan] [--no-markers] "
               "[--loss P]\n"
               "                      [--duplicate P] [--reorder P] [--positions FILE] "
               "[--freeze AFTER_S FOR_S]\n"
               "                      [--scenario FILE] [--parked FILE] [--tcp-port N] "
               "[--traffic-port N] "
               "[--weather-port N]\n"
               "                      [--cycle-ms N] [--qnh HPA] [--start S] [--once] [--no-loop] "
               "[--vanish] [--verbose]\n");
    return 2;
}

}  // namespace

int main(int argc, char** argv) {
    tfx::standin::App app;
    std::string path = "data/rt_scenario_egtk.csv";
    std::string positionsPath;
    std::string parkedPath;
    tfx::standin::Form form = tfx::standin::Form::today;
    bool broadcast = true, lan = false, markers = true;
    int cycle_ms = 0;
    for (int i = 1; i < argc; ++i) {
        const std::string arg = argv[i];
        const bool hasValue = i + 1 < argc;
        if (arg == "--mode" && hasValue) {
            const auto f = tfx::standin::gf_formOf(argv[++i]);
            if (!f) return lf_usage();
            form = *f;
        } else if (arg == "--unicast")
            broadcast = false;
        else if (arg == "--lan")
            lan = true;
        else if (arg == "--no-markers")
            markers = false;
        else if (arg == "--loss" && hasValue)
            app.config.channel.loss = std::atof(argv[++i]);
        else if (arg == "--duplicate" && hasValue)
            app.config.channel.duplicate = std::atof(argv[++i]);
        else if (arg == "--reorder" && hasValue)
            app.config.channel.reorder = std::atof(argv[++i]);
        else if (arg == "--freeze" && i + 2 < argc) {
            app.config.freezeAfter_s = std::atof(argv[++i]);
            app.config.freezeFor_s = std::atof(argv[++i]);
        } else if (arg == "--positions" && hasValue)
            positionsPath = argv[++i];
        else if (arg == "--scenario" && hasValue)
            path = argv[++i];
        else if (arg == "--parked" && hasValue)
            parkedPath = argv[++i];
        else if (arg == "--tcp-port" && hasValue)
            app.config.tcpPort = tfx::gf_portNumber(argv[++i]);
        else if (arg == "--traffic-port" && hasValue)
            app.config.trafficPort = tfx::gf_portNumber(argv[++i]);
        else if (arg == "--weather-port" && hasValue)
            app.config.weatherPort = tfx::gf_portNumber(argv[++i]);
        else if (arg == "--cycle-ms" && hasValue)
            cycle_ms = std::max(50, std::atoi(argv[++i]));
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
    if (form == tfx::standin::Form::public_) {
        const std::string to = tfx::standin::gf_usePublicForm(app.config, broadcast, lan);
        fmt::print("public form, datagrams to {}{}\n", to,
                   lan && to == tfx::standin::LOOPBACK_BROADCAST
                       ? " (no LAN broadcast address here: loopback broadcast)"
                       : "");
    }
    if (!markers) app.config.markers = false;
    if (cycle_ms > 0) app.config.cycle_ms = cycle_ms;
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
    if (!parkedPath.empty()) {
        auto week = tfx::parked::gf_readParkedWeek(parkedPath, &bad);
        if (!week || week->stays.empty() || week->airport.empty()) {
            fmt::print(stderr, "cannot read parked aircraft from {}\n", parkedPath);
            return 1;
        }
        app.week = std::move(*week);
        app.config.airport = app.week.airport;
        fmt::print("{}: {} stays at {}{}\n", parkedPath, app.week.stays.size(), app.week.airport,
                   bad ? fmt::format(", {} bad lines skipped", bad) : "");
    }
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
    if (!positionsPath.empty()) {
        std::ofstream out(positionsPath + ".tmp");
        out << "lat,lon\n";
        for (const auto& [lat, lon] : app.reported.copy())
            out << fmt::format("{:.6f},{:.6f}\n", lat, lon);
        out.close();
        std::rename((positionsPath + ".tmp").c_str(), positionsPath.c_str());
    }
    return 0;
}
