// Which folders the livery scan looks at, and the walk through one of them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tfx {

enum class AiPackage : std::uint8_t { AIG = 0, FSLTL = 1, JF = 2, MTL = 3 };

// "AIG, FSLTL" -> AIG, FSLTL; throws "AI_PACKAGE_SELECTOR not set" for a
// value that isn't one of the permitted orderings.
std::vector<AiPackage> gf_packageSelection(const std::string& selector);

// Whether a Community sub-folder's name is a package of that kind.
bool gf_isPackageFolder(AiPackage kind, std::string_view name, bool msfs2020);

// The selected packages found in community, in selection order, then every
// user-aitraffic folder.
std::vector<std::filesystem::path> gf_automaticFolders(const std::filesystem::path& community,
                                                       const std::vector<AiPackage>& selection,
                                                       bool msfs2020);

// A sub-folder the walk doesn't enter: too long a path or a scenery name.
bool gf_skippedFolder(const std::string& utf8Path);

struct FolderWalk {
    std::size_t files = 0;     // aircraft.cfg files read
    std::size_t liveries = 0;  // records added
    std::size_t skippedFolders = 0;
};
// Reads every aircraft.cfg under folder into scanList with this rank.
FolderWalk gf_walkLiveryFolder(const std::filesystem::path& folder, std::uint16_t rank);

}  // namespace tfx
