// The stand-in RealTraffic application: connects to ZEPT's TCP port as the
// client, answers the version question, follows the position reports, and
// sends history pieces, live cycles, parked lists and weather as UDP
// datagrams on loopback, from a scenario file. Used by the tool of the same
// name and by the end-to-end tests, which run it on a thread.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <numbers>
#include <optional>
#include <string>
#include <thread>

#include <mutex>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "platform/sockets.h"
#include "rt_app_standin_forms.h"
#include "rt_parked.h"
#include "rt_scenario.h"

namespace tfx::standin {

struct Config {
    std::string address = "127.0.0.1";  // where ZEPT listens
    std::string udpAddress;             // where datagrams go; empty: address
    Form form = Form::today;
    bool markers = true;           // end markers after cycles, history pieces and parked lists
    std::string airport = "EGTK";  // in front of stand names in the public form
    RoughChannel channel;
    std::uint16_t tcpPort = 10747;
    std::uint16_t trafficPort = 49005;
    std::uint16_t weatherPort = 49004;
    int cycle_ms = 1000;    // one live cycle
    int weather_ms = 5000;  // one weather object
    double qnh_hPa = 1013.25;
    double startOffset_s = 40;  // scenario time at the connection; history lies before it
    bool loop = true;           // start the scenario over at its end
    bool vanish = false;        // connect, and close at once without a word
    bool reconnect = true;      // after "exit" or a lost connection, connect again
    bool verbose = false;
    // A freeze: after this many seconds of a connection the application
    // stops sending and reading for freezeFor_s, then goes on (negative: never).
    double freezeAfter_s = -1;
    double freezeFor_s = 0;
    // The moment whose parked list a request gets, in epoch seconds; 0: now.
    double parkedAt_s = 0;
};

struct Box {
    double south = -90, west = -180, north = 90, east = 180;
    bool contains(double lat, double lon) const {
        return lat >= south && lat <= north && lon >= west && lon <= east;
    }
};

// The user positions ZEPT reported, in degrees, in the order they came.
struct ReportedPositions {
    std::mutex lock;
    std::vector<std::pair<double, double>> latLon;
    static constexpr std::size_t LIMIT = 200000;
    void add(double lat, double lon) {
        std::lock_guard guard(lock);
        if (latLon.size() < LIMIT) latLon.emplace_back(lat, lon);
    }
    std::vector<std::pair<double, double>> copy() {
        std::lock_guard guard(lock);
        return latLon;
    }
};

struct Stats {
    std::atomic<int> connections{0};
    std::atomic<int> versionQuestions{0};
    std::atomic<int> positions{0};
    std::atomic<int> bufferRequests{0};
    std::atomic<int> parkedRequests{0};
    std::atomic<int> liveCycles{0};
    std::atomic<int> exits{0};
    std::atomic<int> datagrams{0};
    std::atomic<int> freezes{0};
};

struct App {
    Config config;
    scenario::Scenario scene;
    // A week of parked aircraft; when it has stays, parked requests are
    // answered from it instead of the scenario's fixed list.
    parked::Week week;
    std::atomic<bool> stop{false};
    Stats stats;
    ReportedPositions reported;
};

inline constexpr double HISTORY_PIECE_S = 6;
inline constexpr int HISTORY_PIECES = 5;

struct Session {
    App& app;
    SocketFd tcp = NO_SOCKET;
    SocketFd udp = NO_SOCKET;
    double epochBase_s = 0;  // epoch of scenario offset 0
    std::chrono::steady_clock::time_point wallStart{};
    double liveSent_s = 0;  // scenario time up to which live reports went out
    std::optional<Box> box{};
    std::string pending{};  // received, not yet a whole line
};

// The address a broadcast goes to when no LAN is wanted: the loopback
// network's broadcast address. A socket bound to any address receives it and
// one bound to 127.0.0.1 does not, so it tests the binding the LAN needs
// without a datagram ever leaving this machine.
inline constexpr const char* LOOPBACK_BROADCAST = "127.255.255.255";

// The public form: no markers, one report per aircraft about every two
// seconds, datagrams broadcast (to the LAN's broadcast address only when lan
// is set, which tests never do; else on the loopback network); returns where
// the datagrams go.
inline std::string gf_usePublicForm(Config& c, bool broadcast = true, bool lan = false) {
    c.form = Form::public_;
    c.markers = false;
    c.cycle_ms = 2000;
    if (broadcast) {
        c.udpAddress = LOOPBACK_BROADCAST;
        if (lan) {
            const auto addresses = gf_broadcastAddresses();
            if (!addresses.empty()) c.udpAddress = addresses.front();
        }
    }
    return c.udpAddress.empty() ? c.address : c.udpAddress;
}

inline double lf_sceneNow(const Session& s) {
    const std::chrono::duration<double> run = std::chrono::steady_clock::now() - s.wallStart;
    return s.app.config.startOffset_s + run.count();
}

inline void lf_sendNow(Session& s, std::uint16_t port, const std::string& line) {
    const Config& c = s.app.config;
    gf_sendDatagram(s.udp, line, c.udpAddress.empty() ? c.address : c.udpAddress, port);
    ++s.app.stats.datagrams;
    if (c.verbose) fmt::print("udp {} {}\n", port, line);
}

inline void lf_send(Session& s, std::uint16_t port, const std::string& line) {
    if (port != s.app.config.trafficPort) return lf_sendNow(s, port, line);
    s.app.config.channel.pass(line, [&](const std::string& d) { lf_sendNow(s, port, d); });
}

// An end marker, unless this application sends none.
inline void lf_sendMarker(Session& s, const std::string& marker) {
    if (s.app.config.markers) lf_send(s, s.app.config.trafficPort, marker);
}

// Every report with a (looped) offset in (from, to], in order, with its round.
template <typename Fn>
void lf_reportsIn(const Session& s, double from, double to, Fn fn) {
    const auto& reports = s.app.scene.reports;
    if (reports.empty() || to <= from) return;
    const double length = s.app.scene.length_s() + 1;
    const bool loop = s.app.config.loop;
    const long first = loop ? static_cast<long>(std::floor(from / length)) : 0;
    const long last = loop ? static_cast<long>(std::floor(to / length)) : 0;
    for (long n = std::max(first, 0L); n <= last; ++n) {
        for (const auto& r : reports) {
            const double at = r.offset_s + n * length;
            if (at > from && at <= to) fn(r, at, n);
        }
    }
}

inline std::optional<Box> lf_boxOf(std::string_view numbers) {
    const auto f = scenario::lf_split(numbers);
    if (f.size() < 4) return std::nullopt;
    Box b;
    if (!scenario::lf_num(f[0], b.south) || !scenario::lf_num(f[1], b.west) ||
        !scenario::lf_num(f[2], b.north) || !scenario::lf_num(f[3], b.east))
        return std::nullopt;
    return b;
}

inline void lf_sendHistory(Session& s) {
    const double now = lf_sceneNow(s);
    // Piece k is played 6 k seconds from now; it holds what happened 30 - 6 k
    // seconds ago, so that history and live traffic join without a gap.
    for (int k = 0; k < HISTORY_PIECES; ++k) {
        const double to = now - 27 + HISTORY_PIECE_S * k;
        lf_reportsIn(
            s, to - HISTORY_PIECE_S, to, [&](const scenario::Report& r, double at, long round) {
                if (!s.box || s.box->contains(r.lat, r.lon))
                    lf_send(
                        s, s.app.config.trafficPort,
                        gf_trafficLine("RTBUF", r, s.epochBase_s + at, round, s.app.config.form));
            });
        lf_sendMarker(s, "RTBUF_SEP");
    }
    lf_sendMarker(s, "RTBUF_EOT");
    s.liveSent_s = now - 3;
}

inline void lf_sendParked(Session& s, const Box& box) {
    const Config& c = s.app.config;
    const double epoch = c.parkedAt_s > 0 ? c.parkedAt_s : s.epochBase_s + lf_sceneNow(s);
    // A scenario played at a named airport gives its stands that prefix.
    const std::string& airport =
        s.app.scene.airport.icao.empty() ? c.airport : s.app.scene.airport.icao;
    const auto list =
        s.app.week.stays.empty() ? s.app.scene.parked : parked::gf_parkedAt(s.app.week, epoch);
    for (const auto& p : list)
        if (box.contains(p.lat, p.lon))
            lf_send(s, c.trafficPort, gf_parkedLine(p, epoch, c.form, airport));
    lf_sendMarker(s, "RTPARK_EOT");
}

inline void lf_sendLive(Session& s) {
    const double now = lf_sceneNow(s);
    lf_reportsIn(s, s.liveSent_s, now, [&](const scenario::Report& r, double at, long round) {
        if (!s.box || s.box->contains(r.lat, r.lon))
            lf_send(s, s.app.config.trafficPort,
                    gf_trafficLine("RTTFC", r, s.epochBase_s + at, round, s.app.config.form));
    });
    lf_sendMarker(s, "RTTFC_EOT");
    s.liveSent_s = now;
    ++s.app.stats.liveCycles;
}

// One request line of ZEPT; false when ZEPT ended the link.
inline bool lf_request(Session& s, std::string_view line) {
    if (s.app.config.verbose) fmt::print("tcp {}\n", line);
    if (line == "Qs999=version") {
        ++s.app.stats.versionQuestions;
        gf_sendBytes(s.tcp, "{\"version\":\"stand-in 1.0\"}\r\n");
    } else if (line.starts_with("Qs121=")) {
        ++s.app.stats.positions;
        std::array<std::string_view, 7> parts{};
        std::size_t n = 0;
        std::size_t start = 0;
        const std::string_view body = line.substr(6);
        while (n < 7) {
            const auto semi = body.find(';', start);
            parts[n++] = body.substr(
                start, semi == std::string_view::npos ? std::string_view::npos : semi - start);
            if (semi == std::string_view::npos) break;
            start = semi + 1;
        }
        double lat = 0, lon = 0;
        if (n == 7 && scenario::lf_num(parts[5], lat) && scenario::lf_num(parts[6], lon))
            s.app.reported.add(lat * 180 / std::numbers::pi, lon * 180 / std::numbers::pi);
        if (n == 7 && scenario::lf_num(parts[5], lat) && scenario::lf_num(parts[6], lon) && s.box) {
            // The box follows the user; its size stays what the buffer request asked.
            const double cLat = lat * 180 / std::numbers::pi, cLon = lon * 180 / std::numbers::pi;
            const double halfLat = (s.box->north - s.box->south) / 2,
                         halfLon = (s.box->east - s.box->west) / 2;
            s.box = Box{cLat - halfLat, cLon - halfLon, cLat + halfLat, cLon + halfLon};
        }
    } else if (line.starts_with("Qs999=sendbuffer=")) {
        ++s.app.stats.bufferRequests;
        const std::string_view rest = line.substr(17);
        const auto comma = rest.find(',', rest.find(',') + 1);
        if (comma != std::string_view::npos) s.box = lf_boxOf(rest.substr(comma + 1));
        lf_sendHistory(s);
    } else if (line.starts_with("Qs999=sendparked,")) {
        ++s.app.stats.parkedRequests;
        if (const auto box = lf_boxOf(line.substr(17))) lf_sendParked(s, *box);
    } else if (line == "exit") {
        ++s.app.stats.exits;
        return false;
    }
    return true;
}

// Takes what the socket holds; false when the connection ended.
inline bool lf_readRequests(Session& s, int wait_ms) {
    const int ready = gf_waitReadable(s.tcp, wait_ms);
    if (ready <= 0) return ready == 0;
    std::array<char, 4096> buffer;
    const auto n = gf_receiveBytes(s.tcp, buffer.data(), buffer.size());
    if (n <= 0) return false;
    s.pending.append(buffer.data(), static_cast<std::size_t>(n));
    std::size_t end;
    while ((end = s.pending.find('\n')) != std::string::npos) {
        std::string line = s.pending.substr(0, end);
        s.pending.erase(0, end + 1);
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (!lf_request(s, line)) return false;
    }
    return true;
}

inline SocketFd lf_connect(App& app) {
    while (!app.stop.load()) {
        SocketFd s = gf_tcpSocket();
        if (s != NO_SOCKET && gf_connectSocket(s, app.config.address, app.config.tcpPort)) return s;
        gf_closeSocket(s);
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
    }
    return NO_SOCKET;
}

// Runs until stopped, or until ZEPT ends the link when no reconnect is asked.
inline void gf_runStandin(App& app) {
    while (!app.stop.load()) {
        Session s{app};
        s.tcp = lf_connect(app);
        if (s.tcp == NO_SOCKET) return;
        ++app.stats.connections;
        if (app.config.vanish) {
            gf_closeSocket(s.tcp);
            return;
        }
        s.udp = gf_udpSocket();
        gf_setBroadcast(s.udp);
        s.wallStart = std::chrono::steady_clock::now();
        const double epochNow =
            std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch())
                .count();
        s.epochBase_s = epochNow - app.config.startOffset_s;
        s.liveSent_s = app.config.startOffset_s;
        auto nextCycle = s.wallStart + std::chrono::milliseconds(app.config.cycle_ms);
        auto nextWeather = s.wallStart;
        bool up = true;
        bool frozeOnce = false;
        while (up && !app.stop.load()) {
            auto now = std::chrono::steady_clock::now();
            if (!frozeOnce && app.config.freezeAfter_s >= 0 &&
                now - s.wallStart >= std::chrono::duration<double>(app.config.freezeAfter_s)) {
                frozeOnce = true;
                ++app.stats.freezes;
                const auto until = now + std::chrono::duration_cast<std::chrono::milliseconds>(
                                             std::chrono::duration<double>(app.config.freezeFor_s));
                while (!app.stop.load() && std::chrono::steady_clock::now() < until)
                    std::this_thread::sleep_for(std::chrono::milliseconds(20));
                // Awake: what it sends now is of this moment, not a backlog.
                now = std::chrono::steady_clock::now();
                s.liveSent_s = lf_sceneNow(s) - app.config.cycle_ms / 1000.0;
                nextCycle = now;
            }
            if (now >= nextWeather) {
                lf_send(s, app.config.weatherPort,
                        fmt::format("{{\"QNH\": {:.2f}}}", app.config.qnh_hPa));
                nextWeather = now + std::chrono::milliseconds(app.config.weather_ms);
            }
            if (now >= nextCycle) {
                lf_sendLive(s);
                nextCycle += std::chrono::milliseconds(app.config.cycle_ms);
            }
            const auto wait =
                std::chrono::duration_cast<std::chrono::milliseconds>(nextCycle - now).count();
            up = lf_readRequests(s, static_cast<int>(std::clamp<long long>(wait, 1, 100)));
        }
        gf_closeSocket(s.tcp);
        gf_closeSocket(s.udp);
        if (!app.config.reconnect) return;
    }
}

}  // namespace tfx::standin
