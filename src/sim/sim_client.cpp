// The simulator thread: waits for the simulator, opens the connection, sets
// it up, dispatches until the simulator goes, and starts over. Every end of a
// session it causes goes through the exit request.
#include "sim/sim_client.h"

#include <chrono>
#include <cmath>
#include <exception>
#include <limits>
#include <optional>
#include <thread>
#include <utility>

#include <fmt/format.h>

#include "app/app_messages.h"
#include "app/exit_request.h"
#include "app/log.h"
#include "app/run_state.h"
#include "app/user_exception.h"
#include "gui/gui.h"
#include "platform/timer_resolution.h"
#include "sim/sim_client_internal.h"
#include "sim/sim_provider.h"
#include "sim/sim_queues.h"

namespace tfx {

std::atomic<std::int8_t> userOnGround{-1};
std::atomic<std::uint32_t> userObjectId{SIMCONNECT_OBJECT_ID_USER};
std::atomic<std::int64_t> simEpochTime{0};
std::atomic<bool> simPinned{false};
std::atomic<double> userHalfSpan{std::numeric_limits<double>::quiet_NaN()};
std::atomic<AircraftCategory> userCategory{AircraftCategory::Light};
std::string userTitle;
std::string userModel;

std::atomic<HANDLE> l_hsimconnect{nullptr};
PreviousUserPos previousUserPos;

namespace {

using namespace std::chrono_literals;

constexpr auto RETRY_PAUSE = 100ms;
constexpr auto DISPATCH_PAUSE = 1ms;
constexpr auto PINNED_WAIT_PAUSE = 1s;

bool lf_mustEnd(const std::stop_token& stop) {
    return stop.stop_requested() || !gf_keepRunning();
}

// Sleeps in short slices, so that a stop is seen soon.
void lf_pause(const std::stop_token& stop, std::chrono::milliseconds pause) {
    const auto until = std::chrono::steady_clock::now() + pause;
    while (!lf_mustEnd(stop) && std::chrono::steady_clock::now() < until)
        std::this_thread::sleep_for(std::min<std::chrono::milliseconds>(pause, 20ms));
}

void lf_closeConnection(HANDLE handle, bool logIt) {
    if (handle == nullptr) return;
    const bool ok = !gf_hrFailed(SimConnect_Close(handle));
    if (!logIt) return;
    if (ok)
        gf_logLine("SimConnect closed ok");
    else
        gf_logError("Closing SimConnect failed?!");
}

std::string_view lf_selectedSim() {
    return gf_isMSFS2020() ? "MSFS 2020" : "MSFS 2024";
}

void lf_simIndicator(bool running) {
    Gui::enqueueUpdate({GuiKind::SimRunning, running});
}

// Dispatches until the simulator goes or the session stops. Throws what a
// handler parked in the context.
void lf_dispatchLoop(const std::stop_token& stop, HANDLE handle, DispatchContext& context) {
    while (!context.quit && !stop.stop_requested()) {
        if (gf_hrFailed(SimConnect_CallDispatch(handle, &lf_dispatch, &context))) {
            gf_logLine("SimConnect dispatch failed; reconnecting ...");
            context.quit = true;
        }
        if (context.error) std::rethrow_exception(std::exchange(context.error, nullptr));
        std::this_thread::sleep_for(DISPATCH_PAUSE);
    }
}

void lf_run(const std::stop_token& stop) {
    // Held from the first connection until the thread leaves for good.
    std::optional<MillisecondTimerScope> fineTimer;
    bool waiting = false;
    bool pinnedLogged = false;
    while (!lf_mustEnd(stop)) {
        if (!waiting) {
            gf_logLine("");
            gf_showStatus(fmt::format("Waiting for MSFS 20{} ...", gf_isMSFS2020() ? "20" : "24"));
            gf_flushLog();
            waiting = true;
            pinnedLogged = false;
        }
        lf_closeConnection(l_hsimconnect.exchange(nullptr), true);

        HANDLE handle = nullptr;
        if (gf_hrFailed(SimConnect_Open(&handle, "ZEPT", nullptr, 0, nullptr, 0))) {
            lf_pause(stop, RETRY_PAUSE);
            continue;
        }
        l_hsimconnect = handle;
        if (!lf_setupConnection(handle)) {
            SimRunState = 0;
            l_hsimconnect = nullptr;
            lf_closeConnection(handle, false);
            lf_pause(stop, RETRY_PAUSE);
            continue;
        }
        if (!fineTimer) fineTimer.emplace();
        lf_connectionOpened();

        DispatchContext context;
        lf_dispatchLoop(stop, handle, context);
        if (stop.stop_requested()) return;
        SimRunState = 0;
        lf_simIndicator(false);
        l_hsimconnect = nullptr;
        lf_closeConnection(handle, false);
        lf_connectionLost();

        if (context.mismatch) {
            if (!simPinned.load()) {
                gf_logLine(fmt::format("MSFS and {} do not match, restarting ...", PROGRAM_NAME));
                gf_flushLog();
                gf_postAppMessage(AppMessage::MSG_SWITCH_SIM);
                return;
            }
            if (!pinnedLogged) {
                gf_logLine(fmt::format("{} is running, but {} is selected; waiting for {} ...",
                                       context.runningSim, PROGRAM_NAME, lf_selectedSim()));
                pinnedLogged = true;
            }
            gf_showStatus(fmt::format("{} is running; waiting for {} ...", context.runningSim,
                                      lf_selectedSim()));
            lf_pause(stop, PINNED_WAIT_PAUSE);
            continue;
        }
        waiting = false;
    }
}

void lf_lostConnection(const std::string& line) {
    SimRunState = 0;
    gf_logLine(line);
    gf_requestExit(ExitReason::SimWasClosed, 0);
}

}  // namespace

void gf_simClientThread(std::stop_token stop) {
    // Whichever way the thread leaves, the stand is recorded and the
    // connection closed.
    struct Guard {
        bool ownProvider = false;
        ~Guard() {
            try {
                gf_updateUserStand();
            } catch (const std::exception& e) {
                gf_logError(e.what());
            }
            SimRunState = 0;
            // Nobody flushes commands any more: further ones are dropped.
            gf_tearDownSimBuffers();
            lf_closeConnection(l_hsimconnect.exchange(nullptr), false);
            if (ownProvider) gf_releaseSimProvider();
        }
    } guard;
    SimRunState = 0;
    try {
        guard.ownProvider = gf_selectSimProvider();
        lf_run(stop);
    } catch (const UserRelatedException& e) {
        if (e.code == SIM_MISMATCH_CODE) {
            gf_logLine(fmt::format("MSFS and {} do not match", PROGRAM_NAME));
            lf_lostConnection(
                fmt::format("{} Flight Simulator no longer connected, {} will stop ...",
                            gf_nowText(), PROGRAM_NAME));
        } else {
            gf_showError(e.what());
        }
    } catch (const std::exception& e) {
        gf_showError(e.what());
        lf_lostConnection(fmt::format("{} Flight Simulator no longer connected, {} will stop ...",
                                      gf_nowText(), PROGRAM_NAME));
    } catch (...) {
        gf_showError("Exception in SimClient");
        lf_lostConnection(fmt::format("{} Flight Simulator no longer connected, {} will stop ...",
                                      gf_nowText(), PROGRAM_NAME));
    }
}

void gf_resetSimClientState() {
    pendingCreates.clear();
    packetRequests.clear();
    l_hsimconnect = nullptr;
    userOnGround = -1;
    userObjectId = SIMCONNECT_OBJECT_ID_USER;
    userHalfSpan = std::numeric_limits<double>::quiet_NaN();
    userTitle.clear();
    userModel.clear();
    previousUserPos = {};
    lf_resetConnectionLife();
}

}  // namespace tfx
