// The parked lists of the stand-in RealTraffic application: a week of stays
// on the stands of one airport (scripts/make_parked_lists.py writes them from
// the real timetable), of which a parked request gets the aircraft standing
// at that moment. Lines of the file:
//
//   # comment
//   airport,<ICAO>
//   S,<on min>,<off min>,<hexid hex>,<lat>,<lon>,<callsign>,<model>,<regcode>,<stand>,<agreement>
//
// Minutes of the week count from Monday 00:00 UTC; off may pass the week's
// end. The agreement says how the record stands to the airport file ("file",
// "moved", "airframe", "noreg"); the stand-in doesn't use it.
#pragma once

#include <charconv>
#include <cmath>
#include <fstream>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "rt_scenario.h"

namespace tfx::parked {

inline constexpr int WEEK_MIN = 7 * 1440;
// The service's list lags behind the aircraft: it still holds one that left
// its stand this many minutes ago.
inline constexpr int LEFT_LAG_MIN = 10;
// Monday 1970-01-05 00:00 UTC.
inline constexpr double FIRST_MONDAY_EPOCH_S = 4 * 86400.0;

struct Stay {
    int on_min = 0, off_min = 0;
    scenario::Parked record;
    std::string agreement;
};

struct Week {
    std::string airport;
    std::vector<Stay> stays;
};

// Minute of the week of a moment, 0 at Monday 00:00 UTC.
inline int gf_weekMinute(double epoch_s) {
    const double minutes = std::floor((epoch_s - FIRST_MONDAY_EPOCH_S) / 60.0);
    return static_cast<int>(minutes - std::floor(minutes / WEEK_MIN) * WEEK_MIN);
}

// Reads the text; lines that do not parse are counted in bad and skipped.
inline Week gf_parseParkedWeek(std::string_view text, int* bad = nullptr) {
    Week w;
    int skipped = 0;
    std::istringstream in{std::string(text)};
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.empty() || line.front() == '#') continue;
        const auto f = scenario::lf_split(line);
        if (f[0] == "airport" && f.size() == 2) {
            w.airport = std::string(f[1]);
            continue;
        }
        Stay s;
        std::uint32_t hexid = 0;
        const bool ok =
            f[0] == "S" && f.size() == 11 && scenario::lf_num(f[1], s.on_min) &&
            scenario::lf_num(f[2], s.off_min) && s.on_min >= 0 && s.on_min < WEEK_MIN &&
            s.off_min >= s.on_min &&
            std::from_chars(f[3].data(), f[3].data() + f[3].size(), hexid, 16).ec == std::errc() &&
            scenario::lf_num(f[4], s.record.lat) && scenario::lf_num(f[5], s.record.lon);
        if (!ok) {
            ++skipped;
            continue;
        }
        s.record.hexid = hexid;
        s.record.callsign = f[6], s.record.model = f[7], s.record.regcode = f[8];
        s.record.stand = f[9], s.agreement = f[10];
        w.stays.push_back(std::move(s));
    }
    if (bad) *bad = skipped;
    return w;
}

inline std::optional<Week> gf_readParkedWeek(const std::string& path, int* bad = nullptr) {
    std::ifstream in(path, std::ios::binary);
    if (!in) return std::nullopt;
    std::ostringstream text;
    text << in.rdbuf();
    return gf_parseParkedWeek(text.str(), bad);
}

// The stays on their stand at the moment (and those that left it less than
// LEFT_LAG_MIN ago), each stamped with its on-block time.
inline std::vector<scenario::Parked> gf_parkedAt(const Week& week, double epoch_s) {
    std::vector<scenario::Parked> out;
    const int now = gf_weekMinute(epoch_s);
    const double minuteStart_s = std::floor(epoch_s / 60.0) * 60.0;
    for (const Stay& s : week.stays) {
        const int since = ((now - s.on_min) % WEEK_MIN + WEEK_MIN) % WEEK_MIN;
        if (since > s.off_min - s.on_min + LEFT_LAG_MIN) continue;
        scenario::Parked p = s.record;
        p.seen_epoch_s = minuteStart_s - since * 60.0;
        out.push_back(std::move(p));
    }
    return out;
}

}  // namespace tfx::parked
