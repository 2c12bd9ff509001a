// The scan's report files: what was wrong in the aircraft.cfg files, each
// list sorted into its file under output/errors, and the files without any
// section under output/info.
#include <algorithm>
#include <fstream>

#include <fmt/format.h>

#include "app/exit_request.h"
#include "app/log.h"
#include "liveries/liveries_scan_state.h"

namespace fs = std::filesystem;

namespace tfx {

ScanReports scanReports;

void ScanReports::clear() {
    for (auto* list : {&invalidAirlines, &invalidModels, &fixes, &invalidFiles, &incompleteSections,
                       &noSectionFiles})
        list->clear();
}

bool ScanReports::empty() const {
    return invalidAirlines.empty() && invalidModels.empty() && fixes.empty() &&
           invalidFiles.empty() && incompleteSections.empty() && noSectionFiles.empty();
}

namespace {

bool lf_writeLines(const fs::path& path, const std::vector<std::string>& lines) {
    std::error_code ec;
    fs::create_directories(path.parent_path(), ec);
    if (ec) {
        gf_logLine(fmt::format("Error creating directories {}: {}", path.parent_path().string(),
                               ec.message()));
        return false;
    }
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    for (const std::string& line : lines) out << line << '\n';
    out.flush();
    if (!out) {
        gf_logLine(fmt::format("Error writing file {}: {}", path.string(), "write failed"));
        return false;
    }
    return true;
}

const char* lf_plural(std::size_t n) {
    return n == 1 ? "" : "s";
}

}  // namespace

void gf_writeScanReport(const fs::path& outputFolder) {
    ScanReports& r = scanReports;
    gf_logLine(r.empty() ? "\nNo errors" : "\nErrors:");
    const auto report = [&](std::vector<std::string>& lines, const char* folder, const char* name,
                            bool sort, bool unique, auto&& logLine) {
        if (lines.empty() || !gf_keepRunning()) return;
        if (sort) std::sort(lines.begin(), lines.end());
        if (unique) lines.erase(std::unique(lines.begin(), lines.end()), lines.end());
        const fs::path path = outputFolder / folder / name;
        if (lf_writeLines(path, lines)) gf_logLine(logLine(lines.size(), path.string()));
    };
    report(r.invalidAirlines, "errors", "InvalidAirlineCodes.txt", true, false,
           [](std::size_t n, const std::string& p) {
               return fmt::format("{:5} invalid airline code{}, see {}", n, lf_plural(n), p);
           });
    report(r.invalidModels, "errors", "InvalidAircraftCodes.txt", true, false,
           [](std::size_t n, const std::string& p) {
               return fmt::format("{:5} invalid model code{}, see {}", n, lf_plural(n), p);
           });
    report(r.fixes, "errors", "Fixes.txt", false, false, [](std::size_t n, const std::string& p) {
        return fmt::format("{:5} fixes, see {}", n, p);
    });
    report(r.invalidFiles, "errors", "InvalidAircraftCfgFiles.txt", true, false,
           [](std::size_t n, const std::string& p) {
               return fmt::format("{:5} invalid aircraft.cfg files, see {}", n, p);
           });
    report(r.incompleteSections, "errors", "IncompleFltsimSections.txt", true, true,
           [](std::size_t n, const std::string& p) {
               return fmt::format("{:5} incomplete [fltsim.x] sections, see {}", n, p);
           });
    if (!r.noSectionFiles.empty()) gf_logLine("\nInformation:");
    report(r.noSectionFiles, "info", "AircraftCfgWithNoFltsimSection.txt", true, false,
           [](std::size_t n, const std::string& p) {
               return fmt::format("{:5} empty aircraft.cfg files, see {}", n, p);
           });
}

}  // namespace tfx
