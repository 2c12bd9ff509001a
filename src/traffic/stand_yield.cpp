// Who yields when two aircraft want one stand, or two stands too close to be
// used together: a static aircraft always makes way for a live one; a parked
// live aircraft gives way to one with the same callsign, to the real one
// when it is a ghost, and to anyone once the feed no longer reports it; a
// ghost never takes a stand from the real aircraft.
#include <algorithm>
#include <string>
#include <string_view>

#include <fmt/format.h>

#include "airports/airport_file.h"
#include "app/log.h"
#include "parking/parking_plan.h"
#include "parking/parking_state.h"
#include "traffic/removal.h"
#include "traffic/stand_claims.h"
#include "traffic/traffic_internal.h"
#include "traffic/traffic_tables.h"

namespace tfx {

namespace {

bool lf_isStandingState(FlightState s) {
    return s == FlightState::parked || s == FlightState::pushing_back;
}

// A callsign without its trailing "_".
std::string_view lf_withoutGhostMark(std::string_view callsign) {
    return lf_endsWithUnderscore(callsign) ? callsign.substr(0, callsign.size() - 1) : callsign;
}

// A removal that fails is reported under the caller's name; the stand
// counts as free either way.
void lf_removeGuarded(StaticAircraft& ac, std::string_view where) {
    try {
        removeAircraftFromSim(ac);
    } catch (...) {
        lf_trafficException(where);
    }
}

// A parked aircraft hears no more of the feed once its week-long point is
// set, and a report after that marks it seen for good; so an aircraft whose
// reports stopped a while ago counts as gone from the feed as well.
constexpr double FEED_SILENCE_S = 180;

bool lf_stillInFeed(const LiveAircraft& ac) {
    if (ac.atStandSeen == 0) return false;
    double newest_s = ac.lastMessageTime;
    for (const LiveAircraft& other : liveAircraft)
        newest_s = std::max(newest_s, other.lastMessageTime);
    return newest_s - ac.lastMessageTime < FEED_SILENCE_S;
}

LiveAircraft* lf_firstLiveOn(std::int32_t sid) {
    const auto it = std::find_if(liveAircraft.begin(), liveAircraft.end(),
                                 [&](const LiveAircraft& ac) { return ac.sid == sid; });
    return it == liveAircraft.end() ? nullptr : &*it;
}

// Whether an aircraft on the overlapping stand and one on the stand would touch.
bool lf_tooClose(const Stand& overlap, double occupantClearance, const Stand& stand,
                 double newcomerClearance) {
    return gf_withinNm({overlap.latitude, overlap.longitude}, occupantClearance,
                       {stand.latitude, stand.longitude}, newcomerClearance);
}

void lf_checkExcludedStandIsOccupiedByLiveParkedTry(std::int32_t overlap, const LiveAircraft& ac,
                                                    const Stand& stand) {
    const Stand* other = gf_standBySid(overlap);
    if (other == nullptr) return;
    for (LiveAircraft& occupant : liveAircraft) {
        if (occupant.sid != overlap || occupant.simState != SimState::active ||
            !lf_isStandingState(occupant.flightState))
            continue;
        if (lf_tooClose(*other, occupant.clearance, stand, ac.clearance)) {
            gf_logLine(
                fmt::format("{:14}: {:8} removed by parking {} at adjacent and possibly "
                            "colliding stand {}",
                            other->id, occupant.callsign, ac.callsign, stand.id));
            lf_removeGuarded(occupant, "lf_checkExcludedStandIsOccupiedByLiveParkedTry");
        }
        return;
    }
}

}  // namespace

bool lf_checkStandIsNotUsedByOtherLiveAircraftSub(std::int32_t sid, const std::string& callsign) {
    LiveAircraft* occupant = lf_firstLiveOn(sid);
    if (occupant == nullptr || occupant->simState != SimState::active) return true;
    const FlightState s = occupant->flightState;
    if (s != FlightState::pushing_back && s != FlightState::pushed_back && s != FlightState::parked)
        return true;
    const std::string& theirs = occupant->callsign;
    const std::string stand = gf_standName(sid);
    const auto remove = [&](const std::string& line) {
        gf_logLine(line);
        lf_removeGuarded(*occupant, "lf_checkStandIsNotUsedByOtherLiveAircraftSub");
        return true;
    };
    if (callsign == theirs) {
        return remove(
            fmt::format("{:14}: {:8} ac with same callsign {} wants it, remove existing ... ",
                        stand, theirs, callsign));
    }
    const bool ghostNew = lf_endsWithUnderscore(callsign);
    const bool ghostOld = lf_endsWithUnderscore(theirs);
    // The newcomer is the occupant's ghost.
    if (ghostNew && lf_withoutGhostMark(callsign) == theirs) return false;
    if ((ghostOld && lf_withoutGhostMark(theirs) == callsign) || (ghostOld && !ghostNew))
        return remove(fmt::format("{:14}: {:8} ghost, replace by {}", stand, theirs, callsign));
    if (ghostNew && !ghostOld) return false;
    // No longer reported: it is gone in reality.
    if (!lf_stillInFeed(*occupant)) {
        return remove(fmt::format("{:14}: {:8} removed because another live {} wants the stand ...",
                                  stand, theirs, callsign));
    }
    return false;
}

void lf_checkStandOrExcludedIsOccupiedByLiveParkedTry(const Stand& stand, const LiveAircraft& ac) {
    const auto sid = static_cast<std::int32_t>(stand.number);
    LiveAircraft* occupant = lf_firstLiveOn(sid);
    if (occupant != nullptr && occupant != &ac && occupant->simState == SimState::active &&
        occupant->flightState == FlightState::parked) {
        gf_logLine(fmt::format("{:14}: {:8} removed, {} wants to park there", stand.id,
                               occupant->callsign, ac.callsign));
        lf_removeGuarded(*occupant, "lf_checkStandOrExcludedIsOccupiedByLiveParkedTry");
    }
    for (const std::uint32_t overlap : stand.overlaps)
        lf_checkExcludedStandIsOccupiedByLiveParkedTry(static_cast<std::int32_t>(overlap), ac,
                                                       stand);
}

void lf_makeWay(const LiveAircraft& ac, const Stand& stand) {
    const auto sid = static_cast<std::int32_t>(stand.number);
    const auto it = std::find_if(staticAircraft.begin(), staticAircraft.end(),
                                 [&](const StaticAircraft& st) { return st.sid == sid; });
    if (it != staticAircraft.end()) {
        StaticAircraft& st = *it;
        const bool sameAircraft = (!st.flightA.empty() && st.flightA == ac.callsign) ||
                                  (!st.regcode.empty() && st.regcode == ac.regcode);
        const char* same = sameAircraft ? " the same live version" : "";
        if (st.simState == SimState::active) {
            gf_logLine(fmt::format("{:14}: {:8} {} makes way for{} {} {}", stand.id, st.callsign,
                                   st.regcode, same, ac.callsign, ac.regcode));
            lf_removeGuarded(st, "lf_makeWay");
        } else if (st.simState == SimState::adding2sim) {
            if (lf_takeBackCreate(staticCreates, st.callsign)) {
                // Never created: it vanishes before it appears.
                st.dropQueued = 1;
                gf_logLine(fmt::format("queued {:8}: {:8} {} makes way for{} {} {}", stand.id,
                                       st.callsign, st.regcode, same, ac.callsign, ac.regcode));
                for (const StaticAircraft& q : staticAircraft)
                    if (q.dropQueued != 0) lf_purgeAircraft(q.hexid, q.objectid);
                std::erase_if(staticAircraft,
                              [](const StaticAircraft& q) { return q.dropQueued != 0; });
            } else {
                st.removeOnArrival = 1;
            }
        }
    }
    for (const std::uint32_t overlapSid : stand.overlaps) {
        const auto overlap = static_cast<std::int32_t>(overlapSid);
        const Stand* other = gf_standBySid(overlap);
        if (other == nullptr) continue;
        for (StaticAircraft& st : staticAircraft) {
            if (st.sid != overlap || st.simState != SimState::active) continue;
            if (st.clearance + ac.clearance > 0 &&
                lf_tooClose(*other, st.clearance, stand, ac.clearance)) {
                gf_logLine(fmt::format("{:14}: {:8} makes way for {} parking at excluded stand {}",
                                       other->id, st.callsign, ac.callsign, stand.id));
                lf_removeGuarded(st, "lf_makeWay");
            }
            break;
        }
    }
}

}  // namespace tfx
