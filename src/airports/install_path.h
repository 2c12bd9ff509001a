// Where the simulator in use keeps its packages, and the package a file
// belongs to, read from the nearest manifest.json above it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tfx {

// The names that differ between the two simulators.
struct SimulatorNames {
    std::string_view packageFamily;  // under local application data / Packages
    std::string_view roamingFolder;
    std::string_view officialFolder;
};
const SimulatorNames& gf_simulatorNames(bool msfs2020);

// Where UserCfg.opt may stand, in the order tried.
std::vector<std::filesystem::path> gf_userCfgCandidates(const std::filesystem::path& localAppData,
                                                        const std::filesystem::path& roamingAppData,
                                                        bool msfs2020);
// The InstalledPackagesPath of the first 64 lines of a UserCfg.opt: the text
// between its first two quotes, else the whole line; nothing without a line.
std::optional<std::string> gf_installedPackagesPathOf(const std::filesystem::path& userCfg);
// A packages folder with its Community and official folders.
bool gf_isValidInstallPath(const std::filesystem::path& packages, bool msfs2020);

// The packages folder of the simulator in use, or nothing. Throws when the
// application data folders themselves can't be found.
std::optional<std::filesystem::path> gf_findInstallPath();
// install path / name when that is a folder; else nothing (logged).
std::optional<std::filesystem::path> gf_scanRootPath(std::string_view name);

struct PackageData {
    std::string title;
    std::string version;  // package_version, else version
    std::string manufacturer;
    std::string creator;
};
inline constexpr std::uintmax_t MAX_MANIFEST_BYTES = 4194304;
inline constexpr int MANIFEST_SEARCH_LEVELS = 12;

// One manifest.json; nothing when too large, unreadable or not an object.
std::optional<PackageData> gf_readManifest(const std::filesystem::path& manifest);
// The nearest manifest.json from path upwards, at most 12 folders up.
std::optional<PackageData> gf_searchManifest(const std::filesystem::path& path);

}  // namespace tfx
