// The generated simulator installation (data/ai_install_small) where the
// install path search finds it: a UserCfg.opt under local application data
// names a link into the source tree. For tests that run whole sessions, which
// scan the installed AI packages at start.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "support/environment.h"

namespace tfx::test {

class DemoInstallation {
public:
    explicit DemoInstallation(const std::filesystem::path& folder) {
        namespace fs = std::filesystem;
        const fs::path packages = folder / "sim" / "Packages";
        fs::create_directories(packages.parent_path());
        fs::create_directory_symlink(
            fs::path(ZEPT_SOURCE_DIR) / "data" / "ai_install_small" / "Packages", packages);
        const fs::path local = folder / "local";
        fs::create_directories(local / "MSFSPackages");
        std::ofstream(local / "MSFSPackages" / "UserCfg.opt")
            << "InstalledPackagesPath \"" << packages.string() << "\"\n";
        setEnvVar("XDG_DATA_HOME", local.string());
    }
    ~DemoInstallation() { setEnvVar("XDG_DATA_HOME", ""); }
    DemoInstallation(const DemoInstallation&) = delete;
    DemoInstallation& operator=(const DemoInstallation&) = delete;
};

}  // namespace tfx::test
