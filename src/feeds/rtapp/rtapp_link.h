// The TCP link to the RealTraffic application: ZEPT listens, the application
// connects as the client; ZEPT reports the user aircraft on it and asks for
// buffer and parked traffic, which come back on the UDP ports.
#pragma once

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>

#include "feeds/rtapp/rt_app_position.h"
#include "platform/sockets.h"
#include "traffic/geometry.h"

namespace tfx {

// Where the link and its readers live. Tests move them to free ports.
struct RtAppEndpoints {
    std::string address{ANY_ADDRESS};   // the interface listened and bound on
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
    int sendLimit_ms = 3000;      // a message that can't go out in this time drops the peer
    int exitLimit_ms = 500;       // what the closing "exit" may take
    int clientSendBuffer = 0;     // bytes; 0 keeps the system's size
    int silentFeed_ms = 10000;    // no datagram this long: the feed shows as silent
};
extern RtAppTiming rtAppTiming;

struct AppSocket {
    std::mutex socketLock;  // over the two socket values
    SharedSocket listenSocket;
    SharedSocket clientSocket;
    std::atomic<bool> connected{false};
    std::mutex receiveLock;  // receiving and draining
    // Keeps a report's drain from eating the replies of a running buffer request.
    std::mutex bufferRequestLock;
    bool bufferRequested = false;
    std::int64_t bufferRequested_ms = 0;  // steady clock
    std::atomic<bool> waiting{false};     // in accept
    // Counts the clients taken (moved under socketLock with the client); the
    // traffic reader starts over when it moves.
    std::atomic<std::uint32_t> clientsTaken{0};
};
extern AppSocket appSocket;

inline constexpr std::size_t RT_APP_BUFFER_SIZE = 16384;
// Messages waiting for the link's thread; a peer that lets more pile up
// does not read and is dropped.
inline constexpr std::size_t SEND_QUEUE_LIMIT = 64;
// A buffer request whose end never came is given up after this.
inline constexpr std::int64_t BUFFER_REQUEST_LIMIT_MS = 30000;

// Everything sent to the application goes through this queue, drained by
// the link's own thread with a time limit, so that no caller (the tick, a
// way out) ever waits on the peer.
struct Outgoing {
    std::string text;
    bool drainAfter = false;     // a position report: drain what the peer sent
    std::uint32_t meantFor = 0;  // the connection's count in clientsTaken when queued
};
struct LinkSender {
    std::mutex lock;
    std::condition_variable wake;
    std::deque<Outgoing> queue;
    bool stop = false;
    std::int64_t stopBy_ms = 0;  // steady clock: the last send must end by then
    std::thread thread;
    std::mutex lifeLock;  // over starting and joining the thread
};
extern LinkSender linkSender;

// The TCP port in use: the override or PORT_NUMBER.
std::string gf_rtAppPortText();

// Throws the link's texts on failure.
void gf_listenRTApp(const std::string& port);
bool waitForClient();
// Queues the text for the link's thread; false when no client is connected
// or the peer let the queue fill (it is then dropped).
bool sendDataPacket(std::string_view text, bool drainAfter = false);
std::string receive();
void drainReceiveBuffer();
void gf_closeRTApp();  // feed_start.h declares it too

struct RequestBox {
    double south = 0, west = 0, north = 0, east = 0;  // degrees
};

bool gf_requestBuffer();
// The buffer request is over (its end came, or live traffic followed it).
void gf_clearBufferRequest();
void gf_requestParked(const RequestBox& box);
// Asks for the parked traffic around the park airport, or around the user
// on the ground; false when neither applies.
bool gf_requestParkedHere();

// The client as it stands (empty when none); held, its number stays valid.
SharedSocket gf_appClient();
// The client while it is still connection number `taken` (clientsTaken);
// empty once it was dropped or replaced.
SharedSocket gf_appClientFor(std::uint32_t taken);
// Closes the client unless another one took its place meanwhile.
void gf_dropAppClient(const SharedSocket& which);
// Takes an accepted client: the old one, if any, and all queued for it go.
void gf_takeAppClient(SocketFd client);
// The link's sending thread; started with the first client, stopped (after
// the last messages, within exitLimit_ms) by gf_closeRTApp.
void gf_startLinkSender();
void gf_stopLinkSender();

// Link log lines; quiet once the session closes.
void lf_linkLog(std::string_view text);

// The texts of the requests, for the link and its tests.
std::string gf_bufferRequestText(double userLat, double userLon, double range_nm);
// 3 NM around the centre.
RequestBox gf_parkedBox(LatLon centre);

}  // namespace tfx
