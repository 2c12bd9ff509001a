// Which airport is parked: the user's list of park airports, the airport
// that comes into sight in the air and the one the user stands at.
#include <filesystem>

#include "airports/airport_catalogue.h"
#include "parking/park_airport_list.h"
#include "parking/parking_fixture.h"
#include "parking/parking_plan.h"

namespace tfx::test {
namespace {

// AAAA and BBBB lie 15 NM apart on a meridian; CCCC and DDDD 4 NM apart.
const char* CATALOGUE =
    R"(<root><airports>)"
    R"(<ap c="AAAA" la="50.0" lo="8.0" a="300"/><ap c="BBBB" la="50.25" lo="8.0" a="400"/>)"
    R"(<ap c="CCCC" la="40.0" lo="10.0" a="0"/><ap c="DDDD" la="40.0667" lo="10.0" a="0"/>)"
    R"(<ap c="EHAM" la="52.31" lo="4.76" a="-11"/><ap c="EGLL" la="51.47" lo="-0.46" a="83"/>)"
    R"(<ap c="LOWW" la="48.11" lo="16.57" a="600"/></airports></root>)";

class ParkAirports : public ParkingTest {
protected:
    void SetUp() override {
        ParkingTest::SetUp();
        gf_clearAirportTable();
        sealInto(dir, "input/airports.enc", CATALOGUE);
        ASSERT_TRUE(std::holds_alternative<std::size_t>(gf_readAirportsXml()));
        gf_clearParkAirportList();
    }
    void TearDown() override {
        ParkingTest::TearDown();
        gf_clearParkAirportList();
        gf_clearAirportTable();
    }
    // Two stands with an aircraft on each all week.
    void airportFile(const std::string& icao, double lat) {
        std::string opts;
        for (int day = 1; day <= 7; ++day)
            opts += optXml("N1" + icao, "DLH", "A320", day, "0:47", "DLH1");
        std::string opts2;
        for (int day = 1; day <= 7; ++day)
            opts2 += optXml("N2" + icao, "DLH", "A320", day, "0:47", "DLH2");
        putFile(dir, "airports/my_simaddon/" + icao + ".xml",
                apfText(param("airport_name", icao) + param("publisher", "simaddon") +
                            param("altitude", "300"),
                        standXml("S1", lat, 8.0, opts) + standXml("S2", lat + 0.001, 8.0, opts2)));
        learnedSettings(icao, param("parking_percentage", "100"));
    }
    void flyTo(double lat, double agl_ft = 2000) {
        userAt(lat, 8.0, false, agl_ft);
        gf_parkAirportCheck();
        run(600);
    }
};

TEST_F(ParkAirports, TheListIsReadTrimmedWithoutDoublesAndWrittenBackSorted) {
    putFile(dir, "airports/my_park_airports.txt", " eham \n\nEGLL,\nEHAM , D7 \nLOWW,D7,X\nZZZZ\n");
    putFile(dir, "airports/my_thirdparty/LOWW.txt", "x");
    putFile(dir, "airports/my_thirdparty/EGLL.xml", "x");
    EXPECT_FALSE(gf_readMyParkAirportsFile());  // ZZZZ is no airport
    EXPECT_TRUE(logged("airports/my_park_airports.txt:5 wrong syntax, skipped"));
    EXPECT_TRUE(logged("airport ZZZZ is unknown"));
    EXPECT_TRUE(logged("    3 park airports read from 'airports/my_park_airports.txt'"));
    ASSERT_EQ(parkAirportList.size(), 3u);
    EXPECT_EQ(parkAirportList[0].code.text(), "EHAM");
    EXPECT_EQ(parkAirportList[0].reservedStand, "D7");
    EXPECT_EQ(gf_reservedStand(IcaoCode("EGLL")), "");
    gf_writeMyParkAirportsFile();
    EXPECT_EQ(dir.read("airports/my_park_airports.txt"), "EGLL\nEHAM,D7\nLOWW\n");

    std::filesystem::remove_all("airports");
    EXPECT_TRUE(gf_readMyParkAirportsFile());
    EXPECT_TRUE(parkAirportList.empty());
    EXPECT_FALSE(logged(" park airport read from"));
}

TEST_F(ParkAirports, InTheAirTheNearestInSightIsParkedAndLeftForANearerOne) {
    airportFile("AAAA", 50.0);
    airportFile("BBBB", 50.25);
    gf_addParkAirport(IcaoCode("BBBB"), {50.25, 8.0});
    gf_addParkAirport(IcaoCode("AAAA"), {50.0, 8.0});
    gf_addParkAirport(IcaoCode("BBBB"), {50.25, 8.0});  // the front

    setOptions([](Options& o) { o.AIRP_RANGE = 15; });
    flyTo(49.6);  // 24 NM south of AAAA, which becomes the front
    EXPECT_FALSE(parkAirport.known());
    EXPECT_EQ(parkAirportList.front().code.text(), "AAAA");
    flyTo(49.75);  // 15 NM: in sight
    EXPECT_EQ(parkAirport.code.text(), "AAAA");
    flyTo(49.75);  // the next check loads it
    EXPECT_EQ(activeStatics().size(), 2u);

    flyTo(50.2);  // BBBB 3 NM ahead: nearer and in sight
    EXPECT_TRUE(logged("BBBB is in sight, parked aircraft at AAAA will be removed first"));
    EXPECT_FALSE(parkAirport.known());
    EXPECT_TRUE(staticAircraft.empty());
    flyTo(50.2);
    EXPECT_EQ(parkAirport.code.text(), "BBBB");
    flyTo(50.2);
    EXPECT_EQ(activeStatics().size(), 2u);

    flyTo(50.25, 18001);  // right above it, but higher than the parking height
    EXPECT_TRUE(logged("BBBB is out of sight, parked aircraft will be removed"));
    EXPECT_TRUE(staticAircraft.empty());
}

TEST_F(ParkAirports, OnTheGroundTheStandDecidesBetweenTwoCloseAirports) {
    // The user stands 1.2 NM from CCCC and 2.8 NM from DDDD, but 30 m from a
    // stand of DDDD; CCCC's file has a stand far away.
    putFile(
        dir, "airports/my_simaddon/CCCC.xml",
        apfText(param("airport_name", "C") + param("altitude", "0"), standXml("C1", 40.0, 10.0)));
    putFile(dir, "airports/my_simaddon/DDDD.xml",
            apfText(param("airport_name", "D") + param("altitude", "0"),
                    standXml("D1", 40.0203, 10.0)));
    userAt(40.0200, 10.0, true);
    gf_parkAirportCheck();
    EXPECT_TRUE(logged("Airport CCCC is closest, neighbour is DDDD"));
    EXPECT_EQ(parkAirport.code.text(), "DDDD");

    // Without the neighbour's file the closest airport stays.
    lf_leaveAirport();
    std::filesystem::remove("airports/my_simaddon/DDDD.xml");
    gf_parkAirportCheck();
    EXPECT_EQ(parkAirport.code.text(), "CCCC");

    // An airport whose file the server doesn't have is tried on each
    // period, says so, and is never parked.
    lf_leaveAirport();
    userAt(52.31, 4.76, true);
    for (int period = 0; period < 2; ++period) {
        gf_parkAirportCheck();
        EXPECT_EQ(parkAirport.code.text(), "EHAM");
        gf_parkAirportCheck();
        EXPECT_FALSE(parkAirport.known());
        EXPECT_EQ(Gui::statusText(),
                  "failed to download: '/downloads/MSFS/archive/stock/EHAM.enc'");
    }
    EXPECT_TRUE(staticAircraft.empty());
}

}  // namespace
}  // namespace tfx::test
