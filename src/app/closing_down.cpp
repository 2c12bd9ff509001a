// The end of a session: threads stopped and joined in a fixed order, state
// saved, and either the next session started or the process ended.
#include <chrono>
#include <filesystem>
#include <thread>

#include <fmt/format.h>

#include "app/app_messages.h"
#include "app/exit_request.h"
#include "app/exit_status.h"
#include "app/log.h"
#include "app/options.h"
#include "app/parameters.h"
#include "app/run_flags.h"
#include "app/run_state.h"
#include "app/session_internal.h"
#include "feeds/feed_start.h"
#include "gui/gui.h"
#include "liveries/livery_matching.h"
#include "parking/parking_update.h"
#include "platform/sockets.h"
#include "sim/sim_client.h"
#include "sim/sim_queues.h"
#include "sim/user_data.h"
#include "traffic/traffic.h"

namespace fs = std::filesystem;

namespace tfx {

FrameTiming frameTiming;

namespace {

void lf_sleepMs(int ms) {
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

void lf_removeFlightPlanFolder() {
    if (!gf_isMSFS2020()) return;
    std::error_code ec;
    fs::remove_all(gf_dataFolder() / "orig_dest", ec);
    if (ec) gf_logError(fmt::format("gf_removeFlightPlanFolder: {}", ec.message()));
}

void lf_clearAndSave(StringParameter& p) {
    p.current.clear();
    gf_saveParameter(p);
}

void lf_reinitialise() {
    gf_logLine("Restart phase: reinitializing SimConnect state");
    gf_clearSimBuffers();
    gf_resetSimClientState();
    userOnGround = -1;
    SimRunState = 0;
    gf_storeUserData(UserData{});
    gf_logLine("Restart phase: reinitializing traffic state");
    gf_stopTraffic();
    gf_logLine("Restart phase: reinitializing GUI state");
    Gui::enqueueUpdate({GuiKind::Reset, std::monostate{}});
    gf_logLine("Restart phase: reinitializing main state");
    gf_clearExitRequest();
    secondBeat = 0;
    flightPaused = 0;
    secondsCounter = 0;
    gf_clearPending();
    gf_logLine("Restart phase: state reinitialization completed");
}

// The closing steps up to the decision; may throw, the caller catches.
void lf_closeSession(ExitReason reason, std::int32_t seconds) {
    if (commandLineJob.load() == 0) {
        trafficOpen = 0;
        // The simulator thread first, so that no simulator call runs from
        // now on; then the readers, weather before traffic; then their links.
        simClientThread.request_stop();
        if (simClientThread.joinable()) simClientThread.join();
        gf_stopFeedReaders();
        gf_closeRTApp();
        pf_stopSockets();

        if (reason == ExitReason::SystemError) {
            for (int waited = 0; waited < frameTiming.systemErrorWait_ms && userClosing.load() == 0;
                 waited += 100)
                lf_sleepMs(100);
        }
        gf_parkingClosingDown();
        lf_removeFlightPlanFolder();
        lf_clearAndSave(params.DESTINATION);
        gf_liveryTrafficEnded();

        if (gf_reasonRestarts(reason)) {
            restartPending = 1;
            Gui::enqueueUpdate({GuiKind::Reset, std::monostate{}});
            gf_showStatus("Prepare for a restart ...");
        } else {
            if (gf_isRTDirect() && !params.KEEP_SIM_TIME_PAR.current) {
                for (IntParameter* p : {static_cast<IntParameter*>(&params.TIME_SHIFT_DAYS),
                                        static_cast<IntParameter*>(&params.TIME_SHIFT_HOURS),
                                        static_cast<IntParameter*>(&params.TIME_SHIFT_MINS)}) {
                    p->current = 0;
                    gf_saveParameter(*p);
                }
            }
            lf_clearAndSave(params.BLOCK_AIRCRAFT);
            lf_clearAndSave(params.BLOCK_CALLSIGN);
            lf_clearAndSave(params.BLOCK_REGCODE);
            params.BLOCK_HEXIDDEC.current = 0;
            gf_saveParameter(params.BLOCK_HEXIDDEC);
            return;
        }
    }
    if (!lf_restartCountdown(seconds)) {
        restartPending = 0;
        return;
    }
    if (restartPending.load()) lf_reinitialise();
}

}  // namespace

bool lf_restartCountdown(std::int32_t seconds) {
    if (seconds < 1) return userClosing.load() == 0;
    const bool longWait = seconds > 15;
    if (longWait) pending.unblockPushed.store(0);
    gf_logLine(fmt::format("Restarting after {} seconds", seconds));
    gf_logLine("------------------------------------------------");
    for (std::int32_t left = seconds; left > 0; --left) {
        if (userClosing.load()) return false;
        if (longWait && gf_takePending(pending.unblockPushed)) return true;
        gf_showStatus(fmt::format("Restarting after {} second{}{}", left, left == 1 ? "" : "s",
                                  longWait ? "              ( or push Unblock to re-start )" : ""));
        lf_sleepMs(frameTiming.countdownStep_ms);
    }
    gf_logLine("Restart countdown finished");
    return userClosing.load() == 0;
}

void lf_closingDown() {
    ExitReason reason = ExitReason::NotYetSet;
    try {
        restartPending = 0;
        const auto request = gf_exitRequest();
        reason = request ? request->reason : ExitReason::NotYetSet;
        const std::int32_t seconds = request ? request->seconds : 0;
        gf_logLine(fmt::format("{} Exiting: {}", gf_nowText(), gf_exitReasonText(reason)));
        lf_closeSession(reason, seconds);
    } catch (const std::exception& e) {
        const std::string text = fmt::format("lf_closingDown exception: {}", e.what());
        gf_logLine(text);
        gf_showStatus(text);
        restartPending = 0;
    } catch (...) {
        gf_logLine("lf_closingDown exception: unknown");
        restartPending = 0;
    }
    if (userClosing.load()) restartPending = 0;
    // A way out that the user didn't choose says why and ends non-zero.
    if (restartPending.load() == 0 && userClosing.load() == 0 && commandLineJob.load() == 0) {
        if (auto problem = gf_problemOfReason(reason))
            gf_setExitProblem(problem->code, std::move(problem->why));
    }
    if (restartPending.load()) {
        gf_logLine("Restart cleanup completed; posting MSG_START");
        gf_postAppMessage(AppMessage::MSG_START);
    } else {
        gf_logLine("Shutdown cleanup completed; posting MSG_EXIT");
        gf_postAppMessage(AppMessage::MSG_EXIT);
    }
}

}  // namespace tfx
