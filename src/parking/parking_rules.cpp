// The small rules every pass of the planner shares: the target count, the
// half hours back from now, the randomness that can be switched off, and
// whether an aircraft is already there in some form.
#include <algorithm>
#include <cmath>

#include "app/options.h"
#include "feeds/seen_sets.h"
#include "liveries/livery_matching_ladder.h"
#include "parking/parking_plan.h"
#include "parking/parking_state.h"
#include "traffic/clock.h"
#include "traffic/traffic_tables.h"

namespace tfx {

std::int32_t gf_parkedTarget() {
    const OptionsPtr options = gf_options();
    const std::int32_t maxPark = options->MAX_PARK_SEL;
    if (maxPark < 1) return 0;
    const auto n = static_cast<std::int32_t>(gf_parkStands().size());
    if (options->RT_PARKTRAFFIC_ONLY) return std::min(maxPark, n);
    const std::int32_t p = options->parking_percentage;
    std::int32_t target = 0;
    if (n <= 1) {
        target = 1;
    } else if (n <= 3 && p < 50) {
        target = 1;
    } else {
        target = static_cast<std::int32_t>(std::lround(p * n / 100.0));
    }
    return std::min(target, maxPark);
}

std::uint32_t gf_randomBelow(std::uint32_t n) {
    return gf_randomBelow(n, gf_options()->RANDOM);
}

std::uint64_t gf_slotBefore(std::uint64_t slot, int offset) {
    int day = static_cast<int>(gf_slotDay(slot));
    int hh = static_cast<int>(gf_slotHalfHour(slot)) - offset;
    while (hh < 0) {
        hh += HALF_HOURS_PER_DAY;
        day = day <= 1 ? 7 : day - 1;
    }
    return gf_weekSlot(static_cast<std::uint32_t>(day), static_cast<std::uint32_t>(hh));
}

bool lf_standsInNextHalfHour(const Stand& stand, const StandOption& option, std::uint64_t slot) {
    std::uint32_t day = gf_slotDay(slot);
    std::uint32_t hh = gf_slotHalfHour(slot) + 1;
    if (hh >= HALF_HOURS_PER_DAY) {
        hh = 0;
        day = day >= 7 ? 1 : day + 1;
    }
    const std::uint64_t bit = std::uint64_t{1} << hh;
    if (option.day == day) return (option.hours & bit) != 0;
    return std::any_of(stand.options.begin(), stand.options.end(), [&](const StandOption& o) {
        return o.day == day && o.key == option.key && o.reg == option.reg && (o.hours & bit) != 0;
    });
}

std::string gf_plainCallsign(std::string_view callsign) {
    while (!callsign.empty() && (callsign.back() == '*' || callsign.back() == '_'))
        callsign.remove_suffix(1);
    return std::string(callsign);
}

namespace {

bool lf_seen(const std::string& callsign) {
    if (callsign.empty()) return false;
    return parking.seenCallsigns.contains(callsign) ||
           parking.seenCallsigns.contains(callsign + "_");
}

}  // namespace

bool lf_aircraftPresent(const std::string& reg, const std::string& cs1, const std::string& cs2) {
    // A flight number may be one aircraft's arrival and another's departure:
    // both callsigns are compared with both, so that no two aircraft show one.
    const auto named = [](const std::string& cs, const StaticPlan& p) {
        return !cs.empty() && (p.cs1 == cs || p.cs2 == cs);
    };
    for (const StaticPlan& p : parking.plan) {
        if (!reg.empty() && p.reg == reg) return true;
        if (named(cs1, p) || named(cs2, p)) return true;
    }
    if (lf_seen(cs1) || lf_seen(cs2)) return true;
    if (!reg.empty())
        for (const LiveAircraft& ac : liveAircraft)
            if (ac.regcode == reg) return true;
    for (const Stayer& s : parking.stayers) {
        if (!reg.empty() && s.regcode == reg) return true;
        if (!s.callsign.empty() && (s.callsign == cs1 || s.callsign == cs2)) return true;
    }
    const std::string plain1 = gf_plainCallsign(cs1), plain2 = gf_plainCallsign(cs2);
    for (const StaticAircraft& ac : staticAircraft) {
        if (ac.stays == 0) continue;
        const std::string name = gf_plainCallsign(ac.callsign);
        if (!name.empty() && (name == plain1 || name == plain2)) return true;
        if (!reg.empty() && ac.regcode == reg) return true;
    }
    return false;
}

void lf_takeSeenSets() {
    parking.seenCallsigns.clear();
    parking.seenHexids.clear();
    SeenSets& road = gf_roadSeen();
    {
        std::lock_guard lock(road.callsignLock);
        parking.seenCallsigns.swap(road.callsigns);
    }
    {
        std::lock_guard lock(road.hexidLock);
        parking.seenHexids.swap(road.hexids);
    }
    road.collecting = false;
}

void lf_lookupAlternativeNames(LiveAircraft& ac) {
    if (ac.callsign.empty()) return;
    const std::string plain = gf_plainCallsign(ac.callsign);
    const int day = static_cast<int>(gf_slotDay(weekNow));
    const int hh = static_cast<int>(gf_slotHalfHour(weekNow));
    const int reach = ac.category == AircraftCategory::Heavy ? 14 : 10;
    const int from = std::max(0, hh - reach), to = std::min(HALF_HOURS_PER_DAY - 1, hh + reach);
    std::uint64_t window = 0;
    for (int h = from; h <= to; ++h) window |= std::uint64_t{1} << h;
    for (const Stand& stand : gf_parkStands()) {
        for (const StandOption& o : stand.options) {
            if (o.number == 0 || static_cast<int>(o.day) != day || o.cs2.empty()) continue;
            if (o.key.airline != ac.aimo.airline || (o.hours & window) == 0) continue;
            if (o.cs1 != plain && o.cs2 != plain) continue;
            ac.flightA = o.cs1;
            ac.flightB = o.cs2;
            return;
        }
    }
}

}  // namespace tfx
