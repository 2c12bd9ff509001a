// The process entry and the loop that plays the GUI thread's part: it starts
// each session's main thread and ends the process when the last one is done.
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include <fmt/format.h>

#include "app/app_messages.h"
#include "app/exit_request.h"
#include "app/exit_status.h"
#include "app/log.h"
#include "app/parameters.h"
#include "app/run_flags.h"
#include "app/run_words.h"
#include "app/session.h"
#include "app/session_internal.h"
#include "gui/gui.h"
#include "platform/file_open.h"
#include "platform/file_replace.h"
#include "platform/instance_lock.h"
#include "platform/stop_signals.h"
#include "sim/sim_provider.h"

namespace tfx {
namespace {

std::atomic<int> sessions{0};

// True when a session's main thread runs. The log is opened once per process,
// so the previous run's Log0.txt survives restarts; a restart only marks where
// the new session begins.
bool lf_startSession(std::thread& mainThread) {
    try {
        if (mainThread.joinable()) mainThread.join();
        if (sessions.load() > 0)
            gf_logLine(fmt::format("\n{} ======== {} session {} ========", gf_nowText(),
                                   PROGRAM_NAME, sessions.load() + 1));
        ++sessions;
        mainThread = std::thread(lf_main);
        return true;
    } catch (const std::exception& e) {
        gf_logLine(fmt::format("Restart failed before main thread start: {}", e.what()));
        inStartup = 0;
        gf_showError(fmt::format("Restart failed: {}", e.what()));
        gf_setExitProblem(EXIT_FAILED, fmt::format("Restart failed: {}", e.what()));
        return false;
    }
}

// A way out before any session: the line goes to the console, where the user
// who started the program sees it, and to the log when it is open.
int lf_endEarly(int code, const std::string& why) {
    std::fprintf(stderr, "%s\n", why.c_str());
    gf_logError(why);
    return code;
}

// Proves the data folder can take the parameter file before anything relies on it.
std::string lf_dataFolderProblem(const std::filesystem::path& folder) {
    std::error_code ec;
    if (!std::filesystem::is_directory(folder, ec))
        return fmt::format("Failed to create directory: {}", folder.string());
    const auto probe = pf_temporaryNameFor(folder / "parameters.xml");
    std::FILE* f = pf_openFile(probe, "wb");
    if (f == nullptr)
        return fmt::format("The data folder {} can't be written: {}", folder.string(),
                           std::strerror(errno));
    std::fclose(f);
    std::filesystem::remove(probe, ec);
    return {};
}

// The user's way out from a console: the same as the window's close button.
void lf_onStopSignal(int) {
    gf_logLine(fmt::format("{} stop requested from the console, closing {} ...", gf_nowText(),
                           PROGRAM_NAME));
    gf_requestExit(ExitReason::UserClosedSim, 1);
}

// A run with a set duration ends as if the user closed it.
void lf_checkDuration(std::chrono::steady_clock::time_point deadline) {
    if (runWords.duration_s <= 0 || std::chrono::steady_clock::now() < deadline) return;
    if (userClosing.load() != 0) return;
    gf_logLine(fmt::format("{} the run time of {} s is over, closing {} ...", gf_nowText(),
                           runWords.duration_s, PROGRAM_NAME));
    gf_requestExit(ExitReason::UserClosedSim, 1);
}

void lf_switchSimulator() {
    params.SIM_CHOICE.current =
        params.SIM_CHOICE.current == "MSFS 2020" ? "MSFS 2024" : "MSFS 2020";
    gf_saveParameter(params.SIM_CHOICE);
    gf_showStatus(fmt::format("Switching MSFS version in {}", PROGRAM_NAME));
    gf_requestExit(ExitReason::NewSettings, 3);
}

}  // namespace

int gf_sessionCount() {
    return sessions.load();
}

int gf_programEntry(int argc, char** argv) {
    gf_clearExitProblem();
    // First of all, so that a stop from the console in any state, the very
    // start included, closes the program the way the user's close does.
    pf_startStopSignalWatcher(lf_onStopSignal);
    struct WatcherGuard {
        ~WatcherGuard() { pf_stopStopSignalWatcher(); }
    } watcherGuard;
    std::filesystem::path dataFolder;
    try {
        dataFolder = gf_dataFolder();
    } catch (const std::exception& e) {
        return lf_endEarly(
            EXIT_FAILED,
            fmt::format("{} can't start: Failed to create directory: {}", PROGRAM_NAME, e.what()));
    }
    if (auto problem = lf_dataFolderProblem(dataFolder); !problem.empty())
        return lf_endEarly(EXIT_FAILED, fmt::format("{} can't start: {}", PROGRAM_NAME, problem));

    // One instance per user, and one per program folder: two instances with
    // different data folders would still share Log.txt and every other file.
    InstanceLock userLock;
    InstanceLock folderLock;
    std::error_code ec;
    const auto programFolder = std::filesystem::current_path(ec);
    try {
        if (!pf_acquireInstanceLock(dataFolder / "ZEPT.lock", userLock))
            return lf_endEarly(EXIT_ALREADY_RUNNING,
                               fmt::format("{} is already running (data folder {})", PROGRAM_NAME,
                                           dataFolder.string()));
        if (!pf_acquireFolderLock(programFolder, folderLock)) {
            pf_releaseInstanceLock(userLock);
            return lf_endEarly(
                EXIT_ALREADY_RUNNING,
                fmt::format("{} is already running in {}", PROGRAM_NAME, programFolder.string()));
        }
    } catch (const std::exception& e) {
        pf_releaseInstanceLock(userLock);
        return lf_endEarly(EXIT_FAILED, fmt::format("{} can't start: {}", PROGRAM_NAME, e.what()));
    }
    const auto releaseLocks = [&] {
        pf_releaseInstanceLock(folderLock);
        pf_releaseInstanceLock(userLock);
    };
    try {
        gf_openLog();
    } catch (const std::exception& e) {
        releaseLocks();
        return lf_endEarly(EXIT_FAILED, fmt::format("{} can't start: {}", PROGRAM_NAME, e.what()));
    }
    std::vector<std::string> problems;
    runWords = gf_readRunWords(argc, argv, problems);
    for (const auto& problem : problems) std::fprintf(stderr, "%s\n", problem.c_str());
    if (!problems.empty()) std::fprintf(stderr, "words:\n%s", gf_runWordsUsage().c_str());
    commandLineJob = runWords.production ? 1 : 0;
    processExitCode = 0;
    gf_setSimRecording(runWords.recording);
    const auto deadline =
        std::chrono::steady_clock::now() + std::chrono::seconds(runWords.duration_s);

    std::thread mainThread;
    bool sessionRunning = false;
    gf_postAppMessage(AppMessage::MSG_START);
    bool quit = false;
    while (!quit) {
        const auto message = gf_waitAppMessage(100);
        lf_checkDuration(deadline);
        // With no session there is no closing down to post the exit: every
        // way of closing still has to end the process.
        if (!sessionRunning && !message && !gf_keepRunning()) {
            gf_logLine(fmt::format("{} Exiting without a session", gf_nowText()));
            break;
        }
        if (!message) continue;
        switch (*message) {
            case AppMessage::MSG_START:
                sessionRunning = lf_startSession(mainThread);
                break;
            case AppMessage::MSG_GUI_UPDATE:
                Gui::drainUpdates();
                break;
            case AppMessage::MSG_SWITCH_SIM:
                lf_switchSimulator();
                break;
            case AppMessage::MSG_EXIT:
                if (mainThread.joinable()) mainThread.join();
                sessionRunning = false;
                gf_logLine(gf_nowText());
                quit = true;
                break;
        }
    }
    if (mainThread.joinable()) mainThread.join();
    gf_endSimProvider();
    int code = processExitCode.load();
    if (const auto problem = gf_exitProblem()) {
        code = problem->code;
        lf_endEarly(code, fmt::format("{} stopped: {}", PROGRAM_NAME, problem->why));
    }
    gf_closeLog();
    releaseLocks();
    return code;
}

}  // namespace tfx
