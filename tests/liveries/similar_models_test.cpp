#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "liveries/reference_db.h"
#include "liveries/similar_models.h"
#include "support/sealed_dbase.h"
#include "support/temp_workdir.h"

using namespace tfx;
using tfx::test::TempWorkdir;

namespace {

std::uint16_t m(const char* code) {
    return gf_modelIndex(code);
}

std::vector<std::uint16_t> ms(std::initializer_list<const char*> codes) {
    std::vector<std::uint16_t> out;
    for (const char* c : codes) out.push_back(m(c));
    return out;
}

class SimilarModels : public ::testing::Test {
protected:
    void SetUp() override {
        gf_clearReferenceData();
        test::sealDbase(dir, test::bundledDbaseXml());
        ASSERT_TRUE(gf_readDbase());
    }
    void TearDown() override { gf_clearReferenceData(); }
    TempWorkdir dir;
};

}  // namespace

TEST_F(SimilarModels, ClosestModelByLettersThenDigits) {
    EXPECT_EQ(closestModel(m("B738"), ms({"B739", "B737", "A320"})), m("B737"))
        << "B737 and B739 tie on all four distances; the code decides";
    EXPECT_EQ(closestModel(m("B738"), ms({"A320"})), m("A320")) << "one candidate is not checked";
    EXPECT_FALSE(closestModel(m("B738"), ms({"A320", "A321"})).has_value());
    EXPECT_EQ(closestModel(m("A332"), ms({"A339", "A333"})), m("A333")) << "digits nearer";
    // Letters equal and digits one edit apart beats a whole code one edit apart.
    EXPECT_EQ(closestModel(m("CRJ7"), ms({"CRJX", "CRJ9"})), m("CRJ9"));
    EXPECT_EQ(closestModel(m("B77W"), ms({"B772", "B773", "B77L"})), m("B77L"));
}

TEST_F(SimilarModels, InstalledListsAndAirlineFleets) {
    InstalledModels installed;
    for (const char* code : {"A319", "A320", "A20N", "B738", "B38M", "B772", "E190", "C172"})
        installed.models.insert(m(code));
    const std::uint16_t baw = gf_airlineIndex("BAW"), ryr = gf_airlineIndex("RYR");
    installed.modelsByAirline[baw] = {m("A319"), m("A320"), m("B772")};
    installed.modelsByAirline[ryr] = {m("B738"), m("B38M")};
    gf_buildSimilarModels(installed);

    // Every other member of every group, installed or not.
    EXPECT_EQ(similarAllModels[m("A321")], ms({"A318", "A319", "A320", "A21N"}));
    // The closest installed one replaces the list.
    EXPECT_EQ(similarInstalledModels[m("A321")], ms({"A320"}));
    // C152's group has C172 installed, but not close in writing: the list stays.
    EXPECT_EQ(similarInstalledModels[m("C152")], ms({"C172"}));
    EXPECT_FALSE(similarInstalledModels.contains(m("B744"))) << "no relative installed";

    // Ryanair has no A320 but nothing of that family either; for a B739 it
    // keeps to its own B738.
    EXPECT_EQ(similarByAirline[ryr][m("B739")], ms({"B738"}));
    EXPECT_FALSE(similarByAirline[ryr].contains(m("A321")));
    EXPECT_FALSE(similarByAirline[ryr].contains(m("B738"))) << "it has that one";
    EXPECT_EQ(similarByAirline[baw][m("B773")], ms({"B772"}));
    EXPECT_EQ(similarByAirline[baw][m("A21N")].size(), 0u) << "A20N isn't BA's";
}

TEST_F(SimilarModels, GroupsOfOneAndNothingInstalled) {
    similarGroups = {{"A320"}, {"B738", "B738"}, {"E170", "E75L"}};
    gf_buildSimilarModels({});
    EXPECT_FALSE(similarAllModels.contains(m("A320")));
    EXPECT_FALSE(similarAllModels.contains(m("B738"))) << "a model is not its own relative";
    EXPECT_EQ(similarAllModels[m("E170")], ms({"E75L"}));
    EXPECT_TRUE(similarByAirline.empty());
    EXPECT_NE(dir.logText().find("No similar model definitions with installed liveries found"),
              std::string::npos);
}
