// The complaint limiter: a few lines in full, then a count per period, per
// kind; a kind that stays quiet for a period may speak in full again.
#include <gtest/gtest.h>

#include "app/complaint_limit.h"
#include "support/temp_workdir.h"

using namespace tfx;

namespace {

std::size_t lf_count(const std::string& text, const std::string& what) {
    std::size_t n = 0;
    for (auto at = text.find(what); at != std::string::npos; at = text.find(what, at + 1)) ++n;
    return n;
}

TEST(ComplaintLimit, AFloodCostsAFewLinesAndACountPerMinute) {
    test::TempWorkdir dir;
    ComplaintLimit limit;
    int written = 0;
    for (int i = 0; i < 10000; ++i)
        written += gf_complain(limit, "bad line", "bad line number " + std::to_string(i), i / 100);
    // 100 seconds of flood: three full lines, and the count of the first
    // minute when the second began.
    EXPECT_EQ(written, 3);
    std::string log = dir.logText();
    EXPECT_EQ(lf_count(log, "bad line number"), 3u);
    EXPECT_NE(log.find(" 5997 more lines of \"bad line\" in the last 60 s"), std::string::npos)
        << log;
    // The rest goes out when its period ends, even with no new line.
    gf_flushComplaints(limit, 120);
    log = dir.logText();
    EXPECT_NE(log.find(" 4000 more lines of \"bad line\""), std::string::npos) << log;
    EXPECT_EQ(gf_complaintTotal(limit, "bad line"), 10000u);

    // Another kind has its own allowance; after a quiet period the first
    // kind speaks in full again.
    EXPECT_TRUE(gf_complain(limit, "other", "other complaint", 121));
    gf_flushComplaints(limit, 200);
    EXPECT_TRUE(gf_complain(limit, "bad line", "bad line again", 260));
    EXPECT_EQ(lf_count(dir.logText(), "more line of"), 0u);  // no count of 1 written as plural
}

TEST(ComplaintLimit, KindsFromTheDataCannotGrowTheTable) {
    test::TempWorkdir dir;
    ComplaintLimit limit;
    for (int i = 0; i < 1000; ++i) gf_complain(limit, "kind " + std::to_string(i), "x", 0);
    EXPECT_LE(limit.kinds.size(), limit.rule.maxKinds + 1);
}

}  // namespace
