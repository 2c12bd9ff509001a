// The whole road on loopback: ZEPT's link and readers against the stand-in
// application playing the bundled scenario. History pieces and live cycles
// must reach the engine's intake with their delays, the parked list must
// arrive, and the link must end the session when the application goes.
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <functional>
#include <mutex>
#include <thread>

#include "../../tools/rt_app_standin_lib.h"
#include "airports/airport_file_io.h"
#include "airports/xml_text.h"
#include "app/exit_request.h"
#include "app/options.h"
#include "app/parameters.h"
#include "app/run_flags.h"
#include "app/run_state.h"
#include "app/status_line.h"
#include "feeds/feed_start.h"
#include "feeds/qnh.h"
#include "feeds/rtapp/reader_state.h"
#include "feeds/rtapp/rt_app_position.h"
#include "feeds/rtapp/rtapp_link.h"
#include "feeds/rtapp/rtapp_readers.h"
#include "gui/gui.h"
#include "liveries/reference_db.h"
#include "parking/park_airport.h"
#include "sim/sim_client.h"
#include "sim/user_data.h"
#include "support/sealed_dbase.h"

using namespace tfx;
using namespace std::chrono_literals;

namespace {

constexpr double EGTK_LAT = 51.8369, EGTK_LON = -1.3200;

struct Handed {
    std::size_t count;
    int delay_s;
    std::size_t withHeading = 0;
    std::size_t groundWithHeading = 0;
    std::size_t ground = 0;
};
std::mutex handedLock;
std::vector<Handed> handed;

void lf_record(std::vector<TrafficMessage>& batch, int delay_s, bool) {
    Handed h{batch.size(), delay_s};
    for (const auto& m : batch) {
        h.withHeading += m.point.headingValid;
        h.ground += m.point.inAir == 0;
        h.groundWithHeading += m.point.inAir == 0 && m.point.headingValid;
    }
    std::lock_guard lock(handedLock);
    handed.push_back(h);
    batch.clear();
}

std::uint16_t lf_freePort(bool tcp) {
    SocketFd s = tcp ? gf_tcpSocket() : gf_udpSocket();
    gf_bindSocket(s, "127.0.0.1", 0);
    const std::uint16_t port = gf_boundPort(s);
    gf_closeSocket(s);
    return port;
}

template <typename Done>
bool lf_waitFor(Done done, std::chrono::milliseconds limit) {
    const auto until = std::chrono::steady_clock::now() + limit;
    while (!done()) {
        if (std::chrono::steady_clock::now() > until) return false;
        std::this_thread::sleep_for(10ms);
    }
    return true;
}

class RtAppRoad : public ::testing::Test {
protected:
    void SetUp() override {
        test::sealDbase(dir, test::bundledDbaseXml());
        gf_clearReferenceData();
        ASSERT_TRUE(gf_readDbase());
        // A whole session run before in this process may have left its end behind.
        gf_clearExitRequest();
        userClosing = 0;
        gf_publishOptions([](Options& o) {
            o.RANGE = 40;
            o.range_nm = 40;
            o.rangeSquared_nm2 = 1600;
            o.AEROWINX = false;
            o.AUTO_RANGE = false;
            o.LIGHT_AIRCRAFT = true;
        });
        params.PSX_SERVER_HERE.current = true;
        rtAppEndpoints.tcpPort = std::to_string(lf_freePort(true));
        rtAppEndpoints.trafficPort = lf_freePort(false);
        rtAppEndpoints.weatherPort = lf_freePort(false);
        rtAppTiming.probe_ms = 200;
        rtAppTiming.bufferPolls = 100;
        rtAppTiming.parkedPolls = 100;
        rtAppTiming.firstTrafficPolls = 50;

        UserData user;
        user.lat = EGTK_LAT;
        user.lon = EGTK_LON;
        user.alt = 270;
        user.indicatedAlt = 270;
        gf_storeUserData(user);
        userOnGround = 1;
        parkAirport = {};
        parkAirport.icao = 0x4547544B;
        parkAirport.lat = EGTK_LAT;
        parkAirport.lon = EGTK_LON;
        parkAirport.alt_ft = 270;
        trafficReaderState.sink = &lf_record;
        handed.clear();

        auto scene =
            scenario::gf_readScenario(std::string(ZEPT_SOURCE_DIR) + "/data/rt_scenario_egtk.csv");
        ASSERT_TRUE(scene);
        scene_ = std::move(*scene);
    }
    void TearDown() override {
        for (auto& app : apps) app->stop = true;
        for (auto& t : appThreads) t.join();
        gf_stopFeedReaders();
        gf_closeRTApp();
        trafficReaderState.sink = nullptr;
        rtAppEndpoints = {};
        rtAppTiming = {};
        gf_storeUserData({});
        userOnGround = -1;
        gf_clearParkAirport();
        gf_clearExitRequest();
        gf_clearReferenceData();
        qnh = 1013;
    }

    standin::App& startApp(bool vanish = false, bool reconnect = false,
                           std::function<void(standin::Config&)> adjust = {}) {
        auto app = std::make_unique<standin::App>();
        app->scene = scene_;
        app->week = week_;
        if (!week_.airport.empty()) app->config.airport = week_.airport;
        app->config.tcpPort = gf_portNumber(rtAppEndpoints.tcpPort);
        app->config.trafficPort = rtAppEndpoints.trafficPort;
        app->config.weatherPort = rtAppEndpoints.weatherPort;
        app->config.cycle_ms = 200;
        app->config.weather_ms = 300;
        app->config.qnh_hPa = 1021;
        app->config.vanish = vanish;
        app->config.reconnect = reconnect;
        if (adjust) adjust(app->config);
        apps.push_back(std::move(app));
        standin::App& ref = *apps.back();
        appThreads.emplace_back([&ref] { standin::gf_runStandin(ref); });
        return ref;
    }
    void checkPhnlParked(standin::Form form);
    std::vector<Handed> handedSoFar() {
        std::lock_guard lock(handedLock);
        return handed;
    }

    test::TempWorkdir dir;
    scenario::Scenario scene_;
    parked::Week week_;
    std::vector<std::unique_ptr<standin::App>> apps;
    std::vector<std::thread> appThreads;
};

TEST_F(RtAppRoad, HistoryLiveParkedThenTheApplicationGoes) {
    standin::App& app = startApp();
    ASSERT_TRUE(lf_startRTAppFeeds());
    EXPECT_EQ(app.stats.versionQuestions.load(), 1);
    EXPECT_EQ(app.stats.bufferRequests.load(), 1);
    EXPECT_EQ(app.stats.parkedRequests.load(), 1);
    EXPECT_TRUE(trafficReaderState.bufferDone);
    EXPECT_TRUE(trafficReaderState.parkedDone);
    EXPECT_NE(trafficReaderState.lastHeard.load(), 0);

    // The five history pieces in order, six seconds apart (a live cycle may
    // come before the answer to the request).
    auto h = handedSoFar();
    std::erase_if(h, [](const Handed& x) { return x.delay_s == 30; });
    ASSERT_GE(h.size(), 5u);
    for (int k = 0; k < 5; ++k) {
        EXPECT_EQ(h[k].delay_s, 6 * k);
        EXPECT_GT(h[k].count, 3u) << "piece " << k;
    }
    const auto parked = gf_takeParkedList(trafficReaderState);
    EXPECT_GE(parked.size(), 3u);
    for (const auto& p : parked) EXPECT_GT(p.hexid, 10000u);

    // Live cycles come at thirty seconds (the public form's test counts
    // them); the weather port sets the pressure.
    EXPECT_TRUE(lf_waitFor([] { return qnh.load() == 1021; }, 2s));
    EXPECT_FALSE(gf_exitRequest());

    // The application goes away: within two reports the session asks for a
    // new one after one second.
    app.stop = true;
    appThreads.back().join();
    appThreads.pop_back();
    apps.pop_back();
    ASSERT_TRUE(lf_waitFor(
        [] {
            gf_sendPosition();
            return gf_exitRequest() != nullptr;
        },
        2s));
    EXPECT_EQ(gf_exitRequest()->reason, ExitReason::NewSettings);
    EXPECT_EQ(gf_exitRequest()->seconds, 1);
    EXPECT_FALSE(rtAppFeedConnected);
}

TEST_F(RtAppRoad, AClosingSessionDoesNotCallTheApplicationGone) {
    startApp();
    ASSERT_TRUE(lf_startRTAppFeeds());
    // The session ends for another reason and takes the link down; the
    // ticks until the main loop notices still report the position.
    gf_requestExit(ExitReason::NewSettings, 3);
    gf_closeRTApp();
    gf_sendPosition();
    EXPECT_EQ(Gui::statusText().find("RealTraffic App gone"), std::string::npos);
    EXPECT_EQ(gf_exitRequest()->seconds, 3);
}

TEST_F(RtAppRoad, AClientThatConnectsAndVanishesIsReplacedByTheNextOne) {
    startApp(true);
    std::atomic<bool> started{false};
    std::thread start([&] { started = lf_startRTAppFeeds(); });
    ASSERT_TRUE(lf_waitFor([&] { return apps.back()->stats.connections.load() == 1; }, 2s));
    appThreads.back().join();
    appThreads.pop_back();
    // It may reach the listener that is about to be replaced; like the real
    // application it then tries again.
    standin::App& real = startApp(false, true);
    start.join();
    EXPECT_TRUE(started);
    EXPECT_GE(real.stats.versionQuestions.load(), 1);
    // Either the probe saw the first one fall, or the second one replaced it.
    const std::string log = dir.logText();
    EXPECT_TRUE(log.find("RT App connection was stale, waiting for a new one ...") !=
                    std::string::npos ||
                log.find("the new connection replaces the old one") != std::string::npos);
}

TEST_F(RtAppRoad, ClosingTheWindowEndsAWaitForTheApplication) {
    std::atomic<bool> done{false};
    bool result = true;
    std::thread start([&] {
        result = lf_startRTAppFeeds();
        done = true;
    });
    ASSERT_TRUE(lf_waitFor([] { return appSocket.waiting.load(); }, 2s));
    std::this_thread::sleep_for(100ms);
    const auto closedAt = std::chrono::steady_clock::now();
    gf_onUserClosing();
    EXPECT_TRUE(lf_waitFor([&] { return done.load(); }, 1s));
    start.join();
    EXPECT_FALSE(result);
    EXPECT_LT(std::chrono::steady_clock::now() - closedAt, 500ms);
}

TEST_F(RtAppRoad, WithoutTheTcpLinkTheReadersStillRun) {
    params.PSX_SERVER_HERE.current = false;
    rtAppTiming.bufferPolls = 2;
    rtAppTiming.firstTrafficPolls = 2;
    userOnGround = 0;  // in the air: nobody asks for parked traffic
    gf_clearParkAirport();
    ASSERT_TRUE(lf_startRTAppFeeds());
    EXPECT_TRUE(rtAppFeedConnected);
    EXPECT_NE(dir.logText().find("Time out: no buffer traffic received?"), std::string::npos);
    gf_sendPosition();
    EXPECT_FALSE(gf_exitRequest());

    // Whatever broadcasts on the traffic port is still read.
    SocketFd out = gf_udpSocket();
    gf_sendDatagram(out, standin::gf_trafficLine("RTTFC", scene_.reports.back(), 1732320000),
                    "127.0.0.1", rtAppEndpoints.trafficPort);
    gf_sendDatagram(out, "RTTFC_EOT", "127.0.0.1", rtAppEndpoints.trafficPort);
    gf_closeSocket(out);
    EXPECT_TRUE(lf_waitFor([&] { return !handedSoFar().empty(); }, 2s));
    EXPECT_EQ(handedSoFar().front().delay_s, 30);
    params.PSX_SERVER_HERE.current = true;
}

// The application as its public format allows: broadcast (on the loopback
// network, which only an any-address socket hears, as on a LAN), no end
// markers, 43- and 44-field lines, tagged sources, "null" columns, stands
// with their airport in front, and a network that repeats and reorders.
TEST_F(RtAppRoad, PublicFormOnTheLanReachesTheEngine) {
    std::string to;
    standin::App& app = startApp(false, false, [&](standin::Config& c) {
        to = standin::gf_usePublicForm(c);
        c.cycle_ms = 400;
        c.channel.duplicate = 0.1;
        c.channel.reorder = 0.1;
    });
    ASSERT_EQ(to, standin::LOOPBACK_BROADCAST);
    ASSERT_TRUE(lf_startRTAppFeeds());
    EXPECT_TRUE(trafficReaderState.bufferDone);
    EXPECT_TRUE(trafficReaderState.parkedDone);
    // The history ended without its marker: reports drain again.
    EXPECT_FALSE(appSocket.bufferRequested);

    for (int i = 0; i < 20; ++i) {
        gf_sendPosition();
        std::this_thread::sleep_for(100ms);
    }
    ASSERT_TRUE(lf_waitFor(
        [&] {
            int live = 0;
            for (const auto& x : handedSoFar()) live += x.delay_s == 30 && x.count > 0;
            return live >= 3;
        },
        5s));
    std::size_t messages = 0, withHeading = 0, ground = 0, groundWithHeading = 0;
    for (const auto& x : handedSoFar()) {
        messages += x.count;
        withHeading += x.withHeading;
        ground += x.ground;
        groundWithHeading += x.groundWithHeading;
        EXPECT_LE(x.count, MAX_BATCH);
    }
    // Every line carries a tagged source with a true heading.
    EXPECT_EQ(withHeading, messages);
    EXPECT_EQ(groundWithHeading, ground);

    const auto parked = gf_takeParkedList(trafficReaderState);
    ASSERT_FALSE(parked.empty());
    for (const auto& p : parked) EXPECT_EQ(p.stand.find("EGTK_"), std::string::npos) << p.stand;
    const std::string log = dir.logText();
    const auto first = log.find("sends no end markers");
    EXPECT_NE(first, std::string::npos);
    EXPECT_EQ(log.find("sends no end markers", first + 1), std::string::npos);
    EXPECT_FALSE(gf_exitRequest());
    EXPECT_GE(app.reported.copy().size(), 20u);
}

// Two empty parked answers in a row are the same datagram twice; the second
// must still finish its list.
TEST_F(RtAppRoad, RepeatedEndMarkersStillCount) {
    startApp(false, false, [](standin::Config& c) { c.cycle_ms = 60000; });
    ASSERT_TRUE(lf_startRTAppFeeds());
    const RequestBox nowhere{10, 10, 10.1, 10.1};
    for (int i = 0; i < 2; ++i) {
        gf_requestParked(nowhere);
        EXPECT_TRUE(lf_waitFor([] { return trafficReaderState.parkedDone.load(); }, 2s))
            << "answer " << i;
    }
}

// An application that accepts and never reads: the tick's reports never
// wait on it, it is dropped, and the session starts over; closing is quick.
TEST_F(RtAppRoad, APeerThatNeverReadsIsDroppedWithoutStoppingTheTick) {
    rtAppTiming.clientSendBuffer = 4096;
    rtAppTiming.sendLimit_ms = 1000;
    gf_listenRTApp(rtAppEndpoints.tcpPort);
    std::thread accept([] { waitForClient(); });
    SocketFd peer = gf_tcpSocket();
    gf_setReceiveBufferSize(peer, 2048);
    ASSERT_TRUE(gf_connectSocket(peer, "127.0.0.1", gf_portNumber(rtAppEndpoints.tcpPort)));
    accept.join();
    ASSERT_TRUE(appSocket.connected);

    std::atomic<int> reports{0};
    std::atomic<bool> stopReports{false};
    std::thread tick([&] {
        const std::string bulk(2000, 'x');
        while (!stopReports && !gf_exitRequest()) {
            gf_sendPosition();
            sendDataPacket(bulk);  // fills the buffers in a second or two
            ++reports;
            std::this_thread::sleep_for(10ms);
        }
    });
    const bool dropped = lf_waitFor([] { return gf_exitRequest() != nullptr; }, 10s);
    stopReports = true;
    const auto closing = std::chrono::steady_clock::now();
    gf_closeRTApp();  // also wakes a report stuck in a send
    EXPECT_LT(std::chrono::steady_clock::now() - closing, 1500ms);
    tick.join();
    gf_closeSocket(peer);
    ASSERT_TRUE(dropped);
    EXPECT_EQ(gf_exitRequest()->reason, ExitReason::NewSettings);
    EXPECT_GT(reports.load(), 10);
    EXPECT_NE(dir.logText().find("does not read the link"), std::string::npos);
}

// The application froze and connects again (woken, or restarted while its
// old connection hangs): the new connection takes over at once.
TEST_F(RtAppRoad, ANewConnectionReplacesAFrozenOne) {
    std::thread frozen([] {
        SocketFd s = gf_tcpSocket();
        while (!gf_connectSocket(s, "127.0.0.1", gf_portNumber(rtAppEndpoints.tcpPort))) {
            gf_closeSocket(s);
            std::this_thread::sleep_for(20ms);
            s = gf_tcpSocket();
        }
        gf_sendBytes(s, "{\"version\":\"frozen\"}\r\n");
        // Never reads again and never closes while the test runs.
        std::this_thread::sleep_for(3s);
        gf_closeSocket(s);
    });
    rtAppTiming.bufferPolls = 2;
    rtAppTiming.parkedPolls = 2;
    rtAppTiming.firstTrafficPolls = 2;
    ASSERT_TRUE(lf_startRTAppFeeds());
    standin::App& woken = startApp(false, false);
    EXPECT_TRUE(lf_waitFor(
        [&] {
            gf_sendPosition();
            return woken.stats.bufferRequests.load() >= 1 && woken.stats.positions.load() >= 1;
        },
        4s));
    EXPECT_GE(woken.stats.versionQuestions.load(), 1);
    frozen.join();
}

// The parked lists of PHNL at one moment, drawn from the week the airport
// file was made from: each aircraft standing then reaches the reader, its
// stand named as in the airport file; most agree with the file, and some
// stand elsewhere, are other airframes, or have already left, as with the
// real service.
void RtAppRoad::checkPhnlParked(standin::Form form) {
    constexpr double AT = 1732716000;  // Wednesday 27 November 2024, 14:00Z: day 3, hh 28
    const std::string source(ZEPT_SOURCE_DIR);
    const auto week = parked::gf_readParkedWeek(source + "/data/parked/PHNL.csv");
    ASSERT_TRUE(week && week->airport == "PHNL");
    const auto expected = parked::gf_parkedAt(*week, AT);
    ASSERT_GT(expected.size(), 15u);

    UserData user;
    user.lat = 21.319376;
    user.lon = -157.921281;
    user.alt = user.indicatedAlt = 13;
    gf_storeUserData(user);
    parkAirport.icao = 0x50484E4C;  // PHNL
    parkAirport.lat = user.lat;
    parkAirport.lon = user.lon;
    parkAirport.alt_ft = 13;
    rtAppTiming.bufferPolls = 2;  // no live traffic near PHNL in this scenario
    rtAppTiming.firstTrafficPolls = 2;
    week_ = *week;
    startApp(false, false, [&](standin::Config& c) {
        if (form == standin::Form::public_) standin::gf_usePublicForm(c);
        c.parkedAt_s = AT;
    });
    ASSERT_TRUE(lf_startRTAppFeeds());
    const auto parked = gf_takeParkedList(trafficReaderState);
    ASSERT_EQ(parked.size(), expected.size());

    pugi::xml_document document;
    ASSERT_FALSE(gf_parseXmlText(
        *gf_readWholeFile(source + "/data/airports/archive/stock/PHNL.xml"), document));
    const auto stands = gf_readParkpositions(gf_apfRoot(document).child("parkpositions"), 1);
    std::size_t agree = 0, noRegcode = 0;
    for (const ParkedMessage& p : parked) {
        const auto e = std::find_if(expected.begin(), expected.end(),
                                    [&](const auto& x) { return x.hexid == p.hexid; });
        ASSERT_NE(e, expected.end()) << p.hexid;
        EXPECT_EQ(p.stand, e->stand);
        EXPECT_EQ(p.regcode, e->regcode);
        EXPECT_EQ(p.hh, static_cast<std::int32_t>(gf_halfHourOf(std::llround(e->seen_epoch_s)).hh));
        noRegcode += p.regcode.empty();
        for (const Stand& s : stands)
            for (const StandOption& o : s.options)
                agree +=
                    s.id == p.stand && o.reg == p.regcode && o.day == 3 && (o.hours >> 28 & 1) != 0;
    }
    EXPECT_GT(agree, parked.size() / 2);
    EXPECT_LT(agree + noRegcode, parked.size()) << "some disagree with the file";
}

TEST_F(RtAppRoad, PhnlParkedListInTheMarkerForm) {
    checkPhnlParked(standin::Form::today);
}

TEST_F(RtAppRoad, PhnlParkedListInThePublicForm) {
    checkPhnlParked(standin::Form::public_);
}

std::vector<std::string> lf_readLines(SocketFd s, std::size_t count) {
    std::vector<std::string> lines;
    std::string pending;
    const auto until = std::chrono::steady_clock::now() + 3s;
    while (lines.size() < count && std::chrono::steady_clock::now() < until) {
        if (gf_waitReadable(s, 100) <= 0) continue;
        char buffer[4096];
        const auto n = gf_receiveBytes(s, buffer, sizeof buffer);
        if (n <= 0) break;
        pending.append(buffer, static_cast<std::size_t>(n));
        std::size_t end;
        while ((end = pending.find('\n')) != std::string::npos) {
            lines.push_back(pending.substr(0, end + 1));
            pending.erase(0, end + 1);
        }
    }
    return lines;
}

std::vector<double> lf_numbers(std::string_view text) {
    std::vector<double> out;
    for (const auto& f : scenario::lf_split(text)) {
        double v = 0;
        if (scenario::lf_num(f, v)) out.push_back(v);
    }
    return out;
}

// The texts ZEPT sends, byte for byte, for a user climbing nose up (the
// simulator gives pitch negative for nose up) in a right bank west of
// Greenwich: the report turns the pitch's sign, keeps the bank's, and gives
// west longitudes negative.
TEST_F(RtAppRoad, TextsSentToTheApplication) {
    UserData user;
    user.lat = EGTK_LAT;
    user.lon = EGTK_LON;
    user.pitch = -0.05;
    user.bank = 0.1;
    user.heading = 1.5708;
    user.indicatedAlt = 3500;
    user.alt = 3520;
    user.groundSpeed = 140;
    user.zuluYear = 2026;
    user.zuluDayOfYear = 329;
    user.zuluTime = 36000;
    gf_storeUserData(user);

    gf_listenRTApp(rtAppEndpoints.tcpPort);
    std::thread accept([] { waitForClient(); });
    SocketFd peer = gf_tcpSocket();
    ASSERT_TRUE(gf_connectSocket(peer, "127.0.0.1", gf_portNumber(rtAppEndpoints.tcpPort)));
    accept.join();

    gf_sendPosition();
    gf_sendSimTime(gf_simEpochMillis());
    ASSERT_TRUE(gf_requestBuffer());
    gf_requestParked(gf_parkedBox({EGTK_LAT, EGTK_LON}));
    const auto lines = lf_readLines(peer, 4);
    gf_closeSocket(peer);
    ASSERT_EQ(lines.size(), 4u);
    EXPECT_EQ(lines[0], "Qs121=5000;10000;1.570800;3500000;140000;0.904725;-0.023038\r\n");
    EXPECT_EQ(lines[1], "Qs123=1795600800000\r\n");  // 25 Nov 2026 10:00:00Z

    // South, west, north, east in degrees; 40 NM each way, 3 NM for parked.
    ASSERT_TRUE(lines[2].starts_with("Qs999=sendbuffer=5,6,"));
    EXPECT_TRUE(lines[2].ends_with("\n") && !lines[2].ends_with("\r\n"));
    auto box = lf_numbers(lines[2].substr(21, lines[2].size() - 22));
    ASSERT_EQ(box.size(), 4u);
    EXPECT_NEAR(box[0], 51.170713, 1e-6);
    EXPECT_NEAR(box[2], 52.503087, 1e-6);
    EXPECT_NEAR(box[1], -2.399, 0.01);
    EXPECT_NEAR(box[3], -0.241, 0.01);
    ASSERT_TRUE(lines[3].starts_with("Qs999=sendparked,"));
    EXPECT_TRUE(lines[3].ends_with("\r\n"));
    box = lf_numbers(lines[3].substr(17, lines[3].size() - 19));
    ASSERT_EQ(box.size(), 4u);
    EXPECT_NEAR(box[0], 51.786936, 1e-6);
    EXPECT_NEAR(box[2], 51.886864, 1e-6);
    EXPECT_NEAR(box[1], -1.4009, 0.001);
    EXPECT_NEAR(box[3], -1.2391, 0.001);
}

// The application goes while the link's thread is stuck in a send to it,
// and connects again at once. The system hands the next socket the lowest
// free number, so a thread that sent by the old number after another thread
// closed it would push the rest of the old message, or messages queued for
// the old connection, to the new peer. The new peer must hear only its own.
TEST_F(RtAppRoad, ARacingDropNeverSendsToTheNextConnection) {
    rtAppTiming.clientSendBuffer = 4096;
    rtAppTiming.sendLimit_ms = 5000;
    const std::uint16_t port = gf_portNumber(rtAppEndpoints.tcpPort);
    for (int round = 0; round < 50; ++round) {
        gf_listenRTApp(rtAppEndpoints.tcpPort);
        std::thread accept([] { waitForClient(); });
        SocketFd old = gf_tcpSocket();
        gf_setReceiveBufferSize(old, 2048);
        ASSERT_TRUE(gf_connectSocket(old, "127.0.0.1", port));
        accept.join();
        ASSERT_TRUE(appSocket.connected);

        // The link's thread stalls in the first send; the rest waits behind it.
        sendDataPacket(std::string(65536, 'x'));
        for (int i = 0; i < 4; ++i) sendDataPacket("Qs121=meant for the old connection\r\n");
        ASSERT_TRUE(lf_waitFor(
            [] {
                const SharedSocket client = gf_appClient();
                return client && gf_waitWritable(client->fd, 0) == 0;
            },
            2s));
        // The application comes back while the old connection is still up,
        // and the old one's end is found by a drain on this thread.
        SocketFd next = gf_tcpSocket();
        ASSERT_TRUE(gf_connectSocket(next, "127.0.0.1", port));
        gf_shutdownSocket(old);
        ASSERT_TRUE(lf_waitFor(
            [] {
                drainReceiveBuffer();
                return !gf_appClient();
            },
            2s));
        ASSERT_TRUE(waitForClient());
        sendDataPacket("Qs999=version\r\n");
        const auto lines = lf_readLines(next, 1);
        ASSERT_EQ(lines.size(), 1u) << "round " << round;
        EXPECT_EQ(lines[0], "Qs999=version\r\n")
            << "round " << round << ": " << lines[0].substr(0, 40);
        gf_closeRTApp();
        gf_closeSocket(old);
        gf_closeSocket(next);
        if (HasFailure()) break;
    }
}

// An application that freezes (stops sending and reading, keeps its
// connection) and wakes: the status says the feed is silent, and on waking
// the history is asked for again, as after a restart.
TEST_F(RtAppRoad, AFrozenApplicationShowsSilentAndRecoversAsAfterARestart) {
    rtAppTiming.silentFeed_ms = 1500;
    standin::App& app = startApp(false, false, [](standin::Config& c) {
        c.freezeAfter_s = 2.5;
        c.freezeFor_s = 3;
    });
    ASSERT_TRUE(lf_startRTAppFeeds());
    ASSERT_TRUE(lf_waitFor([&] { return app.stats.freezes.load() == 1; }, 5s));
    const auto before = runChoice.load();
    RunChoice onTheApp = *before;
    onTheApp.rtDirect = false;
    runChoice.store(std::make_shared<const RunChoice>(onTheApp));
    EXPECT_TRUE(lf_waitFor(
        [] { return gf_statusLineText({}).find("feed: RT App silent for") != std::string::npos; },
        3s));
    runChoice.store(before);
    EXPECT_TRUE(lf_waitFor([&] { return app.stats.bufferRequests.load() == 2; }, 6s));
    EXPECT_NE(dir.logText().find("The RealTraffic feed is back after"), std::string::npos);
    EXPECT_TRUE(lf_waitFor([] { return !gf_trafficSilent(); }, 2s));
}

// Two applications on one link: the one in use keeps it while its traffic
// comes, and the other is turned away instead of the two taking turns.
TEST_F(RtAppRoad, TwoLiveApplicationsDoNotTakeTheLinkInTurn) {
    standin::App& first = startApp(false, true);
    ASSERT_TRUE(lf_startRTAppFeeds());
    standin::App& second = startApp(false, true);
    for (int i = 0; i < 20; ++i) {
        gf_sendPosition();
        std::this_thread::sleep_for(100ms);
    }
    EXPECT_EQ(first.stats.connections.load(), 1);
    EXPECT_EQ(second.stats.bufferRequests.load(), 0);
    EXPECT_FALSE(gf_exitRequest());
    EXPECT_NE(dir.logText().find("A second RealTraffic connection was turned away"),
              std::string::npos);
}

}  // namespace
