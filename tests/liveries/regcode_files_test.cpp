// The AIG list: which titles carry which registrations. The user's own
// files are read through the index build (LiveryIndexBuild).
#include <gtest/gtest.h>

#include "liveries/regcode_files.h"
#include "support/temp_workdir.h"

using namespace tfx;

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
