// Finding the simulator's packages: UserCfg.opt, the install path, the
// automatic choice of AI packages in Community, manifests and the walk's
// skip rules.
#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <optional>
#include <utility>
#include <vector>

#include "airports/install_path.h"
#include "airports/package_record.h"
#include "app/parameters.h"
#include "app/run_state.h"
#include "liveries/liveries_walk.h"
#include "platform/wide_text.h"
#include "support/environment.h"
#include "support/temp_workdir.h"

namespace fs = std::filesystem;
using namespace tfx;

namespace {

void lf_folders(const fs::path& base, std::initializer_list<const char*> names) {
    for (const char* n : names) fs::create_directories(base / n);
}

}  // namespace

TEST(PackageDetection, InstallPathFromUserCfg) {
    test::TempWorkdir dir;
    const fs::path local = dir.path() / "local", roaming = dir.path() / "roaming";
    test::ScopedEnvVar l(test::LOCAL_APP_DATA_VARIABLE, local.string());
    test::ScopedEnvVar r(test::ROAMING_APP_DATA_VARIABLE, roaming.string());
    EXPECT_EQ(gf_findInstallPath(), std::nullopt);

    // The file is UTF-8, and user names in its path are often not ASCII.
    const fs::path packages = dir.path() / pf_pathFromUtf8("Jörg's Sim ✈") / "Packages";
    lf_folders(packages, {"Community", "Official"});
    const auto candidates = gf_userCfgCandidates(local, roaming, true);
    fs::create_directories(candidates[1].parent_path());
    dir.write("roaming/Microsoft Flight Simulator/UserCfg.opt",
              "Version 63\nInstalledPackagesPath \"" + packages.string() + "\"\n");
    EXPECT_EQ(gf_findInstallPath(), packages);
    // MSFS 2024 wants Official2024 and its own folders.
    runChoice.store(std::make_shared<const RunChoice>(RunChoice{2, true}));
    EXPECT_EQ(gf_findInstallPath(), std::nullopt);
    runChoice.store(std::make_shared<const RunChoice>());

    // The first UserCfg.opt that exists counts, even when its path is wrong.
    fs::create_directories(candidates[0].parent_path());
    std::ofstream(candidates[0]) << "InstalledPackagesPath \"" << packages.string() << "\n";
    EXPECT_EQ(gf_installedPackagesPathOf(candidates[0]),
              "InstalledPackagesPath \"" + packages.string());  // one quote: the whole line
    EXPECT_EQ(gf_findInstallPath(), std::nullopt);

    // Only the first 64 lines are read.
    std::string late;
    for (int i = 0; i < 64; ++i) late += "x\n";
    dir.write("late.opt", late + "InstalledPackagesPath \"C:\\x\"\n");
    EXPECT_EQ(gf_installedPackagesPathOf(dir.path() / "late.opt"), std::nullopt);

    // The default place wins when it is a valid install.
    lf_folders(roaming / "Microsoft Flight Simulator" / "Packages", {"Community", "Official"});
    EXPECT_EQ(gf_findInstallPath(), roaming / "Microsoft Flight Simulator" / "Packages");
}

TEST(PackageDetection, ManifestSearch) {
    test::TempWorkdir dir;
    const std::string manifest =
        R"({"title":"T","package_version":"","version":"1.2.3","creator":7})";
    fs::path deep = dir.path() / "pkg";
    fs::create_directories(deep);
    dir.write("pkg/manifest.json", manifest);
    for (int i = 1; i <= 13; ++i) fs::create_directories(deep /= "d" + std::to_string(i));
    // A file 12 folder levels under its manifest finds it, 13 levels don't.
    const auto found = gf_searchManifest(deep.parent_path() / "x.bgl");
    ASSERT_TRUE(found);
    EXPECT_EQ(found->version, "1.2.3");
    EXPECT_EQ(found->title, "T");
    EXPECT_EQ(found->creator, "") << "not a string";
    EXPECT_FALSE(gf_searchManifest(deep / "x.bgl"));

    std::string big = R"({"title":"Big"})";
    big.resize(MAX_MANIFEST_BYTES, ' ');
    dir.write("big/manifest.json", (fs::create_directories(dir.path() / "big"), big));
    EXPECT_TRUE(gf_readManifest(dir.path() / "big" / "manifest.json"));
    dir.write("big/manifest.json", big + " ");
    EXPECT_FALSE(gf_readManifest(dir.path() / "big" / "manifest.json"));
    EXPECT_NE(dir.logText().find("Ignoring manifest larger than 4194304 bytes"), std::string::npos);
}

TEST(PackageDetection, AutomaticChoiceOfPackages) {
    test::TempWorkdir dir;
    const fs::path community = dir.path() / "Community";
    lf_folders(community, {"x-aig-aitraffic-oci_CVT_", "aig-aitraffic-oci-beta",
                           "fsltl-traffic-base-v2", "justflight-fstraffic-module",
                           "user-aitraffic-b", "user-aitraffic_CVT_a", "IVAO_MTL"});
    const auto folders = [&](const char* selector, bool msfs2020) {
        std::vector<std::string> names;
        for (const auto& f :
             gf_automaticFolders(community, gf_packageSelection(selector), msfs2020))
            names.push_back(f.filename().string());
        return names;
    };
    EXPECT_EQ(folders("MTL, FSLTL", false),
              (std::vector<std::string>{"IVAO_MTL", "fsltl-traffic-base-v2", "user-aitraffic-b"}));
    EXPECT_EQ(folders("AIG", false), std::vector<std::string>{"user-aitraffic-b"});
    EXPECT_EQ(folders("AIG, JF", true),
              (std::vector<std::string>{"aig-aitraffic-oci-beta", "justflight-fstraffic-module",
                                        "user-aitraffic-b"}));
    EXPECT_THROW(gf_packageSelection("AIG, AIG"), std::runtime_error);
    EXPECT_THROW(gf_packageSelection(""), std::runtime_error);
}

TEST(PackageDetection, WalkSkipsSceneryAndDeepFolders) {
    EXPECT_TRUE(gf_skippedFolder("/c/Community/pkg/inibuilds-a310"));
    EXPECT_TRUE(gf_skippedFolder("/c/Community/pkg/my-airport-stuff"));
    EXPECT_FALSE(gf_skippedFolder("/c/Community/pkg/Airport"));  // the words are case-sensitive
    EXPECT_FALSE(gf_skippedFolder(std::string(249, 'a')));
    EXPECT_TRUE(gf_skippedFolder(std::string(250, 'a')));
}

TEST(PackageDetection, PublisherAndAirportOfARecord) {
    test::TempWorkdir dir;
    fs::create_directories(dir.path() / "pkg" / "scenery");
    // Finds the second of each pair when the text holds the first.
    const auto finder = [](std::vector<std::pair<std::string, std::string>> table) {
        return [table](std::string_view text) -> std::optional<std::string> {
            for (const auto& [word, found] : table)
                if (text.find(word) != std::string_view::npos) return found;
            return std::nullopt;
        };
    };
    const PackageLookups lookups{
        finder({{"Asobo", "Asobo Studio"}, {"Microsoft", "Microsoft"}, {"orbx", "Orbx"}}),
        finder({{"eham", "EHAM"}, {"EGLL", "EGLL"}}),
        [](std::string_view code) { return code == "EGKK"; }};
    const auto publisher = [&](const std::string& manifest, const fs::path& bgl) {
        dir.write("pkg/manifest.json", manifest);
        PackagedFile file{bgl, std::nullopt, false};
        return gf_publisherOfRecord(file, lookups);
    };
    const fs::path bgl = dir.path() / "pkg" / "scenery" / "x.bgl";
    EXPECT_EQ(publisher("{}", dir.path() / "microsoft-AIRPORT-x" / "a.bgl"), "simaddon");
    EXPECT_EQ(publisher(R"({"manufacturer":"Microsoft"})", bgl), "simaddon");
    EXPECT_EQ(publisher(R"({"manufacturer":"Asobo studio"})", bgl), "simaddon");
    EXPECT_EQ(publisher(R"({"manufacturer":"x","creator":"orbx"})", bgl), "Orbx");
    EXPECT_EQ(publisher(R"({"manufacturer":"x"})", bgl), std::nullopt);

    // The folder's code beats the stem, the stem beats the manifest's title.
    dir.write("pkg/manifest.json", R"({"title":"London EGLL"})");
    PackagedFile inFolder{dir.path() / "airport-eham-amsterdam" / "EGKK.bgl", std::nullopt, false};
    EXPECT_EQ(gf_airportCodeOfRecord(inFolder, lookups), "EHAM");
    PackagedFile byStem{dir.path() / "pkg" / "scenery" / "EGKK.bgl", std::nullopt, false};
    EXPECT_EQ(gf_airportCodeOfRecord(byStem, lookups), "EGKK");
    EXPECT_FALSE(byStem.packageSearched) << "the manifest is read only when needed";
    PackagedFile byTitle{dir.path() / "pkg" / "scenery" / "EGXX.bgl", std::nullopt, false};
    EXPECT_EQ(gf_airportCodeOfRecord(byTitle, lookups), "EGLL");
}
