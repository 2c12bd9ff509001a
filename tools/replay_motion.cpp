// Replays a scenario of the stand-in application through the traffic engine
// faster than real time and prints the quality figures of the motion, in the
// air and on the ground.
//
//   replay_motion [scenario.csv] [recording.csv]
//
// A scenario that names its airport is played there, with the stands of the
// airport's file in airports/archive/stock beside the scenario (data/ for
// the bundled ones). With a second argument the recording is written for
// scripts/plot_motion.py.
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "app/log.h"
#include "replay_motion_ground.h"
#include "replay_motion_lib.h"

int main(int argc, char** argv) {
    using namespace tfx;
    const std::string path = argc > 1 ? argv[1] : "data/rt_scenario_egtk.csv";
    int bad = 0;
    const auto scenario = scenario::gf_readScenario(path, &bad);
    if (!scenario) {
        fmt::print(stderr, "cannot read {}\n", path);
        return 1;
    }
    // Its log goes beside the system's temporary files, never into the folder
    // it is run from (usually the repository's root).
    gf_openLogAt(std::filesystem::temp_directory_path() / "replay_motion_Log.txt");
    const replay::Setup setup = replay::gf_setupFor(
        *scenario, std::filesystem::path(path).parent_path() / "airports" / "archive" / "stock");
    const replay::Recording rec = replay::gf_replay(*scenario, setup);
    fmt::print("{} reports ({} bad lines), {} frames at {}{}\n", scenario->reports.size(), bad,
               rec.samples.size(), setup.airport,
               setup.airportFile.empty()
                   ? std::string(" (no stands)")
                   : fmt::format(" ({} stands)", loadedAirport.file.stands.size()));
    fmt::print("{}", replay::gf_figuresText(replay::gf_figures(rec)));
    fmt::print("\non the ground\n{}", replay::gf_groundFiguresText(replay::gf_groundFigures(rec)));
    fmt::print("\n");
    for (const auto& [hexid, states] : rec.states) {
        std::string line;
        for (const auto& s : states) line += (line.empty() ? "" : " > ") + s;
        const auto removed = rec.removedAt.find(hexid);
        fmt::print("{:8} {}{}\n", rec.callsigns.at(hexid), line,
                   removed == rec.removedAt.end()
                       ? std::string()
                       : fmt::format(" (removed at {:.1f} s)",
                                     (removed->second - setup.startTick) / 100.0));
    }
    if (argc > 2) {
        std::ofstream out(argv[2], std::ios::binary);
        out << replay::gf_recordingText(rec);
    }
    gf_closeLog();
    return 0;
}
