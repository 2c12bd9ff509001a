// The TCP link to the RealTraffic application: ZEPT listens, the application
// connects as the client; ZEPT reports the user aircraft on it and asks for
// buffer and parked traffic, which come back on the UDP ports.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

#include "feeds/rtapp/rt_app_position.h"
#include "platform/sockets.h"
#include "traffic/geometry.h"

namespace tfx {

// Where the link and its readers live. Tests move them to free ports.
struct RtAppEndpoints {
    std::string address = "127.0.0.1";  // the interface listened and bound on
    std::uint16_t trafficPort = 49005;  // UDP
    std::uint16_t weatherPort = 49004;  // UDP
    std::string tcpPort;                // overrides PORT_NUMBER when not empty
};
extern RtAppEndpoints rtAppEndpoints;

// The waits of the link; tests shorten them.
struct RtAppTiming {
    int probe_ms = 2000;          // after the version question
    int bufferPolls = 600;        // of 50 ms
    int parkedPolls = 200;        // of 50 ms
    int firstTrafficPolls = 150;  // of 100 ms
    int acceptStep_ms = 100;      // how often a pending accept looks for a close
};
extern RtAppTiming rtAppTiming;

struct AppSocket {
    std::mutex socketLock;  // over the two socket values
    SocketFd listenSocket = NO_SOCKET;
    SocketFd clientSocket = NO_SOCKET;
    std::atomic<bool> connected{false};
    std::mutex sendLock;
    std::mutex receiveLock;  // receiving and draining
    // Keeps a report's drain from eating the replies of a running buffer request.
    std::mutex bufferRequestLock;
    bool bufferRequested = false;
    std::atomic<bool> waiting{false};  // in accept
};
extern AppSocket appSocket;

inline constexpr std::size_t RT_APP_BUFFER_SIZE = 16384;

// The TCP port in use: the override or PORT_NUMBER.
std::string gf_rtAppPortText();

// Throws the link's texts on failure.
void gf_listenRTApp(const std::string& port);
bool waitForClient();
bool sendDataPacket(std::string_view text);
std::string receive();
void drainReceiveBuffer();
void gf_closeRTApp();  // feed_start.h declares it too

struct RequestBox {
    double south = 0, west = 0, north = 0, east = 0;  // degrees
};

bool gf_requestBuffer();
void gf_requestParked(const RequestBox& box);
// Asks for the parked traffic around the park airport, or around the user
// on the ground; false when neither applies.
bool gf_requestParkedHere();

// Link log lines; quiet once the session closes.
void lf_linkLog(std::string_view text);

// The texts of the requests, for the link and its tests.
std::string gf_bufferRequestText(double userLat, double userLon, double range_nm);
// 3 NM around the centre.
RequestBox gf_parkedBox(LatLon centre);

}  // namespace tfx
