// Learning from live traffic: which aircraft stood at which stand of the
// loaded airport in which half hours, kept as learned options for the next
// visit. A stay is one option per day, extended while the aircraft is seen.
#include <bit>

#include <fmt/format.h>

#include "airports/loaded_airport.h"
#include "gui/gui.h"
#include "liveries/reference_db.h"
#include "traffic/clock.h"
#include "traffic/stand_claims.h"

namespace tfx {
namespace {

constexpr std::uint32_t HALF_HOURS_PER_DAY = 48;
constexpr int HALF_HOURS_PER_WEEK = 336;

std::string lf_withoutGhostMark(std::string text) {
    if (!text.empty() && text.back() == '_') text.pop_back();
    return text;
}

std::uint64_t lf_bit(std::uint32_t hh) {
    return std::uint64_t{1} << hh;
}

std::uint64_t lf_run(std::uint32_t from, std::uint32_t to) {
    std::uint64_t bits = 0;
    for (std::uint32_t h = from; h <= to; ++h) bits |= lf_bit(h);
    return bits;
}

std::uint32_t lf_yesterday(std::uint32_t day) {
    return day == 1 ? 7 : day - 1;
}

void lf_noteCallsign(StandOption& option, const std::string& callsign) {
    if (callsign.empty()) return;
    if (option.cs1.empty()) {
        option.cs1 = callsign;
    } else if (callsign != option.cs1 && callsign != option.cs2) {
        option.cs2 = callsign;
    }
}

struct Sighting {
    Stand& stand;
    Aimo key;
    std::string reg, callsign;
    WeekHalfHour now;
    bool leaving;
    AircraftCategory category;
};

void lf_counted() {
    ++loadedAirport.updates;
    Gui::enqueueUpdate({GuiKind::UpdateCount, static_cast<std::int64_t>(loadedAirport.updates)});
}

// Index of the new option, or -1 when nothing was added.
int lf_addOption(Sighting& s) {
    if (s.reg.empty()) return -1;
    for (const StandOption& o : s.stand.options)
        if (o.reg == s.reg && o.day == s.now.day && o.hours == lf_bit(s.now.hh)) return -1;
    StandOption option;
    option.key = s.key;
    option.reg = s.reg;
    option.cs1 = s.callsign;
    option.hours = lf_bit(s.now.hh);
    option.number = static_cast<std::uint32_t>(s.stand.options.size() + 1);
    option.day = s.now.day;
    option.source = 0;
    option.real = 1;
    option.cpl = s.leaving;
    s.stand.options.push_back(std::move(option));
    lf_counted();
    return static_cast<int>(s.stand.options.size() - 1);
}

// Extends the stay from the option's last sighting to now; the index of the
// option that holds now, or -1 when the gap is too long (or none).
int lf_extend(Sighting& s, std::size_t index) {
    const int limit = s.key.cargo ? 12 : s.category == AircraftCategory::Heavy ? 8 : 6;
    const StandOption& found = s.stand.options[index];
    if (found.hours == 0) return -1;  // a hand-written entry without half hours
    const auto lastHH = static_cast<std::uint32_t>(63 - std::countl_zero(found.hours));
    int gap = (static_cast<int>(s.now.day) - static_cast<int>(found.day)) * 48 +
              static_cast<int>(s.now.hh) - static_cast<int>(lastHH);
    if (gap < 0) gap += HALF_HOURS_PER_WEEK;
    if (gap < 1 || gap >= limit) return -1;
    if (found.day == s.now.day) {
        StandOption& o = s.stand.options[index];
        o.hours |= lf_run(lastHH, s.now.hh);
        lf_noteCallsign(o, s.callsign);
        return static_cast<int>(index);
    }
    // Across midnight: the old day runs to its end, today's option from 00:00.
    const int added = lf_addOption(s);
    if (added < 0) return -1;
    StandOption& old = s.stand.options[index];
    old.hours |= lf_run(lastHH, HALF_HOURS_PER_DAY - 1);
    lf_noteCallsign(old, s.callsign);
    StandOption& today = s.stand.options[static_cast<std::size_t>(added)];
    today.hours |= lf_run(0, s.now.hh);
    today.cpl = false;
    lf_noteCallsign(today, s.callsign);
    --loadedAirport.updates;  // the extension counts once, below
    return added;
}

// The latest learned option of this aircraft on that day: a stay that went on
// after a gap too long to bridge continues in the option begun after the gap.
int lf_findLearned(const Sighting& s, std::uint32_t day) {
    for (std::size_t i = s.stand.options.size(); i-- > 0;) {
        const StandOption& o = s.stand.options[i];
        if (o.source == 0 && o.real != 0 && o.day == day && o.reg == s.reg)
            return static_cast<int>(i);
    }
    return -1;
}

}  // namespace

WeekHalfHour gf_halfHourOf(std::int64_t epochSeconds) {
    const std::int64_t days =
        epochSeconds >= 0 ? epochSeconds / 86400 : (epochSeconds - 86399) / 86400;
    const std::int64_t second = epochSeconds - days * 86400;
    const std::int64_t hour = second / 3600, inHour = second % 3600;
    const std::int64_t hh = (2 * hour + (inHour >= 29 * 60 + 30 ? 1 : 0)) % 48;
    // 1 January 1970 was a Thursday, day 4.
    const std::int64_t day = ((days + 3) % 7 + 7) % 7 + 1;
    return {static_cast<std::uint32_t>(day), static_cast<std::uint32_t>(hh)};
}

WeekHalfHour hh_now() {
    return gf_halfHourOf(gf_weekClockSeconds(gf_wallClockSeconds()));
}

void gf_recordStandOccupation(std::int32_t standNumber, const AircraftBase& aircraft, int mode,
                              WeekHalfHour now) {
    if (now.day < 1 || now.day > 7 || now.hh >= HALF_HOURS_PER_DAY) return;
    const std::string reg = lf_withoutGhostMark(aircraft.regcode);
    if (reg.empty()) return;
    const RegcodeRecord& record = gf_lookupRegcode(reg);
    if (!record.valid) return;
    auto& stands = loadedAirport.file.stands;
    if (standNumber < 1 || static_cast<std::size_t>(standNumber) > stands.size()) return;
    Sighting s{stands[static_cast<std::size_t>(standNumber - 1)],
               Aimo{record.airline, record.opr, record.model,
                    static_cast<std::uint8_t>(record.cargo ? 1 : 0), 1},
               reg,
               lf_withoutGhostMark(aircraft.callsign),
               now,
               mode == 2 || mode == 3,
               aircraft.category};

    // The airport file says this aircraft stands here today, but not now.
    for (const StandOption& o : s.stand.options)
        if (o.source == 1 && o.real != 0 && o.day == now.day && o.reg == reg &&
            (o.hours & lf_bit(now.hh)) == 0)
            return;

    int found = lf_findLearned(s, now.day);
    if (found < 0) {
        // A stay that began yesterday goes on in yesterday's option.
        const int before = lf_findLearned(s, lf_yesterday(now.day));
        if (before >= 0 && !s.stand.options[static_cast<std::size_t>(before)].cpl) found = before;
    }
    if (found < 0) {
        lf_addOption(s);
        return;
    }
    const auto index = static_cast<std::size_t>(found);
    const bool today = s.stand.options[index].day == now.day;
    const bool bitSet = today && (s.stand.options[index].hours & lf_bit(now.hh)) != 0;
    if (s.stand.options[index].cpl && !bitSet) {
        lf_addOption(s);
        return;
    }
    if (bitSet) {
        if (s.leaving) s.stand.options[index].cpl = true;
        return;
    }
    const int holder = lf_extend(s, index);
    if (holder >= 0) {
        lf_counted();
        if (s.leaving) s.stand.options[static_cast<std::size_t>(holder)].cpl = true;
        return;
    }
    lf_addOption(s);
    if (s.leaving) s.stand.options[index].cpl = true;
}

void gf_addRealStandOption(std::int32_t sid, const LiveAircraft& ac, int real) {
    gf_recordStandOccupation(sid, ac, real, hh_now());
}

}  // namespace tfx
