#include <cmath>
#include <numbers>
#include <tuple>

#include <gtest/gtest.h>

#include "airport_test_support.h"
#include "airports/airport_catalogue.h"
#include "airports/airport_file_io.h"
#include "airports/loaded_airport.h"
#include "liveries/reference_db.h"
#include "support/sealed_dbase.h"

namespace tfx {
namespace {

using test::apfText;
using test::param;
using test::putFile;
using test::TempWorkdir;

const std::string BASE_PARAMS = param("icao", "TEST") + param("airport_name", "Test Field") +
                                param("publisher", "simaddon") + param("altitude", "120");
constexpr const char* SCAN_PATH = "airports/my_simaddon/TEST.xml";

struct AirportFileTest : ::testing::Test {
    TempWorkdir dir;
    void TearDown() override {
        gf_clearLoadedAirport();
        gf_clearReferenceData();
    }
    AirportFile readStands(const std::string& parkpositions) {
        putFile(dir, SCAN_PATH, apfText(BASE_PARAMS, parkpositions));
        auto result = gf_readAirportFile(SCAN_PATH);
        if (auto* error = std::get_if<std::string>(&result)) ADD_FAILURE() << *error;
        return std::get<AirportFile>(result);
    }
    std::string readError(const std::string& text) {
        putFile(dir, SCAN_PATH, text);
        auto result = gf_readAirportFile(SCAN_PATH);
        return std::holds_alternative<std::string>(result) ? std::get<std::string>(result) : "read";
    }
};

TEST_F(AirportFileTest, StandTypesFromNamesNumbersOrCargoRampAndRadius) {
    const auto file = readStands(
        R"(<parkpos id="g" typestr="GATE_HEAVY" latitude="1" longitude="2" radius="40"/>)"
        R"(<parkpos id="n" type="5" latitude="1" longitude="2.1" radius="40"/>)"
        R"(<parkpos id="r30" typestr="NONE" type="0" cargo="false" ramp="true" latitude="1" longitude="2.2" radius="30.0"/>)"
        R"(<parkpos id="c10" type="0" cargo="true" ramp="true" latitude="1" longitude="2.3" radius="10.0"/>)"
        R"(<parkpos id="g16" type="0" cargo="false" ramp="false" latitude="1" longitude="2.4" radius="16.0"/>)"
        R"(<parkpos id="h" type="0" heli="true" latitude="1" longitude="2.5"/>)"
        R"(<parkpos id="eq" latitude="0" longitude="2.6" typestr="FUEL"/>)"
        R"(<parkpos id="odd" typestr="NOPE" cargo="true" ramp="false" latitude="1" longitude="2.7" radius="5"/>)"
        R"(<parkpos id="noCargo" type="0" ramp="true" latitude="1" longitude="2.8" radius="20"/>)"
        R"(<parkpos id="noRadius" type="0" cargo="false" ramp="true" latitude="1" longitude="2.9"/>)"
        R"(<parkpos id="zero" typestr="GATE_SMALL" latitude="0" longitude="0"/>)"
        R"(<parkpos id="g" typestr="GATE_SMALL" latitude="5" longitude="5"/>)");
    ASSERT_EQ(file.stands.size(), 8u);
    const auto& s = file.stands;
    EXPECT_EQ(s[0].type, 10u);
    EXPECT_NEAR(s[0].radius, 40.0 / 1852.0, 1e-12);
    EXPECT_EQ(s[1].type, 5u);
    EXPECT_TRUE(s[1].cargo);
    EXPECT_EQ(s[2].type, 4u);
    EXPECT_TRUE(s[2].ramp);
    EXPECT_EQ(s[3].type, 5u);
    EXPECT_EQ(s[4].type, 9u);
    EXPECT_EQ(s[5].type, 0u);  // a helipad keeps type 0 without a radius
    EXPECT_TRUE(s[5].heli);
    EXPECT_EQ(s[6].id, "eq");  // latitude 0 alone is a valid place
    EXPECT_EQ(s[6].type, 12u);
    EXPECT_EQ(s[7].type, 5u);  // an unknown name counts as NONE
    EXPECT_EQ(s[7].number, 8u);
    const std::string log = dir.logText();
    EXPECT_NE(log.find("stand noCargo has no valid type, and no valid cargo/ramp fallback info"),
              std::string::npos);
    EXPECT_NE(log.find("stand noRadius has no valid type and no usable radius"), std::string::npos);
    EXPECT_NE(log.find("stand zero has no valid lat/lon"), std::string::npos);
    EXPECT_NE(log.find("Stand 'g' appears more than once, last one skipped!"), std::string::npos);
}

TEST_F(AirportFileTest, OptionsCountOnlyValidDaysAndSplitCallsigns) {
    const auto file = readStands(
        R"(<parkpos id="A" typestr="GATE_SMALL" latitude="1" longitude="2" heading="90" radius="20">)"
        R"(<opt reg="G-ABCD" airl="BAW" type="A320" day="8" hh="3"/>)"
        R"(<opt reg="G-ABCD" airl="BAW" type="A320" day="1" hh=""/>)"
        R"(<opt reg="G-ABCD" airl="BAW" type="A320" day="1" hh="3:5" cs="BAW1:BAW2:X" soft="true"/>)"
        R"(<opt reg="G-ABCD" airl="BAW" type="A320" day="7" hh="47" cs="BAW9" cpl="true"/>)"
        R"(</parkpos>)");
    ASSERT_EQ(file.stands.size(), 1u);
    const Stand& a = file.stands[0];
    EXPECT_NEAR(a.heading, std::numbers::pi / 2, 1e-12);
    ASSERT_EQ(a.options.size(), 2u);
    EXPECT_EQ(a.options[0].number, 1u);  // the day-8 entry took no number
    EXPECT_EQ(a.options[0].hours, 0b111000u);
    EXPECT_EQ(a.options[0].cs1, "BAW1");
    EXPECT_EQ(a.options[0].cs2, "BAW2:X");
    EXPECT_EQ(a.options[0].real, 0);
    EXPECT_EQ(a.options[1].number, 2u);
    EXPECT_EQ(a.options[1].hours, std::uint64_t{1} << 47);
    EXPECT_TRUE(a.options[1].cpl);
    EXPECT_TRUE(a.options[1].cs2.empty());
}

TEST_F(AirportFileTest, OverlapWhenRadiiExceedATenthMoreThanTheDistance) {
    // Radius 0.01 nm each: at 0.018 nm apart they overlap, at 0.02 nm not.
    const double r_m = 0.01 * 1852.0;
    const auto stand = [&](const char* id, double lat) {
        return fmt::format(R"(<parkpos id="{}" typestr="GATE_SMALL" latitude="{:.9f}" )"
                           R"(longitude="0.5" radius="{:.6f}"/>)",
                           id, lat, r_m);
    };
    auto file = readStands(stand("a", 10.0) + stand("b", 10.0 + 0.018 / 60.0) +
                           stand("c", 10.0 + 0.038 / 60.0));
    // Written with one decimal of metres; recompute from the exact radius.
    for (Stand& s : file.stands) s.radius = 0.01;
    gf_numberStandsAndOverlaps(file.stands);
    EXPECT_EQ(file.stands[0].overlaps, std::vector<std::uint32_t>{2});
    EXPECT_EQ(file.stands[1].overlaps, std::vector<std::uint32_t>{1});  // b-c: 0.02 nm
    EXPECT_TRUE(file.stands[2].overlaps.empty());
}

TEST_F(AirportFileTest, RefusalsAndMissingPartsGiveTheirTexts) {
    EXPECT_EQ(readError(apfText(BASE_PARAMS, "", R"(<info name="sim" value="1"/>)")),
              "airports/my_simaddon/TEST.xml: refused to load");
    EXPECT_EQ(
        readError(apfText(BASE_PARAMS, "",
                          R"(<info name="copyright" value=""/><info name="MSFS" value="1"/>)")),
        "airports/my_simaddon/TEST.xml: refused to load");
    EXPECT_NE(dir.logText().find("==> no copyright info in the file?"), std::string::npos);
    EXPECT_EQ(readError(apfText(param("airport_name", "x"), "")), "Parameter altitude not found");
    EXPECT_EQ(readError(apfText(BASE_PARAMS,
                                "<parkpos id=\"a\" latitude=\"1\" longitude=\"1\" "
                                "typestr=\"FUEL\"/><parkpos id=\" \t\"/>")),
              "Stand #2 has empty 'id' attribute.");
    const std::string broken = readError("<root>\n<meta>\n<info name='x'\n</root>");
    EXPECT_NE(broken.find("airports/my_simaddon/TEST.xml not loaded: "), std::string::npos);
    EXPECT_NE(broken.find("at line 4"), std::string::npos) << broken;
    // Without a root element the sections are taken from the document level.
    putFile(dir, SCAN_PATH,
            R"(<meta><info name="copyright" value="c"/><info name="P3D" value="5"/></meta>)"
            "<parameters>" +
                BASE_PARAMS + "</parameters>");
    const auto bare = gf_readAirportFile(SCAN_PATH);
    ASSERT_TRUE(std::holds_alternative<AirportFile>(bare));
    EXPECT_EQ(std::get<AirportFile>(bare).altitude, 120);
    EXPECT_NE(dir.logText().find("no stands found in the airport file"), std::string::npos);
}

TEST_F(AirportFileTest, QualityFactorsScoreStandsAndSkipFuel) {
    std::vector<Stand> stands(3);
    EXPECT_EQ(gf_calcQualityFactors(stands).Qf_real, -1);  // no option anywhere
    stands[0].options.push_back({Aimo{}, "R1", "", "", 0b1111, 1, 1, 1, 1, false});
    stands[0].options.push_back({Aimo{}, "R2", "", "", 0b0110, 2, 2, 1, 1, false});
    stands[0].options.push_back({Aimo{}, "R3", "", "", 0b1, 3, 3, 1, 0, false});
    stands[0].options.push_back({Aimo{}, "R4", "", "", 0b1, 0, 3, 1, 1, false});  // dead
    stands[2].type = STAND_TYPE_FUEL;
    stands[2].options = stands[0].options;
    // Real: n 2, d 2, u 4, b 6 -> 10000 + 40 + 200 + 50 + 12 = 10302; over two
    // stands (the fuel stand doesn't count) 5151, times 0.00625 = 32.19 -> 32.
    // Soft: 10000 + 20 + 100 + 12.5 + 2 = 10134.5 / 2 * 0.00625 = 31.67 -> 32.
    const QualityFactors qf = gf_calcQualityFactors(stands);
    EXPECT_EQ(qf.Qf_real, 32);
    EXPECT_EQ(qf.Qf_soft, 32);
}

TEST_F(AirportFileTest, RoundTripOfAHandmadeFileKeepsEveryAttribute) {
    test::DbaseText db;
    db.optional = R"(<dbase><d r="G-EUPA" a="BAW" m="A319"/></dbase>)";
    test::sealDbase(dir, db.text());
    ASSERT_TRUE(gf_readDbase());

    ApfRecord r;
    r.code = IcaoCode("TEST");
    r.iata = IataCode("TST");
    r.latitude = 51.5;
    r.longitude = -1.25;
    r.airport_name = "Test Field";
    r.altitude = 120;
    r.publisher = "simaddon";
    r.handmade = true;
    Stand gate;
    gate.id = "G 1";
    gate.latitude = 51.512345;
    gate.longitude = -1.234567;
    gate.heading = 1.5;
    gate.radius = 24.0 / 1852.0;
    gate.type = 9;
    gate.options.push_back({Aimo{gf_airlineIndex("DLH"), 0, gf_modelIndex("A321"), 0, 0}, "D-AISA",
                            "DLH4", "DLH5", 0b111100, 1, 6, 1, 0, true});
    gate.options.push_back({Aimo{gf_airlineIndex("BAW"), 0, gf_modelIndex("A319"), 0, 1}, "G-EUPA",
                            "BAW7", "", std::uint64_t{1} << 47, 2, 7, 1, 1, false});
    Stand none;
    none.id = "N";
    none.latitude = 0.0;
    none.longitude = 3.0;
    none.radius = 12.0 / 1852.0;
    none.type = 5;
    none.cargo = true;
    none.manual = true;
    Stand heli;
    heli.id = "H";
    heli.latitude = 51.0;
    heli.longitude = 3.0;
    heli.heli = true;
    r.stands = {gate, none, heli};
    r.Qf_real = 12;
    r.Qf_soft = 0;
    putFile(dir, SCAN_PATH, apfText(BASE_PARAMS, ""));
    ASSERT_TRUE(gf_writeApf(r, "airports/learned/simaddon/TEST.xml", APF_KIND_LEARNED, 2020));
    const std::string written = dir.read("airports/learned/simaddon/TEST.xml");
    EXPECT_NE(written.find(R"(<parameter name="Qf_real" value="12" />)"), std::string::npos);
    EXPECT_EQ(written.find("Qf_soft"), std::string::npos);  // below 1 while Qf_real isn't 0
    EXPECT_EQ(written.find(R"(<parameter name="version")"), std::string::npos);

    auto result = gf_readAirportFile(SCAN_PATH);
    ASSERT_TRUE(std::holds_alternative<AirportFile>(result)) << std::get<std::string>(result);
    const AirportFile file = std::get<AirportFile>(result);
    EXPECT_TRUE(file.learned);
    EXPECT_TRUE(file.handmade);
    ASSERT_EQ(file.stands.size(), 3u);
    const Stand& g = file.stands[0];
    EXPECT_EQ(g.id, "G 1");
    EXPECT_NEAR(g.latitude, gate.latitude, 1e-7);
    EXPECT_NEAR(g.longitude, gate.longitude, 1e-7);
    EXPECT_NEAR(g.heading, gate.heading, 0.05 * std::numbers::pi / 180);
    EXPECT_NEAR(g.radius, gate.radius, 0.05 / 1852.0);
    EXPECT_EQ(g.type, 9u);
    ASSERT_EQ(g.options.size(), 2u);
    for (std::size_t i = 0; i < 2; ++i) {
        const StandOption &in = gate.options[i], &out = g.options[i];
        EXPECT_EQ(
            std::tie(out.reg, out.key, out.cs1, out.cs2, out.hours, out.day, out.real, out.cpl),
            std::tie(in.reg, in.key, in.cs1, in.cs2, in.hours, in.day, in.real, in.cpl))
            << i;
    }
    EXPECT_TRUE(file.stands[1].manual && file.stands[1].cargo);
    EXPECT_EQ(file.stands[1].latitude, 0.0);
    EXPECT_TRUE(file.stands[2].heli);
    // Quality factors are those of the stands now, not the stored ones.
    EXPECT_EQ(file.Qf_real, gf_calcQualityFactors(file.stands).Qf_real);
}

TEST_F(AirportFileTest, ConvertedRealAirportsReadWhole) {
    for (const char* icao : {"PHNL", "BIKF"}) {
        putFile(dir, std::string("airports/my_simaddon/") + icao + ".xml",
                test::sourceFile(std::string("data/airports/archive/stock/") + icao + ".xml"));
        auto result = gf_readAirportFile(std::string("airports/my_simaddon/") + icao + ".xml");
        ASSERT_TRUE(std::holds_alternative<AirportFile>(result)) << std::get<std::string>(result);
        const AirportFile& file = std::get<AirportFile>(result);
        std::size_t options = 0, used = 0;
        for (const Stand& s : file.stands) {
            options += s.options.size();
            used += s.options.empty() ? 0 : 1;
            for (const StandOption& o : s.options) ASSERT_NE(o.hours, 0u) << s.id;
        }
        EXPECT_GT(file.stands.size(), 50u) << icao;
        EXPECT_GT(options, 300u) << icao;
        EXPECT_GT(used, 20u) << icao;
        EXPECT_GE(gf_calcQualityFactors(file.stands).Qf_real, 1) << icao;
    }
}

}  // namespace
}  // namespace tfx
