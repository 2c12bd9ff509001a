// The generated simulator installation (data/ai_install_small) where the
// install path search finds it: a UserCfg.opt under local application data
// names its folder in the source tree (read only). For tests that run whole
// sessions, which scan the installed AI packages at start.
#pragma once

#include <filesystem>
#include <fstream>

#include "support/environment.h"

namespace tfx::test {

class DemoInstallation {
public:
    explicit DemoInstallation(const std::filesystem::path& folder)
        : local_(LOCAL_APP_DATA_VARIABLE, lf_layOut(folder).string()) {}
    DemoInstallation(const DemoInstallation&) = delete;
    DemoInstallation& operator=(const DemoInstallation&) = delete;

private:
    // Returns the local application data folder it made.
    static std::filesystem::path lf_layOut(const std::filesystem::path& folder) {
        namespace fs = std::filesystem;
        const fs::path packages =
            fs::path(ZEPT_SOURCE_DIR) / "data" / "ai_install_small" / "Packages";
        const fs::path local = folder / "local";
        fs::create_directories(local / "MSFSPackages");
        std::ofstream(local / "MSFSPackages" / "UserCfg.opt")
            << "InstalledPackagesPath \"" << packages.string() << "\"\n";
        return local;
    }

    ScopedEnvVar local_;
};

}  // namespace tfx::test
