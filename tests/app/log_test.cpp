#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <fmt/format.h>

#include "app/log.h"
#include "app/text_utils.h"
#include "support/temp_workdir.h"

namespace fs = std::filesystem;
using tfx::test::TempWorkdir;

TEST(Log, OpeningKeepsThePreviousRunAsOneGeneration) {
    TempWorkdir dir;
    tfx::gf_logLine("first run");
    tfx::gf_openLog();  // second run
    tfx::gf_logLine("second run");
    tfx::gf_openLog();  // third run: Log0 holds the second, not the first
    EXPECT_NE(dir.read("Log0.txt").find("second run"), std::string::npos);
    EXPECT_EQ(dir.read("Log0.txt").find("first run"), std::string::npos);
    EXPECT_EQ(dir.logText().find("second run"), std::string::npos);
}

TEST(Log, PlainLinesWaitFor4096BytesWarningsFlushAtOnce) {
    TempWorkdir dir;
    const auto onDisk = [&] { return fs::file_size(dir.path() / "Log.txt"); };
    const auto afterHead = onDisk();

    const std::string line(99, 'x');  // 100 bytes with its newline
    for (int i = 0; i < 40; ++i) tfx::gf_logLine(line);
    EXPECT_EQ(onDisk(), afterHead) << "4000 bytes must stay buffered";
    tfx::gf_logLine(line);  // 4100 bytes: over the mark
    EXPECT_EQ(onDisk(), afterHead + 4100);

    tfx::gf_logLine("short");
    tfx::gf_logError("broken");
    EXPECT_EQ(onDisk(), afterHead + 4100 + 6 + 11);
    EXPECT_NE(dir.read("Log.txt").find("\n==> broken\n"), std::string::npos);
}

TEST(Log, LinesFromManyThreadsNeverMix) {
    TempWorkdir dir;
    std::vector<std::thread> threads;
    for (int t = 0; t < 4; ++t)
        threads.emplace_back([t] {
            const std::string line(200, static_cast<char>('a' + t));
            for (int i = 0; i < 500; ++i) {
                if (i % 50 == 0)
                    tfx::gf_logError(line);
                else
                    tfx::gf_logLine(line);
            }
        });
    for (auto& th : threads) th.join();
    int count = 0;
    for (const auto& raw : tfx::gf_split(dir.logText(), '\n')) {
        std::string_view line = raw;
        if (line.starts_with("==> ")) line.remove_prefix(4);
        if (line.size() != 200) continue;
        EXPECT_EQ(line.find_first_not_of(line[0]), std::string_view::npos);
        ++count;
    }
    EXPECT_EQ(count, 2000);
}

TEST(Log, AFloodOfComplaintsCannotPushOutTheProgramsOwnLines) {
    TempWorkdir dir(false);
    tfx::gf_setLogLimits({20'000, 40'000});
    tfx::gf_openLog();
    const std::string complaint(99, 'c');
    for (int i = 0; i < 5'000; ++i) tfx::gf_logComplaint(complaint);
    tfx::gf_logLine("own line after the flood");
    tfx::gf_logError("own warning after the flood");
    EXPECT_LE(fs::file_size(dir.path() / "Log.txt"), 20'000u + 200u);

    // The program's own lines stop only at the whole bound.
    const std::string line(99, 'o');
    for (int i = 0; i < 5'000; ++i) tfx::gf_logLine(line);
    tfx::gf_closeLog();
    tfx::gf_setLogLimits({});
    const std::string log = dir.read("Log.txt");
    EXPECT_LE(log.size(), 40'000u + 300u);
    EXPECT_NE(log.find("own line after the flood\n==> own warning after the flood\n"),
              std::string::npos);
    EXPECT_NE(log.find("==> Log.txt reached 20000 bytes: further complaints are not written"),
              std::string::npos);
    EXPECT_NE(log.find("==> Log.txt reached 40000 bytes: further lines are not written"),
              std::string::npos);
    const auto complaints = static_cast<int>(std::count(log.begin(), log.end(), 'c') / 99);
    const auto own = static_cast<int>(std::count(log.begin(), log.end(), 'o') / 99);
    EXPECT_NE(log.find(fmt::format("==> {} complaints and {} other lines were not written",
                                   5'000 - complaints, 5'000 - own)),
              std::string::npos)
        << log.substr(log.size() - 200);
}

TEST(Log, AToolsLogGoesWhereItIsToldNotIntoTheWorkingFolder) {
    TempWorkdir dir(false);
    fs::create_directory(dir.path() / "elsewhere");
    tfx::gf_openLogAt(dir.path() / "elsewhere" / "tool_Log.txt");
    tfx::gf_logLine("from a tool");
    tfx::gf_closeLog();
    EXPECT_FALSE(fs::exists(dir.path() / "Log.txt"));
    EXPECT_NE(dir.read("elsewhere/tool_Log.txt").find("from a tool"), std::string::npos);
}
