// Which file an airport is read from, and what is merged into it: scan
// folders, pointer files, the archive with its cache, learned and handmade
// files, and what a broken learned file leaves behind.
#include <gtest/gtest.h>

#include "airport_test_support.h"
#include "airports/airport_catalogue.h"
#include "airports/airport_download.h"
#include "airports/airport_file_io.h"
#include "airports/airport_paths.h"
#include "airports/loaded_airport.h"
#include "app/parameters.h"

namespace tfx {
namespace {

namespace fs = std::filesystem;
using test::apfText;
using test::param;
using test::putFile;
using test::sealInto;
using test::TempWorkdir;

const std::string EHAM_PARAMS = param("icao", "EHAM") + param("airport_name", "Schiphol") +
                                param("publisher", "stock") + param("altitude", "-11");
const std::string TWO_STANDS =
    R"(<parkpos id="A1" typestr="GATE_HEAVY" latitude="52.3" longitude="4.76" radius="35">)"
    R"(<opt reg="PH-BHA" airl="KLM" type="B789" day="3" hh="10:14"/></parkpos>)"
    R"(<parkpos id="A2" typestr="GATE_MEDIUM" latitude="52.31" longitude="4.77" radius="20"/>)";

struct SourcesTest : ::testing::Test {
    TempWorkdir dir;
    void SetUp() override {
        gf_clearAirportTable();  // a session run before this one read another catalogue
        sealInto(dir, "input/airports.enc",
                 R"(<root><airports><ap c="EHAM" la="52.3" lo="4.76" a="-11"/>)"
                 R"(<ap c="EGTK" la="51.8" lo="-1.3" a="270"/></airports></root>)");
        ASSERT_TRUE(std::holds_alternative<std::size_t>(gf_readAirportsXml()));
    }
    void TearDown() override {
        gf_setServerMaintenance(false);
        gf_clearLoadedAirport();
        gf_clearAirportTable();
    }
    void serve(const std::string& path, const std::string& xml) {
        for (const char* sim : {"MSFS", "MSFS2024"})
            sealInto(dir, std::string("server/downloads/") + sim + "/" + path, xml);
    }
    AirportFile read(const fs::path& path) {
        auto result = gf_readAirportFile(path);
        if (auto* error = std::get_if<std::string>(&result)) ADD_FAILURE() << *error;
        return std::holds_alternative<AirportFile>(result) ? std::get<AirportFile>(result)
                                                           : AirportFile{};
    }
};

TEST_F(SourcesTest, ScanFoldersBeatTheArchiveAndPointersBeatTheirFolder) {
    const IcaoCode eham("EHAM");
    EXPECT_EQ(gf_findAirportFile(eham), fs::path("archive/stock/EHAM.enc"));
    EXPECT_FALSE(gf_findAirportFile(IcaoCode("KJFK")));  // not in the catalogue
    putFile(dir, "airports/my_simaddon/EHAM.xml", "x");
    EXPECT_EQ(gf_findAirportFile(eham), fs::path("airports/my_simaddon/EHAM.xml"));
    putFile(dir, "airports/my_thirdparty/EHAM.xml", "x");
    EXPECT_EQ(gf_findAirportFile(eham), fs::path("airports/my_thirdparty/EHAM.xml"));
    // Invalid pointers: another extension, or too short a line.
    putFile(dir, "airports/my_thirdparty/EHAM.txt", "C:\\x\\EHAM.txt\r\n");
    EXPECT_EQ(gf_findAirportFile(eham), fs::path("airports/my_thirdparty/EHAM.xml"));
    putFile(dir, "airports/my_thirdparty/EHAM.txt", " .x \n");
    EXPECT_EQ(gf_findAirportFile(eham), fs::path("airports/my_thirdparty/EHAM.xml"));
    // A valid one wins whether its target exists or not; case doesn't matter.
    putFile(dir, "airports/my_thirdparty/EHAM.txt", "  D:\\Scenery\\EHAM.ENC \r\n");
    EXPECT_EQ(gf_findAirportFile(eham), fs::path("D:\\Scenery\\EHAM.ENC"));
    EXPECT_TRUE(gf_airportFileKnown(eham));
}

TEST(LearnedPathTest, FollowsTheSourceOfTheFile) {
    const auto learned = [](const char* path, const char* publisher = "") {
        const auto p = gf_learnedPathOf(path, publisher);
        return p ? p->generic_string() : std::string("none");
    };
    EXPECT_EQ(learned("archive/simaddon/EHAM12.enc"), "airports/learned/simaddon/EHAM.xml");
    EXPECT_EQ(learned("archive/thirdparty/Fly%20Tampa%2F/EHAM3.enc"),
              "airports/learned/thirdparty/Fly Tampa%2F/EHAM.xml");
    EXPECT_EQ(learned("archive/thirdparty/%20%20/EHAM.enc"), "none");
    EXPECT_EQ(learned("airports/my_thirdparty/EHAM.xml", " a/b\\c "),
              "airports/learned/thirdparty/a b c/EHAM.xml");
    EXPECT_EQ(learned("airports/my_thirdparty/EHAM.xml", "bad \xff"), "none");

    EXPECT_EQ(gf_parseArchivePath("archive/thirdparty/Fly%20Tampa/eham42.enc")->version, "42");
    EXPECT_FALSE(gf_parseArchivePath("archive/stock/EHAM4a.enc"));
}

TEST_F(SourcesTest, ArchiveFileIsFetchedThenTakenFromTheCache) {
    serve("archive/stock/EHAM.enc", apfText(EHAM_PARAMS, TWO_STANDS));
    const AirportFile first = read("archive/stock/EHAM.enc");
    EXPECT_TRUE(first.fetched);
    EXPECT_EQ(first.learnedPath, fs::path("airports/learned/stock/EHAM.xml"));
    ASSERT_EQ(first.stands.size(), 2u);

    // Same publisher and an empty version: not downloaded again.
    fs::remove_all(dir.path() / "server");
    const AirportFile second = read("archive/stock/EHAM.enc");
    EXPECT_TRUE(second.cached);
    EXPECT_EQ(second.stands.size(), 2u);
    EXPECT_NE(dir.logText().find("cached: 'airports/park_airport.xml' is taken instead of "
                                 "'archive/stock/EHAM.enc'"),
              std::string::npos);
    // Another version is another file: fetched, and here it isn't there.
    EXPECT_EQ(std::get<std::string>(gf_readAirportFile("archive/stock/EHAM2.enc")),
              "failed to download: '/downloads/MSFS/archive/stock/EHAM2.enc'");
    EXPECT_FALSE(fs::exists(dir.path() / "airports/park_airport.enc"));
}

TEST_F(SourcesTest, MaintenanceStopsEveryReadEvenOfALocalFile) {
    putFile(dir, "airports/my_simaddon/EHAM.xml", apfText(EHAM_PARAMS, TWO_STANDS));
    gf_setServerMaintenance(true);
    EXPECT_EQ(std::get<std::string>(gf_readAirportFile("airports/my_simaddon/EHAM.xml")),
              "Web server temporarily unavailable due to maintenance.");
}

TEST_F(SourcesTest, LearnedFileMergesOptionsStandsAndSettings) {
    putFile(dir, "airports/my_simaddon/EHAM.xml", apfText(EHAM_PARAMS, TWO_STANDS));
    params.AUTO_PARK.current = true;
    putFile(
        dir, "airports/learned/simaddon/EHAM.xml",
        apfText(
            param("airport_name", "Amsterdam") + param("parking_percentage", "85") +
                param("MAX_FIT", "99") + param("WEEK", "true"),
            R"(<parkpos id="A1">)"
            R"(<opt reg="PH-BHA" airl="KLM" type="B789" day="3" hh="14:16"/>)"
            R"(<opt reg="PH-BHA" airl="KLM" type="B789" day="3" hh="15:16" soft="true"/>)"
            R"(<opt reg="PH-BHB" airl="KLM" type="B789" day="3" hh="20"/>)"
            R"(<opt reg="PH-BHB" airl="KLM" type="B789" day="4" hh="60"/></parkpos>)"
            R"(<parkpos id="Z9"><opt reg="X" day="1" hh="1"/></parkpos>)"
            R"(<parkpos id="M1" manual="true" typestr="RAMP_GA_SMALL" latitude="52.2" longitude="4.7" radius="10"/>)"
            R"(<parkpos id="A2" manual="true" typestr="RAMP_GA_SMALL" latitude="52.2" longitude="4.7" radius="10"/>)"
            R"(<parkpos id="M2" manual="true" typestr="RAMP_GA_SMALL" latitude="0.00005" longitude="0" radius="10"/>)",
            R"(<info name="copyright" value="c"/>)"));
    const AirportFile file = read("airports/my_simaddon/EHAM.xml");
    EXPECT_TRUE(file.learned);
    EXPECT_FALSE(file.handmade);
    ASSERT_EQ(file.stands.size(), 3u);
    const auto& a1 = file.stands[0].options;
    // The learned 14:16 shares half hour 14 with the file's entry: dropped whole.
    ASSERT_EQ(a1.size(), 3u);
    EXPECT_EQ(a1[1].real, 0);
    EXPECT_EQ(a1[1].number, 2u);
    EXPECT_EQ(a1[2].reg, "PH-BHB");
    EXPECT_EQ(a1[2].source, 0);
    EXPECT_EQ(a1[2].number, 3u);
    EXPECT_TRUE(file.stands[2].manual);
    EXPECT_EQ(file.stands[2].number, 3u);
    EXPECT_EQ(params.parking_percentage.current, 85);
    EXPECT_EQ(params.MAX_FIT.current, params.MAX_FIT.maximum);  // clamped
    EXPECT_TRUE(params.WEEK.current);
    EXPECT_FALSE(params.AUTO_PARK.current);  // not in the file: off
    const std::string log = dir.logText();
    EXPECT_NE(log.find("learned stand Z9 in"), std::string::npos);
    EXPECT_NE(log.find("manually created standid A2 already exists in"), std::string::npos);
    EXPECT_NE(log.find("manually created standid M2 misses correct attributes in"),
              std::string::npos);
}

TEST_F(SourcesTest, BrokenLearnedFileIsReportedKeptAndTheAirportLoads) {
    putFile(dir, "airports/my_simaddon/EHAM.xml", apfText(EHAM_PARAMS, TWO_STANDS));
    const std::string broken = "<root>\n<meta>\n<info name=\"copyright\" value=\"c\"/>\n<oops\n";
    putFile(dir, "airports/learned/simaddon/EHAM.xml", broken);
    const AirportFile file = read("airports/my_simaddon/EHAM.xml");
    EXPECT_FALSE(file.learned);
    EXPECT_EQ(file.stands.size(), 2u);
    const std::string log = dir.logText();
    const auto at = log.find("==> airports/learned/simaddon/EHAM.xml found, not loaded: ");
    ASSERT_NE(at, std::string::npos) << log;
    EXPECT_NE(log.find("at line 4, saved as *.0.xml", at), std::string::npos) << log;
    EXPECT_EQ(dir.read("airports/learned/simaddon/EHAM0.xml"), broken);

    // Leaving the airport writes a sound learned file; the damaged one stays kept.
    gf_logAirportFile(IcaoCode("EHAM"), file);
    EXPECT_TRUE(gf_saveLearned(loadedAirport.file.stands, false));
    EXPECT_EQ(dir.read("airports/learned/simaddon/EHAM0.xml"), broken);
    const AirportFile again = read("airports/my_simaddon/EHAM.xml");
    EXPECT_TRUE(again.learned);
}

TEST_F(SourcesTest, HandmadeFileReplacesStandsAndCarriesQualityFactors) {
    putFile(dir, "airports/my_simaddon/EGTK.xml",
            apfText(param("icao", "EGTK") + param("airport_name", "Oxford") +
                        param("publisher", "simaddon") + param("altitude", "270"),
                    ""));
    putFile(dir, "airports/learned/simaddon/EGTK.xml",
            test::sourceFile("data/airports/learned/stock/EGTK.xml"));
    const AirportFile file = read("airports/my_simaddon/EGTK.xml");
    EXPECT_TRUE(file.handmade);
    EXPECT_EQ(file.stands.size(), 6u);
    EXPECT_GT(file.Qf_real, 0);
    EXPECT_GT(file.Qf_soft, 0);
    gf_logAirportFile(IcaoCode("EGTK"), file);
    EXPECT_NE(dir.logText().find("A handmade airport file overruled the archived file!"),
              std::string::npos);

    // Saved as handmade: all stands whole, factors computed afresh.
    EXPECT_TRUE(gf_saveLearned(loadedAirport.file.stands, true));
    const std::string saved = dir.read("airports/learned/simaddon/EGTK.xml");
    EXPECT_NE(saved.find(R"(<parameter name="handmade" value="true" />)"), std::string::npos);
    EXPECT_NE(saved.find(fmt::format(R"(<parameter name="Qf_real" value="{}" />)", file.Qf_real)),
              std::string::npos);
    EXPECT_NE(saved.find(R"(soft="true")"), std::string::npos);
    EXPECT_EQ(read("airports/my_simaddon/EGTK.xml").Qf_soft, file.Qf_soft);
}

TEST_F(SourcesTest, SmallAirportsGetTheirTargetWithoutALearnedFile) {
    AirportFile file;
    file.stands.resize(2);
    params.parking_percentage.current = 30;
    params.AUTO_PARK.current = false;
    gf_logAirportFile(IcaoCode("EHAM"), file);
    EXPECT_EQ(params.parking_percentage.current, 65);
    EXPECT_TRUE(params.AUTO_PARK.current);
    EXPECT_NE(dir.logText().find("target parking % set at 65, because this airport has just 2 "
                                 "stands"),
              std::string::npos);
    file.stands.resize(1);
    gf_logAirportFile(IcaoCode("EHAM"), file);  // 65 is kept as it is
    EXPECT_EQ(params.parking_percentage.current, 65);
    params.parking_percentage.current = 30;
    gf_logAirportFile(IcaoCode("EHAM"), file);
    EXPECT_EQ(params.parking_percentage.current, 100);
}

TEST_F(SourcesTest, StandIdsOfAnotherAirportLeaveNoScratchFile) {
    serve("archive/stock/EHAM.enc", apfText(EHAM_PARAMS, TWO_STANDS));
    EXPECT_EQ(gf_readApfForStands(IcaoCode("EHAM")), (std::vector<std::string>{"A1", "A2"}));
    EXPECT_FALSE(fs::exists(dir.path() / "airports/airport.xml"));
    EXPECT_FALSE(fs::exists(dir.path() / "airports/park_airport.xml"));
}

}  // namespace
}  // namespace tfx
