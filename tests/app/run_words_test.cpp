// The command-line words: what a scripted run and a user at a console type.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "app/run_words.h"

using namespace tfx;

namespace {

RunWords lf_read(std::vector<std::string> words, std::vector<std::string>& problems) {
    std::vector<char*> argv{const_cast<char*>("zept")};
    for (auto& w : words) argv.push_back(w.data());
    return gf_readRunWords(static_cast<int>(argv.size()), argv.data(), problems);
}

}  // namespace

TEST(RunWords, EveryWordWithItsValueInAnyCase) {
    std::vector<std::string> problems;
    const RunWords none = lf_read({}, problems);
    EXPECT_EQ(none.status_s, 5);
    EXPECT_FALSE(none.rtApp);
    const RunWords w = lf_read({"--PRODUCTION", "--Rt-App", "--duration", "90", "--status", "0",
                                "--record", "out/motion.csv"},
                               problems);
    EXPECT_TRUE(w.production);
    EXPECT_TRUE(w.rtApp);
    EXPECT_EQ(w.duration_s, 90);
    EXPECT_EQ(w.status_s, 0);
    EXPECT_EQ(w.recording, "out/motion.csv");  // a file name keeps its case
    EXPECT_TRUE(problems.empty());
}

TEST(RunWords, BadValuesAndUnknownWordsAreReportedAndSkipped) {
    std::vector<std::string> problems;
    const RunWords w = lf_read({"--duration", "ten", "--status", "-1", "--frobnicate", "--duration",
                                "99999999999", "--rt-app", "--record"},
                               problems);
    // A bad value never stands in for a good one, and the next word is still read.
    EXPECT_EQ(w.duration_s, 0);
    EXPECT_EQ(w.status_s, 5);
    EXPECT_TRUE(w.rtApp);
    EXPECT_TRUE(w.recording.empty());
    ASSERT_EQ(problems.size(), 5u);
    EXPECT_NE(problems[0].find("not 'ten'"), std::string::npos);
    EXPECT_NE(problems[2].find("'--frobnicate'"), std::string::npos);
    EXPECT_NE(problems[4].find("--record needs a file name"), std::string::npos);
    problems.clear();
    lf_read({"--duration"}, problems);  // a value missing at the end
    ASSERT_EQ(problems.size(), 1u);
    EXPECT_NE(problems[0].find("--duration needs a number of seconds"), std::string::npos);
}
