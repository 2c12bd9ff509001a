// The rules of an aircraft.cfg, tried on lines: keys, section numbers, the
// file's model, and what each section becomes.
#include <gtest/gtest.h>

#include <sstream>

#include "liveries/aircraft_cfg.h"
#include "liveries/liveries_scan_state.h"
#include "liveries/livery.h"
#include "liveries/reference_db.h"
#include "support/sealed_dbase.h"
#include "support/temp_workdir.h"

using namespace tfx;

namespace {

std::vector<std::string> lf_split(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

class AircraftCfg : public ::testing::Test {
protected:
    void SetUp() override {
        gf_clearReferenceData();
        test::DbaseText db;
        db.airlines = R"(<ICAO codes="BAW,DLH,EZY,PVT,ZZZ"/>)";
        db.optional = R"(<fixes><fx wro="A32N" cor="A320"/></fixes>)"
                      R"(<dbase><d r="D-ABCD" a="EZY" m="A319" c="true"/>)"
                      R"(<d r="N-12345" a="BAW" m="A319"/><d r="G-EZY" a="EZY" m="A319"/></dbase>)";
        test::sealDbase(dir, db.text());
        ASSERT_TRUE(gf_readDbase());
        scanList.clear();
        scanReports.clear();
        scanTitles.clear();
        dontUseTitles.clear();
    }
    void TearDown() override {
        scanList.clear();
        gf_clearReferenceData();
    }

    // One file of type model with one section of these key lines.
    const Livery* one(const std::string& keys, const std::string& model = "A320") {
        const std::size_t before = scanList.size();
        lf_liveriesOfLines(
            1, lf_split("[GENERAL]\nicao_type_designator = " + model + "\n[FLTSIM.0]\n" + keys),
            "f.cfg");
        return scanList.size() > before ? &scanList.back() : nullptr;
    }
    std::string airline(const Livery* l) { return l ? gf_airlineCode(l->airline) : "none"; }
    bool reported(const std::vector<std::string>& list, const std::string& text) {
        for (const auto& line : list)
            if (line.find(text) != std::string::npos) return true;
        return false;
    }

    test::TempWorkdir dir;
};

}  // namespace

TEST(AircraftCfgKeys, WholeLineMatchesWithoutCaseAndQuotes) {
    EXPECT_EQ(gf_cfgValue("  Title = \"Airbus A320neo\" ; Variation name", CfgKey::title),
              "Airbus A320neo");
    EXPECT_EQ(gf_cfgValue("ICAO_TYPE_DESIGNATOR=A388", CfgKey::icao_type_designator), "A388");
    EXPECT_FALSE(gf_cfgValue("title_suffix = x", CfgKey::title));
    EXPECT_FALSE(gf_cfgValue("title =   ", CfgKey::title));
    EXPECT_FALSE(gf_cfgValue("; title = x", CfgKey::title));
    EXPECT_FALSE(gf_cfgValue("icao_airline = \"\"", CfgKey::icao_airline));  // as if absent
    EXPECT_EQ(gf_cfgValue("atc_id = \"\"", CfgKey::atc_id), "");

    EXPECT_EQ(gf_sectionNumberText(" [FltSim.12] "), "12");
    for (const char* notHead :
         {"[fltsim.]", "[fltsim.1] x", ";[fltsim.1]", "[fltsim.-1]", "[fltsimx.1]"})
        EXPECT_FALSE(gf_sectionNumberText(notHead)) << notHead;
}

TEST(AircraftCfgKeys, SectionNumbersAndSplitting) {
    EXPECT_EQ(gf_checkSectionNumbers({"[fltsim.10000]", "[fltsim.0]"}).verdict, SectionNumbers::ok);
    EXPECT_EQ(gf_checkSectionNumbers({"[fltsim.0]", "[fltsim.10001]"}).verdict,
              SectionNumbers::tooHigh);
    const auto huge = gf_checkSectionNumbers({"[fltsim.2147483648]"});
    EXPECT_EQ(huge.verdict, SectionNumbers::overflow);
    EXPECT_EQ(huge.badText, "2147483648");
    EXPECT_EQ(gf_checkSectionNumbers({"[fltsim.2147483647]"}).verdict, SectionNumbers::tooHigh);
    EXPECT_EQ(gf_checkSectionNumbers({"[GENERAL]"}).count, 0u);

    const std::vector<std::string> lines = {"[fltsim.0]", "title=a [x]", "  [EFFECTS]",
                                            "wake=1",     "[fltsim.1]",  "title=b"};
    const auto plain = gf_splitSections(lines, false);
    ASSERT_EQ(plain.size(), 2u);
    EXPECT_EQ(plain[0].size(), 2u);                          // closed by [EFFECTS], not by "[x]"
    EXPECT_EQ(gf_splitSections(lines, true)[0].size(), 1u);  // the IVAO layout closes at any "["
}

TEST_F(AircraftCfg, RegcodesAndTheReferenceData) {
    // DABCD is found as D-ABCD, and its record decides airline, model and cargo.
    const Livery* l = one("title=a\nicao_airline=BAW\natc_id=DABCD\natc_parking_types=GATE");
    ASSERT_NE(l, nullptr);
    EXPECT_EQ(airline(l), "EZY");
    EXPECT_EQ(gf_modelCode(l->model), "A319");
    EXPECT_EQ(l->cargo, 1);
    EXPECT_EQ(l->regcode, "DABCD");
    // N12345 is tried only as it stands: no airline and unknown gives PVT.
    EXPECT_EQ(airline(one("title=b\natc_id=N12345")), "PVT");
    // Several tokens give no regcode; a bad token clears and is reported.
    EXPECT_EQ(one("title=c\nicao_airline=DLH\natc_id=N1,N2")->regcode, "");
    EXPECT_EQ(one("title=d\nicao_airline=DLH\natc_id=N1* ; tail")->regcode, "");
    EXPECT_TRUE(reported(scanReports.incompleteSections, "invalid atc_id=N1*  in: f.cfg") ||
                reported(scanReports.incompleteSections, "invalid atc_id=N1* in: f.cfg"));
    // No airline and no regcode: a short regcode of the reference data in the title.
    const Livery* named = one("title=Easy G-EZY livery");
    ASSERT_NE(named, nullptr);
    EXPECT_EQ(named->regcode, "G-EZY");
    EXPECT_EQ(airline(named), "EZY");
    // A heavy without airline and regcode is reported and dropped.
    EXPECT_EQ(one("title=h", "B744"), nullptr);
    EXPECT_TRUE(
        reported(scanReports.incompleteSections, "'h' 'f.cfg' has no airline and no regcode info"));
}

// The generated installation's scan covers the airline code rules, fictional
// and stub liveries, repeated keys and titles, fixed and unknown models;
// these are the rules it does not seed.
TEST_F(AircraftCfg, CargoSpecialTitlesAndTheFileModel) {
    EXPECT_EQ(one("title=a\nicao_airline=DLH\natc_parking_types=GATE, CARGO")->cargo, 0);
    EXPECT_EQ(one("title=b\nicao_airline=DLH\natc_parking_types=ramp,cargo")->cargo, 1);
    EXPECT_EQ(one("title=FenixA320 x\nicao_airline=DLH"), nullptr);
    dontUseTitles.insert("d");
    EXPECT_EQ(one("title=d\nicao_airline=DLH"), nullptr);
    EXPECT_EQ(one("title=i\nicao_airline=DLH\nicao_airline=BAW"), nullptr);
    EXPECT_EQ(scanReports.incompleteSections.size(), 1u);

    EXPECT_EQ(lf_fileModel({"icao_type_designator = \"a320-200\""}, "p"), "A320");
    EXPECT_EQ(lf_fileModel({"base_container = \"..\\asobo_a320_neo\""}, "p"), std::nullopt)
        << "A20N is no model of this reference data";
    EXPECT_EQ(lf_fileModel({"base_container = \"..\\Unknown_Thing\""}, "p/pmdg-aircraft-737/a"),
              std::nullopt);
    EXPECT_EQ(scanReports.invalidFiles.size(), 0u) << "a PMDG or Fenix package passes silently";
}

TEST_F(AircraftCfg, IvaoLayoutTakesModelFromFolderAndAirlineFromTitle) {
    const std::string folder =
        (dir.path() / "x" / "IVAO_MTL" / "SimObjects" / "Airplanes" / "IVAO_B738WLfa").string();
    std::filesystem::create_directories(folder + "/texture.DLH");
    const std::string path = folder + "/aircraft.cfg";
    const auto lines = lf_split(
        "[fltsim.0]\ntitle= B738W dlh Lufthansa \ntexture=DLH\natc_id=D-ABCD\n"
        "[fltsim.1]\ntitle=B738W QQQ x\n"
        "[fltsim.2]\ntitle=B738W DLH y\ntexture=NONE\n"
        "[fltsim.3]\ntitle=B738 Lufthansa\natc_id=N12345\n"
        "[fltsim.4]\ntitle=Something\natc_id=DABCD\n");
    EXPECT_EQ(lf_ivaoLiveriesOfLines(1, lines, path), 2u);
    EXPECT_EQ(scanList[0].title, "B738W dlh Lufthansa");
    EXPECT_EQ(airline(&scanList[0]), "DLH");
    EXPECT_EQ(gf_modelCode(scanList[0].model), "B738");
    EXPECT_EQ(airline(&scanList[1]), "EZY") << "no code in the title: the regcode's record";
    EXPECT_TRUE(reported(scanReports.invalidAirlines, "QQQ"));
    EXPECT_TRUE(reported(scanReports.incompleteSections, "texture.NONE does not exist"));
    EXPECT_TRUE(
        reported(scanReports.incompleteSections,
                 " misses airlinecode in title: B738 Lufthansa, and regcode unknown N12345"));
    EXPECT_EQ(lf_ivaoLiveriesOfLines(1, lines, "/x/IVAO_MTL/elsewhere/aircraft.cfg"), 0u);
}
