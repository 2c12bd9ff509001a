// The traffic port's lines: live and history records gather in the batch,
// the end markers hand the batch to the engine with the right delay, and
// parked records gather in a list that the main thread takes when complete.
// Applications that send no end markers get their batches handed over after
// one of their cycles; no batch grows past MAX_BATCH.
#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>

#include <fmt/format.h>

#include "app/log.h"
#include "feeds/plausible_limits.h"
#include "feeds/qnh.h"
#include "feeds/rtapp/reader_state.h"
#include "feeds/rtapp/rtapp_lines.h"
#include "feeds/rtapp/rtapp_link.h"
#include "traffic/traffic.h"

namespace tfx {

namespace {

constexpr int LIVE_DELAY_S = 30;
constexpr int BUFFER_PIECE_S = 6;
constexpr int HISTORY_PIECES = 5;
constexpr std::size_t LOGGED_LINE_CHARS = 200;  // of a bad line, in the log

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

std::int64_t lf_handoverWait_ms(const TrafficReaderState& s) {
    if (s.batchKind == BatchKind::live ? s.liveMarkersSeen : s.bufferMarkersSeen)
        return MARKED_HANDOVER_WAIT_MS;
    return std::clamp(s.cycle_ms * 3 / 2, MIN_HANDOVER_WAIT_MS, MAX_HANDOVER_WAIT_MS);
}

void lf_handOver(TrafficReaderState& s, int delay_s) {
    // History pieces queue for the tick whatever their delay; a piece that
    // happens to fall 30 s ahead must not replace the live batch.
    const BatchSink engine =
        s.batchKind == BatchKind::history ? &gf_handleHistoryBatch : &gf_handleTrafficBatch;
    gf_mergeSeen(rtAppSeen, s.batchSeen);
    s.batchKind = BatchKind::none;
    s.batchHexids.clear();
    if (s.batch.empty()) return;
    (s.sink ? s.sink : engine)(s.batch, delay_s, true);
    s.batch.clear();
    if (s.batch.capacity() < BATCH_RESERVE) s.batch.reserve(BATCH_RESERVE);
}

// The end of the history, by its marker or because live traffic or a
// pause followed it; a lost marker must not keep the request open.
void lf_historyOver(TrafficReaderState& s, bool marker) {
    if (s.bufferDone && !marker) return;
    s.bufferDone = true;
    s.contextValid = false;
    gf_clearBufferRequest();
    lf_linkLog(fmt::format("{} Buffer traffic received", gf_nowText()));
}

void lf_noteNoMarkers(TrafficReaderState& s) {
    if (s.noMarkersLogged) return;
    s.noMarkersLogged = true;
    lf_linkLog(fmt::format(
        "The RealTraffic application sends no end markers: traffic is handed over every {} ms",
        lf_handoverWait_ms(s)));
}

// History without separators: the pieces are cut by the reports' own
// times, so that each report is played as far behind its time as the live
// ones are, and the history joins the live traffic without a jump.
void lf_handOverHistory(TrafficReaderState& s) {
    double newest = 0;
    for (const auto& m : s.batch) newest = std::max(newest, m.time);
    std::array<std::vector<TrafficMessage>, HISTORY_PIECES> pieces;
    for (auto& m : s.batch) {
        const double age_s = newest - m.time;
        const int k =
            std::clamp(static_cast<int>(std::floor((LIVE_DELAY_S - age_s) / BUFFER_PIECE_S)), 0,
                       HISTORY_PIECES - 1);
        pieces[static_cast<std::size_t>(k)].push_back(std::move(m));
    }
    s.batch.clear();
    gf_mergeSeen(rtAppSeen, s.batchSeen);
    s.batchKind = BatchKind::none;
    s.batchHexids.clear();
    for (int k = 0; k < HISTORY_PIECES; ++k) {
        auto& piece = pieces[static_cast<std::size_t>(k)];
        if (!piece.empty())
            (s.sink ? s.sink : &gf_handleTrafficBatch)(piece, BUFFER_PIECE_S * k, true);
    }
}

// Hands the batch over as its kind asks when no marker did.
void lf_handOverUnmarked(TrafficReaderState& s) {
    s.contextValid = false;
    if (s.batchKind == BatchKind::history) {
        lf_handOverHistory(s);
        lf_historyOver(s, false);
    } else {
        lf_handOver(s, LIVE_DELAY_S);
    }
}

// A record of the other kind, a full batch, or one that waited a cycle.
void lf_beforeRecord(TrafficReaderState& s, BatchKind kind, std::int64_t now_ms) {
    // Live traffic after history ends the history, marker or not.
    if (s.batchKind != BatchKind::none && s.batchKind != kind) lf_handOverUnmarked(s);
    if (kind == BatchKind::live && !s.bufferDone && !s.bufferMarkersSeen) lf_historyOver(s, false);
    if (s.batch.size() >= MAX_BATCH) lf_handOverUnmarked(s);
    if (s.batchKind == BatchKind::none) {
        s.batchKind = kind;
        s.batchStart_ms = now_ms;
    }
}

// Without markers a live aircraft that reports again closes a cycle; the
// history holds several reports of each aircraft and waits for its end.
void lf_afterMessage(TrafficReaderState& s, TrafficMessage&& m, std::int64_t now_ms) {
    if (s.batchKind == BatchKind::live && !s.liveMarkersSeen) {
        const auto seen = s.batchHexids.find(m.hexid);
        // The same report twice (a repeating network) is one report.
        if (seen != s.batchHexids.end() && seen->second >= m.time) return;
        if (seen != s.batchHexids.end()) {
            const std::int64_t measured = now_ms - s.batchStart_ms;
            if (measured > 0) s.cycle_ms = (s.cycle_ms + measured) / 2;
            lf_noteNoMarkers(s);
            lf_handOverUnmarked(s);
            s.batchKind = BatchKind::live;
            s.batchStart_ms = now_ms;
        }
        s.batchHexids[m.hexid] = m.time;
    }
    s.batch.push_back(std::move(m));
}

std::string lf_shortLine(const std::vector<std::string_view>& fields) {
    std::string line;
    for (std::size_t i = 0; i < fields.size() && line.size() < LOGGED_LINE_CHARS; ++i) {
        if (i) line += ',';
        line += fields[i];
    }
    if (line.size() > LOGGED_LINE_CHARS) {
        line.resize(LOGGED_LINE_CHARS);
        line += " ...";
    }
    return line;
}

void lf_trafficLine(TrafficReaderState& s, BatchKind kind, std::int64_t now_ms) {
    if (s.fields.size() < RTTFC_MIN_FIELDS) {
        ++s.linesDropped;
        gf_complain(s.complaints, "incomplete RT App message",
                    fmt::format("Ignoring incomplete RT App message: {} fields received, {} "
                                "required: {}",
                                s.fields.size(), RTTFC_MIN_FIELDS, lf_shortLine(s.fields)),
                    now_ms / 1000);
        return;
    }
    lf_beforeRecord(s, kind, now_ms);
    if (!s.contextValid) lf_takeContext(s);
    try {
        DecodeResult r = gf_decodeTraffic(gf_readTrafficFields(s.fields), s.context);
        if (r.roundedTimestamp && *r.roundedTimestamp > s.lastHeard.load())
            s.lastHeard = *r.roundedTimestamp;
        if (r.seen) gf_addSeen(s.batchSeen, *r.seen);
        if (r.message) lf_afterMessage(s, std::move(*r.message), now_ms);
    } catch (const ImplausibleValue& e) {
        ++s.implausible;
        gf_complain(s.complaints, "implausible value",
                    fmt::format("exception in processLine: {}", e.what()), now_ms / 1000);
    } catch (const std::exception& e) {
        ++s.linesDropped;
        gf_complain(s.complaints, "exception in processLine",
                    fmt::format("exception in processLine: {}", e.what()), now_ms / 1000);
    }
}

void lf_finishParked(TrafficReaderState& s) {
    {
        std::lock_guard lock(s.parkedLock);
        s.parkedFinished.swap(s.parkedBuilding);
        s.parkedBuilding.clear();
    }
    s.parkedLast_ms = 0;
    s.parkedDone = true;
    lf_linkLog(fmt::format("{} park traffic received", gf_nowText()));
}

// A list begun before the latest request belongs to an older answer.
void lf_parkedRequestCheck(TrafficReaderState& s) {
    const std::uint32_t requests = s.parkedRequests.load();
    if (requests == s.parkedRequestsSeen) return;
    s.parkedRequestsSeen = requests;
    s.parkedBuilding.clear();
    s.parkedLast_ms = 0;
}

void lf_parkedLine(TrafficReaderState& s, std::int64_t now_ms) {
    lf_parkedRequestCheck(s);
    if (s.fields.size() < RTPARK_FIELDS) {
        ++s.linesDropped;
        gf_complain(s.complaints, "incomplete RT App parked message",
                    fmt::format("Ignoring incomplete RT App message: {} fields received, {} "
                                "required: {}",
                                s.fields.size(), RTPARK_FIELDS, lf_shortLine(s.fields)),
                    now_ms / 1000);
        return;
    }
    if (!s.contextValid) lf_takeContext(s);
    s.parkedLast_ms = now_ms;
    if (s.parkedBuilding.size() >= MAX_PARKED) return;
    try {
        if (auto p = gf_decodeParked(gf_readParkedFields(s.fields), s.parkedContext))
            s.parkedBuilding.push_back(std::move(*p));
    } catch (const std::exception& e) {
        ++s.linesDropped;
        gf_complain(s.complaints, "exception in processRTAppLine",
                    fmt::format("exception in processRTAppLine: {}", e.what()), now_ms / 1000);
    }
}

void lf_controlLine(TrafficReaderState& s, std::string_view kind) {
    if (kind == "RTTFC_EOT") {
        s.liveMarkersSeen = true;
        if (s.batchKind == BatchKind::history) lf_handOverUnmarked(s);
        lf_handOver(s, LIVE_DELAY_S);
        s.contextValid = false;
    } else if (kind == "RTBUF_SEP") {
        s.bufferMarkersSeen = true;
        lf_handOver(s, BUFFER_PIECE_S * s.bufferCounter);
        ++s.bufferCounter;
    } else if (kind == "RTBUF_EOT") {
        s.bufferMarkersSeen = true;
        if (s.batchKind == BatchKind::history) lf_handOver(s, BUFFER_PIECE_S * s.bufferCounter);
        lf_historyOver(s, true);
    } else if (kind == "RTPARK_EOT") {
        s.parkedMarkerSeen = true;
        lf_parkedRequestCheck(s);
        lf_finishParked(s);
    }
}

}  // namespace

std::int64_t gf_steadyMillis() {
    return std::chrono::duration_cast<std::chrono::milliseconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

void gf_processRTAppLine(TrafficReaderState& s, std::string_view line, std::int64_t now_ms) {
    try {
        while (!line.empty() && (line.back() == '\n' || line.back() == '\r' || line.back() == '\0'))
            line.remove_suffix(1);
        gf_splitFields(line, s.fields);
        const std::string_view kind = s.fields[0];
        if (kind == "RTTFC")
            lf_trafficLine(s, BatchKind::live, now_ms);
        else if (kind == "RTBUF")
            lf_trafficLine(s, BatchKind::history, now_ms);
        else if (kind == "RTPARK")
            lf_parkedLine(s, now_ms);
        else if (s.fields.size() == 1)
            lf_controlLine(s, kind);
        gf_trafficReaderIdle(s, now_ms);
    } catch (const std::exception& e) {
        // Only allocation can get here; the reader goes on with the next line.
        gf_complain(s.complaints, "exception in processLine",
                    fmt::format("exception in processLine: {}", e.what()), now_ms / 1000);
    }
}

void gf_processRTAppLine(TrafficReaderState& s, std::string_view line) {
    gf_processRTAppLine(s, line, gf_steadyMillis());
}

void gf_trafficReaderIdle(TrafficReaderState& s, std::int64_t now_ms) {
    if (s.batchKind != BatchKind::none && now_ms - s.batchStart_ms >= lf_handoverWait_ms(s)) {
        const bool marked =
            s.batchKind == BatchKind::live ? s.liveMarkersSeen : s.bufferMarkersSeen;
        if (!marked) lf_noteNoMarkers(s);
        lf_handOverUnmarked(s);
    }
    lf_parkedRequestCheck(s);
    if (s.parkedLast_ms != 0 && !s.parkedMarkerSeen &&
        now_ms - s.parkedLast_ms >= lf_handoverWait_ms(s))
        lf_finishParked(s);
    gf_flushComplaints(s.complaints, now_ms / 1000);
}

void gf_trafficReaderIdle(TrafficReaderState& s) {
    gf_trafficReaderIdle(s, gf_steadyMillis());
}

}  // namespace tfx
