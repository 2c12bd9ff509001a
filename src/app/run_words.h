// The words a user may give on the command line. The Windows program knows
// only "--production"; the others serve scripted runs and machines without the
// real simulator or the RealTraffic application.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace tfx {

struct RunWords {
    bool production = false;          // "--production": read the data and end
    bool rtApp = false;               // "--rt-app": the road "RT App" for this run, not stored
    std::int32_t duration_s = 0;      // "--duration S": close as the user would after S s
    std::int32_t status_s = 5;        // "--status S": seconds between status lines, 0 none
    std::filesystem::path recording;  // "--record FILE": the simulator's positions as CSV
    std::int32_t liveryGaps_s = 0;    // "--livery-gaps S": the livery-gap report every S s
    bool demo = false;  // "--demo": the built-in simulator when no SimConnect library is found
    std::filesystem::path simconnectLibrary;  // "--simconnect FILE": this library, not a search
    std::filesystem::path tickFigures;  // "--tick-figures FILE": every tick's time, at the end
};
extern RunWords runWords;

// The words are UTF-8 (see pf_commandLineWords) and case-insensitive. Unknown words and bad values
// are skipped, each with a line in problems.
RunWords gf_readRunWords(int argc, char** argv, std::vector<std::string>& problems);

// The usage text, one word per line.
std::string gf_runWordsUsage();

}  // namespace tfx
