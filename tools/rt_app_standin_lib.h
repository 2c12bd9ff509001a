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

#include <fmt/format.h>

#include "platform/sockets.h"
#include "rt_scenario.h"

namespace tfx::standin {

struct Config {
    std::string address = "127.0.0.1";
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
};

struct Box {
    double south = -90, west = -180, north = 90, east = 180;
    bool contains(double lat, double lon) const {
        return lat >= south && lat <= north && lon >= west && lon <= east;
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
};

struct App {
    Config config;
    scenario::Scenario scene;
    std::atomic<bool> stop{false};
    Stats stats;
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

inline double lf_sceneNow(const Session& s) {
    const std::chrono::duration<double> run = std::chrono::steady_clock::now() - s.wallStart;
    return s.app.config.startOffset_s + run.count();
}

inline void lf_send(Session& s, std::uint16_t port, const std::string& line) {
    gf_sendDatagram(s.udp, line, s.app.config.address, port);
    ++s.app.stats.datagrams;
    if (s.app.config.verbose) fmt::print("udp {} {}\n", port, line);
}

// Each round of a looped scenario flies under other transponder codes, so
// that the program sees new aircraft and the last round's ones fall silent.
inline constexpr std::uint32_t ROUND_HEXID_BITS = 0xF00000;
inline std::uint32_t gf_roundHexid(std::uint32_t hexid, long round) {
    return hexid ^ ((static_cast<std::uint32_t>(round) << 20) & ROUND_HEXID_BITS);
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

inline std::string gf_trafficLine(std::string_view kind, const scenario::Report& r, double epoch_s,
                                  long round = 0) {
    std::array<std::string, 44> f;
    f[0] = kind;
    f[1] = fmt::format("{}", gf_roundHexid(r.hexid, round));
    f[2] = fmt::format("{:.6f}", r.lat);
    f[3] = fmt::format("{:.6f}", r.lon);
    f[4] = fmt::format("{:.0f}", r.alt_ft);
    f[5] = fmt::format("{:.0f}", r.vs_fpm);
    f[6] = r.alt_ft > 0 ? "1" : "0";
    f[7] = fmt::format("{:.1f}", r.track_deg);
    f[8] = fmt::format("{:.0f}", r.gs_kt);
    f[9] = r.callsign;
    f[10] = r.model;
    f[11] = r.regcode;
    f[12] = r.from;
    f[13] = r.to;
    f[14] = fmt::format("{:.2f}", epoch_s);
    f[17] = "adsb_icao";
    f[20] = fmt::format("{:.0f}", r.tas_kt);
    f[23] = "0";
    f[25] = fmt::format("{:.1f}", r.track_deg);
    f[28] = r.category;
    f[43] = r.airline;
    std::string line = f[0];
    for (std::size_t i = 1; i < f.size(); ++i) line += ',' + f[i];
    return line;
}

inline std::string gf_parkedLine(const scenario::Parked& p, double epoch_s) {
    return fmt::format("RTPARK,{:x},{:.6f},{:.6f},{},{},{},{},{:.0f}", p.hexid, p.lat, p.lon,
                       p.callsign, p.model, p.regcode, p.stand, epoch_s);
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
        lf_reportsIn(s, to - HISTORY_PIECE_S, to,
                     [&](const scenario::Report& r, double at, long round) {
                         if (!s.box || s.box->contains(r.lat, r.lon))
                             lf_send(s, s.app.config.trafficPort,
                                     gf_trafficLine("RTBUF", r, s.epochBase_s + at, round));
                     });
        lf_send(s, s.app.config.trafficPort, "RTBUF_SEP");
    }
    lf_send(s, s.app.config.trafficPort, "RTBUF_EOT");
    s.liveSent_s = now - 3;
}

inline void lf_sendParked(Session& s, const Box& box) {
    const double epoch = s.epochBase_s + lf_sceneNow(s);
    for (const auto& p : s.app.scene.parked)
        if (box.contains(p.lat, p.lon))
            lf_send(s, s.app.config.trafficPort, gf_parkedLine(p, epoch));
    lf_send(s, s.app.config.trafficPort, "RTPARK_EOT");
}

inline void lf_sendLive(Session& s) {
    const double now = lf_sceneNow(s);
    lf_reportsIn(s, s.liveSent_s, now, [&](const scenario::Report& r, double at, long round) {
        if (!s.box || s.box->contains(r.lat, r.lon))
            lf_send(s, s.app.config.trafficPort,
                    gf_trafficLine("RTTFC", r, s.epochBase_s + at, round));
    });
    lf_send(s, s.app.config.trafficPort, "RTTFC_EOT");
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
        s.wallStart = std::chrono::steady_clock::now();
        const double epochNow =
            std::chrono::duration<double>(std::chrono::system_clock::now().time_since_epoch())
                .count();
        s.epochBase_s = epochNow - app.config.startOffset_s;
        s.liveSent_s = app.config.startOffset_s;
        auto nextCycle = s.wallStart + std::chrono::milliseconds(app.config.cycle_ms);
        auto nextWeather = s.wallStart;
        bool up = true;
        while (up && !app.stop.load()) {
            const auto now = std::chrono::steady_clock::now();
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
