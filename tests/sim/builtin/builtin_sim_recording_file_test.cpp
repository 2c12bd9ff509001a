// The recording file of a long run: written under a working name, complete
// under its own name only when the recording ends.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

#include "platform/file_replace.h"
#include "sim/builtin/builtin_sim_recorder.h"
#include "support/temp_workdir.h"

using namespace tfx;
namespace fs = std::filesystem;

namespace {

std::size_t lf_lineCount(const fs::path& path) {
    std::ifstream in(path);
    std::size_t n = 0;
    for (std::string line; std::getline(in, line);) ++n;
    return n;
}

}  // namespace

TEST(RecordingFile, NamedOnlyWhenCompleteAndNothingKeptInMemory) {
    test::TempWorkdir dir;
    const fs::path target = dir.path() / "motion.csv";
    PositionRecorder recorder;
    recorder.limit = 0;
    ASSERT_TRUE(bsim::gf_openRecordingFile(recorder, target));
    for (int i = 0; i < 250; ++i)
        bsim::gf_recordPosition(recorder, {i * 33, 1000, 51.8, -1.3, 2500.0 + i});
    EXPECT_FALSE(fs::exists(target));
    EXPECT_TRUE(fs::exists(pf_temporaryNameFor(target)));
    EXPECT_TRUE(recorder.positions.empty());

    ASSERT_TRUE(bsim::gf_closeRecordingFile(recorder));
    EXPECT_FALSE(fs::exists(pf_temporaryNameFor(target)));
    EXPECT_EQ(lf_lineCount(target), 251u);  // the header and every position
    std::ifstream in(target);
    std::string header, first;
    std::getline(in, header);
    std::getline(in, first);
    EXPECT_EQ(header.rfind("time_ms,object_id,lat_deg,lon_deg,alt_ft", 0), 0u);
    EXPECT_EQ(first.rfind("0,1000,51.8000000,-1.3000000,2500.00", 0), 0u);
    EXPECT_TRUE(bsim::gf_closeRecordingFile(recorder));  // twice is harmless
}

TEST(RecordingFile, ANewFileReplacesTheOldOneOnlyWhenItEnds) {
    test::TempWorkdir dir;
    const fs::path target = dir.write("motion.csv", "an older run\n");
    PositionRecorder recorder;
    ASSERT_TRUE(bsim::gf_openRecordingFile(recorder, target));
    bsim::gf_recordPosition(recorder, {0, 1001, 51.8, -1.3, 100});
    EXPECT_EQ(dir.read("motion.csv"), "an older run\n");
    ASSERT_TRUE(bsim::gf_closeRecordingFile(recorder));
    EXPECT_EQ(lf_lineCount(target), 2u);
    EXPECT_EQ(recorder.positions.size(), 1u);  // memory too, while its limit allows
}

TEST(RecordingFile, AnUnwritablePlaceIsLoggedAndRecordsNothing) {
    test::TempWorkdir dir;
    PositionRecorder recorder;
    EXPECT_FALSE(bsim::gf_openRecordingFile(recorder, dir.path() / "no" / "such" / "motion.csv"));
    bsim::gf_recordPosition(recorder, {0, 1001, 51.8, -1.3, 100});
    EXPECT_NE(dir.logText().find("Cannot write the recorded positions"), std::string::npos);
    EXPECT_TRUE(bsim::gf_closeRecordingFile(recorder));
}
