#include <gtest/gtest.h>

#include <fstream>

#include <pugixml.hpp>

#include "liveries/livery_index_fixture.h"

using namespace tfx;

namespace {

class LiveryIndexBuild : public test::LiveryCatalogue {
protected:
    std::uint16_t a(const char* code) { return gf_airlineIndex(code); }
    std::uint16_t m(const char* code) { return gf_modelIndex(code); }
    const TitleList* titles(const LiveryIndex& index, std::size_t side, const char* airline,
                            const char* model) {
        const auto it = index.byAirline[side].find(gf_airlineModelKey(a(airline), m(model)));
        return it == index.byAirline[side].end() ? nullptr : &it->second;
    }
};

}  // namespace

TEST_F(LiveryIndexBuild, AirlineOperatorAndModelTables) {
    const auto index = build({
        liv("DLH", "", "A320", false, "Lufthansa A320"),
        liv("DLH", "CLH", "CRJ9", false, "Lufthansa CityLine CRJ9"),
        liv("DLH", "", "B744", true, "Lufthansa Cargo B744"),
        liv("DLH", "", "B744", false, "Lufthansa B744"),
        liv("ZZZ", "", "B738", false, "Generic B738"),
        liv("", "", "A320", false, "No airline A320"),
    });
    // An operator's livery stands under DLHCLH and CLH, never under DLH alone.
    EXPECT_NE(titles(*index, PAX, "DLHCLH", "CRJ9"), nullptr);
    EXPECT_NE(titles(*index, PAX, "CLH", "CRJ9"), nullptr);
    EXPECT_EQ(titles(*index, PAX, "DLH", "CRJ9"), nullptr);
    // Pax and cargo apart; the same title under two keys stands twice by model.
    EXPECT_EQ(*titles(*index, CARGO, "DLH", "B744"), TitleList{"Lufthansa Cargo B744"});
    EXPECT_EQ(*titles(*index, PAX, "DLH", "B744"), TitleList{"Lufthansa B744"});
    EXPECT_EQ(index->byModel[PAX].at(m("CRJ9")).size(), 2u);
    EXPECT_EQ(index->byModel[CARGO].at(m("B744")).size(), 1u);
    EXPECT_EQ(index->genericModels, std::vector<std::uint16_t>{m("B738")});
    // A record without airline is logged and left out.
    EXPECT_TRUE(logged("Invalid livery index: airl=, opr=, model=A320, title=No airline A320"));
    EXPECT_FALSE(index->titleStore.contains("No airline A320"));
    EXPECT_TRUE(logged("Category Heavy: 1 pax liverie and 1 cargo liverie"));
}

TEST_F(LiveryIndexBuild, RegcodeFilesAssignSpecialAndUniqueRegcodes) {
    sealRegcodes(R"(<l t="Lufthansa A320 two" r="D-AIBB"/>)"
                 R"(<l t="Not installed A320" r="D-AIXX"/>)");
    myRegcodes("Mine.TXT",
               "Lufthansa A320 two;D-AIAA\n"            // one regcode: special and unique
               "Lufthansa A320 three;D-AICC,D-AIDD\n"   // two: plain
               "Lufthansa A320 four;D-AIEE,D-AIFF;#\n"  // two and #: special, none unique
               "Lufthansa A320 five;D-AIGG,X\n"         // a wrong regcode is dropped
               "abc;D\n");                              // shorter than 6: ignored
    const auto index = build({
        liv("DLH", "", "A320", false, "Lufthansa A320 one", "D-AIAA"),
        liv("DLH", "", "A320", false, "Lufthansa A320 two"),
        liv("DLH", "", "A320", false, "Lufthansa A320 three"),
        liv("DLH", "", "A320", false, "Lufthansa A320 four"),
        liv("DLH", "", "A320", false, "Lufthansa A320 five"),
    });
    const auto title = [&](const char* regcode) -> std::string_view {
        const auto it = index->regcodeToTitle.find(regcode);
        return it == index->regcodeToTitle.end() ? std::string_view{} : it->second;
    };
    // The user's line takes the in-line regcode of one over to two.
    EXPECT_EQ(title("D-AIAA"), "Lufthansa A320 two");
    EXPECT_EQ(title("D-AIBB"), "Lufthansa A320 two");
    EXPECT_EQ(title("D-AICC"), "Lufthansa A320 three");
    EXPECT_EQ(title("D-AIFF"), "Lufthansa A320 four");
    EXPECT_EQ(title("D-AIGG"), "Lufthansa A320 five");
    EXPECT_EQ(title("D-AIXX"), "") << "a title that wasn't scanned has no effect";
    EXPECT_EQ(index->specialTitles,
              (std::unordered_set<std::string_view>{"Lufthansa A320 two", "Lufthansa A320 four"}));
    EXPECT_EQ(index->uniqueRegcodes, std::vector<std::string>{"D-AIAA"});

    const std::string report = dir.read("output/info/OfflineRegcodes.txt");
    EXPECT_NE(report.find("   regcode D-AIAA for 'Lufthansa A320 two', instead of the same for "
                          "'Lufthansa A320 one'"),
              std::string::npos);
    EXPECT_NE(
        report.find("1 new regcode added, 0 regcodes replaced, 0 regcodes defined as special"),
        std::string::npos);
    EXPECT_NE(
        report.find("5 new regcodes added, 1 regcode replaced, 2 regcodes defined as special"),
        std::string::npos);
    EXPECT_EQ(report.find("Not installed"), std::string::npos);
    EXPECT_TRUE(logged("wrong regcode length 'X'"));
    EXPECT_FALSE(std::filesystem::exists(dir.path() / "input" / "AIG-regcodes.xml"));
}

TEST_F(LiveryIndexBuild, InlineRegcodeClashesAreReported) {
    const auto index = build({
        liv("BAW", "", "A320", false, "BA A320 one", "G-EUUA"),
        liv("BAW", "", "A320", false, "BA A320 two", "G-EUUA"),
    });
    EXPECT_EQ(index->regcodeToTitle.at("G-EUUA"), "BA A320 one") << "the first one stays";
    const std::string clashes = dir.read("output/errors/InlineRegcodes.txt");
    EXPECT_NE(clashes.find("G-EUUA 'BA A320 two' => already in use by 'BA A320 one'"),
              std::string::npos);
    EXPECT_TRUE(logged("    1 in-line regcode clashes"));
    EXPECT_TRUE(logged("input/AIG-regcodes.enc not available"));
}

TEST_F(LiveryIndexBuild, MissingCategorySwitchesItsOptionOffAndSavesIt) {
    params.HELICOPTERS.current = true;
    params.LIGHT_AIRCRAFT.current = true;
    gf_buildOptions();
    build({liv("BAW", "", "A320", false, "BA A320"), liv("ZZZ", "", "C172", false, "Cessna")});
    EXPECT_TRUE(logged("Category Rotorcraft: No livery found\n"));
    EXPECT_TRUE(
        logged("HELICOPTERS temporarily switched off because you do not have Helicopters "
               "installed"));
    EXPECT_FALSE(params.HELICOPTERS.current);
    EXPECT_FALSE(gf_options()->HELICOPTERS);
    EXPECT_TRUE(params.LIGHT_AIRCRAFT.current) << "a Light livery is installed";

    pugi::xml_document stored;
    ASSERT_TRUE(stored.load_file(gf_parameterFilePath().c_str()));
    const auto entry = stored.find_node([](pugi::xml_node n) {
        return std::string_view(n.attribute("name").value()) == "HELICOPTERS";
    });
    ASSERT_TRUE(entry);
    EXPECT_FALSE(entry.attribute("value").as_bool(true));
}
