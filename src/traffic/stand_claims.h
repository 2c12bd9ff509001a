// Stand claims of live aircraft: which stand an aircraft may use, who yields
// when two want one, and arrival at a stand.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "traffic/aircraft.h"
#include "traffic/geometry.h"

namespace tfx {

struct Stand;

// What an aircraft takes over from the stand it is created at.
struct StandTaken {
    std::int32_t sid = 0;
    double lat = 0, lon = 0;  // degrees
    double heading = 0;       // radians
    std::uint8_t cargo = 0;
    std::uint8_t isGate = 0;
};

// Whether an aircraft of the category and half span (NM) may use the stand.
bool lf_standFits(const Stand& stand, AircraftCategory category, double halfSpan);
// The nearest stand at position that the aircraft may use, or nullptr;
// distance_m is its distance. allowFar also takes a stand a little further
// off that knows the aircraft from an earlier visit.
Stand* gf_closestStand(std::vector<Stand>& stands, LatLon position, const AircraftBase& ac,
                       double& distance_m, bool allowFar);
// The stand, or one it overlaps, is the user's destination stand or the one
// the user's aircraft stands at.
bool lf_isUserStand(const Stand& stand, const LiveAircraft& ac, int mode);

// The stand an aircraft created on the ground stands at, or none. Sets
// eraseNow when another aircraft has the better claim.
std::optional<StandTaken> lf_findStandAtSpawn(LiveAircraft& ac);
// An aircraft in taxi has slowed to a stop: when a stand is to be had, it
// takes it over, goes to parking and drives onto it (drive2Stand).
void try2Park(LiveAircraft& ac);
// The stream of an aircraft in parking has ended: true when it stands at its
// stand and goes on parked, or stopped short and taxis on; false when it
// can't have arrived (its stream ends).
bool lf_arrivedAtStand(LiveAircraft& ac);

// Whether the live aircraft standing at sid (if any) yields to callsign;
// one that yields is removed.
bool lf_checkStandIsNotUsedByOtherLiveAircraftSub(std::int32_t sid, const std::string& callsign);
// An aircraft parks at stand: a live one parked there, and any standing at
// an overlapping stand close enough to touch, are removed.
void lf_checkStandOrExcludedIsOccupiedByLiveParkedTry(const Stand& stand, const LiveAircraft& ac);
// The static aircraft at the stand, and those at overlapping stands close
// enough to touch, make way for ac; one still queued vanishes unseen.
void lf_makeWay(const LiveAircraft& ac, const Stand& stand);

// Records what stood at the stand, for the next visit (real: 1 at a spawn).
void gf_addRealStandOption(std::int32_t sid, const LiveAircraft& ac, int real);
// After the name lookup: a static copy of this aircraft goes.
void lf_checkForStaticWithCallsignOrHexidAndRemove(const LiveAircraft& ac);
// Every 61 s: the first static copy of a live aircraft on the ground goes.
void gf_checkForAllGndIfParkedVersionExistsAndRemove();

}  // namespace tfx
