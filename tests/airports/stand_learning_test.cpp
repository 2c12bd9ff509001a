// What live traffic at the stands of the loaded airport leaves in its
// learned data: one option per aircraft and day, extended while it is seen.
#include <gtest/gtest.h>

#include "airport_test_support.h"
#include "airports/airport_file_io.h"
#include "airports/loaded_airport.h"
#include "liveries/reference_db.h"
#include "support/sealed_dbase.h"
#include "traffic/stand_claims.h"

namespace tfx {
namespace {

using test::TempWorkdir;

constexpr std::uint64_t bit(unsigned hh) {
    return std::uint64_t{1} << hh;
}
constexpr std::uint64_t run(unsigned from, unsigned to) {
    std::uint64_t bits = 0;
    for (unsigned h = from; h <= to; ++h) bits |= bit(h);
    return bits;
}

struct StandLearningTest : ::testing::Test {
    TempWorkdir dir;
    AircraftBase light, freighter;

    void SetUp() override {
        test::DbaseText db;
        db.optional = R"(<dbase><d r="G-EZAA" a="EZY" m="A319"/>)"
                      R"(<d r="N123FX" a="FDX" m="B744" c="true"/></dbase>)";
        test::sealDbase(dir, db.text());
        ASSERT_TRUE(gf_readDbase());
        AirportFile file;
        file.stands.resize(2);
        file.stands[0].id = "1";
        file.stands[1].id = "2";
        gf_setLoadedAirport(IcaoCode("EGTK"), file);
        light.regcode = "G-EZAA_";
        light.callsign = "EZY12_";
        freighter.regcode = "N123FX";
        freighter.callsign = "FDX5";
    }
    void TearDown() override {
        gf_clearLoadedAirport();
        gf_clearReferenceData();
    }
    std::vector<StandOption>& options(int stand = 1) {
        return loadedAirport.file.stands[static_cast<std::size_t>(stand - 1)].options;
    }
    void seen(const AircraftBase& ac, unsigned day, unsigned hh, int mode = 0, int stand = 1) {
        gf_recordStandOccupation(stand, ac, mode, WeekHalfHour{day, hh});
    }
};

TEST(HalfHourTest, TheSecondHalfBeginsHalfAMinuteEarly) {
    // 2026-11-23 is a Monday.
    constexpr std::int64_t monday = 1795392000;
    EXPECT_EQ(gf_halfHourOf(monday + 10 * 3600 + 29 * 60 + 29), (WeekHalfHour{1, 20}));
    EXPECT_EQ(gf_halfHourOf(monday + 10 * 3600 + 29 * 60 + 30), (WeekHalfHour{1, 21}));
    EXPECT_EQ(gf_halfHourOf(monday + 6 * 86400 + 23 * 3600 + 45 * 60), (WeekHalfHour{7, 47}));
    EXPECT_EQ(gf_halfHourOf(monday - 1), (WeekHalfHour{7, 47}));
}

TEST_F(StandLearningTest, AStayGrowsFromItsLastSightingWithinTheLimit) {
    seen(light, 2, 10, 1);
    ASSERT_EQ(options().size(), 1u);
    const StandOption& o = options()[0];
    EXPECT_EQ(o.reg, "G-EZAA");  // without the ghost mark
    EXPECT_EQ(o.cs1, "EZY12");
    EXPECT_EQ(o.key.model, gf_modelIndex("A319"));
    EXPECT_EQ(loadedAirport.updates, 1);

    seen(light, 2, 10);  // the same half hour again changes nothing
    EXPECT_EQ(loadedAirport.updates, 1);
    light.callsign = "EZY99";
    seen(light, 2, 13);
    EXPECT_EQ(options()[0].hours, run(10, 13));
    EXPECT_EQ(options()[0].cs2, "EZY99");
    EXPECT_EQ(loadedAirport.updates, 2);

    // Six half hours is too long a gap for an aircraft that isn't heavy: a new
    // stay, which then grows itself.
    seen(light, 2, 19);
    seen(light, 2, 21);
    ASSERT_EQ(options().size(), 2u);
    EXPECT_EQ(options()[0].hours, run(10, 13));
    EXPECT_EQ(options()[1].hours, run(19, 21));
    EXPECT_EQ(options()[1].number, 2u);

    seen(light, 2, 21, 2);  // moving off in a half hour already held: closed
    EXPECT_TRUE(options()[1].cpl);
    seen(light, 2, 23);  // a closed stay isn't extended: a new one begins
    ASSERT_EQ(options().size(), 3u);
    EXPECT_EQ(options()[2].hours, bit(23));
}

TEST_F(StandLearningTest, AFreighterMayBeMissedLongerAndAStayCrossesMidnightAndTheWeek) {
    seen(freighter, 7, 40);
    seen(freighter, 7, 47);
    seen(freighter, 1, 3);  // Sunday 23:30 to Monday 01:30: four half hours, under 12
    ASSERT_EQ(options().size(), 2u);
    EXPECT_EQ(options()[0].day, 7u);
    EXPECT_EQ(options()[0].hours, run(40, 47));
    EXPECT_EQ(options()[1].day, 1u);
    EXPECT_EQ(options()[1].hours, run(0, 3));
    EXPECT_EQ(options()[1].cs1, "FDX5");
    EXPECT_EQ(loadedAirport.updates, 3);
    seen(freighter, 1, 5, 3);
    EXPECT_EQ(options()[1].hours, run(0, 5));
    EXPECT_TRUE(options()[1].cpl);
    EXPECT_EQ(options().size(), 2u);
}

TEST_F(StandLearningTest, NothingIsLearnedForUnknownAircraftStandsOrAPlannedOtherTime) {
    AircraftBase unknown = light;
    unknown.regcode = "G-NONE";
    seen(unknown, 1, 1);
    AircraftBase blank = light;
    blank.regcode = "_";
    seen(blank, 1, 1);
    seen(light, 1, 1, 0, 0);
    seen(light, 1, 1, 0, 3);
    EXPECT_TRUE(options(1).empty());
    EXPECT_EQ(loadedAirport.updates, 0);

    // The airport file has this aircraft here today at 30-35: not now.
    options(2).push_back({Aimo{}, "G-EZAA", "", "", run(30, 35), 1, 4, 1, 1, false});
    seen(light, 4, 20, 0, 2);
    EXPECT_EQ(options(2).size(), 1u);
    seen(light, 4, 31, 0, 2);
    ASSERT_EQ(options(2).size(), 2u);
    EXPECT_EQ(options(2)[1].number, 2u);
}

TEST_F(StandLearningTest, SavedLearnedDataComesBackWithTheAirportFile) {
    test::putFile(
        dir, "airports/my_simaddon/EGTK.xml",
        test::apfText(
            test::param("icao", "EGTK") + test::param("airport_name", "Oxford") +
                test::param("publisher", "simaddon") + test::param("altitude", "270"),
            R"(<parkpos id="1" typestr="GATE_SMALL" latitude="51.8" longitude="-1.3" radius="15">)"
            R"(<opt reg="G-OLD" airl="EZY" type="A319" day="1" hh="1"/></parkpos>)"
            R"(<parkpos id="2" typestr="GATE_SMALL" latitude="51.9" longitude="-1.3" radius="15"/>)"));
    auto read = gf_readAirportFile("airports/my_simaddon/EGTK.xml");
    ASSERT_TRUE(std::holds_alternative<AirportFile>(read)) << std::get<std::string>(read);
    gf_logAirportFile(IcaoCode("EGTK"), std::get<AirportFile>(read));
    seen(light, 3, 10, 1);
    seen(light, 3, 12, 2);
    seen(freighter, 5, 20, 0, 2);
    ASSERT_TRUE(gf_saveLearned(loadedAirport.file.stands, false));
    EXPECT_NE(dir.logText().find(" 'airports/learned/simaddon/EGTK.xml' saved with 3 updates"),
              std::string::npos);
    const std::string saved = dir.read("airports/learned/simaddon/EGTK.xml");
    EXPECT_EQ(saved.find("G-OLD"), std::string::npos);  // the file's own options stay out
    EXPECT_EQ(saved.find("typestr"), std::string::npos);

    read = gf_readAirportFile("airports/my_simaddon/EGTK.xml");
    const AirportFile again = std::get<AirportFile>(read);
    EXPECT_TRUE(again.learned);
    ASSERT_EQ(again.stands[0].options.size(), 2u);
    EXPECT_EQ(again.stands[0].options[1].hours, run(10, 12));
    EXPECT_TRUE(again.stands[0].options[1].cpl);
    EXPECT_EQ(again.stands[0].options[1].source, 0);
    ASSERT_EQ(again.stands[1].options.size(), 1u);
    EXPECT_EQ(again.stands[1].options[0].key.cargo, 1);
}

}  // namespace
}  // namespace tfx
