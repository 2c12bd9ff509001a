// Program entry. Until the session frame exists this opens the log, loads the
// parameters from the data folder and reports what it found.
#include <cstdio>
#include <exception>

#include <fmt/format.h>

#include "app/log.h"
#include "app/options.h"
#include "app/parameters.h"
#include "app/version.h"

namespace {

void printParameters() {
    using namespace tfx;
    auto line = [](const std::string& key, const std::string& value) {
        fmt::print("  {:<32} {}\n", key, value);
    };
    for (auto* p : params.plainBools) line(p->key, p->current ? "true" : "false");
    for (auto* p : params.boundBools) line(p->key, p->current ? "true" : "false");
    for (auto* p : params.plainInts) line(p->key, std::to_string(p->current));
    for (auto* p : params.boundInts) line(p->key, std::to_string(p->current));
    for (auto* p : params.strings) line(p->key, fmt::format("\"{}\"", p->current));
    for (auto* p : params.boundStrings) line(p->key, fmt::format("\"{}\"", p->current));
    for (auto* p : params.paths) line(p->key, fmt::format("\"{}\"", p->current.string()));
}

}  // namespace

int main() {
    using namespace tfx;
    try {
        gf_openLog();
        const auto place = gf_preReadWindowPlace();
        const int created = gf_checkRadiusParameters();
        gf_buildOptions();
        fmt::print("{} version {}\n", PROGRAM_NAME, gf_versionText(gf_runningVersion()));
        fmt::print("data folder: {}\n", gf_dataFolder().string());
        fmt::print("parameters: {} ({})\n", gf_parameterFilePath().string(),
                   created ? "created with defaults" : "read");
        fmt::print("window place: {}, {}\n", place.x_px, place.y_px);
        printParameters();
        const auto options = gf_options();
        fmt::print("traffic radius: {} nm, request radius {:.0f} m\n", options->RANGE,
                   options->requestRadius_m);
        gf_logLine("Start-up check finished");
        gf_closeLog();
        return 0;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "ZEPT: %s\n", e.what());
        gf_logError(e.what());
        gf_closeLog();
        return 1;
    }
}
