// Which airport is parked: chosen from the user's position, the park airport
// list and the destination; left when it goes out of sight or a nearer one
// comes into sight in the air. Main thread only.
#pragma once

#include <optional>
#include <string>

#include "airports/airport_catalogue.h"
#include "sim/user_data.h"
#include "traffic/geometry.h"

namespace tfx {

// Within AIRP_RANGE of the airport and not above AIRP_HEIGHT over the ground.
bool gf_airportInSight(const UserData& user, LatLon airport);
// While there is no park airport: the airport the user stands at, or the
// front of the list once it is in sight.
void gf_checkForParkAirport(const UserData& user);
// While there is one: in the air it is left when it goes out of sight or
// the front of the list is in sight and nearer.
void gf_checkParkAirportInSight(const UserData& user);
// The 14-second work: a finished search, a pending load, or the checks.
void gf_parkAirportCheck();
// Set when a park airport was chosen and its file is to be loaded.
extern bool parkAirportLoadPending;

// The airport of the catalogue the user is at (its nearest stand decides
// between two close ones), or nullptr.
const Airport* gf_closestAirport(LatLon position);
struct NearestStand {
    double distance_nm = 100.0;  // 100 when no stand could be read
    std::string id;
};
// The airport's stand nearest to position, read from its file without
// loading it as the park airport.
NearestStand gf_readDestApfForClosestStand(const Airport& airport, LatLon position);

// The user's reserved stand at the park airport, or empty.
std::string gf_userDestStand();
// After the park airport's file is loaded: the stand under the user's
// aircraft is logged and becomes the reserved stand there.
void lf_afterAirportLoad();
// The user's destination airport (empty text clears it).
void gf_setDestination(const std::string& text);
// At a session's start a stored destination is taken up as a new one.
void gf_takeStoredDestination();
// At a session's start a user on the ground has the park airport at once.
void gf_parkAirportAtStart();
// The main loop's first pass: the park airport chosen at start is loaded.
void gf_parkAtStartAirport();
// The park airport is left: the reserved stand and the shared data go.
void lf_forgetParkAirport();

}  // namespace tfx
