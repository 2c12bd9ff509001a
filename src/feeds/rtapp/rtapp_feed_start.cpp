// The start of the road "RT App": listen, wait for the application, start the
// two readers, and wait for the buffer, the parked list and the first live
// traffic. Stops with false whenever the session is to end.
#include <chrono>
#include <thread>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "airports/airport_session.h"
#include "app/auto_range.h"
#include "app/exit_request.h"
#include "app/log.h"
#include "app/options.h"
#include "app/parameters.h"
#include "app/run_flags.h"
#include "app/run_state.h"
#include "feeds/feed_start.h"
#include "feeds/rtapp/reader_state.h"
#include "feeds/rtapp/rt_app_position.h"
#include "feeds/rtapp/rtapp_link.h"
#include "feeds/rtapp/rtapp_readers.h"
#include "gui/gui.h"
#include "parking/park_airport.h"
#include "sim/sim_client.h"

namespace tfx {

namespace {

using namespace std::chrono_literals;

// Polls every step until done() or the session ends; false on time out.
template <typename Done>
bool lf_poll(Done done, int polls, std::chrono::milliseconds step) {
    for (int i = 0; i < polls; ++i) {
        if (done()) return true;
        if (!gf_keepRunning()) return false;
        std::this_thread::sleep_for(step);
    }
    return done();
}

void lf_sleepWhileRunning(int ms) {
    const auto until = std::chrono::steady_clock::now() + std::chrono::milliseconds(ms);
    while (gf_keepRunning() && std::chrono::steady_clock::now() < until)
        std::this_thread::sleep_for(10ms);
}

void lf_processRTVersion(const std::string& reply) {
    if (reply.empty()) {
        gf_showStatus("No RealTraffic version received?", true);
        return;
    }
    try {
        const auto data = nlohmann::json::parse(reply);
        const auto it = data.find("version");
        gf_logLine(fmt::format("RealTraffic version {}",
                               it == data.end() ? std::string("?") : it->dump()));
    } catch (const std::exception& e) {
        gf_logLine(fmt::format("{}: JSON parse failed: {}", "lf_processRTVersion", e.what()));
    }
}

bool lf_connectRTApp() {
    gf_showStatus("Waiting for the RealTraffic App to run ... (did you start it?)");
    appSocket.waiting = true;
    while (true) {
        if (!waitForClient()) {
            appSocket.waiting = false;
            return false;
        }
        // Nothing a stale connection left behind carries over to this one.
        gf_resetReaderState(trafficReaderState);
        sendDataPacket("Qs999=version\r\n");
        const std::string reply = receive();
        lf_sleepWhileRunning(rtAppTiming.probe_ms);
        drainReceiveBuffer();
        if (!gf_keepRunning()) {
            appSocket.waiting = false;
            return false;
        }
        if (appSocket.connected) {
            lf_processRTVersion(reply);
            rtAppFeedConnected = true;
            gf_logLine("RealTraffic connected");
            appSocket.waiting = false;
            gf_clearStatus();
            return true;
        }
        gf_logLine("RT App connection was stale, waiting for a new one ...");
        gf_closeRTApp();
        gf_listenRTApp(gf_rtAppPortText());
    }
}

}  // namespace

bool lf_startRTAppFeeds() {
    Gui::enqueueUpdate({GuiKind::SimaddonCount, std::int64_t{0}});
    Gui::enqueueUpdate({GuiKind::ThirdpartyCount, std::int64_t{0}});
    gf_scanAirports();
    if (gf_options()->AUTO_RANGE) gf_setAutoRange();
    if (!gf_keepRunning()) return false;

    gf_resetReaderState(trafficReaderState);
    rtAppFeedConnected = false;
    // The close button ends a pending accept by closing the listening socket.
    gf_onUserClosing = [] { gf_closeRTApp(); };
    const bool tcpLink = params.PSX_SERVER_HERE.current && !gf_options()->AEROWINX;
    if (!params.PSX_SERVER_HERE.current) rtAppFeedConnected = true;
    if (tcpLink) {
        gf_listenRTApp(gf_rtAppPortText());
        if (!lf_connectRTApp()) return false;
        gf_sendSimTime(gf_simEpochMillis());
    }

    trafficOpen = 0;
    gf_sendPosition();
    if (!gf_keepRunning()) return false;
    gf_startWeatherReader();
    gf_publishReaderPosition(trafficReaderState);
    gf_startTrafficReader();

    TrafficReaderState& s = trafficReaderState;
    if (!lf_poll([&] { return s.bufferDone.load(); }, rtAppTiming.bufferPolls, 50ms)) {
        if (!gf_keepRunning()) return false;
        gf_logLine("Time out: no buffer traffic received?");
    }
    if (userOnGround.load() == 1 && parkAirport.known()) {
        gf_showStatus(fmt::format("{} Requesting RT parked traffic ...", gf_nowText()));
        gf_requestParkedHere();
        if (!lf_poll([&] { return s.parkedDone.load(); }, rtAppTiming.parkedPolls, 50ms)) {
            if (!gf_keepRunning()) return false;
            gf_logLine("Time out: no parked traffic received?");
        }
    } else {
        gf_logLine("user not at an airport, no RT parked Traffic needed");
    }

    lf_sleepWhileRunning(100);
    if (!lf_poll([&] { return s.lastHeard.load() != 0; }, rtAppTiming.firstTrafficPolls, 100ms)) {
        if (!gf_keepRunning()) return false;
        gf_logLine("No traffic in this region");
    }
    return gf_keepRunning();
}

void gf_stopFeedReaders() {
    gf_stopRTAppReaders();
}

}  // namespace tfx
