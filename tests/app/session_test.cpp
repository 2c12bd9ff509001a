// Whole sessions in this process: the entry, start-up, main loop, closing
// down and restart, against the stand-in simulator thread.
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <future>
#include <thread>

#include "app/exit_request.h"
#include "app/options.h"
#include "app/run_flags.h"
#include "app/run_state.h"
#include "app/session.h"
#include "app/session_internal.h"
#include "support/demo_installation.h"
#include "support/sealed_dbase.h"
#include "support/temp_workdir.h"

namespace fs = std::filesystem;
using namespace tfx;
using namespace std::chrono_literals;
using tfx::test::TempWorkdir;

namespace {

// A program folder with docs, the log closed (the entry opens it).
struct ProgramFolder : TempWorkdir {
    ProgramFolder() : TempWorkdir(false) {
        fs::create_directory(path() / "docs");
        tfx::test::sealDbase(*this, tfx::test::DbaseText().text());
        tfx::test::sealAirportCatalogue(*this);
        gf_clearExitRequest();
        userClosing = 0;
        restartPending = 0;
        frameTiming.countdownStep_ms = 20;
        frameTiming.systemErrorWait_ms = 200;
    }
    tfx::test::DemoInstallation installation{path()};
};

// Ends a session left running by a failed assertion, so the test can't hang.
struct CloseOnExit {
    ~CloseOnExit() { gf_requestExit(ExitReason::UserClosedSim, 1); }
};

// "--demo": the built-in simulator answers where a SimConnect library is
// looked for first and none is found (Windows).
int runEntry(std::vector<std::string> words) {
    words.push_back("--demo");
    std::vector<char*> argv;
    for (auto& w : words) argv.push_back(w.data());
    return gf_programEntry(static_cast<int>(argv.size()), argv.data());
}

// Waits until cond holds, at most 10 s.
template <typename Cond>
bool eventually(Cond cond) {
    for (int i = 0; i < 1000; ++i) {
        if (cond()) return true;
        std::this_thread::sleep_for(10ms);
    }
    return false;
}

bool mainLoopRunning() {
    return trafficOpen.load() == 1 && inStartup.load() == 0 && SimRunState.load() == 2;
}

std::size_t find(const std::string& text, const std::string& what, std::size_t from = 0) {
    return text.find(what, from);
}

}  // namespace

TEST(Session, RestartFindsEverythingCleanAndUserCloseEndsIt) {
    ProgramFolder dir;
    dir.write("Log.txt", "the run before\n");
    const int before = gf_sessionCount();
    auto entry = std::async(std::launch::async, [] { return runEntry({"zept"}); });
    CloseOnExit guard;
    ASSERT_TRUE(eventually([&] { return gf_sessionCount() == before + 1 && mainLoopRunning(); }));

    // Leave traces that a clean restart must remove.
    gf_setPending(pending.flushPending);
    gf_requestExit(ExitReason::NewSettings, 1);
    gf_requestExit(ExitReason::SystemError, 0);  // dropped: the first request wins
    ASSERT_TRUE(eventually([&] { return gf_sessionCount() == before + 2 && mainLoopRunning(); }));
    EXPECT_FALSE(gf_exitRequest());
    EXPECT_FALSE(gf_takePending(pending.flushPending));
    EXPECT_EQ(flightPaused.load(), 0);

    gf_requestExit(ExitReason::UserClosedSim, 1);
    ASSERT_EQ(entry.wait_for(10s), std::future_status::ready);
    EXPECT_EQ(entry.get(), 0);
    // One log for the process: the restart doesn't rotate away the run before.
    EXPECT_EQ(dir.read("Log0.txt"), "the run before\n");
    const std::string log = dir.read("Log.txt");
    const auto first = find(log, "Exiting: NEW SETTINGS");
    ASSERT_NE(first, std::string::npos) << log;
    EXPECT_NE(find(log, "======== ZEPT session ", first), std::string::npos);
    const auto phase1 = find(log, "Restart phase: reinitializing SimConnect state", first);
    const auto phase2 = find(log, "Restart phase: reinitializing traffic state", phase1);
    const auto done = find(log, "Restart cleanup completed; posting MSG_START", phase2);
    const auto closing = find(log, "Exiting: USER CLOSED SIM", done);
    EXPECT_NE(phase2, std::string::npos);
    EXPECT_NE(closing, std::string::npos);
    EXPECT_NE(find(log, "Shutdown cleanup completed; posting MSG_EXIT", closing),
              std::string::npos);
    EXPECT_EQ(find(log, "Exiting: SYSTEM ERROR"), std::string::npos);
}

TEST(Session, ClosingDuringTheCountdownStartsNoNewSession) {
    ProgramFolder dir;
    frameTiming.countdownStep_ms = 200;
    const int before = gf_sessionCount();
    auto entry = std::async(std::launch::async, [] { return runEntry({"zept"}); });
    CloseOnExit guard;
    ASSERT_TRUE(eventually([&] { return gf_sessionCount() == before + 1 && mainLoopRunning(); }));
    gf_requestExit(ExitReason::NewFlight, 60);
    ASSERT_TRUE(eventually([] { return restartPending.load() == 1; }));
    const auto closedAt = std::chrono::steady_clock::now();
    gf_requestExit(ExitReason::UserClosedSim, 1);
    ASSERT_EQ(entry.wait_for(10s), std::future_status::ready);
    EXPECT_LT(std::chrono::steady_clock::now() - closedAt, 2s);
    EXPECT_EQ(gf_sessionCount(), before + 1);
    const std::string log = dir.read("Log.txt");
    EXPECT_NE(find(log, "Restarting after 60 seconds"), std::string::npos);
    EXPECT_NE(find(log, "Shutdown cleanup completed; posting MSG_EXIT"), std::string::npos);
}

TEST(RestartCountdown, UnblockShortensOnlyTheLongWait) {
    ProgramFolder dir;
    frameTiming.countdownStep_ms = 1;
    // A short countdown runs its course; Unblock means nothing to it.
    gf_setPending(pending.unblockPushed);
    EXPECT_TRUE(lf_restartCountdown(10));
    gf_clearPending();
    std::thread pusher([] {
        std::this_thread::sleep_for(5ms);
        gf_setPending(pending.unblockPushed);
    });
    frameTiming.countdownStep_ms = 100;
    const auto start = std::chrono::steady_clock::now();
    EXPECT_TRUE(lf_restartCountdown(60));
    pusher.join();
    EXPECT_LT(std::chrono::steady_clock::now() - start, 1s);
    userClosing = 1;
    EXPECT_FALSE(lf_restartCountdown(0));
    EXPECT_FALSE(lf_restartCountdown(3));
    userClosing = 0;
}
