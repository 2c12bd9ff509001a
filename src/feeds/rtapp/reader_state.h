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

#include "feeds/decode_context.h"
#include "feeds/seen_sets.h"
#include "traffic/aircraft.h"

namespace tfx {

inline constexpr std::size_t BATCH_RESERVE = 384;

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

// One line of the traffic port; never throws.
void gf_processRTAppLine(TrafficReaderState& state, std::string_view line);

}  // namespace tfx
