#include <gtest/gtest.h>

#include <cmath>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <fmt/format.h>

#include "app/user_exception.h"
#include "liveries/reference_db.h"
#include "support/sealed_dbase.h"
#include "support/temp_workdir.h"

namespace fs = std::filesystem;
using namespace tfx;
using tfx::test::DbaseText;
using tfx::test::TempWorkdir;

namespace {

class ReferenceDb : public ::testing::Test {
protected:
    void SetUp() override { gf_clearReferenceData(); }
    void TearDown() override { gf_clearReferenceData(); }

    bool read(const std::string& xml) {
        test::sealDbase(dir, xml);
        return gf_readDbase();
    }
    bool has(const std::string& text) const {
        return dir.logText().find(text) != std::string::npos;
    }
    std::vector<std::string> inputFiles() const {
        std::vector<std::string> names;
        for (const auto& e : fs::directory_iterator(dir.path() / "input"))
            names.push_back(e.path().filename().string());
        return names;
    }

    TempWorkdir dir;
};

}  // namespace

TEST_F(ReferenceDb, BundledDataReadsCleanlyAndAnswersLookups) {
    ASSERT_TRUE(read(test::bundledDbaseXml()));
    const std::string log = dir.logText();
    EXPECT_EQ(log.find("==>"), std::string::npos) << "the bundled file has no bad entry\n" << log;
    EXPECT_NE(log.find(fmt::format("\n{:5} ICAO model codes\n", validModels.size())),
              std::string::npos);
    EXPECT_TRUE(has(fmt::format("{:5} ICAO airline codes", validAirlines.size())));
    EXPECT_TRUE(has(fmt::format("{:5} dbase records read\n", dbaseRecords.size())));
    EXPECT_EQ(inputFiles(), std::vector<std::string>{"dbase.enc"}) << "no plain text outlives";

    // Model indices 1 to n are the valid models in sorted order.
    EXPECT_EQ(gf_modelIndex(""), 0);
    EXPECT_EQ(gf_modelCode(1), *validModels.begin());
    EXPECT_EQ(gf_modelIndex(*validModels.rbegin()), validModels.size());

    EXPECT_EQ(gf_modelIndex("B77F"), gf_modelIndex("B77L")) << "corrected on interning";
    EXPECT_DOUBLE_EQ(maxHalfWingspan, 88.4 * 0.5 * NM_PER_METRE);  // An-225
    EXPECT_TRUE(gf_isValidAirline("ZZZ")) << "generic liveries' key";
    EXPECT_TRUE(gf_isValidAirline("PVT")) << "private aircraft";

    const RegcodeRecord& ups = gf_lookupRegcode("N250UP");
    ASSERT_TRUE(ups.valid);
    EXPECT_EQ(gf_airlineCode(ups.airline), "UPS");
    EXPECT_EQ(gf_modelCode(ups.model), "MD11");
    EXPECT_TRUE(ups.cargo);
    EXPECT_EQ(gf_airlineCode(gf_lookupRegcode("N101HQ").opr), "RPA");
    EXPECT_FALSE(gf_lookupRegcode("N250U").valid);

    // Every record names a known airline, operator and model.
    for (const auto& record : dbaseRecords) {
        EXPECT_TRUE(gf_isValidModel(gf_modelCode(record.model))) << record.regcode;
        EXPECT_TRUE(gf_isValidAirline(gf_airlineCode(record.airline))) << record.regcode;
        if (record.opr != 0) {
            EXPECT_TRUE(gf_isValidAirline(gf_airlineCode(record.opr)));
        }
    }
}

TEST_F(ReferenceDb, InterningOfUnknownCodesAndFixes) {
    DbaseText db;
    db.optional = R"(<fixes><fx wro="A32O" cor="A320"/><fx wro="B7XX" cor="B7YY"/>
                     <fx wro="A32O" cor="A321"/><fx wro="" cor="A321"/></fixes>)";
    db.cargoTypes = R"(<cargo_type types="B744, MD1F"/>)";  // MD1F is no known model
    ASSERT_TRUE(read(db.text()));
    EXPECT_TRUE(has("==> invalid fix B7XX -> B7YY, target is not a valid ICAO model"));
    EXPECT_TRUE(has("==> duplicate fix key 'A32O', skipped"));
    EXPECT_TRUE(has("==> invalid fix  -> A321, no wrong code given"));
    EXPECT_TRUE(has("    1 fixes"));
    EXPECT_EQ(gf_fixedModel("A32O"), "A320");

    const auto valid = static_cast<std::uint16_t>(validModels.size());
    EXPECT_EQ(gf_modelIndex("A32O"), gf_modelIndex("A320"));
    EXPECT_GT(gf_modelIndex("B7XX"), valid + 1) << "a rejected fix doesn't apply";
    EXPECT_EQ(gf_modelIndex("MD1F"), valid + 1) << "cargo types come next";
    EXPECT_EQ(gf_modelCategory("B7XX"), AircraftCategory::Light);
    EXPECT_TRUE(cargoModels.contains(gf_modelIndex("MD1F")));

    // Airlines: empty, the valid ones sorted, then the cargo operators.
    EXPECT_EQ(gf_airlineIndex("FDX"), 5);
    EXPECT_EQ(gf_airlineIndex("XYZ"), 6);
}

TEST_F(ReferenceDb, CategoryOrderLargeHeavyBizjetRotorcraftHighPerf) {
    DbaseText db;
    db.aircrafts = R"(<aircraft types="AAA1,BBB1,CCC1,DDD1,EEE1"/>)";
    db.large = R"(<lar types="AAA1"/>)";
    db.heavy = R"(<hvy types="AAA1,BBB1"/>)";
    db.bizjet = R"(<bzj types="BBB1,CCC1"/>)";
    db.rotorcraft = R"(<rot types="CCC1,DDD1"/>)";
    db.highPerf = R"(<hpf types="DDD1,EEE1"/>)";
    ASSERT_TRUE(read(db.text()));
    EXPECT_EQ(gf_modelCategory("AAA1"), AircraftCategory::Large);
    EXPECT_EQ(gf_modelCategory("BBB1"), AircraftCategory::Heavy);
    EXPECT_EQ(gf_modelCategory("CCC1"), AircraftCategory::Bizjet);
    EXPECT_EQ(gf_modelCategory("DDD1"), AircraftCategory::Rotorcraft);
    EXPECT_EQ(gf_modelCategory("EEE1"), AircraftCategory::HighPerf);
    EXPECT_EQ(gf_modelCategory(std::uint16_t{0}), AircraftCategory::Light);
}

TEST_F(ReferenceDb, BadWingspansAreSkippedWithAReason) {
    DbaseText db;
    db.optional = R"(<wingspans>
        <wingspan type="A320" meters="35.8"/>   <wingspan type="B744" meters="64.4"/>
        <wingspan type="A320" meters="40"/>     <wingspan type="XXXX" meters="10"/>
        <wingspan meters="10"/>                 <wingspan type="A319" meters="0"/>
        <wingspan type="A321" meters="-3"/>     <wingspan type="B737"/>
        <wingspan type="B738" meters="wide"/>   <wingspan type="B739" meters="inf"/>
      </wingspans>)";
    ASSERT_TRUE(read(db.text()));
    EXPECT_DOUBLE_EQ(gf_halfWingspanNm(gf_modelIndex("A320")), 17.9 * NM_PER_METRE);
    EXPECT_DOUBLE_EQ(maxHalfWingspan, 32.2 * NM_PER_METRE);
    for (const char* model : {"A319", "A321", "B737", "B738", "B739"})
        EXPECT_EQ(gf_halfWingspanNm(gf_modelIndex(model)), 0.0) << model;
    EXPECT_EQ(gf_halfWingspanNm(2700), 35.0);
    EXPECT_EQ(wingspans.size(), 2u);
    for (const char* line : {
             "==> duplicate wingspan model A320, skipped",
             "==> wingspan model XXXX is not valid, skipped",
             "==> wingspan for model B737 is not positive, skipped",
             "==> wingspan for model B739 is not a number, skipped",
         })
        EXPECT_TRUE(has(line)) << line;
}

TEST_F(ReferenceDb, WingspanOfAModelBeyondTheTableStaysOut) {
    DbaseText db;
    std::string codes;
    for (int i = 0; i < 2800; ++i) codes += fmt::format("{}M{:04}", i ? "," : "", i);
    db.aircrafts = fmt::format(R"(<aircraft types="{}"/>)", codes);
    db.optional = R"(<wingspans><wingspan type="M2799" meters="20"/>
                     <wingspan type="M0001" meters="10"/></wingspans>)";
    ASSERT_TRUE(read(db.text()));
    EXPECT_TRUE(has("==> cannot store wingspan for model M2799: 2800"));
    EXPECT_DOUBLE_EQ(gf_halfWingspanNm(2), 5.0 * NM_PER_METRE);
    EXPECT_EQ(gf_halfWingspanNm(2800), 35.0);
    EXPECT_DOUBLE_EQ(maxHalfWingspan, 10.0 * NM_PER_METRE) << "the maximum counts it all the same";
}

TEST_F(ReferenceDb, RecordsAreSortedWithoutDuplicates) {
    DbaseText db;
    db.optional = R"(<fixes><fx wro="B73H" cor="B738"/></fixes><dbase>
        <d r="G-EUPA" a="BAW" m="A319"/>
        <d r="D-AIBA" a="DLH" o="CLH" m="A319" c="false"/>
        <d r="G-EUPA" a="BAW" m="A319"/>
        <d r="N12345" a="FDX" m="B73H" c="true"/>
        <d r="G-EZAA" a="EZY" m="A9ZZ" c="yes"/>
        <d a="BAW" m="A320"/>
      </dbase>)";
    ASSERT_TRUE(read(db.text()));
    ASSERT_EQ(dbaseRecords.size(), 4u);
    EXPECT_TRUE(has("    4 dbase records read\n"));
    EXPECT_TRUE(has("==> 1 dbase record without regcode skipped"));
    std::vector<std::string> order;
    for (const auto& r : dbaseRecords) order.push_back(r.regcode);
    EXPECT_EQ(order, (std::vector<std::string>{"D-AIBA", "G-EUPA", "G-EZAA", "N12345"}));

    const RegcodeRecord& clh = gf_lookupRegcode("D-AIBA");
    EXPECT_EQ(gf_airlineCode(clh.opr), "CLH") << "an unknown operator is interned";
    EXPECT_FALSE(clh.cargo);
    const RegcodeRecord& fdx = gf_lookupRegcode("N12345");
    EXPECT_EQ(gf_modelCode(fdx.model), "B738") << "records go through the fixes";
    EXPECT_TRUE(fdx.cargo);
    EXPECT_TRUE(gf_lookupRegcode("G-EZAA").cargo);
    EXPECT_GT(gf_lookupRegcode("G-EZAA").model, validModels.size());
    EXPECT_FALSE(gf_lookupRegcode("G-EUP").valid);
}

TEST_F(ReferenceDb, MissingSectionsAndBrokenFiles) {
    // Each required section is a fatal data error when absent.
    for (const char* section :
         {"aircrafts", "cargo_types", "heavy", "large", "buzjet", "high_performance", "rotorcraft",
          "ICAO_airlines", "cargo_operators"}) {
        DbaseText db;
        db.leaveOut = section;
        try {
            read(db.text());
            ADD_FAILURE() << section;
        } catch (const UserRelatedException& e) {
            EXPECT_EQ(e.code, 61);
            EXPECT_EQ(e.message, std::string("Missing section: ") + section);
        }
        EXPECT_EQ(inputFiles(), std::vector<std::string>{"dbase.enc"}) << section;
    }
    // The others may be absent.
    ASSERT_TRUE(read(DbaseText{}.text()));
    EXPECT_TRUE(dbaseRecords.empty());
    EXPECT_TRUE(similarGroups.empty());
    EXPECT_FALSE(has(" fixes"));

    EXPECT_FALSE(read("<root><aircrafts>"));
    EXPECT_TRUE(has("==> input/dbase.xml not read because: "));
    EXPECT_FALSE(read("<data/>"));
    EXPECT_TRUE(has("==> 'input/dbase.xml' has no root node"));
    EXPECT_EQ(inputFiles(), std::vector<std::string>{"dbase.enc"});

    // A cut-off file and a missing one stop the start with these texts.
    const auto expectThrow = [](const char* expected) {
        try {
            gf_readDbase();
            ADD_FAILURE() << expected;
        } catch (const std::runtime_error& e) {
            EXPECT_STREQ(e.what(), expected);
        }
    };
    const std::string sealed = publish::gf_encryptBytes(DbaseText{}.text());
    dir.write("input/dbase.enc", sealed.substr(0, sealed.size() - 3));
    expectThrow("input/dbase.enc stream decrypt failed");
    EXPECT_EQ(inputFiles(), std::vector<std::string>{"dbase.enc"});
    fs::remove(dir.path() / "input" / "dbase.enc");
    expectThrow("input/dbase.enc not available");
}

TEST(AirlineOfCallsign, ThreeLettersAndADigit) {
    EXPECT_EQ(gf_airlineOfCallsign("dlh4"), "DLH");
    EXPECT_EQ(gf_airlineOfCallsign("XYZ9ZZ"), "XYZ") << "not checked against known airlines";
    for (const char* callsign : {"BAW", "BA12", "BAWA1", "N123AB", "1BAW", "", "BA 1"})
        EXPECT_FALSE(gf_airlineOfCallsign(callsign).has_value()) << callsign;
}

TEST(CodeInterning, ThreadsAgreeOnEveryIndex) {
    gf_clearReferenceData();
    // Four threads intern overlapping codes while reading codes back by index.
    std::vector<std::vector<std::uint16_t>> seen(4);
    std::vector<std::thread> threads;
    for (std::size_t t = 0; t < seen.size(); ++t)
        threads.emplace_back([&, t] {
            for (int i = 0; i < 2000; ++i) {
                const std::string code = fmt::format("C{}", (i * (t + 1)) % 1500);
                const std::uint16_t index = gf_modelIndex(code);
                if (gf_modelCode(index) != code) std::abort();
                seen[t].push_back(index);
            }
        });
    for (auto& t : threads) t.join();
    EXPECT_EQ(gf_codeCount(modelCodes), 1501u) << "the codes and the empty one";
    for (std::size_t t = 0; t < seen.size(); ++t)
        for (int i = 0; i < 2000; ++i)
            EXPECT_EQ(seen[t][i], gf_modelIndex(fmt::format("C{}", (i * (t + 1)) % 1500)));
    EXPECT_EQ(gf_modelCode(60000), "") << "an index never handed out";
    gf_clearReferenceData();
}

TEST(CodeInterning, AFullTableGivesTheEmptyIndexAndSaysSoOnce) {
    TempWorkdir dir;
    gf_clearReferenceData();
    EXPECT_EQ(gf_airlineIndex(""), 0) << "the empty code is there from the start";
    for (std::size_t i = 1; i < INTERN_CAPACITY; ++i) gf_airlineIndex(fmt::format("A{}", i));
    EXPECT_EQ(gf_airlineIndex("A65535"), 65535);
    EXPECT_EQ(gf_airlineIndex("NEW1"), 0);
    EXPECT_EQ(gf_airlineIndex("NEW2"), 0);
    const std::string log = dir.logText();
    EXPECT_NE(log.find("==> airline code table full, 'NEW1'"), std::string::npos) << log;
    EXPECT_EQ(log.find("NEW2"), std::string::npos);
    gf_clearReferenceData();
}
