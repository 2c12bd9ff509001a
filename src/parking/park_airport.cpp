#include "parking/park_airport.h"

namespace tfx {

ParkAirportRecord parkAirport;

bool gf_isParkAirport(const AirportRef& ref) {
    if (!parkAirport.known()) return false;
    if (ref.icao != 0) return ref.icao == parkAirport.icao;
    return ref.iata[0] != 0 && ref.iata == parkAirport.iata;
}

void gf_setParkAirport(const Airport& airport) {
    ParkAirportRecord record;
    record.icao = airport.icao.key;
    record.code = airport.icao;
    if (!airport.iata.isNone()) record.iata = airport.iata.chars;
    record.lat = airport.latitude;
    record.lon = airport.longitude;
    record.alt_ft = airport.altitude;
    parkAirport = record;
}

void gf_clearParkAirport() {
    parkAirport = ParkAirportRecord{};
}

}  // namespace tfx
