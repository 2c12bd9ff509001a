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

TEST(Hours2Bitset, RangesAndSingles) {
    TempWorkdir dir;
    EXPECT_TRUE(gf_hours2bitset("0:47").all());
    EXPECT_EQ(gf_hours2bitset("3"), bits({3}));
    EXPECT_EQ(gf_hours2bitset(" 5 : 7 "), bits({5, 6, 7}));
    EXPECT_EQ(gf_hours2bitset("9:9"), bits({9}));
    EXPECT_EQ(gf_hours2bitset("12:"), bits({12}));  // a range with one number is that bit
    EXPECT_TRUE(gf_hours2bitset("").none());
    EXPECT_EQ(dir.logText().find("==>"), std::string::npos) << "valid input logs nothing";
}

TEST(Hours2Bitset, BadRangesLogAndYieldNothing) {
    TempWorkdir dir;
    EXPECT_TRUE(gf_hours2bitset("47:0").none());
    EXPECT_TRUE(gf_hours2bitset("1:2:3").none());
    EXPECT_TRUE(gf_hours2bitset("48").none());
    EXPECT_TRUE(gf_hours2bitset("3:48").none());
    EXPECT_TRUE(gf_hours2bitset(":").none());
    const std::string log = dir.logText();
    EXPECT_NE(log.find("gf_hours2bitset descending range not allowed (47:0 in 47:0)"),
              std::string::npos);
    EXPECT_NE(log.find("gf_hours2bitset more than one colon char in: 1:2:3"), std::string::npos);
    EXPECT_NE(log.find("operator () invalid hour '48' in 48"), std::string::npos);
    EXPECT_NE(log.find("operator () invalid hour '48' in 3:48"), std::string::npos);
    EXPECT_NE(log.find("gf_hours2bitset invalid range format in :"), std::string::npos);
}

TEST(Hours2Bitset, ListsSkipOnlyTheBadEntries) {
    TempWorkdir dir;
    EXPECT_EQ(gf_hours2bitset("1,2,x,5"), bits({1, 2, 5}));
    EXPECT_EQ(gf_hours2bitset(" 0 , 47 "), bits({0, 47}));
    EXPECT_EQ(gf_hours2bitset("4,,6"), bits({4, 6}));
    EXPECT_EQ(gf_hours2bitset("-1,2"), bits({2}));
    EXPECT_EQ(gf_hours2bitset("7x"), bits({}));
    EXPECT_NE(dir.logText().find("invalid hour 'x' in 1,2,x,5"), std::string::npos);
}

TEST(Bitset2Hours, OneRunOrNothing) {
    EXPECT_EQ(gf_bitset2hours(bits({3, 4, 5})), "3:5");
    EXPECT_EQ(gf_bitset2hours(bits({7})), "7");
    EXPECT_EQ(gf_bitset2hours(bits({0})), "0");
    EXPECT_EQ(gf_bitset2hours(bits({47})), "47");
    EXPECT_EQ(gf_bitset2hours(HalfHours().set()), "0:47");
    EXPECT_FALSE(gf_bitset2hours(bits({3, 5})));
    EXPECT_FALSE(gf_bitset2hours(bits({0, 47})));
    EXPECT_FALSE(gf_bitset2hours(HalfHours()));
}

TEST(Hours, RoundTripOfEveryRun) {
    TempWorkdir dir;
    for (int a = 0; a < 48; ++a)
        for (int b = a; b < 48; ++b) {
            HalfHours set;
            for (int h = a; h <= b; ++h) set.set(static_cast<std::size_t>(h));
            const auto text = gf_bitset2hours(set);
            ASSERT_TRUE(text);
            ASSERT_EQ(gf_hours2bitset(*text), set) << *text;
        }
}
