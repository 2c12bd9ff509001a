// The passes of a plan over the half hours: for each half hour back from now,
// the parked records of that age, the static aircraft that may stay, and the
// airport file's options of that half hour, until the target is reached.
#include <fmt/format.h>

#include "airports/loaded_airport.h"
#include "app/log.h"
#include "app/options.h"
#include "gui/gui.h"
#include "parking/parking_state.h"
#include "traffic/clock.h"
#include "traffic/traffic_tables.h"

namespace tfx {

namespace {

// Flips at every walk over the stands, so that no end of the airport is
// favoured; the first walk of the process goes from the last stand.
bool walkForward = true;

struct Pass {
    std::uint64_t slot;  // now
    int offset;
    bool today, real;
    std::int32_t needed;
};

bool lf_reached(std::int32_t needed) {
    return parking.takenCount >= needed;
}

// One stand for the pass's half hour: an option whose aircraft isn't there
// yet goes into the plan. True when the target is reached.
bool lf_tryStand(Stand& stand, const Pass& pass, std::uint64_t checkSlot, SearchCounts& counts) {
    if (stand.taken || stand.blockedByOverlap) return false;
    const OptionsPtr options = gf_options();
    if (stand.heli && !options->HELICOPTERS) return false;
    const auto number = static_cast<std::int32_t>(stand.number);
    if (lf_overlapTaken(number)) return false;

    const std::uint32_t checkDay = gf_slotDay(checkSlot);
    const std::uint64_t bit = std::uint64_t{1} << gf_slotHalfHour(checkSlot);
    const int wantReal = pass.real ? 1 : 0;
    std::size_t candidates[MAX_CANDIDATES];
    std::uint32_t n = 0;
    for (std::size_t i = 0; i < stand.options.size() && n < MAX_CANDIDATES; ++i) {
        const StandOption& o = stand.options[i];
        if (o.number == 0 || (pass.today && o.day != checkDay)) continue;
        if ((o.real != 0 ? 1 : 0) != wantReal || (o.hours & bit) == 0) continue;
        candidates[n++] = i;
    }
    if (n == 0) return false;
    if (options->RANDOM)
        for (std::uint32_t i = 1; i < n; ++i)
            std::swap(candidates[i], candidates[gf_randomBelow(i + 1)]);

    StandOption* pick = nullptr;
    for (std::uint32_t i = 0; i < n && pick == nullptr; ++i) {
        StandOption& o = stand.options[candidates[i]];
        if (lf_aircraftPresent(o.reg, o.cs1, o.cs2)) {
            o.number = 0;  // not looked at again in this plan
        } else {
            pick = &o;
        }
    }
    if (pick == nullptr) return false;

    StaticPlan entry;
    entry.fromAirportFile = 1;
    entry.sid = number;
    entry.offset = pass.offset;
    entry.aimo = pick->key;
    entry.cs1 = pick->cs1;
    entry.cs2 = pick->cs2;
    entry.reg = pick->reg;
    entry.useFirst = pick->cs2.empty() || lf_standsInNextHalfHour(stand, *pick, pass.slot) ? 1 : 0;
    parking.plan.push_back(std::move(entry));
    ++counts.airportFile;
    return gf_takeStand(number, pass.needed);
}

bool lf_searchOffset(const Pass& pass, SearchCounts& counts) {
    const std::uint64_t checkSlot = gf_slotBefore(pass.slot, pass.offset);
    auto& stands = gf_parkStands();
    walkForward = !walkForward;
    if (walkForward) {
        for (Stand& stand : stands)
            if (lf_tryStand(stand, pass, checkSlot, counts)) return true;
    } else {
        for (auto it = stands.rbegin(); it != stands.rend(); ++it)
            if (lf_tryStand(*it, pass, checkSlot, counts)) return true;
    }
    return false;
}

std::string lf_passName(bool today, bool real) {
    if (today) return real ? "real" : "soft";
    return real ? "real/week" : "soft/week";
}

void lf_logResults(const Pass& pass, const SearchCounts& counts) {
    const OptionsPtr options = gf_options();
    std::string text = fmt::format("\nResults for {} search (total needed: {}):",
                                   lf_passName(pass.today, pass.real), pass.needed);
    if (counts.rt > 0)
        text += fmt::format("\n{} RT park position{}", counts.rt, counts.rt == 1 ? "" : "s");
    if (counts.stayers > 0)
        text += fmt::format(
            "\n{} live and/or static aircraft may stay (compliant with airport file info)",
            counts.stayers);
    if (counts.airportFile > 0) {
        const std::string fit =
            options->AUTO_PARK ? std::string(" auto park")
                               : fmt::format(", with Max fit={:.1F} hours",
                                             (std::min(options->MAX_FIT, LAST_OFFSET) + 1) * 0.5);
        text +=
            fmt::format("\n{} airport file position{} {}{}", counts.airportFile,
                        counts.airportFile == 1 ? "" : "s", fit,
                        fmt::format(", day {}, offset:{} or {:.1F} hrs, fit: {:.1F} hour",
                                    gf_slotDay(pass.slot), counts.lastOffset,
                                    (counts.lastOffset + 1) * 0.5, (options->MAX_FIT + 1) * 0.5));
    }
    gf_logLine(text);
}

}  // namespace

void lf_searchStands(std::uint64_t slot, bool today, bool real, std::int32_t needed) {
    if (needed == 0) return;
    const OptionsPtr options = gf_options();
    const int maxOffset =
        options->AUTO_PARK ? LAST_OFFSET : std::min(options->MAX_FIT, LAST_OFFSET);
    SearchCounts counts;
    Pass pass{slot, 0, today, real, needed};
    for (int offset = 0; offset <= maxOffset && !lf_reached(needed); ++offset) {
        pass.offset = offset;
        counts.lastOffset = offset;
        // A parked record says the aircraft stands there now, however long
        // ago it came: the whole list goes ahead of the file's half hours,
        // youngest first.
        if (today && real && offset == 0) lf_searchRealParked(counts, needed);
        if (lf_reached(needed)) break;
        if (!staticAircraft.empty()) lf_searchStayers(slot, offset, !today, counts, needed);
        if (lf_reached(needed)) break;
        lf_searchOffset(pass, counts);
    }
    lf_logResults(pass, counts);
}

void lf_searchAll(std::uint64_t slot, std::int32_t needed) {
    const OptionsPtr options = gf_options();
    lf_searchStands(slot, true, true, needed);
    if (!lf_reached(needed) && (options->AUTO_PARK || options->WEEK)) {
        gf_showStatus("parking: the present day was not enough, the whole week is searched");
        lf_searchStands(slot, false, true, needed);
    }
    if (loadedAirport.file.Qf_soft > 0) {
        if (!lf_reached(needed) && (options->AUTO_PARK || options->PARK_SOFT))
            lf_searchStands(slot, true, false, needed);
        if (!lf_reached(needed) && (options->AUTO_PARK || (options->WEEK && options->PARK_SOFT)))
            lf_searchStands(slot, false, false, needed);
    }
}

}  // namespace tfx
