#include <gtest/gtest.h>

#include <set>

#include "app/user_exception.h"
#include "liveries/livery_gap_report.h"
#include "liveries/livery_index_fixture.h"
#include "liveries/livery_matching_ladder.h"
#include "traffic/aircraft_base.h"
#include "traffic/user_aircraft.h"

using namespace tfx;

namespace {

// One small catalogue for every rule of the ladder.
class LiveryLadder : public test::LiveryCatalogue {
protected:
    void SetUp() override {
        test::LiveryCatalogue::SetUp();
        sealRegcodes("");
        myRegcodes("special.txt", "Lufthansa A320 Retro;D-AIZZ\n");
        index = build({
            liv("BAW", "", "A320", false, "BA A320 one"),
            liv("BAW", "", "A320", false, "BA A320 two"),
            liv("BAW", "", "A319", false, "BA A319", "G-EUPA"),
            liv("DLH", "", "A320", false, "Lufthansa A320"),
            liv("DLH", "", "A320", false, "Lufthansa A320 Retro"),
            liv("DLH", "", "B744", false, "Lufthansa B744"),
            liv("DLH", "", "B744", true, "Lufthansa Cargo B744"),
            liv("DLH", "CLH", "CRJ9", false, "Lufthansa CityLine CRJ9"),
            liv("EWG", "", "A319", false, "Eurowings A319"),
            liv("EWG", "", "A319", false, "Eurowings A319 Lufthansa colours"),
            liv("UPS", "", "B763", false, "UPS B763 passenger"),
            liv("VJT", "", "GLF6", false, "VistaJet GLF6"),
            liv("ZZZ", "", "B738", false, "Generic B738"),
            liv("ZZZ", "", "C172", false, "Generic C172"),
        });
        userAircraft.alt = 0;
    }
    void TearDown() override {
        userAircraft.alt = 0;
        test::LiveryCatalogue::TearDown();
    }

    LadderResult walk(const char* airline, const char* model, int depth, bool cargo = false,
                      const char* opr = "", const char* regcode = "", bool random = false) {
        const Aimo key{gf_airlineIndex(airline), gf_airlineIndex(opr), gf_modelIndex(model),
                       static_cast<std::uint8_t>(cargo), 0};
        const LadderQuery query{key, key.cargo, regcode, gf_modelCategory(key.model), false};
        return gf_walkLadder(*index, query, LadderRules{depth, random}, refused);
    }
    void setDepth(int depth) {
        gf_publishOptions([depth](Options& o) {
            o.MATCHING_DEPTH = depth;
            o.RANDOM = false;
        });
    }
    static AircraftBase aircraft(const char* airline, const char* model, std::uint32_t hexid) {
        AircraftBase ac;
        ac.aimo = Aimo{gf_airlineIndex(airline), 0, gf_modelIndex(model), 0, 0};
        ac.category = gf_modelCategory(ac.aimo.model);
        ac.hexid = hexid;
        ac.callsign = fmt::format("T{}", hexid);
        return ac;
    }

    std::shared_ptr<const LiveryIndex> index;
    RefusedTitles refused;
};

std::pair<std::string_view, int> got(const LadderResult& r) {
    return {r.title, r.step};
}

}  // namespace

TEST_F(LiveryLadder, StepsInOrderAndWhereEachDepthStops) {
    using R = std::pair<std::string_view, int>;
    // The registration answers at any depth: 0 for a unique one, else 1.
    EXPECT_EQ(got(walk("XXX", "B789", 1, false, "", "D-AIZZ")), R("Lufthansa A320 Retro", 0));
    EXPECT_EQ(got(walk("XXX", "B789", 1, false, "", "G-EUPA")), R("BA A319", 1));
    EXPECT_EQ(got(walk("BAW", "A320", 1)), R("", NO_STEP));
    // Step 2; a freighter falls back to a passenger livery, not the reverse.
    EXPECT_EQ(got(walk("BAW", "A320", 2)), R("BA A320 one", 2)) << "RANDOM off: the first";
    EXPECT_EQ(got(walk("UPS", "B763", 2, true)), R("UPS B763 passenger", 2));
    EXPECT_EQ(got(walk("DLH", "B744", 2, true)), R("Lufthansa Cargo B744", 2));
    // An operator: the combined key first, then a title carrying the airline's name.
    EXPECT_EQ(got(walk("DLH", "CRJ9", 2, false, "CLH")), R("Lufthansa CityLine CRJ9", 2));
    EXPECT_EQ(got(walk("DLH", "A319", 2, false, "EWG")), R("Eurowings A319 Lufthansa colours", 2));
    // A private aircraft takes a generic livery first, at step 4.
    EXPECT_EQ(got(walk("PVT", "C172", 2)), R("Generic C172", 4));
    // Step 3: BA has no A321, its closest own model is the A320.
    EXPECT_EQ(got(walk("BAW", "A321", 2)), R("", NO_STEP));
    EXPECT_EQ(got(walk("BAW", "A321", 3)), R("BA A320 one", 3));
    // Step 4 generic; a Heavy ends there at depth 4, a Bizjet goes on to 5-7.
    EXPECT_EQ(got(walk("RYR", "B738", 4)), R("Generic B738", 4));
    EXPECT_EQ(got(walk("KLM", "B744", 4)), R("", NO_STEP));
    EXPECT_EQ(got(walk("KLM", "B744", 5)), R("Lufthansa B744", 5));
    EXPECT_EQ(got(walk("NJE", "GLF6", 4)), R("VistaJet GLF6", 5));
    EXPECT_EQ(got(walk("NJE", "GLF6", 3)), R("", NO_STEP));
    // 6: a similar installed model in anyone's colours; 7: any of the category.
    EXPECT_EQ(got(walk("RYR", "B739", 5)), R("", NO_STEP));
    EXPECT_EQ(got(walk("RYR", "B739", 6)), R("Generic B738", 6));
    EXPECT_EQ(got(walk("AFR", "E190", 6)), R("", NO_STEP));
    EXPECT_EQ(got(walk("AFR", "E190", 7)), R("BA A319", 7)) << "the lowest Large model first";
    // 8 only for TCAS coverage: B738 first.
    EXPECT_EQ(got(walk("KLM", "B77W", 7)), R("Lufthansa B744", 7));
    EXPECT_EQ(got(walk("XXX", "EC35", 7)), R("", NO_STEP));
    EXPECT_EQ(got(walk("XXX", "EC35", 8)), R("Generic B738", 8));
}

TEST_F(LiveryLadder, SpecialAndRefusedTitlesAreNotHandedOut) {
    std::set<std::string_view> seen;
    for (int i = 0; i < 200; ++i) seen.insert(walk("DLH", "A320", 4, false, "", "", true).title);
    EXPECT_EQ(seen, std::set<std::string_view>{"Lufthansa A320"});
    for (int i = 0; i < 200; ++i) seen.insert(walk("BAW", "A320", 4, false, "", "", true).title);
    EXPECT_EQ(seen.size(), 3u) << "RANDOM on draws both BA titles";

    refused.insert("BA A320 one");
    EXPECT_EQ(walk("BAW", "A320", 4).title, "BA A320 two") << "the next title of the list";
    refused.insert("BA A320 two");
    EXPECT_EQ(walk("BAW", "A320", 4).step, NO_STEP) << "BA has the model: no similar one";
    EXPECT_EQ(got(walk("BAW", "A320", 5)), std::make_pair(std::string_view("Lufthansa A320"), 5));
    refused.insert("BA A319");
    EXPECT_EQ(walk("XXX", "B789", 4, false, "", "G-EUPA").step, NO_STEP)
        << "a refused regcode title isn't taken, and nothing else fits a B789";
}

TEST_F(LiveryLadder, LiveMatchFlagsCountsAndRefusals) {
    setDepth(4);
    AircraftBase glf = aircraft("NJE", "GLF6", 0x100001);
    gf_matchLivery(glf, 5000);
    EXPECT_EQ(glf.livery, "VistaJet GLF6");
    EXPECT_EQ(glf.tcasOnly, 0) << "steps 5-7 of a small aircraft are within depth 4";

    AircraftBase heavy = aircraft("KLM", "B77W", 0x100002);
    gf_matchLivery(heavy, 36000);
    EXPECT_TRUE(heavy.livery.empty()) << "the user is on the ground";
    userAircraft.alt = 35000;
    gf_matchLivery(heavy, 36000);
    EXPECT_EQ(heavy.livery, "Lufthansa B744");
    EXPECT_EQ(heavy.tcasOnly, 1);
    EXPECT_EQ(gf_liveryStepCounts()[5], 1u);
    EXPECT_EQ(gf_liveryStepCounts()[7], 1u);

    // A refused title: told once, remembered entries of it forgotten, and
    // the same aircraft gets the next title.
    AircraftBase ba = aircraft("BAW", "A320", 0x100003);
    gf_matchLivery(ba, 3000);
    gf_rememberLivery(ba.hexid, ba.livery);
    gf_liveryCreateFailed(ba);
    EXPECT_FALSE(gf_rememberedLivery(ba.hexid).has_value());
    gf_matchLivery(ba, 3000);
    EXPECT_EQ(ba.livery, "BA A320 two");
    EXPECT_EQ(gf_liveryStepCounts()[2], 2u);

    gf_liveryMatchSummary();
    EXPECT_TRUE(logged("Matches at step:   0: 0  1: 0  2: 2  3: 0  4: 0  5: 1  6: 0  7: 1  8: 0"));
    EXPECT_TRUE(logged("\nCould not be created\n  A320 BAW\n"));
}

TEST_F(LiveryLadder, TwentiethRefusedTitleStopsTheTraffic) {
    AircraftBase ac = aircraft("BAW", "A320", 0x200000);
    for (int i = 1; i < 20; ++i) {
        const std::string title = fmt::format("refused {}", i);
        ac.livery = title;
        EXPECT_NO_THROW(gf_liveryCreateFailed(ac));
    }
    ac.livery = "refused 20";
    try {
        gf_liveryCreateFailed(ac);
        FAIL() << "no exception";
    } catch (const UserRelatedException& e) {
        EXPECT_EQ(e.code, 81);
        EXPECT_EQ(e.message, "There are too many liveries that could not be created!, see Log.txt");
    }
}

TEST_F(LiveryLadder, StaticAircraftTakesTheStandsCargoFlag) {
    setDepth(4);
    AircraftBase onCargo = aircraft("DLH", "B744", 7);
    EXPECT_TRUE(gf_matchStaticLivery(onCargo, {"Cargo 1", true}));
    EXPECT_EQ(onCargo.livery, "Lufthansa Cargo B744");
    AircraftBase onPax = aircraft("DLH", "B744", 8);
    EXPECT_TRUE(gf_matchStaticLivery(onPax, {"Gate A1", false}));
    EXPECT_EQ(onPax.livery, "Lufthansa B744");
    AircraftBase none = aircraft("KLM", "B744", 9);
    EXPECT_FALSE(gf_matchStaticLivery(none, {"Gate A2", false}));
    EXPECT_TRUE(logged("Gate A2       : T9        KLM     B744    no livery match ..."));
    EXPECT_EQ(gf_liveryStepCounts()[2], 0u) << "static matches aren't counted";
}

TEST_F(LiveryLadder, GapReportPutsTheMostHelpfulLiveryFirst) {
    setDepth(7);
    const char* fleet[][2] = {{"BAW", "A320"}, {"BAW", "A320"}, {"RYR", "B738"},
                              {"AFR", "E190"}, {"AFR", "E190"}, {"XXX", "EC35"}};
    std::uint32_t hexid = 0x300000;
    for (const auto& [airline, model] : fleet) {
        AircraftBase ac = aircraft(airline, model, ++hexid);
        gf_matchLivery(ac, 2000);
    }
    const std::vector<std::string> lines = gf_liveryGapLines();
    ASSERT_EQ(lines.size(), 4u + 1u + 4u);
    EXPECT_NE(lines[0].find("6 aircraft of 4 airline and model pairs"), std::string::npos);
    // Two E190 at step 7 (5 each) outweigh one EC35 not shown (8).
    const std::string header = lines[4];
    const std::size_t airlineColumn = header.find("Airline");
    EXPECT_EQ(lines[5].substr(airlineColumn, 3), "AFR");
    EXPECT_NE(lines[5].find("BA A319"), std::string::npos);
    EXPECT_EQ(lines[6].substr(airlineColumn, 3), "XXX");
    EXPECT_NE(lines[6].find("none"), std::string::npos);
    EXPECT_EQ(lines[7].substr(airlineColumn, 3), "RYR");
    EXPECT_EQ(lines[8].substr(airlineColumn, 3), "BAW");
    EXPECT_TRUE(gf_writeLiveryGapReport());
    EXPECT_EQ(dir.read("output/info/LiveryGaps.txt").substr(0, 11), "Livery gaps");
}
