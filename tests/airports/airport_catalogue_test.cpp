#include <gtest/gtest.h>

#include "airport_test_support.h"
#include "airports/airport_catalogue.h"
#include "airports/airport_session.h"
#include "airports/archives.h"
#include "app/user_exception.h"

namespace tfx {
namespace {

using test::sealInto;
using test::TempWorkdir;

struct CatalogueTest : ::testing::Test {
    TempWorkdir dir;
    void SetUp() override { gf_clearAirportTable(); }
    void TearDown() override {
        gf_clearAirportTable();
        gf_clearArchives();
    }
    void sealAirports(const std::string& entries) {
        sealInto(dir, "input/airports.enc", "<root><airports>" + entries + "</airports></root>");
    }
    void sealWeekly(const std::string& entries) {
        sealInto(dir, "input/wktraffic.enc",
                 "<root><traffic_airports>" + entries + "</traffic_airports></root>");
    }
};

TEST(IcaoCodeTest, KeyOrderIsAlphabeticalAndLowerCaseFolds) {
    EXPECT_LT(IcaoCode("EGLL").key, IcaoCode("EGTK").key);
    EXPECT_LT(IcaoCode("0A12").key, IcaoCode("AAAA").key);
    EXPECT_EQ(IcaoCode("egtk"), IcaoCode("EGTK"));
    for (const char* bad : {"EGT", "EGTK1", "EG-K"})
        EXPECT_THROW(IcaoCode{bad}, std::invalid_argument) << bad;
    EXPECT_THROW(IataCode("OX"), std::invalid_argument);
}

TEST_F(CatalogueTest, ReadsEntriesSkipsBrokenOnesAndStopsAtAMissingCode) {
    sealAirports(R"(<ap c="EGTK" i="OXF" la="51.8" lo="-1.3" a="270"/>)"
                 R"(<ap c="BIKF" la="63.9" lo="-22.6" a="170"/>)"
                 R"(<ap c="NOAL" la="1" lo="2"/>)"
                 R"(<ap c="NOLL" a="2"/>)"
                 R"(<ap c="BAD" la="1" lo="2" a="3"/>)"
                 R"(<ap c="PHNL" i="H" la="21.3" lo="-157.9" a="13"/>)"
                 R"(<ap i="XYZ" la="1" lo="2" a="3"/>)"
                 R"(<ap c="KJFK" la="40.6" lo="-73.7" a="13"/>)");
    const auto result = gf_readAirportsXml();
    ASSERT_EQ(std::get<std::size_t>(result), 2u);
    ASSERT_EQ(airportTable[0].icao, IcaoCode("BIKF"));  // sorted by key
    EXPECT_TRUE(airportTable[0].iata.isNone());
    const Airport* egtk = gf_airportByCode(IcaoCode("EGTK"));
    ASSERT_NE(egtk, nullptr);
    EXPECT_EQ(egtk->iata, IataCode("OXF"));
    EXPECT_EQ(egtk->altitude, 270);
    EXPECT_DOUBLE_EQ(egtk->longitude, -1.3);
    EXPECT_FALSE(gf_airportKnown(IcaoCode("KJFK")));  // after the entry without a code
    EXPECT_FALSE(gf_airportKnown(std::string("EGT")));
    IcaoCode forged("EGTK");  // the same key with other characters is not the airport
    forged.chars[3] = 'X';
    EXPECT_EQ(gf_airportByCode(forged), nullptr);
    const std::string log = dir.logText();
    EXPECT_NE(log.find("Missing alt for airport 'NOAL'"), std::string::npos);
    EXPECT_NE(log.find("Error storing airport 'PHNL' 'H'"), std::string::npos);
    EXPECT_NE(log.find("==> Skipped airport entry with missing ICAO code attribute"),
              std::string::npos);
    // Read once: a second call reports the count without reading again.
    std::filesystem::remove(dir.path() / "input/airports.enc");
    EXPECT_EQ(std::get<std::size_t>(gf_readAirportsXml()), 2u);
}

TEST_F(CatalogueTest, BrokenFilesGiveTheirTexts) {
    EXPECT_EQ(std::get<std::string>(gf_readAirportsXml()), "input/airports.enc not available");
    sealInto(dir, "input/airports.enc", "<root><other/></root>");
    EXPECT_EQ(std::get<std::string>(gf_readAirportsXml()),
              "input/airports.enc has no <airports> section");
    sealInto(dir, "input/airports.enc", "<root>\n<airports>\n<ap c=\"EGTK\"\n</root>");
    const auto text = std::get<std::string>(gf_readAirportsXml());
    EXPECT_NE(text.find("input/airports.enc not loaded:"), std::string::npos) << text;
    EXPECT_NE(text.find("at line 4"), std::string::npos) << text;
    dir.write("input/airports.enc", "not sealed at all");
    EXPECT_EQ(std::get<std::string>(gf_readAirportsXml()),
              "input/airports.enc stream decrypt failed");
    // No plain text stays behind.
    for (const auto& entry : std::filesystem::directory_iterator(dir.path() / "input"))
        EXPECT_EQ(entry.path().extension(), ".enc") << entry.path();
}

TEST_F(CatalogueTest, WeeklyTrafficFoldsCaseAndOneBadFieldSpoilsTheFile) {
    sealWeekly(R"(<arp c="egll,,LFPG"/><arp c="EHAM"/>)");
    auto codes = std::get<std::vector<IcaoCode>>(gf_readWeeklyTrafficAirports());
    ASSERT_EQ(codes.size(), 3u);
    EXPECT_EQ(codes[0], IcaoCode("EGLL"));
    sealWeekly(R"(<arp c="EGLL,LFP"/>)");
    EXPECT_EQ(std::get<std::string>(gf_readWeeklyTrafficAirports()),
              "'input/wktraffic.enc' has invalid weekly traffic XML structure");
}

TEST_F(CatalogueTest, CodeInATextIsTheFirstWithTraffic) {
    std::vector<std::string> scanLog;
    // An empty list lets every code through (and says so).
    auto found = gf_findAirportCode("x/lfpg-EGLL/y", scanLog);
    EXPECT_EQ(std::get<IcaoCode>(found), IcaoCode("LFPG"));
    EXPECT_NE(dir.logText().find("==> weekly traffic airports empty? "), std::string::npos);

    weeklyTrafficAirports = {IcaoCode("EGLL"), IcaoCode("EHAM")};
    found = gf_findAirportCode("Scenery/LFPG-EGLL", scanLog);
    EXPECT_EQ(std::get<IcaoCode>(found), IcaoCode("EGLL"));
    ASSERT_EQ(scanLog.size(), 1u);
    EXPECT_EQ(scanLog[0], "For LFPG there is no traffic this week");
    EXPECT_TRUE(std::holds_alternative<std::monostate>(gf_findAirportCode("ABCDE EHAMX", scanLog)));
    EXPECT_EQ(std::get<IcaoCode>(gf_findAirportCode("ehaM_scenery", scanLog)), IcaoCode("EHAM"));
}

TEST_F(CatalogueTest, ArchiveListsOfTheSimulatorInUse) {
    sealInto(dir, "input/archives.enc", R"(<root>
      <publishers><pub pn="Orbx,orbx-"/><pub pn="Aerosoft"/><pub pn="Orbx,orbx-"/></publishers>
      <simaddons20><s20 aps="EGLL,,EHAM"/></simaddons20>
      <thirdparties20><t20 pub="Orbx" aps="EGTK,EGLC2"/><t20 aps="X"/></thirdparties20>
      <simaddons24><s24 aps="KJFK"/></simaddons24></root>)");
    ASSERT_TRUE(gf_readArchives(true));
    EXPECT_EQ(publisherTable.size(), 2u);  // listed twice, kept once
    EXPECT_TRUE(gf_simaddonExists("EHAM"));
    EXPECT_FALSE(gf_simaddonExists("KJFK"));
    EXPECT_FALSE(gf_simaddonExists(""));
    EXPECT_TRUE(gf_thirdPartyExists("Orbx", "EGLC2"));
    EXPECT_FALSE(gf_thirdPartyExists("orbx", "EGTK"));
    EXPECT_EQ(gf_findPublisher("Community/ORBX-airport-egtk").name, "Orbx");
    EXPECT_EQ(gf_findPublisher("Community/other").result, PublisherSearch::notFound);
    EXPECT_EQ(gf_findPublisher("").result, PublisherSearch::noPath);

    ASSERT_TRUE(gf_readArchives(false));  // 2024: its own simaddons, no thirdparty section
    EXPECT_TRUE(gf_simaddonExists("KJFK"));
    EXPECT_TRUE(thirdpartyList.empty());
    sealInto(dir, "input/archives.enc", "<root><publishers/></root>");
    EXPECT_THROW(gf_readArchives(true), UserRelatedException);
    std::filesystem::remove(dir.path() / "input/archives.enc");
    EXPECT_THROW(gf_readArchives(true), std::runtime_error);
}

TEST_F(CatalogueTest, BundledCatalogueKnowsTheDemoAirports) {
    for (const char* name : {"airports", "wktraffic", "archives"})
        sealInto(dir, std::string("input/") + name + ".enc",
                 test::sourceFile(std::string("data/airports/") + name + ".xml"));
    ASSERT_GT(std::get<std::size_t>(gf_readAirportsXml()), 20000u);
    const Airport* phnl = gf_airportByCode(IcaoCode("PHNL"));
    ASSERT_NE(phnl, nullptr);
    EXPECT_EQ(phnl->iata, IataCode("HNL"));
    EXPECT_TRUE(gf_airportKnown(IcaoCode("EGTK")));
    EXPECT_TRUE(gf_airportKnown(IcaoCode("BIKF")));
    ASSERT_TRUE(gf_readScanCatalogues(true));
    EXPECT_TRUE(gf_hasTrafficThisWeek(IcaoCode("PHNL")));
    EXPECT_TRUE(gf_hasTrafficThisWeek(IcaoCode("BIKF")));
    EXPECT_EQ(gf_findPublisher("Community/flytampa-something").name, "FlyTampa");
}

}  // namespace
}  // namespace tfx
