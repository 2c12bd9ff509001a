// The comma-separated lines of the RealTraffic application: splitting, and
// the fields of a traffic line and a parked line as raw records.
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "feeds/decode_context.h"

namespace tfx {

inline constexpr std::size_t RTTFC_FIELDS = 44;
inline constexpr std::size_t RTPARK_FIELDS = 9;

// Splits at every comma; an empty field counts.
void gf_splitFields(std::string_view line, std::vector<std::string_view>& fields);

// The fields of an "RTTFC" or "RTBUF" line (at least 44). Throws "{}:{}" with
// the field's name and text when a number does not parse whole or is not finite.
TrafficRecord gf_readTrafficFields(const std::vector<std::string_view>& fields);
// The fields of an "RTPARK" line (at least 9). Throws "hexid incorrect ..."
// and "timestamp outside range:..." for those two fields.
ParkedRecord gf_readParkedFields(const std::vector<std::string_view>& fields);

}  // namespace tfx
