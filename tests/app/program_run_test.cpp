// The program as a process of its own: started through its entry in a child,
// stopped by real signals, judged by its exit code, console and files.
// POSIX only (fork, exec and signals); under Wine the Windows main job test
// does the same for the console's control events.
#ifndef _WIN32
#include <gtest/gtest.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "app/exit_request.h"
#include "app/run_flags.h"
#include "app/session.h"
#include "app/session_internal.h"
#include "support/demo_installation.h"
#include "support/sealed_dbase.h"
#include "support/temp_workdir.h"

namespace fs = std::filesystem;
using namespace tfx;
using namespace std::chrono_literals;

namespace {

// A program folder with docs and the reference data; the entry opens the log.
struct ProgramFolder : test::TempWorkdir {
    ProgramFolder() : TempWorkdir(false) {
        fs::create_directory(path() / "docs");
        test::sealDbase(*this, test::DbaseText().text());
        test::sealAirportCatalogue(*this);
    }
    std::string console() const { return read("console.txt"); }
    test::DemoInstallation installation{path()};
};

struct ProgramProcess {
    pid_t pid = -1;
};

// Starts the program in a child process, its console (stderr) into console.txt.
ProgramProcess startProgram(const ProgramFolder& dir, std::vector<std::string> words) {
    words.insert(words.begin(), "zept");
    const std::string console = (dir.path() / "console.txt").string();
    const pid_t pid = ::fork();
    if (pid == 0) {
        const int fd = ::open(console.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
        ::dup2(fd, 2);
        gf_clearExitRequest();
        userClosing = 0;
        restartPending = 0;
        frameTiming = FrameTiming{};  // the real waits
        std::vector<char*> argv;
        for (auto& w : words) argv.push_back(w.data());
        ::_exit(gf_programEntry(static_cast<int>(argv.size()), argv.data()) & 0xff);
    }
    return {pid};
}

// The exit code, or -1 when the program didn't end in time (it is killed then).
int exitCodeWithin(ProgramProcess run, std::chrono::milliseconds limit) {
    const auto until = std::chrono::steady_clock::now() + limit;
    int status = 0;
    while (std::chrono::steady_clock::now() < until) {
        if (::waitpid(run.pid, &status, WNOHANG) == run.pid)
            return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
        std::this_thread::sleep_for(20ms);
    }
    ::kill(run.pid, SIGKILL);
    ::waitpid(run.pid, &status, 0);
    return -1;
}

bool has(const std::string& text, const std::string& what) {
    return text.find(what) != std::string::npos;
}

}  // namespace

TEST(ProgramRun, EveryStopSignalOrTheRunTimeClosesAsTheUserWouldInAnyState) {
    // Early (starting up), waiting for the simulator, and with the session
    // running; signal 0 stands for the run time given on the command line.
    const std::pair<int, std::chrono::milliseconds> cases[] = {
        {SIGINT, 50ms}, {SIGTERM, 400ms}, {SIGHUP, 2500ms}, {0, 0ms}};
    for (const auto& [signal, after] : cases) {
        ProgramFolder dir;
        const ProgramProcess run =
            startProgram(dir, signal == 0 ? std::vector<std::string>{"--duration", "2"}
                                          : std::vector<std::string>{});
        std::this_thread::sleep_for(after);
        if (signal != 0) ::kill(run.pid, signal);
        EXPECT_EQ(exitCodeWithin(run, 10s), 0) << "signal " << signal;
        const std::string log = dir.read("Log.txt");
        EXPECT_TRUE(has(log, "Exiting: USER CLOSED SIM")) << signal << "\n" << log;
        EXPECT_TRUE(has(log, "Shutdown cleanup completed; posting MSG_EXIT")) << signal;
        EXPECT_EQ(dir.console(), "") << "the user's own close needs no word";
    }
}

TEST(ProgramRun, AFatalErrorSaysWhyAndStillClosesOnSignalOrDuration) {
    {  // The error stays readable for 25 s; Ctrl-C ends that wait at once.
        ProgramFolder dir;
        fs::remove(dir.path() / "docs");
        const ProgramProcess run = startProgram(dir, {});
        std::this_thread::sleep_for(1s);
        ::kill(run.pid, SIGTERM);
        EXPECT_EQ(exitCodeWithin(run, 5s), 1);
        EXPECT_TRUE(has(dir.console(), "ZEPT stopped: 41: ZEPT must be run from the ZEPT folder!"))
            << dir.console();
        EXPECT_TRUE(has(dir.read("Log.txt"), "Exiting: SYSTEM ERROR"));
    }
    {  // A damaged reference file; the run time ends the wait.
        ProgramFolder dir;
        dir.write("input/dbase.enc", "not sealed at all");
        const ProgramProcess run = startProgram(dir, {"--duration", "1"});
        EXPECT_EQ(exitCodeWithin(run, 8s), 1);
        EXPECT_TRUE(has(dir.console(), "ZEPT stopped: input/dbase.enc ")) << dir.console();
    }
}

TEST(ProgramRun, AnUnusableLogOrDataFolderEndsAtOnceAndSaysWhy) {
    {
        ProgramFolder dir;
        fs::create_directory(dir.path() / "Log.txt");
        const ProgramProcess run = startProgram(dir, {});
        EXPECT_EQ(exitCodeWithin(run, 5s), 1);
        EXPECT_TRUE(has(dir.console(), "ZEPT can't start: Failed to write file Log.txt: "))
            << dir.console();
    }
    {  // A data folder that can't be made, even by root: its parent is a file.
        ProgramFolder dir;
        dir.write("plain_file", "x");
        ::setenv("ZEPT_DATA_DIR", (dir.path() / "plain_file" / "ZEPT").c_str(), 1);
        const ProgramProcess run = startProgram(dir, {});
        EXPECT_EQ(exitCodeWithin(run, 5s), 1);
        EXPECT_TRUE(has(dir.console(), "Failed to create directory: ")) << dir.console();
        EXPECT_FALSE(fs::exists(dir.path() / "Log.txt"));
    }
}

TEST(ProgramRun, ASecondInstanceInTheSameProgramFolderIsRefusedWithAWord) {
    ProgramFolder dir;
    const ProgramProcess first = startProgram(dir, {});
    std::this_thread::sleep_for(500ms);
    // Another data folder, the same program folder and so the same Log.txt.
    fs::create_directory(dir.path() / "other_data");
    ::setenv("ZEPT_DATA_DIR", (dir.path() / "other_data").c_str(), 1);
    const ProgramProcess second = startProgram(dir, {});
    EXPECT_EQ(exitCodeWithin(second, 5s), 255);
    EXPECT_TRUE(has(dir.console(), "ZEPT is already running in ")) << dir.console();
    ::kill(first.pid, SIGINT);
    EXPECT_EQ(exitCodeWithin(first, 10s), 0);
    EXPECT_FALSE(fs::exists(dir.path() / "other_data" / "parameters.xml"));
}

TEST(ProgramRun, WorkingFilesOfKilledRunsGoAtStart) {
    ProgramFolder dir;
    fs::create_directories(dir.path() / "airports" / "learned");
    const char* stale[] = {"parameters.xml.tmp999999", "motion.csv.tmp12345", "Log0.txt.tmp4242",
                           "airports/learned/EGTK.xml.tmp77"};
    const char* kept[] = {"notes.tmp", "motion.csv.tmpx1", "archive.tmp12.bak", "input/dbase.enc"};
    for (const char* name : stale) dir.write(name, "half");
    for (const char* name : kept)
        if (!fs::exists(dir.path() / name)) dir.write(name, "mine");
    const ProgramProcess run = startProgram(dir, {"--production"});
    EXPECT_EQ(exitCodeWithin(run, 10s), 0) << dir.console();
    for (const char* name : stale) EXPECT_FALSE(fs::exists(dir.path() / name)) << name;
    for (const char* name : kept) EXPECT_TRUE(fs::exists(dir.path() / name)) << name;
    const std::string log = dir.read("Log.txt");
    EXPECT_TRUE(has(log, "4 files of interrupted runs removed"));
    EXPECT_TRUE(has(log, "Command line job:\nproduction\n")) << log;
    EXPECT_FALSE(has(log, "Flight")) << "no simulator thread in a job";
}

#endif  // _WIN32
