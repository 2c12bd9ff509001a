// The stored scan: what it holds, what its reader refuses, and that an old
// file stays whole whatever happens to the writer.
#include <gtest/gtest.h>

#ifndef _WIN32
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#endif

#include <chrono>
#include <thread>

#include <pugixml.hpp>

#include "liveries/code_interning.h"
#include "liveries/reference_db.h"
#include "liveries/scanned_liveries_file.h"
#include "platform/file_replace.h"
#include "support/temp_workdir.h"

namespace fs = std::filesystem;
using namespace tfx;

namespace {

class ScannedLiveriesFile : public ::testing::Test {
protected:
    void SetUp() override { gf_clearReferenceData(); }
    void TearDown() override {
        scanFileReplacer = pf_replaceFile;
        gf_clearReferenceData();
    }
    static Livery make(const std::string& title, const char* airline, const char* model,
                       std::uint8_t cargo = 0, const char* opr = "", const std::string& reg = "") {
        return {title,
                reg,
                gf_internCode(airlineCodes, airline),
                gf_internCode(airlineCodes, opr),
                gf_internCode(modelCodes, model),
                cargo,
                3};
    }
    std::vector<Livery> many(std::size_t n, const std::string& tag) {
        std::vector<Livery> list;
        for (std::size_t i = 0; i < n; ++i)
            list.push_back(make(tag + std::to_string(i), "DLH", "A320"));
        return list;
    }

    test::TempWorkdir dir;
    fs::path file = dir.path() / "LiveriesScanned_MSFS2020.xml";
};

}  // namespace

TEST_F(ScannedLiveriesFile, RoundTripKeepsEveryFieldButRank) {
    std::vector<Livery> list = {make("B cargo", "DLH", "B744", 1, "", "D-ABCD"),
                                make("A pax & <friends>", "DLH", "A320", 0, "CLH"),
                                make("Z", "BAW", "A320")};
    ASSERT_TRUE(gf_writeScannedLiveries(list, file));
    EXPECT_FALSE(fs::exists(file.string() + ".scan_tmp"));

    pugi::xml_document doc;
    ASSERT_TRUE(doc.load_file(file.c_str()));
    const auto cargo = doc.select_node("/root/liveries/l[@t='B cargo']").node();
    EXPECT_STREQ(cargo.attribute("c").value(), "true");
    EXPECT_STREQ(cargo.attribute("r").value(), "D-ABCD");
    EXPECT_FALSE(cargo.attribute("o"));
    const auto pax = doc.select_node("/root/liveries/l[@t='A pax & <friends>']").node();
    EXPECT_FALSE(pax.attribute("c"));
    EXPECT_FALSE(pax.attribute("r"));
    EXPECT_STREQ(pax.attribute("o").value(), "CLH");

    // Read back in a fresh process: the codes are interned anew, as text.
    gf_clearReferenceData();
    std::vector<Livery> read;
    ASSERT_TRUE(gf_readScannedLiveries(read, file));
    ASSERT_EQ(read.size(), 3u);
    for (const Livery& l : read) EXPECT_EQ(l.rank, 0);
    EXPECT_TRUE(std::is_sorted(read.begin(), read.end(), gf_liveryLess));
    const auto b = std::find_if(read.begin(), read.end(),
                                [](const Livery& l) { return l.title == "B cargo"; });
    EXPECT_EQ(gf_modelCode(b->model), "B744");
    EXPECT_EQ(b->cargo, 1);
    EXPECT_EQ(b->regcode, "D-ABCD");
}

TEST_F(ScannedLiveriesFile, ReaderRefusesIncompleteFiles) {
    std::vector<Livery> read;
    EXPECT_FALSE(gf_readScannedLiveries(read, file));  // missing
    dir.write(file.filename().string(),
              "<root><liveries><l a=\"DLH\" m=\"A320\"/></liveries></root>");
    EXPECT_FALSE(gf_readScannedLiveries(read, file));
    EXPECT_NE(dir.logText().find("Missing required attribute 't' in <l>"), std::string::npos);
    dir.write(file.filename().string(), "<root><liveries/></root>");
    EXPECT_FALSE(gf_readScannedLiveries(read, file));
    dir.write(file.filename().string(), "<root><l");
    EXPECT_FALSE(gf_readScannedLiveries(read, file));
    EXPECT_TRUE(read.empty());
    EXPECT_FALSE(gf_writeScannedLiveries({}, file)) << "an empty scan writes nothing";
}

TEST_F(ScannedLiveriesFile, FailedSwapLeavesTheOldFileAndNoTemporary) {
    ASSERT_TRUE(gf_writeScannedLiveries(many(2, "old"), file));
    const std::string before = dir.read(file.filename().string());
    dir.write(file.filename().string() + ".scan_tmp", "stale");  // left by a crash
    scanFileReplacer = [](const fs::path&, const fs::path&, std::error_code& ec) {
        ec = std::make_error_code(std::errc::io_error);
        return false;
    };
    EXPECT_FALSE(gf_writeScannedLiveries(many(5, "new"), file));
    EXPECT_EQ(dir.read(file.filename().string()), before);
    EXPECT_FALSE(fs::exists(file.string() + ".scan_tmp"));
    EXPECT_NE(dir.logText().find("Cannot replace"), std::string::npos);
}

#ifndef _WIN32  // a child process killed mid-way: fork and signals
TEST_F(ScannedLiveriesFile, KilledWriterLeavesAWholeFile) {
    ASSERT_TRUE(gf_writeScannedLiveries(many(3, "old"), file));
    const std::vector<Livery> big = many(60000, "a longer title for a bigger file ");
    // Kill writers at different moments; each time one whole file must stand.
    for (int delay_ms : {1, 5, 15, 40, 80}) {
        const pid_t child = ::fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            for (;;) gf_writeScannedLiveries(big, file);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(delay_ms));
        ::kill(child, SIGKILL);
        int status = 0;
        ::waitpid(child, &status, 0);
        std::vector<Livery> read;
        ASSERT_TRUE(gf_readScannedLiveries(read, file)) << "after " << delay_ms << " ms";
        EXPECT_TRUE(read.size() == 3 || read.size() == big.size()) << read.size();
    }
    // The next writer clears what the killed one left.
    ASSERT_TRUE(gf_writeScannedLiveries(many(1, "last"), file));
    EXPECT_FALSE(fs::exists(file.string() + ".scan_tmp"));
}
#endif
