// The whole scan on the generated installation and on real aircraft.cfg
// files: the report files hold exactly the faults seeded, the stored file
// holds the liveries that must be there and none that mustn't.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>

#include <nlohmann/json.hpp>

#include "app/exit_request.h"
#include "app/parameters.h"
#include "app/run_flags.h"
#include "app/run_state.h"
#include "app/user_exception.h"
#include "liveries/liveries_scan.h"
#include "liveries/liveries_scan_state.h"
#include "liveries/reference_db.h"
#include "liveries/scanned_liveries_file.h"
#include "sim/builtin/installed_titles.h"
#include "support/sealed_dbase.h"
#include "support/temp_workdir.h"

namespace fs = std::filesystem;
using namespace tfx;

namespace {

// ZEPT_SCAN_TREE names another generated tree (the large one) to check.
const fs::path SMALL_TREE = std::getenv("ZEPT_SCAN_TREE") != nullptr
                                ? fs::path(std::getenv("ZEPT_SCAN_TREE"))
                                : fs::path(ZEPT_SOURCE_DIR) / "data" / "ai_install_small";
const fs::path REAL_CFG = fs::path(ZEPT_TESTDATA_DIR) / "aircraft_cfg";

// The reports write paths as the system does; the seeded lines use "/".
std::string lf_slashes(std::string line) {
#ifdef _WIN32
    std::replace(line.begin(), line.end(), '\\', '/');
#endif
    return line;
}

std::multiset<std::string> lf_lines(const fs::path& path) {
    std::multiset<std::string> lines;
    std::ifstream in(path);
    for (std::string line; std::getline(in, line);) lines.insert(lf_slashes(line));
    return lines;
}

void lf_replaceAll(std::string& text, const std::string& from, const std::string& to) {
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
}

class LiveriesScan : public ::testing::Test {
protected:
    void SetUp() override {
        // A whole session run before in this process may have left its end behind.
        gf_clearExitRequest();
        userClosing = 0;
        runChoice.store(std::make_shared<const RunChoice>());
        gf_clearReferenceData();
        test::sealDbase(dir, test::bundledDbaseXml());
        ASSERT_TRUE(gf_readDbase());
        fs::create_directories(dir.path() / "output" / "errors");
    }
    void TearDown() override {
        scanList.clear();
        gf_clearReferenceData();
    }

    const Livery* find(const std::vector<Livery>& list, const std::string& title) {
        const auto it = std::find_if(list.begin(), list.end(),
                                     [&](const Livery& l) { return l.title == title; });
        return it == list.end() ? nullptr : &*it;
    }

    test::TempWorkdir dir;
};

}  // namespace

TEST_F(LiveriesScan, GeneratedTreeReportsEverySeededFaultAndNothingElse) {
    std::ifstream in(SMALL_TREE / "seeded.json");
    const auto seeded = nlohmann::json::parse(in);
    const fs::path packages = SMALL_TREE / "Packages";
    params.MSFS_INSTALL_PATH.current = packages;
    params.LIG_PRIORITIZE.current = false;  // so that every livery made stays
    // A stale report of an earlier scan must go.
    dir.write("output/errors/Stale.txt", "old\n");

    gf_scanLiveries();

    for (const auto& [name, lines] : seeded["reports"].items()) {
        std::multiset<std::string> expected;
        for (std::string line : lines) {
            lf_replaceAll(line, "<PACKAGES>", packages.string());
            expected.insert(lf_slashes(line));
        }
        const fs::path file = dir.path() / "output" /
                              (name == "AircraftCfgWithNoFltsimSection.txt" ? "info" : "errors") /
                              name;
        std::multiset<std::string> got = lf_lines(file);
        if (name == "IncompleFltsimSections.txt") {  // the file has no equal neighbours
            std::set<std::string> unique(expected.begin(), expected.end());
            expected = std::multiset<std::string>(unique.begin(), unique.end());
        }
        std::vector<std::string> extra, missing;
        std::set_difference(got.begin(), got.end(), expected.begin(), expected.end(),
                            std::back_inserter(extra));
        std::set_difference(expected.begin(), expected.end(), got.begin(), got.end(),
                            std::back_inserter(missing));
        EXPECT_TRUE(extra.empty()) << name << " has lines not seeded, first: " << extra.front();
        EXPECT_TRUE(missing.empty()) << name << " misses seeded lines, first: " << missing.front();
    }
    EXPECT_FALSE(fs::exists(dir.path() / "output" / "errors" / "Stale.txt"));
    const std::string log = dir.logText();
    for (const std::string line : seeded["log"])
        EXPECT_NE(log.find(line), std::string::npos) << line;
    EXPECT_NE(
        log.find("liveries found in " + (packages / "Community" / "aig-aitraffic-oci").string()),
        std::string::npos);
    for (const char* notTaken : {"_CVT_", "fsdreamteam"})
        EXPECT_EQ(
            log.find(std::string("found folder: '") + (packages / "Community").string() + "/" +
                     (notTaken[0] == '_' ? "aig-aitraffic-oci_CVT_old" : "fsdreamteam-gsx-pro")),
            std::string::npos);

    std::vector<Livery> stored;
    ASSERT_TRUE(gf_readScannedLiveries(stored, gf_scannedLiveriesPath()));
    for (const auto& p : seeded["present"]) {
        const Livery* l = find(stored, p["title"]);
        ASSERT_NE(l, nullptr) << p["title"];
        if (p["known_reg"]) continue;  // the reference data's record decides
        EXPECT_EQ(gf_airlineCode(l->airline), p["airline"].get<std::string>()) << p["title"];
        EXPECT_EQ(gf_modelCode(l->model), p["model"].get<std::string>()) << p["title"];
        EXPECT_EQ(l->regcode, p["regcode"].get<std::string>()) << p["title"];
    }
    for (const std::string title : seeded["absent"])
        EXPECT_EQ(find(stored, title), nullptr) << title;

    // The simulator, reading the same files its own way, knows every title
    // taken: in UTF-16 and CP1252 files too.
    std::set<std::string> installed;
    for (const KnownTitle& t : gf_readInstalledTitles(packages)) installed.insert(t.title);
    for (const Livery& l : stored) EXPECT_TRUE(installed.contains(l.title)) << l.title;
    EXPECT_TRUE(installed.contains("Cessna Skyhawk G1000 Asobo"));
}

TEST_F(LiveriesScan, RealFilesReadInPlace) {
    params.LIG_AUTOMATIC.current = false;
    params.lfolder[0].current = REAL_CFG.string();
    gf_scanLiveries();

    std::vector<Livery> stored;
    ASSERT_TRUE(gf_readScannedLiveries(stored, gf_scannedLiveriesPath()));
    std::set<std::string> titles;
    for (const Livery& l : stored) {
        titles.insert(l.title);
        // No airline in these files and regcodes nobody knows: private aircraft.
        EXPECT_EQ(gf_airlineCode(l.airline), "PVT") << l.title;
        EXPECT_EQ(gf_modelCode(l.model), "A20N") << l.title;
    }
    // The base aircraft's four sections and the two livery-only folders that
    // reach their type through base_container.
    EXPECT_EQ(titles,
              (std::set<std::string>{"Airbus A320neo", "Airbus A320 Neo Asobo AirTraffic 00",
                                     "Airbus A320 Neo Asobo AirTraffic 01",
                                     "Airbus A320 Neo Asobo AirTraffic 02", "FlyByWire A320 NEO",
                                     "FlyByWire A320neo XMAS Edition"}));
    EXPECT_EQ(find(stored, "Airbus A320 Neo Asobo AirTraffic 01")->regcode, "N320C");
    // A file under another name isn't looked at by the walk; read alone, its
    // heavy with an empty icao_airline and an unknown regcode is reported.
    const fs::path a380 = REAL_CFG / "fbw_a380x_aircraft.cfg";
    EXPECT_EQ(lf_searchLiveriesinFile(1, a380), 0u);
    const auto& incomplete = scanReports.incompleteSections;
    EXPECT_NE(std::find(incomplete.begin(), incomplete.end(),
                        "'FlyByWire A380X' '" + a380.string() +
                            "' has no airline and regcode not in dbase"),
              incomplete.end());
    EXPECT_NE(
        std::find(incomplete.begin(), incomplete.end(),
                  a380.string() + " [FLTSIM.0] icao_airline is missing, or it has invalid info"),
        incomplete.end());
}

TEST_F(LiveriesScan, NothingToScanTellsTheWayOut) {
    const auto code = [] {
        try {
            gf_scanLiveries();
        } catch (const UserRelatedException& e) {
            return e.code;
        }
        return 0;
    };
    params.LIG_AUTOMATIC.current = false;
    EXPECT_EQ(code(), 48);
    params.lfolder[3].current = (dir.path() / "nowhere").string();
    EXPECT_EQ(code(), 243);
    params.lfolder[3].current = dir.path().string();  // a folder without aircraft
    EXPECT_EQ(code(), 554);
    params.LIG_AUTOMATIC.current = true;
    fs::create_directories(dir.path() / "sim" / "Community" / "aig-aitraffic-oci-beta");
    params.MSFS_INSTALL_PATH.current = dir.path() / "sim";
    runChoice.store(std::make_shared<const RunChoice>(RunChoice{2, true}));
    params.MSFS_2024_INSTALL_PATH.current = dir.path() / "sim";
    EXPECT_EQ(code(), 148) << "the beta serves MSFS 2020 only";
    runChoice.store(std::make_shared<const RunChoice>());
    EXPECT_EQ(code(), 553) << "found, but empty";
    EXPECT_FALSE(fs::exists(gf_scannedLiveriesPath()));
}

TEST_F(LiveriesScan, LowerPackageLosesOnlyTheKeysAHigherOneHas) {
    const auto cfg = [&](const std::string& folder, const std::string& model,
                         const std::vector<std::pair<std::string, std::string>>& sections) {
        std::string text = "[GENERAL]\nicao_type_designator = \"" + model + "\"\n";
        for (std::size_t n = 0; n < sections.size(); ++n)
            text += fmt::format("[fltsim.{}]\ntitle = {}\nicao_airline = {}\natc_id = N{}X\n", n,
                                sections[n].first, sections[n].second, n);
        fs::create_directories(dir.path() / folder);
        dir.write(folder + "/aircraft.cfg", text);
    };
    cfg("one/a", "B738", {{"DLH one", "DLH"}});
    cfg("two/a", "B738", {{"DLH two", "DLH"}, {"BAW two", "BAW"}});
    cfg("two/b", "A320", {{"DLH two A320", "DLH"}});
    params.LIG_AUTOMATIC.current = false;
    params.lfolder[0].current = (dir.path() / "one").string();
    params.lfolder[1].current = (dir.path() / "two").string();
    gf_scanLiveries();
    std::vector<Livery> stored;
    ASSERT_TRUE(gf_readScannedLiveries(stored, gf_scannedLiveriesPath()));
    std::set<std::string> titles;
    for (const Livery& l : stored) titles.insert(l.title);
    EXPECT_EQ(titles, (std::set<std::string>{"DLH one", "BAW two", "DLH two A320"}));
    EXPECT_NE(
        dir.logText().find("    1 same airl+model liverie removed because from lower ai-package"),
        std::string::npos);
}
