#include "parking/park_airport.h"

namespace tfx {

ParkAirportRecord parkAirport;

bool gf_isParkAirport(const AirportRef& ref) {
    if (!parkAirport.known()) return false;
    if (ref.icao != 0) return ref.icao == parkAirport.icao;
    return ref.iata[0] != 0 && ref.iata == parkAirport.iata;
}

void gf_clearParkAirport() {
    parkAirport = ParkAirportRecord{};
}

}  // namespace tfx
