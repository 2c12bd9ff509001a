// The traffic reader and the weather reader: a thread each, a UDP port each.
// Neither lets an exception out: the traffic reader asks for a new session,
// the weather reader opens its port again after a pause.
#include "feeds/rtapp/rtapp_readers.h"

#include <chrono>
#include <thread>

#include <fmt/format.h>

#include "app/exit_request.h"
#include "app/log.h"
#include "feeds/qnh.h"
#include "feeds/rtapp/reader_state.h"
#include "feeds/rtapp/udp_receiver.h"
#include "gui/gui.h"

namespace tfx {

namespace {

constexpr std::string_view TRAFFIC_READER = "Traffic Reader";
constexpr std::string_view WEATHER_READER = "QNH Reader";

// Asks for the history again, as at the start: after a silent stretch and
// when the application connected anew.
void lf_requestHistoryAgain(TrafficReaderState& s) {
    s.bufferCounter = 0;
    s.bufferDone = false;
    s.bufferMarkersSeen = false;
    s.contextValid = false;
    if (!gf_requestBuffer()) lf_linkLog("Receiving buffer traffic failed");
}

class TrafficReader : public UdpReceiver {
public:
    TrafficReader() : UdpReceiver(rtAppEndpoints.trafficPort) {}
    bool isControl(std::string_view text) const override {
        return text.find(',') == std::string_view::npos;
    }
    void onDatagram(std::string_view text) override {
        TrafficReaderState& s = trafficReaderState;
        const std::int64_t now_ms = gf_steadyMillis();
        const std::int64_t last_ms = s.lastDatagram_ms.exchange(now_ms);
        if (last_ms != 0 && now_ms - last_ms >= rtAppTiming.silentFeed_ms) {
            // A frozen application woke up: what it sends now is live, and the
            // history fills the gap as it does after a restart.
            lf_linkLog(fmt::format("{} The RealTraffic feed is back after {} s of silence",
                                   gf_nowText(), (now_ms - last_ms) / 1000));
            lf_requestHistoryAgain(s);
        }
        gf_processRTAppLine(s, text, now_ms);
    }
    void onIdle() override {
        TrafficReaderState& s = trafficReaderState;
        const std::uint32_t clients = appSocket.clientsTaken.load();
        if (clients != clientsSeen) {
            // The application connected anew: nothing of the old connection stays.
            clientsSeen = clients;
            gf_resetReaderState(s);
            rtAppSeen.collecting = true;
            resetLast();
            gf_publishReaderPosition(s);
            lf_requestHistoryAgain(s);
        }
        gf_trafficReaderIdle(s);
        gf_flushComplaints(complaints);
    }
    std::uint32_t clientsSeen = appSocket.clientsTaken.load();
    void onStop() override {
        Gui::enqueueUpdate({GuiKind::TrafficState, std::int64_t{0}});
        lf_linkLog(fmt::format("{} disconnected", TRAFFIC_READER));
    }
};

class WeatherReader : public UdpReceiver {
public:
    WeatherReader() : UdpReceiver(rtAppEndpoints.weatherPort) {}
    void onDatagram(std::string_view text) override { gf_takeWeatherDatagram(text); }
    void onIdle() override { gf_flushComplaints(complaints); }
};

// Readers are built per thread start, so that a test can move the ports.
std::unique_ptr<TrafficReader> trafficReader;
std::unique_ptr<WeatherReader> weatherReader;
std::thread trafficThread;
std::thread weatherThread;
std::atomic<std::uint32_t> trafficDatagramsSeen{0};

std::string lf_what(const std::exception& e) {
    const std::string text = e.what();
    return text.empty() ? "Unknown exception" : text;
}

void gf_trafficReader(TrafficReader& reader) {
    try {
        reader.open();
        Gui::enqueueUpdate({GuiKind::TrafficState, std::int64_t{1}});
        lf_linkLog(fmt::format("{} connected", TRAFFIC_READER));
        std::int32_t expected = 0;
        if (qnh.compare_exchange_strong(expected, 1013))
            Gui::enqueueUpdate({GuiKind::Qnh, std::int64_t{1013}});
        gf_showStatus(fmt::format("{} Requesting buffer traffic ...", gf_nowText()));
        TrafficReaderState& s = trafficReaderState;
        s.bufferCounter = 0;
        s.contextValid = false;
        s.bufferDone = false;
        gf_clearSeen(rtAppSeen);
        rtAppSeen.collecting = true;
        if (!gf_requestBuffer()) lf_linkLog("Receiving buffer traffic failed");
        reader.receiveLoop();
    } catch (const std::exception& e) {
        const std::string text = lf_what(e);
        gf_logError(fmt::format("{} exception: {}", "gf_trafficReader", text));
        gf_showError(fmt::format("The {} has stopped with error: {}", TRAFFIC_READER, text));
        gf_requestExit(ExitReason::ReaderError, 15);
    } catch (...) {
        gf_logError(fmt::format("{} exception: {}", "gf_trafficReader", "Unknown exception"));
        gf_showError(
            fmt::format("The {} has stopped with error: {}", TRAFFIC_READER, "Unknown exception"));
        gf_requestExit(ExitReason::ReaderError, 15);
    }
    {
        std::lock_guard lock(appSocket.bufferRequestLock);
        appSocket.bufferRequested = false;
    }
    trafficDatagramsSeen = reader.datagrams.load();
    reader.close();
    lf_linkLog(fmt::format("{} disconnected", "gf_trafficReader"));
}

void gf_weatherReader(WeatherReader& reader) {
    using namespace std::chrono_literals;
    while (!reader.stop.load()) {
        try {
            reader.open();
            Gui::enqueueUpdate({GuiKind::WeatherState, std::int64_t{1}});
            lf_linkLog(fmt::format("{} connected", WEATHER_READER));
            reader.receiveLoop();
            break;
        } catch (const std::exception& e) {
            reader.close();
            gf_resetWeatherState();
            reader.resetLast();
            lf_linkLog(
                fmt::format("{} exception: {}; reconnecting ...", "gf_weatherReader", lf_what(e)));
        } catch (...) {
            reader.close();
            gf_resetWeatherState();
            lf_linkLog(fmt::format("{} exception: {}; reconnecting ...", "gf_weatherReader",
                                   "Unknown exception"));
        }
        for (int i = 0; i < 20 && gf_keepRunning() && !reader.stop.load(); ++i)
            std::this_thread::sleep_for(100ms);
        if (!gf_keepRunning()) break;
    }
    reader.close();
    Gui::enqueueUpdate({GuiKind::WeatherState, std::int64_t{0}});
    lf_linkLog(fmt::format("{} disconnected", WEATHER_READER));
}

}  // namespace

void gf_startWeatherReader() {
    weatherReader = std::make_unique<WeatherReader>();
    weatherThread = std::thread(gf_weatherReader, std::ref(*weatherReader));
}

void gf_startTrafficReader() {
    trafficReader = std::make_unique<TrafficReader>();
    trafficThread = std::thread(gf_trafficReader, std::ref(*trafficReader));
}

void gf_stopRTAppReaders() {
    if (weatherReader) weatherReader->stop = true;
    if (trafficReader) trafficReader->stop = true;
    if (weatherThread.joinable()) weatherThread.join();
    if (trafficThread.joinable()) trafficThread.join();
    weatherReader.reset();
    trafficReader.reset();
}

void gf_checkFeedIndicators() {
    static std::uint32_t lastCount = 0;
    const std::uint32_t count = gf_trafficDatagrams();
    if (count == lastCount) Gui::enqueueUpdate({GuiKind::TrafficState, std::int64_t{2}});
    lastCount = count;
    const auto now_s = std::chrono::duration_cast<std::chrono::seconds>(
                           std::chrono::steady_clock::now().time_since_epoch())
                           .count();
    const std::int64_t last = gf_lastGoodWeather_s();
    if (last == 0 || now_s - last > 90)
        Gui::enqueueUpdate({GuiKind::WeatherState, std::int64_t{2}});
}

std::int64_t gf_trafficSilence_s() {
    const std::int64_t last = trafficReaderState.lastDatagram_ms.load();
    if (last == 0) return 0;
    return (gf_steadyMillis() - last) / 1000;
}

bool gf_trafficSilent() {
    const std::int64_t last = trafficReaderState.lastDatagram_ms.load();
    return last != 0 && gf_steadyMillis() - last >= rtAppTiming.silentFeed_ms;
}

std::uint32_t gf_trafficDatagrams() {
    // Read while the reader runs; the reader object lives until the join.
    return trafficReader ? trafficReader->datagrams.load() : trafficDatagramsSeen.load();
}

}  // namespace tfx
