// The comma-separated lines of the RealTraffic application: splitting, and
// the fields of a traffic line and a parked line as raw records.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "feeds/decode_context.h"

namespace tfx {

inline constexpr std::size_t RTTFC_FIELDS = 44;
// Older application builds end their lines before the airline field.
inline constexpr std::size_t RTTFC_MIN_FIELDS = 43;
inline constexpr std::size_t RTPARK_FIELDS = 9;

// Splits at every comma; an empty field counts.
void gf_splitFields(std::string_view line, std::vector<std::string_view>& fields);

// The fields of an "RTTFC" or "RTBUF" line (at least 43; a missing airline
// reads as empty). Throws "{}:{}" with the field's name and text when a
// number does not parse whole or is not finite. Fields the application may
// leave out ("", "null") read as absent: vertical speed and roll 0, track 0,
// true airspeed and true heading -1.
TrafficRecord gf_readTrafficFields(const std::vector<std::string_view>& fields);
// The source without the application's prefix: "F_adsb_icao" is "adsb_icao".
std::string_view gf_plainSource(std::string_view source);

// The fields of an "RTPARK" line (at least 9). Throws "hexid incorrect ..."
// and "timestamp outside range:..." for those two fields.
ParkedRecord gf_readParkedFields(const std::vector<std::string_view>& fields);

}  // namespace tfx
