// Arbitrary datagrams on the traffic port: no crash, and every message that
// reaches a batch has a usable hexid, position, altitude and callsign.
#include <cmath>
#include <cstdint>
#include <string_view>

#include "app/options.h"
#include "feeds/rtapp/reader_state.h"

namespace {

void lf_check(std::vector<tfx::TrafficMessage>& batch, int delay_s, bool) {
    if (delay_s < 0 || delay_s % 6 != 0) __builtin_trap();
    for (const auto& m : batch) {
        const auto& p = m.point;
        if (m.hexid <= 10000) __builtin_trap();
        if (!(std::fabs(p.lat) <= 90 && std::fabs(p.lon) <= 180)) __builtin_trap();
        if (!(p.alt >= 0) || !std::isfinite(p.alt) || !std::isfinite(p.tas)) __builtin_trap();
        if (!m.callsign.empty() && (m.callsign.size() < 4 || m.callsign.size() > 8))
            __builtin_trap();
        if (m.regcode.size() > 12 || (m.callsign.empty() && m.regcode.empty())) __builtin_trap();
    }
    batch.clear();
}

bool lf_setUp() {
    tfx::gf_publishOptions([](tfx::Options& o) {
        o.RANGE = 10000;
        o.range_nm = 10000;
        o.rangeSquared_nm2 = 1e8;
    });
    auto& s = tfx::trafficReaderState;
    s.sink = &lf_check;
    s.position.lat = 51.5;
    s.position.lon = -0.45;
    s.position.cosLat = 0.62;
    s.position.fieldAltitude_ft = 83;
    s.position.parkAirport = tfx::LatLon{51.47, -0.4543};
    return true;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const bool ready = lf_setUp();
    (void)ready;
    // One datagram per input line, the way several would arrive in a row; the
    // end of the input closes the cycle.
    std::string_view text(reinterpret_cast<const char*>(data), size);
    auto& s = tfx::trafficReaderState;
    s.bufferCounter = 0;  // each input is a reader's start
    while (!text.empty()) {
        const auto end = text.find('\n');
        tfx::gf_processRTAppLine(s, text.substr(0, end));
        if (end == std::string_view::npos) break;
        text.remove_prefix(end + 1);
    }
    // Whatever waits without a marker goes out after a cycle's wait.
    tfx::gf_trafficReaderIdle(s, tfx::gf_steadyMillis() + 60000);
    tfx::gf_processRTAppLine(s, "RTTFC_EOT");
    tfx::gf_takeParkedList(s);
    return 0;
}
