// What ZEPT sends the application: the user's position every 200 ms, the
// simulator's time, and the requests for buffer and parked traffic with the
// box they cover.
#include <chrono>
#include <cmath>
#include <numbers>

#include <fmt/format.h>

#include "app/exit_request.h"
#include "app/log.h"
#include "app/options.h"
#include "app/parameters.h"
#include "feeds/rtapp/reader_state.h"
#include "feeds/rtapp/rt_app_position.h"
#include "feeds/rtapp/rtapp_link.h"
#include "gui/gui.h"
#include "parking/park_airport.h"
#include "sim/sim_client.h"
#include "sim/user_data.h"

namespace tfx {

namespace {

constexpr double DEG_TO_RAD = std::numbers::pi / 180.0;
constexpr double PARKED_BOX_LAT_DEG = 0.04996402877697842;  // 3 NM
constexpr double PARKED_BOX_FT = 18228.34647;               // 3 NM

bool lf_atZero(double lat, double lon) {
    return std::fabs(lat) < 0.0001 && std::fabs(lon) < 0.0001;
}

void lf_appGone(const std::string& status) {
    rtAppFeedConnected = false;
    gf_showStatus(status);
    gf_requestExit(ExitReason::NewSettings, 1);
}

}  // namespace

std::string gf_bufferRequestText(double lat, double lon, double range_nm) {
    if (lf_atZero(lat, lon)) return "Qs999=sendbuffer=5,6\n";
    const double dlat = range_nm * 1.852 / 111.2;
    const double r_ft = range_nm * 6076.11549;
    const LatLon west = gf_projectPosition({lat, lon}, -std::numbers::pi / 2, r_ft);
    const LatLon east = gf_projectPosition({lat, lon}, std::numbers::pi / 2, r_ft);
    return fmt::format("Qs999=sendbuffer=5,6,{:.6f},{:.6f},{:.6f},{:.6f}\n", lat - dlat, west.lon,
                       lat + dlat, east.lon);
}

RequestBox gf_parkedBox(LatLon c) {
    const LatLon west = gf_projectPosition(c, -std::numbers::pi / 2, PARKED_BOX_FT);
    const LatLon east = gf_projectPosition(c, std::numbers::pi / 2, PARKED_BOX_FT);
    return {c.lat - PARKED_BOX_LAT_DEG, west.lon, c.lat + PARKED_BOX_LAT_DEG, east.lon};
}

void gf_sendPosition() {
    // Each report asks for the user's data again, so that the next one is
    // fresh; the reader's range centre follows the user with or without the
    // TCP link.
    const UserData user = gf_requestUserData();
    if (lf_atZero(user.lat, user.lon)) return;
    gf_publishReaderPosition(trafficReaderState);
    if (!params.PSX_SERVER_HERE.current) return;
    // Once the session closes the link goes down on purpose; the last ticks
    // must not report the application as gone.
    if (!gf_keepRunning()) return;
    // With AEROWINX the position goes to PSX, not to us: no TCP link is
    // built, and the UDP readers work alone. Asking for a new session here
    // would only loop.
    if (gf_options()->AEROWINX) return;
    if (!appSocket.connected) {
        lf_appGone(fmt::format("{} RealTraffic App gone", gf_nowText()));
        return;
    }
    const std::string text = fmt::format(
        "Qs121={:.0f};{:.0f};{:.6f};{:.0f};{:.0f};{:.6f};{:.6f}\r\n", -100000 * user.pitch,
        100000 * user.bank, user.heading, 1000 * user.indicatedAlt, 1000 * user.groundSpeed,
        user.lat * DEG_TO_RAD, user.lon * DEG_TO_RAD);
    // The link's thread sends it and drains what came; a send that fails or
    // stalls closes the client, and the next report finds it gone.
    if (!sendDataPacket(text, true)) lf_appGone("RealTraffic App gone");
}

void gf_clearBufferRequest() {
    std::lock_guard lock(appSocket.bufferRequestLock);
    appSocket.bufferRequested = false;
}

bool gf_requestBuffer() {
    std::lock_guard lock(appSocket.bufferRequestLock);
    if (appSocket.bufferRequested) return false;
    appSocket.bufferRequested = true;
    appSocket.bufferRequested_ms = gf_steadyMillis();
    const UserData user = gf_userData();
    const std::string text = gf_bufferRequestText(user.lat, user.lon, gf_options()->range_nm);
    drainReceiveBuffer();
    if (!sendDataPacket(text)) {
        appSocket.bufferRequested = false;
        return false;
    }
    return true;
}

void gf_requestParked(const RequestBox& box) {
    // The reader drops a list begun before this request.
    ++trafficReaderState.parkedRequests;
    {
        std::lock_guard lock(trafficReaderState.parkedLock);
        trafficReaderState.parkedFinished.clear();
    }
    trafficReaderState.parkedDone = false;
    sendDataPacket(fmt::format("Qs999=sendparked,{:.6f},{:.6f},{:.6f},{:.6f}\r\n", box.south,
                               box.west, box.north, box.east));
}

bool gf_requestParkedHere() {
    if (parkAirport.known()) {
        gf_requestParked(gf_parkedBox({parkAirport.lat, parkAirport.lon}));
        return true;
    }
    if (userOnGround.load() == 1) {
        const UserData user = gf_userData();
        gf_requestParked(gf_parkedBox({user.lat, user.lon}));
        return true;
    }
    return false;
}

std::int64_t gf_simEpochMillis() {
    const UserData user = gf_userData();
    if (user.zuluYear <= 0 || user.zuluDayOfYear <= 0) return 0;
    using namespace std::chrono;
    const sys_days firstOfYear = year{static_cast<int>(user.zuluYear)} / January / 1;
    const auto day = firstOfYear + days{user.zuluDayOfYear - 1};
    const auto t = day + seconds{user.zuluTime};
    return duration_cast<milliseconds>(t.time_since_epoch()).count();
}

void gf_sendSimTime(std::int64_t epoch_ms) {
    if (epoch_ms == 0 || !appSocket.connected) return;
    sendDataPacket(fmt::format("Qs123={}\r\n", epoch_ms));
}

}  // namespace tfx
