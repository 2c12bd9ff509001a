// Decoding the application's traffic lines on one core: lines per second,
// from the text of a datagram to a message in the batch. Target: 500,000.
#include <benchmark/benchmark.h>

#include <cmath>
#include <numbers>
#include <string>
#include <vector>

#include "../tools/rt_app_standin_lib.h"
#include "app/options.h"
#include "feeds/rtapp/reader_state.h"
#include "feeds/rtapp/rtapp_lines.h"
#include "liveries/reference_db.h"

namespace {

using namespace tfx;

constexpr double CENTRE_LAT = 51.4700, CENTRE_LON = -0.4543;
const char* const MODELS[] = {"A320", "B738", "A21N", "B77W", "E190", "A359", "C172", "B789"};
const char* const AIRLINES[] = {"BAW", "EZY", "RYR", "DLH", "KLM", "VIR", "AFR", "UAL"};

// Lines as the application sends them: a busy sky of 384 aircraft in range.
std::vector<std::string> lf_lines() {
    std::vector<std::string> lines;
    for (std::uint32_t i = 0; i < 384; ++i) {
        scenario::Report r;
        r.hexid = 4000000 + i * 37;
        r.lat = CENTRE_LAT + std::sin(i * 0.7) * 0.5;
        r.lon = CENTRE_LON + std::cos(i * 0.7) * 0.8;
        r.alt_ft = 1000 + (i % 40) * 900.0;
        r.vs_fpm = (i % 3 == 0) ? -800 : 1200;
        r.track_deg = (i * 29) % 360;
        r.gs_kt = 180 + i % 300;
        r.airline = AIRLINES[i % 8];
        r.callsign = fmt::format("{}{}", r.airline, 100 + i);
        r.model = MODELS[i % 8];
        r.regcode = fmt::format("G-{:04}", i);
        r.from = "LHR";
        r.to = "JFK";
        r.category = "A3";
        r.tas_kt = i % 5 == 0 ? -1 : 300;
        lines.push_back(standin::gf_trafficLine("RTTFC", r, 1732320000.5 + i * 0.01));
    }
    return lines;
}

DecodeContext lf_context() {
    gf_publishOptions([](Options& o) {
        o.RANGE = 80;
        o.range_nm = 80;
        o.rangeSquared_nm2 = 6400;
    });
    DecodeContext c;
    c.lat = CENTRE_LAT;
    c.lon = CENTRE_LON;
    c.cosLat = std::cos(CENTRE_LAT * std::numbers::pi / 180);
    c.options = gf_options();
    c.collectEarly = 1;
    return c;
}

void BM_DecodeRttfcLines(benchmark::State& state) {
    const auto lines = lf_lines();
    const DecodeContext context = lf_context();
    std::vector<std::string_view> fields;
    std::vector<TrafficMessage> batch;
    batch.reserve(lines.size());
    std::size_t decoded = 0;
    for (auto _ : state) {
        batch.clear();
        for (const auto& line : lines) {
            gf_splitFields(line, fields);
            DecodeResult r = gf_decodeTraffic(gf_readTrafficFields(fields), context);
            if (r.message) batch.push_back(std::move(*r.message));
        }
        decoded += batch.size();
        benchmark::DoNotOptimize(batch.data());
    }
    if (decoded == 0) state.SkipWithError("nothing decoded");
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * lines.size()));
}
BENCHMARK(BM_DecodeRttfcLines);

void lf_dropBatch(std::vector<TrafficMessage>& batch, int, bool) {
    benchmark::DoNotOptimize(batch.data());
    batch.clear();
}

// The reader's whole path per datagram: kind, fields, context, decode, batch.
void BM_ReaderLines(benchmark::State& state) {
    const auto lines = lf_lines();
    lf_context();
    TrafficReaderState& reader = trafficReaderState;
    gf_resetReaderState(reader);
    reader.sink = &lf_dropBatch;
    reader.position.lat = CENTRE_LAT;
    reader.position.lon = CENTRE_LON;
    reader.position.cosLat = std::cos(CENTRE_LAT * std::numbers::pi / 180);
    for (auto _ : state) {
        for (const auto& line : lines) gf_processRTAppLine(reader, line);
        gf_processRTAppLine(reader, "RTTFC_EOT");
    }
    state.SetItemsProcessed(static_cast<std::int64_t>(state.iterations() * lines.size()));
    reader.sink = nullptr;
}
BENCHMARK(BM_ReaderLines);

}  // namespace
