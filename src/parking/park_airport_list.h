// The airports where static aircraft may be parked: the lines of
// airports/my_park_airports.txt, the add-on airports of the scan and every
// destination the user entered. The front is the one the in-sight test
// looks at. Main thread only.
#pragma once

#include <deque>
#include <optional>
#include <string>

#include "airports/airport_codes.h"
#include "traffic/geometry.h"

namespace tfx {

struct ParkAirport {
    std::string reservedStand;           // the stand the user wants there, or empty
    double latitude = 0, longitude = 0;  // both 0: not known
    IcaoCode code;
};

extern std::deque<ParkAirport> parkAirportList;

inline constexpr const char* MY_PARK_AIRPORTS_TXT = "airports/my_park_airports.txt";

// Fills the list at start-up; false when a line named an unknown airport or
// the read failed.
bool gf_readMyParkAirportsFile();
// Writes the list back, sorted (at the end of a session).
void gf_writeMyParkAirportsFile();
// One entry per airport: the first stays in its place and takes a later
// entry's reserved stand when it has none.
void lf_removeDuplicateParkAirports();

// The entry goes to the front with this stand (added when missing).
void gf_setReservedStand(const IcaoCode& code, LatLon position, const std::string& stand);
// The same without touching the stand; a new entry has none.
void gf_addParkAirport(const IcaoCode& code, LatLon position);
std::optional<std::string> gf_reservedStand(const IcaoCode& code);

// Brings the entry nearest to the user to the front, once the user moved far
// enough from where it last looked.
void gf_updateNearestParkAirport(LatLon user);
// The squared flat distance of the in-sight test, in square nautical miles.
double gf_flatSquaredNm(LatLon user, LatLon airport);
// The list and the nearest search start afresh (a new session).
void gf_clearParkAirportList();

}  // namespace tfx
