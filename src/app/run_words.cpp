#include "app/run_words.h"

#include <algorithm>
#include <cctype>
#include <charconv>
#include <string_view>

#include <fmt/format.h>

#include "platform/wide_text.h"

namespace tfx {

RunWords runWords;

namespace {

constexpr std::int32_t MAX_DURATION_S = 7 * 24 * 3600;
constexpr std::int32_t MAX_STATUS_S = 3600;

std::string lf_lower(std::string_view word) {
    std::string out(word);
    std::transform(out.begin(), out.end(), out.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return out;
}

// A whole number of seconds within [0, max]; none otherwise.
bool lf_readSeconds(std::string_view text, std::int32_t max, std::int32_t& out) {
    std::int32_t value = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (ec != std::errc{} || end != text.data() + text.size() || value < 0 || value > max)
        return false;
    out = value;
    return true;
}

}  // namespace

RunWords gf_readRunWords(int argc, char** argv, std::vector<std::string>& problems) {
    RunWords words;
    for (int i = 1; i < argc; ++i) {
        const std::string word = lf_lower(argv[i]);
        const bool hasValue = i + 1 < argc;
        if (word == "--production") {
            words.production = true;
        } else if (word == "--rt-app") {
            words.rtApp = true;
        } else if (word == "--duration" || word == "--status" || word == "--livery-gaps") {
            const bool duration = word == "--duration";
            std::int32_t& target = duration             ? words.duration_s
                                   : word == "--status" ? words.status_s
                                                        : words.liveryGaps_s;
            const std::int32_t max = duration ? MAX_DURATION_S : MAX_STATUS_S;
            if (!hasValue || !lf_readSeconds(argv[i + 1], max, target)) {
                problems.push_back(
                    fmt::format("{} needs a number of seconds (0 to {}){}", word, max,
                                hasValue ? fmt::format(", not '{}'", argv[i + 1]) : std::string()));
            }
            if (hasValue) ++i;
        } else if (word == "--demo") {
            words.demo = true;
        } else if (word == "--record" || word == "--simconnect" || word == "--tick-figures") {
            if (hasValue && argv[i + 1][0] != '\0') {
                (word == "--record"       ? words.recording
                 : word == "--simconnect" ? words.simconnectLibrary
                                          : words.tickFigures) = pf_pathFromUtf8(argv[++i]);
            } else {
                problems.push_back(fmt::format("{} needs a file name", word));
            }
        } else {
            problems.push_back(fmt::format("unknown word '{}' ignored", argv[i]));
        }
    }
    return words;
}

std::string gf_runWordsUsage() {
    return "  --production      read the data files and end\n"
           "  --rt-app          take the road \"RT App\" in this run (the stored choice stays)\n"
           "  --duration S      close after S seconds, as the close button would\n"
           "  --status S        a status line every S seconds (0: none; default 5)\n"
           "  --record FILE     write every position the built-in simulator is sent to FILE\n"
           "  --livery-gaps S   also write output/info/LiveryGaps.txt every S seconds (0: at the\n"
           "                    end of the traffic only)\n"
           "  --demo            the built-in simulator's demo flight when no SimConnect library\n"
           "                    is found (on Windows; elsewhere it always answers)\n"
           "  --simconnect FILE talk to the simulator through this SimConnect library\n"
           "  --tick-figures FILE  write every tick's time and start lateness to FILE at the end\n";
}

}  // namespace tfx
