// The airport catalogue: every airport the program knows (input/airports.enc)
// and the airports the traffic service covered this week (input/wktraffic.enc).
// Filled on the main thread before the threads that read them start; look-ups
// are binary searches without a lock.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "airports/airport_codes.h"

namespace tfx {

struct Airport {
    IcaoCode icao;                       // attribute c
    IataCode iata;                       // attribute i; "XXX" when absent
    double latitude = 0, longitude = 0;  // degrees, la and lo
    std::int32_t altitude = 0;           // feet, a
};

inline constexpr std::size_t AIRPORTS_RESERVED = 18000;
inline constexpr std::size_t WEEKLY_RESERVED = 15000;

extern std::vector<Airport> airportTable;            // sorted by ICAO key
extern std::vector<IcaoCode> weeklyTrafficAirports;  // sorted

// Reads input/airports.enc once; a later call gives the entry count only.
std::variant<std::size_t, std::string> gf_readAirportsXml();
// Back to a process that has read nothing (tests, and a failed read).
void gf_clearAirportTable();

const Airport* gf_airportByCode(const IcaoCode& code);
bool gf_airportKnown(const IcaoCode& code);
// A text that isn't a valid code is not known.
bool gf_airportKnown(const std::string& code);

// The sorted codes of input/wktraffic.enc, or an error text; the caller stores them.
std::variant<std::vector<IcaoCode>, std::string> gf_readWeeklyTrafficAirports();
// True with an empty list (logged), so that a missing list blocks nothing.
bool gf_hasTrafficThisWeek(const IcaoCode& code);
// The first run of exactly four letters and digits in text that is an airport
// with traffic this week. Each run passed over adds a line to scanLog.
std::variant<std::monostate, IcaoCode> gf_findAirportCode(std::string_view text,
                                                          std::vector<std::string>& scanLog);

}  // namespace tfx
