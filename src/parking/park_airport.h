// The park airport: the one airport at which static aircraft stand and whose
// field elevation the traffic engine uses near the ground.
#pragma once

#include <array>
#include <cstdint>

#include "airports/airport_catalogue.h"
#include "traffic/aircraft.h"

namespace tfx {

struct ParkAirportRecord {
    std::uint32_t icao = 0;  // 0: no park airport
    std::array<char, 3> iata{};
    double lat = 0, lon = 0;  // degrees
    double alt_ft = 0;
    IcaoCode code;
    bool known() const { return icao != 0; }
};

extern ParkAirportRecord parkAirport;

// Whether a route end names the park airport.
bool gf_isParkAirport(const AirportRef& ref);
// The catalogue's airport becomes the park airport.
void gf_setParkAirport(const Airport& airport);
void gf_clearParkAirport();

}  // namespace tfx
