// The state of the two readers of the RealTraffic application's UDP ports:
// what the traffic reader builds from its lines, and what the main thread
// polls and publishes to it.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <unordered_map>

#include "app/complaint_limit.h"
#include "feeds/decode_context.h"
#include "feeds/seen_sets.h"
#include "traffic/aircraft.h"

namespace tfx {

inline constexpr std::size_t BATCH_RESERVE = 384;
// A batch is handed over at this size whatever the markers say, so that a
// flood or a lost end marker cannot grow it without bound.
inline constexpr std::size_t MAX_BATCH = 4096;
// Parked lists hold no more than this; the rest of a flood is dropped.
inline constexpr std::size_t MAX_PARKED = 2048;

// Without end markers a batch is handed over after one cycle of the
// application: the cycle is measured as the time until an aircraft already
// in the batch reports again, and the wait is 1.5 cycles within these bounds.
inline constexpr std::int64_t DEFAULT_CYCLE_MS = 2000;
inline constexpr std::int64_t MIN_HANDOVER_WAIT_MS = 1000;
inline constexpr std::int64_t MAX_HANDOVER_WAIT_MS = 10000;
// With markers only a lost marker delays a batch; it goes after this at most.
inline constexpr std::int64_t MARKED_HANDOVER_WAIT_MS = 15000;

enum class BatchKind : std::uint8_t { none, live, history };

// Published by the main thread under the position lock.
struct ReaderPosition {
    double lat = 0, lon = 0, cosLat = 1;  // the user aircraft as last reported
    double userAltOffset_ft = 0;
    std::optional<double> fieldAltitude_ft;
    std::optional<LatLon> parkAirport;
    std::string userStand, nearestStand;
};

// Where a finished cycle goes; the traffic engine's intake unless a test
// watches the hand-over.
using BatchSink = void (*)(std::vector<TrafficMessage>& batch, int delay_s, bool fromRtApp);

struct TrafficReaderState {
    std::vector<TrafficMessage> batch;
    BatchSeen batchSeen;
    DecodeContext context;
    bool contextValid = false;
    ParkedContext parkedContext;
    std::vector<ParkedMessage> parkedBuilding;
    std::vector<std::string_view> fields;
    std::int32_t bufferCounter = 0;
    std::atomic<bool> seenActive{false};
    std::atomic<bool> bufferDone{false};
    std::atomic<bool> parkedDone{false};
    std::atomic<std::int64_t> lastHeard{0};  // epoch second of the newest record
    std::atomic<std::uint32_t> linesDropped{0};
    std::atomic<std::uint32_t> implausible{0};
    ComplaintLimit complaints;

    // Hand-over without end markers.
    BatchKind batchKind = BatchKind::none;
    std::int64_t batchStart_ms = 0;  // steady clock, first record of the batch
    std::unordered_map<std::uint32_t, double> batchHexids;  // newest report time of each
    std::int64_t cycle_ms = DEFAULT_CYCLE_MS;
    bool liveMarkersSeen = false;    // an "RTTFC_EOT" came on this link
    bool bufferMarkersSeen = false;  // an "RTBUF_SEP" or "RTBUF_EOT" came
    bool noMarkersLogged = false;
    std::int64_t parkedLast_ms = 0;  // last "RTPARK" line, 0 when none waits
    bool parkedMarkerSeen = false;
    // Bumped by each parked request; a list begun before it is dropped.
    std::atomic<std::uint32_t> parkedRequests{0};
    std::uint32_t parkedRequestsSeen = 0;
    // Steady milliseconds of the last datagram, for the silent-feed check.
    std::atomic<std::int64_t> lastDatagram_ms{0};

    std::mutex parkedLock;
    std::vector<ParkedMessage> parkedFinished;

    std::mutex positionLock;
    ReaderPosition position;

    BatchSink sink = nullptr;  // nullptr: gf_handleTrafficBatch
};

extern TrafficReaderState trafficReaderState;

// Back to nothing heard, at a new connection and at a restart.
void gf_resetReaderState(TrafficReaderState& state);
// The user's position and the park airport for the range and ground tests.
void gf_publishReaderPosition(TrafficReaderState& state);
// Takes the finished parked list (empty when none came).
std::vector<ParkedMessage> gf_takeParkedList(TrafficReaderState& state);

// One line of the traffic port; never throws. now_ms is a steady clock;
// the overload without it reads the clock.
void gf_processRTAppLine(TrafficReaderState& state, std::string_view line, std::int64_t now_ms);
void gf_processRTAppLine(TrafficReaderState& state, std::string_view line);
// While no line comes: hands over what waits longer than the application's
// cycle allows, and writes the complaint counts that are due.
void gf_trafficReaderIdle(TrafficReaderState& state, std::int64_t now_ms);
void gf_trafficReaderIdle(TrafficReaderState& state);
std::int64_t gf_steadyMillis();

}  // namespace tfx
