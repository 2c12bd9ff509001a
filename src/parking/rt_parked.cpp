// The feed's parked records in a plan: made ready (age, callsign, the oldest
// and the doubles dropped), and placed on the stand they name or the nearest
// one that fits, ahead of everything the airport file says.
#include <algorithm>
#include <cctype>

#include "app/options.h"
#include "liveries/code_interning.h"
#include "parking/parking_state.h"
#include "traffic/aircraft_base.h"
#include "traffic/clock.h"
#include "traffic/reference_lookup.h"
#include "traffic/stand_claims.h"
#include "traffic/traffic_tables.h"

namespace tfx {

namespace {

bool lf_wordChar(char c) {
    return std::isalnum(static_cast<unsigned char>(c)) != 0;
}

// The stand whose name is the record's, or holds it as a whole word.
Stand* lf_standNamed(const std::string& name) {
    if (name.empty()) return nullptr;
    if (const std::int32_t sid = gf_standNumberOf(name); sid > 0) return gf_standBySid(sid);
    for (Stand& stand : gf_parkStands()) {
        for (auto at = stand.id.find(name); at != std::string::npos;
             at = stand.id.find(name, at + 1)) {
            const std::size_t end = at + name.size();
            if ((at == 0 || !lf_wordChar(stand.id[at - 1])) &&
                (end == stand.id.size() || !lf_wordChar(stand.id[end])))
                return &stand;
        }
    }
    return nullptr;
}

Stand* lf_standOfRecord(const ParkedMessage& r) {
    if (Stand* named = lf_standNamed(r.stand)) return named;
    TrafficMessage m;
    m.aimo = r.aimo;
    m.callsign = r.callsign;
    m.regcode = r.regcode;
    const AircraftBase ac = gf_makeAircraftBase(m);
    double distance_m = 0;
    return gf_closestStand(gf_parkStands(), {r.lat, r.lon}, ac, distance_m, true);
}

StaticAircraft* lf_staticOfRecord(std::uint32_t hexid) {
    for (StaticAircraft& ac : staticAircraft)
        if (ac.rtHexid == hexid && ac.fromAirportFile == 0 &&
            ac.simState != SimState::removingfromsim)
            return &ac;
    return nullptr;
}

bool lf_liveHas(const ParkedMessage& r) {
    return std::any_of(liveAircraft.begin(), liveAircraft.end(), [&](const LiveAircraft& ac) {
        return (!r.callsign.empty() && ac.callsign == r.callsign) ||
               (!r.regcode.empty() && ac.regcode == r.regcode);
    });
}

// One record into the plan. False when the search is to go on.
bool lf_placeRecord(RtParked& p, SearchCounts& counts, std::int32_t needed) {
    ParkedMessage& r = p.record;
    if (r.callsign.empty() || parking.seenHexids.contains(r.hexid)) return false;
    if (StaticAircraft* existing = lf_staticOfRecord(r.hexid)) {
        const Stand* stand = gf_standBySid(existing->sid);
        // Another aircraft now has its stand or one beside it: it goes.
        if (stand == nullptr || stand->taken || lf_overlapTaken(existing->sid)) return false;
        existing->stays = 1;
        ++counts.stayers;
        return gf_takeStand(existing->sid, needed);
    }
    if (lf_aircraftPresent(r.regcode, r.callsign, "")) return false;
    if (r.aimo.airline == 0) {
        r.aimo.airline = gf_callsignAirline(r.callsign);
        if (r.aimo.airline == 0) r.aimo.airline = gf_privateAirline();
    }
    if (parking.seenCallsigns.contains(r.callsign) ||
        parking.seenCallsigns.contains(r.callsign + "_") || lf_liveHas(r))
        return false;
    Stand* stand = lf_standOfRecord(r);
    if (stand == nullptr || stand->taken || stand->blockedByOverlap) return false;
    const auto sid = static_cast<std::int32_t>(stand->number);
    if (lf_overlapTaken(sid)) return false;
    StaticPlan entry;
    entry.rtHexid = r.hexid;
    entry.fromAirportFile = 0;
    entry.sid = sid;
    entry.offset = p.age;
    entry.aimo = r.aimo;
    entry.cs1 = r.callsign;
    entry.reg = r.regcode;
    entry.useFirst = 1;
    parking.plan.push_back(std::move(entry));
    ++counts.rt;
    return gf_takeStand(sid, needed);
}

}  // namespace

void lf_prepareParkedList() {
    parking.rtParked.clear();
    if (parking.parkedList.empty()) return;
    const OptionsPtr options = gf_options();
    const auto now = static_cast<std::int32_t>(gf_slotHalfHour(weekNow));
    const bool keepOld = options->RT_PARKTRAFFIC_ONLY || options->AUTO_PARK;
    for (const ParkedMessage& record : parking.parkedList) {
        RtParked p{record, 0};
        if (record.hh < 0) continue;
        p.age = now - record.hh;
        if (p.age < 0) p.age += HALF_HOURS_PER_DAY;
        p.record.callsign = gf_cleanCallsign(record.callsign);
        if (p.record.callsign.empty()) continue;
        if (!keepOld && p.age > options->MAX_FIT) continue;
        parking.rtParked.push_back(std::move(p));
    }
    std::stable_sort(parking.rtParked.begin(), parking.rtParked.end(),
                     [](const RtParked& a, const RtParked& b) { return a.age < b.age; });
    // The youngest record of a stand or a callsign is the one that holds.
    std::vector<RtParked> kept;
    kept.reserve(parking.rtParked.size());
    for (RtParked& p : parking.rtParked) {
        const bool twice = std::any_of(kept.begin(), kept.end(), [&](const RtParked& k) {
            return k.record.stand == p.record.stand || k.record.callsign == p.record.callsign;
        });
        if (!twice) kept.push_back(std::move(p));
    }
    parking.rtParked.swap(kept);
}

void lf_searchRealParked(SearchCounts& counts, std::int32_t needed) {
    for (RtParked& p : parking.rtParked)
        if (lf_placeRecord(p, counts, needed)) return;
}

void lf_planRealParked(std::int32_t needed) {
    const OptionsPtr options = gf_options();
    SearchCounts counts;
    for (RtParked& p : parking.rtParked) {
        if (p.age > options->MAX_FIT) break;
        if (lf_placeRecord(p, counts, needed)) return;
    }
}

}  // namespace tfx
