// The traffic port's lines: live and history records gather in the batch,
// the end markers hand the batch to the engine with the right delay, and
// parked records gather in a list that the main thread takes when complete.
#include <cmath>

#include <fmt/format.h>

#include "app/log.h"
#include "feeds/qnh.h"
#include "feeds/rtapp/reader_state.h"
#include "feeds/rtapp/rtapp_lines.h"
#include "feeds/rtapp/rtapp_link.h"
#include "traffic/traffic.h"

namespace tfx {

namespace {

constexpr int LIVE_DELAY_S = 30;
constexpr int BUFFER_PIECE_S = 6;

void lf_takeContext(TrafficReaderState& s) {
    DecodeContext c;
    {
        std::lock_guard lock(s.positionLock);
        const ReaderPosition& p = s.position;
        c.lat = p.lat;
        c.lon = p.lon;
        c.cosLat = p.cosLat;
        c.fieldAltitude = p.fieldAltitude_ft;
        c.parkAirport = p.parkAirport;
        if (p.parkAirport) c.parkCosLat = std::cos(p.parkAirport->lat * 0.017453292519943295);
        c.userAltOffset_ft = p.userAltOffset_ft;
        s.parkedContext.userStand = p.userStand;
        s.parkedContext.nearestStand = p.nearestStand;
    }
    s.seenActive = rtAppSeen.collecting.load();
    c.collectSeen = s.seenActive ? 1 : 0;
    // The weather reader's latest value; one value for the whole batch.
    const std::int32_t current = qnh.load();
    c.qnh = current != 0 ? current : 1013;
    c.options = gf_options();
    c.rtDirect = false;
    c.collectEarly = 1;
    c.dropSquawk0000 = 0;
    s.parkedContext.options = c.options;
    s.context = std::move(c);
    s.contextValid = true;
}

void lf_handOver(TrafficReaderState& s, int delay_s, BatchSink engine = &gf_handleTrafficBatch) {
    gf_mergeSeen(rtAppSeen, s.batchSeen);
    if (s.batch.empty()) return;
    (s.sink ? s.sink : engine)(s.batch, delay_s, true);
    s.batch.clear();
    if (s.batch.capacity() < BATCH_RESERVE) s.batch.reserve(BATCH_RESERVE);
}

void lf_trafficLine(TrafficReaderState& s) {
    if (s.fields.size() < RTTFC_FIELDS) {
        // Rebuild the line from its fields only for the log.
        std::string line;
        for (std::size_t i = 0; i < s.fields.size(); ++i) {
            if (i) line += ',';
            line += s.fields[i];
        }
        gf_logLine(
            fmt::format("Ignoring incomplete RT App message: {} fields received, {} required: {}",
                        s.fields.size(), RTTFC_FIELDS, line));
        ++s.linesDropped;
        return;
    }
    if (!s.contextValid) lf_takeContext(s);
    try {
        DecodeResult r = gf_decodeTraffic(gf_readTrafficFields(s.fields), s.context);
        if (r.roundedTimestamp && *r.roundedTimestamp > s.lastHeard.load())
            s.lastHeard = *r.roundedTimestamp;
        if (r.seen) gf_addSeen(s.batchSeen, *r.seen);
        if (r.message) s.batch.push_back(std::move(*r.message));
    } catch (const std::exception& e) {
        ++s.linesDropped;
        gf_logLine(fmt::format("exception in processLine: {}", e.what()));
    }
}

void lf_parkedLine(TrafficReaderState& s) {
    if (s.fields.size() < RTPARK_FIELDS) {
        ++s.linesDropped;
        return;
    }
    if (!s.contextValid) lf_takeContext(s);
    try {
        if (auto p = gf_decodeParked(gf_readParkedFields(s.fields), s.parkedContext))
            s.parkedBuilding.push_back(std::move(*p));
    } catch (const std::exception& e) {
        ++s.linesDropped;
        gf_logLine(fmt::format("exception in processRTAppLine: {}", e.what()));
    }
}

}  // namespace

void gf_processRTAppLine(TrafficReaderState& s, std::string_view line) {
    try {
        while (!line.empty() && (line.back() == '\n' || line.back() == '\r' || line.back() == '\0'))
            line.remove_suffix(1);
        gf_splitFields(line, s.fields);
        const std::string_view kind = s.fields[0];
        if (kind == "RTTFC" || kind == "RTBUF") {
            lf_trafficLine(s);
        } else if (kind == "RTTFC_EOT") {
            lf_handOver(s, LIVE_DELAY_S);
            s.contextValid = false;
        } else if (kind == "RTBUF_SEP") {
            lf_handOver(s, BUFFER_PIECE_S * s.bufferCounter, &gf_handleHistoryBatch);
            ++s.bufferCounter;
        } else if (kind == "RTBUF_EOT") {
            s.bufferDone = true;
            s.contextValid = false;
            {
                std::lock_guard lock(appSocket.bufferRequestLock);
                appSocket.bufferRequested = false;
            }
            lf_linkLog(fmt::format("{} Buffer traffic received", gf_nowText()));
        } else if (kind == "RTPARK") {
            lf_parkedLine(s);
        } else if (kind == "RTPARK_EOT") {
            {
                std::lock_guard lock(s.parkedLock);
                s.parkedFinished.swap(s.parkedBuilding);
                s.parkedBuilding.clear();
            }
            s.parkedDone = true;
            lf_linkLog(fmt::format("{} park traffic received", gf_nowText()));
        }
    } catch (const std::exception& e) {
        // Only allocation can get here; the reader goes on with the next line.
        gf_logLine(fmt::format("exception in processLine: {}", e.what()));
    }
}

}  // namespace tfx
