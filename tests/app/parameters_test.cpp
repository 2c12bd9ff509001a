#include <gtest/gtest.h>

#ifndef _WIN32
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

#include <chrono>
#include <filesystem>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <thread>

#include <fmt/format.h>
#include <pugixml.hpp>

#include "app/parameters.h"
#include "support/temp_workdir.h"

namespace fs = std::filesystem;
using tfx::params;
using tfx::test::TempWorkdir;

namespace {

std::string fileOf(std::initializer_list<std::pair<const char*, const char*>> entries,
                   bool withRoot = true) {
    std::string body;
    for (const auto& [name, value] : entries)
        body += value ? fmt::format("<parameter name=\"{}\" value=\"{}\"/>", name, value)
                      : fmt::format("<parameter name=\"{}\"/>", name);
    body = "<parameters>" + body + "</parameters>";
    return withRoot ? "<root>" + body + "</root>" : body;
}

// name -> value attributes of the stored file, and the order of the names.
struct StoredFile {
    std::vector<std::string> names;
    std::map<std::string, std::string> values;
};

StoredFile stored(const TempWorkdir& dir) {
    pugi::xml_document doc;
    EXPECT_TRUE(doc.load_file((dir.path() / "parameters.xml").c_str()));
    StoredFile f;
    for (auto n : doc.child("root").child("parameters").children("parameter")) {
        f.names.push_back(n.attribute("name").as_string());
        f.values[n.attribute("name").as_string()] = n.attribute("value").as_string();
    }
    return f;
}

}  // namespace

TEST(Parameters, NewFileHoldsEightyKeysInListOrder) {
    TempWorkdir dir;
    EXPECT_EQ(tfx::gf_readParameters(), 1);
    const StoredFile f = stored(dir);
    ASSERT_EQ(f.names.size(), 80u);
    EXPECT_EQ(std::set<std::string>(f.names.begin(), f.names.end()).size(), 80u);
    EXPECT_EQ(f.names.front(), "PSX_SERVER_HERE");
    EXPECT_EQ(f.names.back(), "MSFS_2024_INSTALL_PATH");
    EXPECT_EQ(f.values.at("RT_CHOISE"), "RT Direct");
    EXPECT_EQ(f.values.count("MAX_FIT_FL"), 0u);
    EXPECT_NE(dir.logText().find("could not be opened, creating new with default values:"),
              std::string::npos);
}

TEST(Parameters, ValuesThatDoNotWhollyParseAreRefusedByName) {
    TempWorkdir dir;
    dir.write("parameters.xml", fileOf({{"RANGE", "500"},
                                        {"RANGE_GROUND", "abc"},
                                        {"MAX_LIVE_SEL", nullptr},
                                        {"LIGHT_AIRCRAFT", nullptr},
                                        {"SIM_CHOICE", "MSFS 2030"},
                                        {"MAX_FIT", "1e9"},
                                        {"MAX_PARK_SEL", " 75 "},
                                        {"RANGE_1", "0x10"},
                                        {"RANGE_2", "99999999999"},
                                        {"RANGE_3", "-3"},
                                        {"AUTO_PARK", "nope"},
                                        {"RANDOM", "FALSE"},
                                        {"PORT_NUMBER", "abc"}}));
    EXPECT_EQ(tfx::gf_readParameters(), 0);
    EXPECT_EQ(params.RANGE.current, 100);
    EXPECT_EQ(params.RANGE_GROUND.current, 10) << "\"abc\" is refused; the default holds";
    EXPECT_EQ(params.MAX_LIVE_SEL.current, 0) << "found without value is not the default";
    EXPECT_FALSE(params.LIGHT_AIRCRAFT.current);
    EXPECT_EQ(params.SIM_CHOICE.current, "MSFS 2030") << "strings are not checked";
    EXPECT_EQ(params.HOLDING_THRESHOLD_METERS.current, 250) << "absent keys take the default";
    EXPECT_EQ(params.MAX_FIT.current, 47) << "not read as 1";
    EXPECT_EQ(params.MAX_PARK_SEL.current, 75);
    EXPECT_EQ(params.RANGE_1.current, 20);
    EXPECT_EQ(params.RANGE_2.current, 100) << "the limit holds";
    EXPECT_EQ(params.RANGE_3.current, 1);
    EXPECT_TRUE(params.AUTO_PARK.current);
    EXPECT_FALSE(params.RANDOM.current);
    EXPECT_EQ(params.PORT_NUMBER.current, "10747");
    const std::string log = dir.logText();
    for (const char* line :
         {"RANGE=100\n", "LIGHT_AIRCRAFT=false\n",
          "==> MAX_FIT=\"1e9\" refused (not a whole number): 47 holds\n",
          "==> RANGE_1=\"0x10\" refused (not a whole number): 20 holds\n",
          "==> RANGE_2=\"99999999999\" refused (beyond its limits): 100 holds",
          "==> AUTO_PARK=\"nope\" refused (not true or false): true holds",
          "==> PORT_NUMBER=\"abc\" refused (not a port number): \"10747\" holds"})
        EXPECT_NE(log.find(line), std::string::npos) << line << "\n" << log;
    EXPECT_EQ(log.find("MAX_PARK_SEL=\""), std::string::npos) << "blanks around a number are fine";
}

TEST(Parameters, ConcurrentSavesLoseNothing) {
    TempWorkdir dir;
    tfx::gf_createParameterFile();
    // Each thread saves keys of its own; every one of them must be in the file.
    constexpr int PER_THREAD = 300;
    std::vector<std::unique_ptr<tfx::IntParameter>> keys;
    for (int t = 0; t < 2; ++t)
        for (int i = 0; i < PER_THREAD; ++i)
            keys.push_back(
                std::make_unique<tfx::IntParameter>(fmt::format("T{}_{}", t, i), i, 0, PER_THREAD));
    std::vector<std::thread> savers;
    for (int t = 0; t < 2; ++t)
        savers.emplace_back([&, t] {
            for (int i = 0; i < PER_THREAD; ++i)
                tfx::gf_saveParameter(*keys[static_cast<std::size_t>(t * PER_THREAD + i)]);
        });
    for (auto& saver : savers) saver.join();
    const StoredFile f = stored(dir);
    int lost = 0;
    for (const auto& key : keys) lost += f.values.count(key->key) == 0 ? 1 : 0;
    EXPECT_EQ(lost, 0) << "of " << keys.size();
    EXPECT_EQ(f.names.size(), 80u + keys.size());
}

TEST(Parameters, MissingKeysAreAddedUnknownOnesKept) {
    TempWorkdir dir;
    params.resetToDefaults();
    ASSERT_EQ(tfx::gf_readParameters(), 1);
    pugi::xml_document doc;
    doc.load_file((dir.path() / "parameters.xml").c_str());
    auto section = doc.child("root").child("parameters");
    for (auto n : section.children("parameter"))
        if (std::string(n.attribute("name").as_string()) == "lfolder3") {
            section.remove_child(n);
            break;
        }
    auto extra = section.append_child("parameter");
    extra.append_attribute("name") = "SOMEONE_ELSES_KEY";
    extra.append_attribute("value") = "kept";
    doc.save_file((dir.path() / "parameters.xml").c_str());

    EXPECT_EQ(tfx::gf_readParameters(), 0);
    const StoredFile f = stored(dir);
    EXPECT_EQ(f.values.at("lfolder3"), "");
    EXPECT_EQ(f.values.at("SOMEONE_ELSES_KEY"), "kept");
    EXPECT_EQ(f.names.size(), 81u);
}

TEST(Parameters, FileWithoutRootLoadsAndWithoutSectionIsNew) {
    TempWorkdir dir;
    dir.write("parameters.xml", fileOf({{"RANGE", "33"}}, false));
    EXPECT_EQ(tfx::gf_readParameters(), 0);
    EXPECT_EQ(params.RANGE.current, 33);
    dir.write("parameters.xml", "<root><other/></root>");
    EXPECT_EQ(tfx::gf_readParameters(), 1);
    EXPECT_NE(dir.logText().find("Section 'parameters' not found in"), std::string::npos);
}

TEST(Parameters, DamagedFileIsKeptAsideAndDefaultsCome) {
    TempWorkdir dir;
    const std::string broken = "<root><parameters><parameter name=\"RANGE\" value=\"33\"";
    dir.write("parameters.xml", broken);
    const auto place = tfx::gf_preReadWindowPlace();
    EXPECT_EQ(place.x_px, 400);
    EXPECT_EQ(dir.read("parameters0.xml"), broken);
    EXPECT_FALSE(fs::exists(dir.path() / "parameters.xml"));
    EXPECT_EQ(tfx::gf_checkRadiusParameters(), 1);
    EXPECT_EQ(params.RANGE.current, 40);
    EXPECT_EQ(stored(dir).names.size(), 80u);
    EXPECT_NE(dir.logText().find("failed to load"), std::string::npos);

    // Even without the early look, a broken file is never lost silently.
    dir.write("parameters.xml", broken);
    EXPECT_EQ(tfx::gf_readParameters(), 1);
    EXPECT_EQ(dir.read("parameters0.xml"), broken);
}

TEST(Parameters, WriteThroughChangesOnlyThatValue) {
    TempWorkdir dir;
    dir.write("parameters.xml",
              fileOf({{"RANGE", "33"}, {"FOREIGN", "x"}, {"RANGE", "34"}}));  // a duplicate too
    tfx::gf_setIntParameter(params.RANGE, 500);
    EXPECT_EQ(params.RANGE.current, 100);
    StoredFile f = stored(dir);
    EXPECT_EQ(f.names, (std::vector<std::string>{"RANGE", "FOREIGN", "RANGE"}));
    EXPECT_EQ(f.values.at("RANGE"), "100");

    params.lfolder[0].current = "D:\\AI \xC3\xA9";
    tfx::gf_saveParameter(params.lfolder[0]);
    params.MSFS_INSTALL_PATH.current = fs::path(u8"/games/Flight \u00e9");
    tfx::gf_saveParameter(params.MSFS_INSTALL_PATH);
    f = stored(dir);
    EXPECT_EQ(f.values.at("lfolder0"), "D:\\AI \xC3\xA9");
    EXPECT_EQ(f.values.at("MSFS_INSTALL_PATH"), "/games/Flight \xC3\xA9");

    // And read back as they were written.
    params.resetToDefaults();
    tfx::gf_readParameters();
    EXPECT_EQ(params.MSFS_INSTALL_PATH.current, fs::path(u8"/games/Flight \u00e9"));
    EXPECT_EQ(params.RANGE.current, 100);

    // A missing or broken file is made anew by the next save.
    dir.write("parameters.xml", "<<<");
    params.AUTO_PARK.current = false;
    tfx::gf_saveParameter(params.AUTO_PARK);
    EXPECT_EQ(stored(dir).values.at("AUTO_PARK"), "false");
}

TEST(Parameters, RemoveTakesTheFirstMatchOnly) {
    TempWorkdir dir;
    dir.write("parameters.xml", fileOf({{"Always", "1"}, {"RANGE", "3"}}));
    EXPECT_TRUE(tfx::gf_removeParameter("Always"));
    EXPECT_FALSE(tfx::gf_removeParameter("Always"));
    EXPECT_EQ(stored(dir).names, (std::vector<std::string>{"RANGE"}));
    EXPECT_NE(dir.logText().find("Parameter 'Always' removed"), std::string::npos);
}

TEST(RadiusRule, LevelsSortedAndSpreadRadiiNonDecreasing) {
    TempWorkdir dir;
    dir.write("parameters.xml", fileOf({}));
    tfx::gf_checkRadiusParameters();
    EXPECT_NE(dir.logText().find("Radius parameters okay"), std::string::npos);
    dir.write("parameters.xml", fileOf({{"FLIGHT_LEVEL_1", "300"},
                                        {"FLIGHT_LEVEL_2", "300"},
                                        {"FLIGHT_LEVEL_3", "100"},
                                        {"RANGE_GROUND", "50"},
                                        {"RANGE_1", "20"},
                                        {"RANGE_2", "70"},
                                        {"RANGE_3", "1"}}));
    tfx::gf_checkRadiusParameters();
    EXPECT_EQ(params.FLIGHT_LEVEL_1.current, 100);
    EXPECT_EQ(params.FLIGHT_LEVEL_2.current, 300);
    EXPECT_EQ(params.FLIGHT_LEVEL_3.current, 301);
    EXPECT_EQ(params.RANGE_1.current, 50);
    EXPECT_EQ(params.RANGE_3.current, 70);
    EXPECT_EQ(params.RANGE_ABOVE.current, 70);
    const StoredFile f = stored(dir);
    EXPECT_EQ(f.values.at("FLIGHT_LEVEL_3"), "301");
    EXPECT_EQ(f.values.at("RANGE_ABOVE"), "70");
    EXPECT_NE(dir.logText().find("==> Radius parameters changed"), std::string::npos);
}

TEST(Migration, AFirstRunOrANewerFileOnlyStoresTheVersion) {
    for (const char* version : {"", "16.1.2"}) {
        TempWorkdir dir;
        dir.write("parameters.xml", fileOf({{"PROGRAM_VERSION", version},
                                            {"Always", "1"},
                                            {"HOLDING_THRESHOLD_METERS", "275"}}));
        tfx::gf_checkRadiusParameters();
        const StoredFile f = stored(dir);
        EXPECT_EQ(f.values.at("PROGRAM_VERSION"), "15.15");
        EXPECT_EQ(f.values.count("Always"), 1u) << version;
        EXPECT_EQ(f.values.at("HOLDING_THRESHOLD_METERS"), "275") << version;
    }
}

TEST(Migration, UpdateRemovesOldKeysAndSnapsHolding) {
    for (const auto& [before, after] :
         {std::pair{"275", "250"}, std::pair{"276", "300"}, std::pair{"10", "10"},
          std::pair{"11", "10"}, std::pair{"950", "900"}, std::pair{"650", "600"}}) {
        TempWorkdir dir;
        fs::create_directory(dir.path() / "new_version");
        dir.write("new_version/setup.exe", "x");
        dir.write("zlib1.dll", "x");
        dir.write("parameters.xml", fileOf({{"PROGRAM_VERSION", "15.2"},
                                            {"Always", "1"},
                                            {"TCAS Coverage", "1"},
                                            {"HOLDING_THRESHOLD_METERS", before}}));
        tfx::gf_checkRadiusParameters();
        const StoredFile f = stored(dir);
        EXPECT_EQ(f.values.at("HOLDING_THRESHOLD_METERS"), after) << before;
        EXPECT_EQ(f.values.count("Always"), 0u);
        EXPECT_EQ(f.values.count("TCAS Coverage"), 0u);
        EXPECT_EQ(f.values.at("PROGRAM_VERSION"), "15.15");
        EXPECT_FALSE(fs::exists(dir.path() / "new_version"));
        EXPECT_FALSE(fs::exists(dir.path() / "zlib1.dll"));
        EXPECT_NE(dir.logText().find("This is a version update from 15.2 -> 15.15"),
                  std::string::npos);
    }
}

#ifndef _WIN32  // a child process killed mid-way: fork and signals
TEST(Migration, AKillAnywhereLeavesItDoneOrNotBegun) {
    TempWorkdir dir(false);
    const std::string before = fileOf({{"PROGRAM_VERSION", "15.2"},
                                       {"Always", "1"},
                                       {"SCAN_AIRPORTS", "1"},
                                       {"LIVERIES_SCANNED", "1"},
                                       {"HOLDING_THRESHOLD_METERS", "275"}});
    // Kill a migrating process ever later, until one finishes; each time the
    // file must hold the old version with every old key, or the new without.
    bool finished = false;
    for (int delay_us = 0; !finished && delay_us < 200'000; delay_us += 150) {
        dir.write("parameters.xml", before);
        const pid_t child = ::fork();
        if (child == 0) {
            tfx::gf_checkRadiusParameters();
            ::_exit(0);
        }
        std::this_thread::sleep_for(std::chrono::microseconds(delay_us));
        ::kill(child, SIGKILL);
        int status = 0;
        ::waitpid(child, &status, 0);
        finished = WIFEXITED(status);

        pugi::xml_document doc;
        ASSERT_TRUE(doc.load_file((dir.path() / "parameters.xml").c_str())) << delay_us;
        std::map<std::string, std::string> values;
        for (auto n : doc.child("root").child("parameters").children("parameter"))
            values[n.attribute("name").as_string()] = n.attribute("value").as_string();
        if (values.at("PROGRAM_VERSION") == "15.2") {
            EXPECT_EQ(values.count("Always") + values.count("SCAN_AIRPORTS") +
                          values.count("LIVERIES_SCANNED"),
                      3u)
                << "killed after " << delay_us << " us";
        } else {
            EXPECT_EQ(values.count("Always") + values.count("SCAN_AIRPORTS") +
                          values.count("LIVERIES_SCANNED"),
                      0u)
                << "killed after " << delay_us << " us";
            EXPECT_EQ(values.at("HOLDING_THRESHOLD_METERS"), "250");
        }
        if (testing::Test::HasFailure()) break;
    }
    EXPECT_TRUE(finished);
}
#endif

TEST(Parameters, PackageOrderings) {
    const auto& list = tfx::gf_aiPackageOrderings();
    ASSERT_EQ(list.size(), 64u);
    EXPECT_EQ(std::set<std::string>(list.begin(), list.end()).size(), 64u);
    EXPECT_EQ(list.front(), params.AI_PACKAGE_SELECTOR.defaultValue);
    EXPECT_EQ(list[49], "FSLTL, AIG");
    EXPECT_EQ(list.back(), "MTL");
}
