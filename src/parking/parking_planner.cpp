// The plan of static aircraft at the park airport: the first one after the
// airport file is read, and the adjustments as the half hours pass.
#include "parking/parking_planner.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <ctime>
#include <unordered_set>

#include <fmt/format.h>

#include "airports/airport_file_io.h"
#include "airports/airport_paths.h"
#include "airports/loaded_airport.h"
#include "app/log.h"
#include "app/options.h"
#include "gui/gui.h"
#include "parking/airport_context.h"
#include "parking/park_airport.h"
#include "parking/parked_count.h"
#include "parking/parking_applier.h"
#include "parking/parking_plan.h"
#include "parking/parking_state.h"
#include "parking/user_stand.h"
#include "traffic/clock.h"
#include "traffic/traffic_tables.h"
#include "traffic/user_aircraft.h"

namespace tfx {

namespace {

constexpr std::array<std::string_view, 7> DAY_NAMES = {
    "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday", "Sunday"};

void lf_logMoment() {
    const std::uint32_t day = gf_slotDay(weekNow);
    const std::uint32_t hh = gf_slotHalfHour(weekNow);
    gf_logLine(fmt::format("\n{} (utc) It is day {} ({}), {:.1F} hours", gf_nowText(), day,
                           day >= 1 && day <= 7 ? DAY_NAMES[day - 1] : "?", (hh + 1) * 0.5));
}

void lf_blockStand(const std::string& name, std::string_view label) {
    Stand* stand = gf_standBySid(gf_standNumberOf(name));
    if (stand == nullptr) return;
    stand->blockedByOverlap = true;
    gf_logLine(fmt::format("{} user stand '{}' blocked for static aircraft", label, name));
    for (const std::uint32_t number : stand->overlaps) {
        Stand* other = gf_standBySid(static_cast<std::int32_t>(number));
        if (other == nullptr) continue;
        other->blockedByOverlap = true;
        gf_logLine(fmt::format("{} excluded by {} user stand '{}' blocked for static aircraft",
                               other->id, label, name));
    }
}

// Plan entries that were taken first are at the back.
void lf_sortPlan() {
    std::stable_sort(parking.plan.begin(), parking.plan.end(),
                     [](const StaticPlan& a, const StaticPlan& b) { return a.offset > b.offset; });
}

void lf_logPositions() {
    const OptionsPtr options = gf_options();
    if (parking.takenCount == 0) {
        gf_logLine("no parking positions found");
        return;
    }
    if (options->RT_PARKTRAFFIC_ONLY) {
        gf_logLine(fmt::format("{} positions with RT Parked only\n", parking.takenCount));
        return;
    }
    const auto n = static_cast<double>(gf_parkStands().size());
    const std::string fit = options->AUTO_PARK ? std::string(" auto park")
                                               : fmt::format(", with Max fit={:.1F} hours",
                                                             (options->MAX_FIT + 1) * 0.5);
    gf_logLine(fmt::format("{} positions ({}% vs wanted {}%){}\n", parking.takenCount,
                           std::lround(100.0 * parking.takenCount / n), options->parking_percentage,
                           fit));
}

void lf_showTarget() {
    const auto n = static_cast<std::int64_t>(gf_parkStands().size());
    const std::int64_t percent = n == 0 ? 0 : std::llround(100.0 * parking.wantedParked / n);
    Gui::enqueueUpdate({GuiKind::MaxPark, TwoNumbers{parking.wantedParked, percent}});
}

// A removal and a plan entry for the same aircraft on the same stand: it
// simply stays. Stands that change hands are dealt with first.
void lf_mergeChanges() {
    for (auto r = parking.removals.begin(); r != parking.removals.end();) {
        const std::string shown = gf_plainCallsign(r->callsign);
        const auto there = std::find_if(staticAircraft.begin(), staticAircraft.end(),
                                        [&](const StaticAircraft& ac) {
                                            return ac.sid == r->sid && ac.callsign == r->callsign &&
                                                   ac.simState != SimState::removingfromsim;
                                        });
        // Another airframe under the same flight number is another aircraft
        // (its registration and livery would be wrong), unless the entry
        // doesn't say which airframe it wants.
        const auto p =
            std::find_if(parking.plan.begin(), parking.plan.end(), [&](const StaticPlan& e) {
                return e.sid == r->sid &&
                       gf_plainCallsign(lf_determineStaticCallsign(e)) == shown &&
                       (there == staticAircraft.end() || e.reg.empty() || e.reg == there->regcode);
            });
        if (p == parking.plan.end()) {
            ++r;
            continue;
        }
        // The aircraft stays as it is, now as the entry's: it counts as
        // staying in later checks, and a parked record finds it again.
        if (there != staticAircraft.end()) {
            there->stays = 1;
            there->fromAirportFile = p->fromAirportFile;
            there->rtHexid = p->rtHexid;
        }
        parking.plan.erase(p);
        r = parking.removals.erase(r);
    }
}

void lf_changingHandsFirst() {
    std::unordered_set<std::int32_t> changing;
    for (const PlannedRemoval& r : parking.removals)
        if (std::any_of(parking.plan.begin(), parking.plan.end(),
                        [&](const StaticPlan& p) { return p.sid == r.sid; }))
            changing.insert(r.sid);
    std::stable_partition(parking.removals.begin(), parking.removals.end(),
                          [&](const PlannedRemoval& r) { return changing.contains(r.sid); });
    // The plan is taken from the back.
    std::stable_partition(parking.plan.begin(), parking.plan.end(),
                          [&](const StaticPlan& p) { return !changing.contains(p.sid); });
}

bool lf_removalListed(const StaticAircraft& ac) {
    return std::any_of(
        parking.removals.begin(), parking.removals.end(),
        [&](const PlannedRemoval& r) { return r.sid == ac.sid && r.callsign == ac.callsign; });
}

}  // namespace

std::optional<std::string> lf_readParkedFile() {
    const IcaoCode code = parkAirport.code;
    const auto path = gf_findAirportFile(code);
    if (!path) return fmt::format("{} {} not found", "lf_readParkedFile", code.text());
    auto read = gf_readAirportFile(*path);
    if (auto* error = std::get_if<std::string>(&read)) return *error;
    gf_logAirportFile(code, std::move(std::get<AirportFile>(read)));
    parking.standNumbers.clear();
    for (const Stand& stand : gf_parkStands()) {
        parking.standNumbers.emplace(stand.id, static_cast<std::int32_t>(stand.number));
        if (stand.overlaps.empty()) continue;
        std::string names;
        for (const std::uint32_t number : stand.overlaps)
            names += (names.empty() ? "" : ", ") + gf_standName(static_cast<std::int32_t>(number));
        gf_logLine(fmt::format("{:14}: overlaps {}", stand.id, names));
    }
    gf_publishStandPositions(gf_parkStands());
    lf_afterAirportLoad();
    return std::nullopt;
}

void lf_blockUserStands() {
    const std::string reserved = gf_userDestStand();
    if (!reserved.empty()) lf_blockStand(reserved, "Reserved");
    const UserData user = userAircraft;
    if (const auto here = gf_closestStandToUser({user.lat, user.lon}); here && *here != reserved)
        lf_blockStand(*here, "User");
}

void lf_firstParking() {
    if (gf_parkStands().empty()) return;
    lf_logMoment();
    parking.plan.clear();
    lf_takeSeenSets();
    lf_clearStandMarks();
    lf_blockUserStands();
    parking.wantedParked = gf_parkedTarget();
    lf_showTarget();
    const OptionsPtr options = gf_options();
    if (parking.wantedParked > 0) {
        lf_prepareParkedList();
        if (options->RT_PARKTRAFFIC_ONLY) lf_planRealParked(parking.wantedParked);
    }
    if (!options->RT_PARKTRAFFIC_ONLY &&
        parking.wantedParked > static_cast<std::int32_t>(parking.plan.size()))
        lf_searchAll(weekNow, parking.wantedParked);
    lf_sortPlan();
    lf_logPositions();
    parking.searchRunning = !parking.plan.empty();
}

void lf_parkingAdjustments(bool parkedDataChanged) {
    lf_logMoment();
    lf_takeSeenSets();
    gf_showStatus(fmt::format("{} searching stands for static parking ...", gf_nowText()));
    parking.removals.clear();
    parking.stayers.clear();
    parking.plan.clear();
    lf_clearStandMarks();
    lf_reviveOptions();
    for (StaticAircraft& ac : staticAircraft) ac.stays = 0;
    lf_blockUserStands();
    parking.wantedParked = gf_parkedTarget();
    lf_showTarget();
    lf_collectLiveStayers();
    const OptionsPtr options = gf_options();
    if (!options->RT_PARKTRAFFIC_ONLY &&
        static_cast<std::int32_t>(parking.stayers.size()) > parking.wantedParked) {
        const auto surplus =
            static_cast<std::int64_t>(parking.stayers.size()) - parking.wantedParked;
        gf_logLine(fmt::format("Parking adjustments: {} more live ac than wanted", surplus));
        lf_removeNOldestLiveParked(surplus);
        lf_collectLiveStayers();
    }
    for (const Stayer& s : parking.stayers) gf_takeStand(s.sid, parking.wantedParked);
    lf_prepareParkedList();
    if (options->RT_PARKTRAFFIC_ONLY) {
        lf_planRealParked(parking.wantedParked);
        for (const StaticAircraft& ac : staticAircraft)
            if (ac.stays == 0) parking.removals.push_back({ac.callsign, ac.sid});
        gf_logLine(fmt::format("RT Parking changes: {} to be removed, {} to be added",
                               parking.removals.size(), parking.plan.size()));
        lf_sortPlan();
        lf_removeRemovals();
        parking.searchRunning = !parking.plan.empty();
        return;
    }
    // New parked records outrank what the airport file says: its aircraft
    // stay only where this plan puts them again.
    parking.fileStaticsMayStay = !parkedDataChanged;
    if (parking.wantedParked > parking.takenCount) lf_searchAll(weekNow, parking.wantedParked);
    parking.fileStaticsMayStay = true;
    for (const StaticAircraft& ac : staticAircraft)
        if (ac.stays == 0 && !lf_removalListed(ac))
            parking.removals.push_back({ac.callsign, ac.sid});
    lf_departingStatics(weekNow);
    lf_mergeChanges();
    lf_sortPlan();
    lf_changingHandsFirst();
    gf_logLine(fmt::format("Parking adjustments: {} to be removed, {} to be added\n",
                           parking.removals.size(), parking.plan.size()));
    lf_removeRemovals();
    parking.searchRunning = !parking.plan.empty();
}

}  // namespace tfx
