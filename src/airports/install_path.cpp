#include "airports/install_path.h"

#include <fstream>
#include <stdexcept>

#include <fmt/format.h>

#include "app/log.h"
#include "app/parameters.h"
#include "app/run_state.h"
#include "platform/known_folders.h"
#include "platform/wide_text.h"

namespace fs = std::filesystem;

namespace tfx {

namespace {

constexpr SimulatorNames MSFS2020_NAMES{"Microsoft.FlightSimulator_8wekyb3d8bbwe",
                                        "Microsoft Flight Simulator", "Official"};
constexpr SimulatorNames MSFS2024_NAMES{"Microsoft.Limitless_8wekyb3d8bbwe",
                                        "Microsoft Flight Simulator 2024", "Official2024"};
constexpr int USERCFG_LINES_READ = 64;

bool lf_isFolder(const fs::path& path) {
    std::error_code ec;
    return fs::is_directory(path, ec);
}

}  // namespace

const SimulatorNames& gf_simulatorNames(bool msfs2020) {
    return msfs2020 ? MSFS2020_NAMES : MSFS2024_NAMES;
}

std::vector<fs::path> gf_userCfgCandidates(const fs::path& localAppData,
                                           const fs::path& roamingAppData, bool msfs2020) {
    const SimulatorNames& names = gf_simulatorNames(msfs2020);
    return {
        localAppData / "Packages" / names.packageFamily / "LocalCache" / "UserCfg.opt",
        roamingAppData / names.roamingFolder / "UserCfg.opt",
        localAppData / "Packages" / "Microsoft.FlightDashboard_8wekyb3d8bbwe" / "LocalCache" /
            "UserCfg.opt",
        localAppData / "MSFSPackages" / "UserCfg.opt",
    };
}

std::optional<std::string> gf_installedPackagesPathOf(const fs::path& userCfg) {
    std::ifstream in(userCfg, std::ios::binary);
    std::string line;
    for (int i = 0; i < USERCFG_LINES_READ && std::getline(in, line); ++i) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.find("InstalledPackagesPath") == std::string::npos) continue;
        const std::size_t open = line.find('"');
        const std::size_t close = open == std::string::npos ? open : line.find('"', open + 1);
        if (close != std::string::npos && close > open + 1)
            return line.substr(open + 1, close - open - 1);
        return line;
    }
    return std::nullopt;
}

bool gf_isValidInstallPath(const fs::path& packages, bool msfs2020) {
    return lf_isFolder(packages) && lf_isFolder(packages / "Community") &&
           lf_isFolder(packages / gf_simulatorNames(msfs2020).officialFolder);
}

std::optional<fs::path> gf_findInstallPath() {
    const bool msfs2020 = gf_isMSFS2020();
    const auto roaming = pf_roamingAppData();
    if (!roaming) throw std::runtime_error("Could not find the AppData path");
    const auto local = pf_localAppData();
    if (!local) throw std::runtime_error("Could not find the Local AppData path");

    const fs::path byDefault = *roaming / gf_simulatorNames(msfs2020).roamingFolder / "Packages";
    if (gf_isValidInstallPath(byDefault, msfs2020)) return byDefault;

    for (const fs::path& candidate : gf_userCfgCandidates(*local, *roaming, msfs2020)) {
        std::error_code ec;
        if (!fs::exists(candidate, ec)) continue;
        const auto path = gf_installedPackagesPathOf(candidate);
        // The simulator writes the file in UTF-8 (a user name in the path
        // is often not ASCII).
        if (path && gf_isValidInstallPath(pf_pathFromUtf8(*path), msfs2020))
            return pf_pathFromUtf8(*path);
        return std::nullopt;  // the first UserCfg.opt found is the one that counts
    }
    return std::nullopt;
}

std::optional<fs::path> gf_scanRootPath(std::string_view name) {
    const fs::path& install =
        gf_isMSFS2020() ? params.MSFS_INSTALL_PATH.current : params.MSFS_2024_INSTALL_PATH.current;
    if (install.empty()) {
        gf_logError("Install path is empty?");
        return std::nullopt;
    }
    const fs::path root = install / name;
    if (!lf_isFolder(root)) {
        gf_logError(fmt::format("'{}' does not exist or is not a directory.", root.string()));
        return std::nullopt;
    }
    return root;
}

}  // namespace tfx
