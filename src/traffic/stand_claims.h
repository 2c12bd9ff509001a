// Stand claims of live aircraft, as far as the tick calls them.
#pragma once

#include <cstdint>
#include <optional>

#include "traffic/aircraft.h"

namespace tfx {

// What an aircraft takes over from the stand it is created at.
struct StandTaken {
    std::int32_t sid = 0;
    double lat = 0, lon = 0;  // degrees
    double heading = 0;       // radians
    std::uint8_t cargo = 0;
    std::uint8_t isGate = 0;
};

// The stand an aircraft created on the ground stands at, or none. May set
// eraseNow when another aircraft has the better claim.
std::optional<StandTaken> lf_findStandAtSpawn(LiveAircraft& ac);
// Records what stood at the stand, for the next visit (real: 1 at a spawn).
void gf_addRealStandOption(std::int32_t sid, const LiveAircraft& ac, int real);
// After the name lookup: a static copy of this aircraft goes.
void lf_checkForStaticWithCallsignOrHexidAndRemove(const LiveAircraft& ac);
void gf_checkForAllGndIfParkedVersionExistsAndRemove();
// An aircraft in taxi has slowed to a stop: when a stand is to be had, it
// takes it over, goes to parking and drives onto it (drive2Stand).
void try2Park(LiveAircraft& ac);
// The stream of an aircraft in parking has ended: true when it stands at its
// stand and goes on parked.
bool lf_arrivedAtStand(LiveAircraft& ac);

}  // namespace tfx
