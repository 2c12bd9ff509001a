// The two forms the stand-in application speaks. "today": what ZEPT was
// first written against (44 fields, plain source, end markers, unicast).
// "public": what the real application's public format allows: lines of 43
// or 44 fields, the source with its tag ("F_adsb_icao"), "-1" and "null" in
// columns it has no value for, stands named with their airport in front, no
// end markers, broadcast on the LAN; and a channel that loses, repeats and
// reorders datagrams as a real network and application may.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "rt_scenario.h"

namespace tfx::standin {

enum class Form : std::uint8_t { today, public_ };

inline std::optional<Form> gf_formOf(std::string_view word) {
    if (word == "today") return Form::today;
    if (word == "public") return Form::public_;
    return std::nullopt;
}

// Each round of a looped scenario flies under other transponder codes, so
// that the program sees new aircraft and the last round's ones fall silent.
inline constexpr std::uint32_t ROUND_HEXID_BITS = 0xF00000;
inline std::uint32_t gf_roundHexid(std::uint32_t hexid, long round) {
    return hexid ^ ((static_cast<std::uint32_t>(round) << 20) & ROUND_HEXID_BITS);
}

inline std::string gf_trafficLine(std::string_view kind, const scenario::Report& r, double epoch_s,
                                  long round = 0, Form form = Form::today) {
    const bool pub = form == Form::public_;
    const std::uint32_t hexid = gf_roundHexid(r.hexid, round);
    std::array<std::string, 44> f;
    f[0] = kind;
    f[1] = fmt::format("{}", hexid);
    f[2] = fmt::format("{:.6f}", r.lat);
    f[3] = fmt::format("{:.6f}", r.lon);
    f[4] = fmt::format("{:.0f}", r.alt_ft);
    // The public feed has no vertical speed for ground traffic.
    f[5] = pub && r.alt_ft <= 0 ? "null" : fmt::format("{:.0f}", r.vs_fpm);
    f[6] = r.alt_ft > 0 ? "1" : "0";
    f[7] = fmt::format("{:.1f}", r.track_deg);
    f[8] = fmt::format("{:.0f}", r.gs_kt);
    f[9] = r.callsign;
    f[10] = r.model;
    f[11] = pub && r.regcode.empty() ? "null" : r.regcode;
    f[12] = r.from;
    f[13] = r.to;
    f[14] = fmt::format("{:.2f}", epoch_s);
    f[17] = pub ? "F_adsb_icao" : "adsb_icao";
    f[20] = r.tas_kt < 0 ? "-1" : fmt::format("{:.0f}", r.tas_kt);
    f[23] = pub ? "null" : "0";
    f[25] = fmt::format("{:.1f}", r.track_deg);
    f[28] = r.category;
    f[43] = r.airline;
    // Older builds of the application end before the airline: every other
    // aircraft comes that way.
    const std::size_t count = pub && (hexid & 1) ? 43 : 44;
    std::string line = f[0];
    for (std::size_t i = 1; i < count; ++i) line += ',' + f[i];
    return line;
}

// A parked record, stamped when the aircraft was last seen (the moment of
// the list when the record doesn't say). The public form names the stand
// with its airport in front and writes "null" for an unknown callsign or
// registration.
inline std::string gf_parkedLine(const scenario::Parked& p, double epoch_s, Form form = Form::today,
                                 std::string_view airport = "EGTK") {
    const bool pub = form == Form::public_;
    const std::string stand = pub ? fmt::format("{}_{}", airport, p.stand) : p.stand;
    const auto text = [pub](const std::string& t) -> std::string_view {
        return pub && t.empty() ? "null" : std::string_view(t);
    };
    return fmt::format("RTPARK,{:x},{:.6f},{:.6f},{},{},{},{},{:.0f}", p.hexid, p.lat, p.lon,
                       text(p.callsign), p.model, text(p.regcode), stand,
                       p.seen_epoch_s > 0 ? p.seen_epoch_s : epoch_s);
}

// A datagram channel as rough as a network: each datagram may be lost,
// sent twice, or held back and sent after the next one.
struct RoughChannel {
    double loss = 0, duplicate = 0, reorder = 0;  // probabilities, 0 to 1
    std::mt19937 random{20261125};
    std::optional<std::string> held;

    // Calls send for what goes out now, in order.
    template <typename Send>
    void pass(const std::string& datagram, Send send) {
        std::uniform_real_distribution<double> u(0, 1);
        if (u(random) < loss) return;
        if (!held && u(random) < reorder) {
            held = datagram;
            return;
        }
        send(datagram);
        if (u(random) < duplicate) send(datagram);
        if (held) {
            send(*held);
            held.reset();
        }
    }
};

}  // namespace tfx::standin
