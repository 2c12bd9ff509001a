// The user's regcode files and the AIG list: which titles carry which
// registrations, and which titles are not to be used by the scan.
#include <gtest/gtest.h>

#include "liveries/regcode_files.h"
#include "support/temp_workdir.h"

namespace fs = std::filesystem;
using namespace tfx;

TEST(RegcodeFiles, TextLinesGiveTitlesRegcodesAndSpecialEntries) {
    test::TempWorkdir dir;
    fs::create_directories(dir.path() / "my");
    dir.write("my/b.TXT",
              "short\n"
              "Title alone\n"
              "One reg;D-ABCD\n"
              "Two regs;D-ABCE, D-ABCF\n"
              "Two special;D-ABCG,D-ABCH;#\n"
              "Empty list;\n"
              "Bad one;X1\n"
              "Bad in list;X1,D-ABCI\n");
    dir.write("my/a.csv", "Not read at all\n");
    std::vector<RegcodeEntry> entries;
    EXPECT_FALSE(gf_readRegcodeFolder(dir.path() / "my", entries)) << "two wrong lengths";
    ASSERT_EQ(entries.size(), 6u);
    EXPECT_EQ(entries[0].title, "Title alone");
    EXPECT_TRUE(entries[0].regcodes.empty());
    EXPECT_TRUE(entries[1].special);
    EXPECT_EQ(entries[2].regcodes, (std::vector<std::string>{"D-ABCE", "D-ABCF"}));
    EXPECT_FALSE(entries[2].special);
    EXPECT_TRUE(entries[3].special);
    EXPECT_TRUE(entries[4].regcodes.empty()) << "an empty list is a title alone";
    EXPECT_EQ(entries[5].regcodes, std::vector<std::string>{"D-ABCI"});
    EXPECT_NE(dir.logText().find("wrong regcode length 'X1'"), std::string::npos);
}

TEST(RegcodeFiles, AigListNeedsMetaAndReportsRepeatedTitles) {
    test::TempWorkdir dir;
    std::vector<RegcodeEntry> entries;
    dir.write("a.xml", "<root><aig><l t=\"x\"/></aig></root>");
    EXPECT_FALSE(gf_readAigRegcodesXml(dir.path() / "a.xml", entries));
    dir.write("a.xml",
              "<root><meta/><aig><l t=\"A\" r=\"D-ABCD,D-ABCE\" s=\"true\"/><l t=\"\"/>"
              "<l t=\"B\"/><l t=\"B\"/></aig></root>");
    EXPECT_FALSE(gf_readAigRegcodesXml(dir.path() / "a.xml", entries));
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_TRUE(entries[0].special);
    EXPECT_EQ(entries[0].regcodes.size(), 2u);
    EXPECT_NE(dir.logText().find("Duplicate title 'B' (same as previous)"), std::string::npos);
}
