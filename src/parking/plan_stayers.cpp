// Who may stay when the plan is made again: static aircraft that the airport
// file still puts on their stand, live aircraft parked at the airport, and
// the static aircraft whose departure number is due.
#include <algorithm>

#include <fmt/format.h>

#include "app/log.h"
#include "parking/parking_planner.h"
#include "parking/parking_state.h"
#include "traffic/clock.h"
#include "traffic/removal.h"
#include "traffic/traffic_internal.h"
#include "traffic/traffic_tables.h"

namespace tfx {

namespace {

constexpr std::int64_t STAY_MINUTES = 90;
constexpr std::int64_t HEAVY_STAY_MINUTES = 180;
constexpr std::uint64_t HUNDRED_NS_PER_MINUTE = 600000000ull;

// Half hours from hh - offset (at least 0) to hh.
std::uint64_t lf_bitsBack(std::uint32_t hh, int offset) {
    const int from = std::max(0, static_cast<int>(hh) - offset);
    std::uint64_t bits = 0;
    for (int h = from; h <= static_cast<int>(hh); ++h) bits |= std::uint64_t{1} << h;
    return bits;
}

bool lf_fileStillHasIt(const Stand& stand, const StaticAircraft& ac, std::uint64_t slot, int offset,
                       bool weekMode) {
    const std::uint32_t day = gf_slotDay(slot);
    const std::uint64_t bits = lf_bitsBack(gf_slotHalfHour(slot), offset);
    return std::any_of(stand.options.begin(), stand.options.end(), [&](const StandOption& o) {
        return (weekMode || o.day == day) && o.key == ac.aimo && o.reg == ac.regcode &&
               (o.hours & bits) != 0;
    });
}

}  // namespace

void lf_searchStayers(std::uint64_t slot, int offset, bool weekMode, SearchCounts& counts,
                      std::int32_t needed) {
    if (!parking.fileStaticsMayStay) return;
    for (StaticAircraft& ac : staticAircraft) {
        if (ac.simState != SimState::active || ac.fromAirportFile == 0 || ac.stays != 0) continue;
        const Stand* stand = gf_standBySid(ac.sid);
        if (stand == nullptr || stand->taken) continue;
        // A newer entry of this plan stands beside it: it makes way.
        if (lf_overlapTaken(ac.sid)) continue;
        if (lf_aircraftPresent(ac.regcode, ac.flightA, ac.flightB)) continue;
        if (!lf_fileStillHasIt(*stand, ac, slot, offset, weekMode)) continue;
        ac.stays = 1;
        ++counts.stayers;
        if (gf_takeStand(ac.sid, needed)) return;
    }
}

void lf_collectLiveStayers() {
    parking.stayers.clear();
    const std::uint64_t now = gf_wallClock100ns();
    for (LiveAircraft& ac : liveAircraft) {
        if (ac.simState != SimState::active || ac.flightState != FlightState::parked) continue;
        std::int64_t minutes = 0;
        if (ac.atStandSeen == 0) {
            minutes = now > ac.lastMoved
                          ? static_cast<std::int64_t>((now - ac.lastMoved) / HUNDRED_NS_PER_MINUTE)
                          : 0;
            const std::int64_t limit =
                ac.category == AircraftCategory::Heavy ? HEAVY_STAY_MINUTES : STAY_MINUTES;
            if (minutes > limit) {
                try {
                    removeAircraftFromSim(ac);
                } catch (...) {
                    lf_trafficException("lf_collectLiveStayers");
                }
                continue;
            }
        }
        parking.stayers.push_back({ac.callsign, ac.regcode, 0, ac.sid, minutes});
    }
    std::stable_sort(
        parking.stayers.begin(), parking.stayers.end(),
        [](const Stayer& a, const Stayer& b) { return a.minutesParked < b.minutesParked; });
}

void lf_departingStatics(std::uint64_t slot) {
    const std::uint32_t day = gf_slotDay(slot);
    for (StaticAircraft& ac : staticAircraft) {
        if (ac.fromAirportFile == 0 || ac.stays == 0 || ac.flightB.empty()) continue;
        if (ac.simState != SimState::active) continue;
        const std::string shown = gf_plainCallsign(ac.callsign);
        if (shown != gf_plainCallsign(ac.flightA)) continue;
        const Stand* stand = gf_standBySid(ac.sid);
        if (stand == nullptr) continue;
        const auto option =
            std::find_if(stand->options.begin(), stand->options.end(), [&](const StandOption& o) {
                return o.day == day && o.key == ac.aimo && o.cs1 == shown;
            });
        // Its departure number shows once the aircraft leaves within the half hour.
        if (option == stand->options.end() || lf_standsInNextHalfHour(*stand, *option, slot))
            continue;
        StaticPlan entry;
        entry.fromAirportFile = 1;
        entry.sid = ac.sid;
        entry.offset = gf_slotDifference(slot, ac.arrivalSlot);
        entry.aimo = ac.aimo;
        entry.cs1 = ac.flightA;
        entry.cs2 = ac.flightB;
        entry.reg = ac.regcode;
        entry.useFirst = 0;
        parking.plan.push_back(std::move(entry));
        parking.removals.push_back({ac.callsign, ac.sid});
    }
}

}  // namespace tfx
