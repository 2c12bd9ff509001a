#include "feeds/rtapp/rtapp_lines.h"

#include <charconv>
#include <cmath>
#include <stdexcept>

#include <fmt/format.h>

namespace tfx {

namespace {

constexpr double TWO_POW_63 = 9223372036854775808.0;

double lf_number(std::string_view name, std::string_view text) {
    double value = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || ec != std::errc() || end != text.data() + text.size() ||
        !std::isfinite(value))
        throw std::runtime_error(fmt::format("{}:{}", name, text));
    return value;
}

std::uint32_t lf_unsigned(std::string_view name, std::string_view text, int base) {
    std::uint32_t value = 0;
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value, base);
    if (text.empty() || ec != std::errc() || end != text.data() + text.size())
        throw std::runtime_error(fmt::format("{}:{}", name, text));
    return value;
}

bool lf_absent(std::string_view text) {
    return text.empty() || text == "null";
}

double lf_optional(std::string_view name, std::string_view text, double absent) {
    return lf_absent(text) ? absent : lf_number(name, text);
}

}  // namespace

std::string_view gf_plainSource(std::string_view source) {
    // A tag of one or two capitals and an underscore in front of the plain name.
    const std::size_t underscore = source.find('_');
    if (underscore != 1 && underscore != 2) return source;
    for (std::size_t i = 0; i < underscore; ++i)
        if (source[i] < 'A' || source[i] > 'Z') return source;
    return source.substr(underscore + 1);
}

void gf_splitFields(std::string_view line, std::vector<std::string_view>& fields) {
    fields.clear();
    std::size_t start = 0;
    while (true) {
        const std::size_t comma = line.find(',', start);
        if (comma == std::string_view::npos) {
            fields.push_back(line.substr(start));
            return;
        }
        fields.push_back(line.substr(start, comma - start));
        start = comma + 1;
    }
}

TrafficRecord gf_readTrafficFields(const std::vector<std::string_view>& f) {
    TrafficRecord r;
    r.hexid = lf_unsigned("hexid", f[1], 10);
    r.lat = lf_number("lat", f[2]);
    r.lon = lf_number("lon", f[3]);
    r.altitude = lf_number("altitude", f[4]);
    r.vs = lf_optional("vs", f[5], 0);
    r.track = lf_optional("track", f[7], 0);
    r.gs = lf_optional("gs", f[8], 0);
    r.callsign = f[9];
    r.model = f[10];
    r.regcode = f[11];
    r.from = f[12];
    r.to = f[13];
    r.timestamp = lf_number("timestamp", f[14]);
    r.source = gf_plainSource(f[17]);
    r.TAS = lf_optional("TAS", f[20], -1);
    r.roll = lf_optional("roll", f[23], 0);
    if (r.source == "adsb_icao") r.trueheading = lf_optional("trueheading", f[25], -1);
    r.category = f[28];
    r.airline = f.size() > 43 && f[43] != "null" ? f[43] : std::string_view{};
    return r;
}

ParkedRecord gf_readParkedFields(const std::vector<std::string_view>& f) {
    ParkedRecord r;
    const std::string_view hex = f[1];
    std::uint32_t hexid = 0;
    const auto [end, ec] = std::from_chars(hex.data(), hex.data() + hex.size(), hexid, 16);
    if (hex.empty() || hex.size() > 8 || ec != std::errc() || end != hex.data() + hex.size())
        throw std::runtime_error(fmt::format("hexid incorrect {}", hex));
    r.hexid = hexid;
    r.lat = lf_number("lat", f[2]);
    r.lon = lf_number("lon", f[3]);
    r.callsign = f[4];
    r.model = f[5];
    r.regcode = f[6];
    r.stand = f[7];
    double timestamp = 0;
    const std::string_view ts = f[8];
    const auto [tsEnd, tsEc] = std::from_chars(ts.data(), ts.data() + ts.size(), timestamp);
    if (ts.empty() || tsEc != std::errc() || tsEnd != ts.data() + ts.size() ||
        !std::isfinite(timestamp) || timestamp <= 0 || timestamp >= TWO_POW_63)
        throw std::runtime_error(fmt::format("timestamp outside range:{:.3f}", timestamp));
    r.timestamp = timestamp;
    return r;
}

}  // namespace tfx
