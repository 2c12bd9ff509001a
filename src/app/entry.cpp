// The process entry and the loop that plays the GUI thread's part: it starts
// each session's main thread and ends the process when the last one is done.
#include <atomic>
#include <chrono>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include <fmt/format.h>

#include "app/app_messages.h"
#include "app/exit_request.h"
#include "app/log.h"
#include "app/parameters.h"
#include "app/run_flags.h"
#include "app/run_words.h"
#include "app/session.h"
#include "app/session_internal.h"
#include "gui/gui.h"
#include "platform/instance_lock.h"
#include "platform/stop_signals.h"
#include "sim/sim_provider.h"

namespace tfx {
namespace {

std::atomic<int> sessions{0};

void lf_startSession(std::thread& mainThread) {
    try {
        if (mainThread.joinable()) mainThread.join();
        gf_openLog();
        ++sessions;
        mainThread = std::thread(lf_main);
    } catch (const std::exception& e) {
        gf_logLine(fmt::format("Restart failed before main thread start: {}", e.what()));
        inStartup = 0;
        gf_showError(fmt::format("Restart failed: {}", e.what()));
    }
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
    std::filesystem::path dataFolder;
    try {
        dataFolder = gf_dataFolder();
    } catch (const std::exception& e) {
        std::fprintf(stderr, "Failed to create directory: %s\n", e.what());
        return 0;
    }
    InstanceLock lock;
    try {
        if (!pf_acquireInstanceLock(dataFolder / "ZEPT.lock", lock)) return -1;
    } catch (const std::exception& e) {
        std::fprintf(stderr, "%s\n", e.what());
        return 0;
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
    pf_startStopSignalWatcher(lf_onStopSignal);

    std::thread mainThread;
    gf_postAppMessage(AppMessage::MSG_START);
    bool quit = false;
    while (!quit) {
        const auto message = gf_waitAppMessage(100);
        lf_checkDuration(deadline);
        if (!message) continue;
        switch (*message) {
            case AppMessage::MSG_START:
                lf_startSession(mainThread);
                break;
            case AppMessage::MSG_GUI_UPDATE:
                Gui::drainUpdates();
                break;
            case AppMessage::MSG_SWITCH_SIM:
                lf_switchSimulator();
                break;
            case AppMessage::MSG_EXIT:
                if (mainThread.joinable()) mainThread.join();
                gf_logLine(gf_nowText());
                quit = true;
                break;
        }
    }
    pf_stopStopSignalWatcher();
    gf_endSimProvider();
    gf_closeLog();
    pf_releaseInstanceLock(lock);
    return processExitCode.load();
}

}  // namespace tfx
