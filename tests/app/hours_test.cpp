#include <gtest/gtest.h>

#include "app/hours.h"
#include "support/temp_workdir.h"

using tfx::gf_bitset2hours;
using tfx::gf_hours2bitset;
using tfx::HalfHours;
using tfx::test::TempWorkdir;

namespace {
HalfHours bits(std::initializer_list<int> hours) {
    HalfHours set;
    for (int h : hours) set.set(static_cast<std::size_t>(h));
    return set;
}
}  // namespace

TEST(Hours, ReadingRangesListsAndBadEntries) {
    TempWorkdir dir;
    EXPECT_EQ(gf_hours2bitset(" 5 : 7 "), bits({5, 6, 7}));
    EXPECT_EQ(gf_hours2bitset("12:"), bits({12}));  // a range with one number is that bit
    EXPECT_TRUE(gf_hours2bitset("").none());
    EXPECT_EQ(dir.logText().find("==>"), std::string::npos) << "valid input logs nothing";
    // A bad range yields nothing; a list skips only its bad entries.
    for (const char* bad : {"47:0", "1:2:3", "3:48", ":"})
        EXPECT_TRUE(gf_hours2bitset(bad).none()) << bad;
    EXPECT_EQ(gf_hours2bitset("1,2,x,5"), bits({1, 2, 5}));
    EXPECT_EQ(gf_hours2bitset("4,,6,-1,48"), bits({4, 6}));
    EXPECT_NE(dir.logText().find("descending range not allowed (47:0 in 47:0)"), std::string::npos);
    EXPECT_NE(dir.logText().find("invalid hour 'x' in 1,2,x,5"), std::string::npos);
}

TEST(Hours, EveryRunRoundTripsAndOthersHaveNoText) {
    TempWorkdir dir;
    for (int a = 0; a < 48; ++a)
        for (int b = a; b < 48; ++b) {
            HalfHours set;
            for (int h = a; h <= b; ++h) set.set(static_cast<std::size_t>(h));
            const auto text = gf_bitset2hours(set);
            ASSERT_TRUE(text);
            ASSERT_EQ(gf_hours2bitset(*text), set) << *text;
        }
    EXPECT_EQ(gf_bitset2hours(bits({7})), "7");
    EXPECT_FALSE(gf_bitset2hours(bits({0, 47})));
    EXPECT_FALSE(gf_bitset2hours(HalfHours()));
}
