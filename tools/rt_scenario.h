// Scenario files for the stand-in RealTraffic application: a timed list of
// aircraft reports and a list of parked aircraft, as plain text.
//
//   # comment
//   start,<epoch seconds of offset 0>
//   airport,<ICAO>,<lat>,<lon>,<elevation ft>   (optional: the airport it is played at)
//   T,<offset s>,<hexid>,<lat>,<lon>,<alt ft>,<vs fpm>,<track deg>,<gs kt>,
//     <callsign>,<model>,<regcode>,<from>,<to>,<airline>,<category>,<tas kt>
//   P,<hexid>,<lat>,<lon>,<callsign>,<model>,<regcode>,<stand>
//
// The T lines are sorted by offset. Texts carry no commas.
#pragma once

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

namespace tfx::scenario {

struct Report {
    double offset_s = 0;
    std::uint32_t hexid = 0;
    double lat = 0, lon = 0, alt_ft = 0, vs_fpm = 0, track_deg = 0, gs_kt = 0;
    std::string callsign, model, regcode, from, to, airline, category;
    double tas_kt = -1;
};

struct Parked {
    std::uint32_t hexid = 0;
    double lat = 0, lon = 0;
    std::string callsign, model, regcode, stand;
    double seen_epoch_s = 0;  // when the service last saw it; 0: the moment of the list
};

// The airport a scenario is played at; icao empty when the file names none.
struct ScenarioAirport {
    std::string icao;
    double lat = 0, lon = 0, elevation_ft = 0;
};

struct Scenario {
    double start_epoch_s = 0;
    ScenarioAirport airport;
    std::vector<Report> reports;  // by offset
    std::vector<Parked> parked;
    double length_s() const { return reports.empty() ? 0 : reports.back().offset_s; }
};

inline std::vector<std::string_view> lf_split(std::string_view line) {
    std::vector<std::string_view> out;
    std::size_t start = 0;
    while (true) {
        const auto comma = line.find(',', start);
        out.push_back(line.substr(
            start, comma == std::string_view::npos ? std::string_view::npos : comma - start));
        if (comma == std::string_view::npos) return out;
        start = comma + 1;
    }
}

template <typename T>
inline bool lf_num(std::string_view text, T& value) {
    const auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), value);
    return ec == std::errc() && end == text.data() + text.size();
}

// Reads the text; lines that do not parse are counted in bad and skipped.
inline Scenario gf_parseScenario(std::string_view text, int* bad = nullptr) {
    Scenario s;
    int skipped = 0;
    std::size_t pos = 0;
    while (pos < text.size()) {
        auto end = text.find('\n', pos);
        if (end == std::string_view::npos) end = text.size();
        std::string_view line = text.substr(pos, end - pos);
        pos = end + 1;
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        if (line.empty() || line.front() == '#') continue;
        const auto f = lf_split(line);
        bool ok = false;
        if (f[0] == "start" && f.size() == 2) {
            ok = lf_num(f[1], s.start_epoch_s);
        } else if (f[0] == "airport" && f.size() == 5) {
            ScenarioAirport a;
            a.icao = f[1];
            ok = lf_num(f[2], a.lat) && lf_num(f[3], a.lon) && lf_num(f[4], a.elevation_ft) &&
                 a.icao.size() == 4;
            if (ok) s.airport = a;
        } else if (f[0] == "T" && f.size() == 17) {
            Report r;
            ok = lf_num(f[1], r.offset_s) && lf_num(f[2], r.hexid) && lf_num(f[3], r.lat) &&
                 lf_num(f[4], r.lon) && lf_num(f[5], r.alt_ft) && lf_num(f[6], r.vs_fpm) &&
                 lf_num(f[7], r.track_deg) && lf_num(f[8], r.gs_kt) && lf_num(f[16], r.tas_kt);
            r.callsign = f[9], r.model = f[10], r.regcode = f[11], r.from = f[12], r.to = f[13];
            r.airline = f[14], r.category = f[15];
            if (ok) s.reports.push_back(std::move(r));
        } else if (f[0] == "P" && f.size() == 8) {
            Parked p;
            ok = lf_num(f[1], p.hexid) && lf_num(f[2], p.lat) && lf_num(f[3], p.lon);
            p.callsign = f[4], p.model = f[5], p.regcode = f[6], p.stand = f[7];
            if (ok) s.parked.push_back(std::move(p));
        }
        if (!ok) ++skipped;
    }
    std::stable_sort(s.reports.begin(), s.reports.end(),
                     [](const Report& a, const Report& b) { return a.offset_s < b.offset_s; });
    if (bad) *bad = skipped;
    return s;
}

inline std::optional<Scenario> gf_readScenario(const std::string& path, int* bad = nullptr) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return std::nullopt;
    std::ostringstream text;
    text << in.rdbuf();
    return gf_parseScenario(text.str(), bad);
}

inline std::string gf_scenarioText(const Scenario& s) {
    std::string out =
        "# T,offset_s,hexid,lat,lon,alt_ft,vs_fpm,track_deg,gs_kt,callsign,model,regcode,from,to,"
        "airline,category,tas_kt\n# P,hexid,lat,lon,callsign,model,regcode,stand\n";
    out += fmt::format("start,{:.0f}\n", s.start_epoch_s);
    if (!s.airport.icao.empty())
        out += fmt::format("airport,{},{:.6f},{:.6f},{:.0f}\n", s.airport.icao, s.airport.lat,
                           s.airport.lon, s.airport.elevation_ft);
    for (const auto& p : s.parked)
        out += fmt::format("P,{},{:.6f},{:.6f},{},{},{},{}\n", p.hexid, p.lat, p.lon, p.callsign,
                           p.model, p.regcode, p.stand);
    for (const auto& r : s.reports)
        out += fmt::format(
            "T,{:.1f},{},{:.6f},{:.6f},{:.0f},{:.0f},{:.1f},{:.0f},{},{},{},{},{},{},{},{:.0f}\n",
            r.offset_s, r.hexid, r.lat, r.lon, r.alt_ft, r.vs_fpm, r.track_deg, r.gs_kt, r.callsign,
            r.model, r.regcode, r.from, r.to, r.airline, r.category, r.tas_kt);
    return out;
}

}  // namespace tfx::scenario
