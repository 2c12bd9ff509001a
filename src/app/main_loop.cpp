// The main loop: the traffic tick on the 10 ms grid, the once-a-second work
// paced by the simulator's beat, and the handling of a paused flight.
#include <chrono>

#include <fmt/format.h>

#include "app/deferred_output.h"
#include "app/exit_request.h"
#include "app/log.h"
#include "app/run_flags.h"
#include "app/run_state.h"
#include "app/run_words.h"
#include "app/session_internal.h"
#include "app/status_line.h"
#include "app/tick_figures.h"
#include "app/tick_grid.h"
#include "feeds/rt_api/query_box.h"
#include "feeds/rtapp/rt_app_position.h"
#include "gui/gui.h"
#include "liveries/livery_gap_report.h"
#include "parking/airport_context.h"
#include "platform/timer_resolution.h"
#include "sim/sim_queues.h"
#include "traffic/clock.h"
#include "traffic/traffic.h"

namespace tfx {
namespace {

constexpr int PAUSE_COUNTDOWN_TICKS = 100;  // one second of ticks
int pauseCountdown = PAUSE_COUNTDOWN_TICKS;

// Called every tick while no flight runs: the traffic stands still.
void lf_flightNotRunning() {
    if (flightPaused.load() == 0) {
        trafficOpen = 0;
        flightPaused = 1;
        pauseCountdown = PAUSE_COUNTDOWN_TICKS;
        gf_clearFrameTables();
        gf_logLine(fmt::format("{} Flight not running", gf_nowText()));
    }
    gf_trafficFrozenTick();
    // Once a second the feed still learns where the user is, so that its
    // traffic is ready when the flight resumes.
    if (--pauseCountdown % PAUSE_COUNTDOWN_TICKS == 0) {
        if (gf_isRTDirect())
            gf_updateQueryBox();
        else
            gf_sendPosition();
    }
    if (pauseCountdown <= 0) pauseCountdown = PAUSE_COUNTDOWN_TICKS;
}

void lf_everySecond() {
    if (flightPaused.exchange(0) != 0) {
        gf_logLine(fmt::format("{} Flight resumed", gf_nowText()));
        trafficOpen = 1;
    }
    gf_trafficEverySecond();
    gf_statusLineEverySecond(runWords.status_s);
    gf_liveryGapsEverySecond(runWords.liveryGaps_s);
    Gui::enqueueUpdate({GuiKind::StatusTimeout, std::monostate{}});
}

bool lf_tick() {
    if (SimRunState.load() != 2) {
        lf_flightNotRunning();
        return gf_keepRunning();
    }
    gf_applyParkedNavLights();
    gf_noteTickBegin();
    const auto start = std::chrono::steady_clock::now();
    gf_trafficTick();
    const double tick_us =
        std::chrono::duration<double, std::micro>(std::chrono::steady_clock::now() - start).count();
    gf_noteTickTime(tick_us);
    gf_noteTickSample(tick_us);
    if (secondBeat.exchange(0) == 0) return true;
    lf_everySecond();
    if (!gf_keepRunning()) return false;
    gf_trafficPeriodicWork();
    return true;
}

}  // namespace

void lf_mainLoop() {
    // The 10 ms grid needs a 1 ms system timer on Windows.
    MillisecondTimerScope fineTimer;
    // The loop's log and console lines are written by the log's writer;
    // what it left goes out before the closing down writes its own.
    struct DeferredOutput {
        DeferredOutput() { gf_deferOutput(true); }
        ~DeferredOutput() {
            gf_deferOutput(false);
            gf_flushLog();
        }
    } const deferred;
    // The half hour of the week the first plan is made for.
    gf_renewWeekNow();
    gf_parkAtStartAirport();
    secondsCounter = 0;
    trafficOpen = 1;
    SteadyLoopClock clock;
    if (!runWords.tickFigures.empty()) {
        // A run without a duration keeps its first hour.
        constexpr std::size_t TICKS_PER_S = 100;
        const std::size_t seconds = runWords.duration_s > 0 ? runWords.duration_s + 60 : 3600;
        gf_startTickFigures(seconds * TICKS_PER_S);
    }
    gf_runTickGrid(
        clock, [] { return lf_tick(); }, [] { return secondBeat.load() != 0; },
        [](auto due, auto now) {
            gf_noteTickStart(std::chrono::duration<double, std::micro>(now - due).count());
        });
    if (!runWords.tickFigures.empty()) gf_writeTickFigures(runWords.tickFigures);
}

}  // namespace tfx
