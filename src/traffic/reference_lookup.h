// What the traffic engine asks of the reference database, in the engine's
// own terms.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "liveries/aircraft_category.h"
#include "traffic/aircraft.h"

namespace tfx {

AircraftCategory gf_categoryOfModel(std::uint16_t model);
// Half wing span in NM; an unknown span gives the largest one known.
double gf_halfSpanOfModel(std::uint16_t model);
// The Aimo of a registration record, locked; nothing for an unknown regcode.
std::optional<Aimo> gf_regcodeAimo(std::string_view regcode);
// The airline index a callsign starts with, or 0.
std::uint16_t gf_callsignAirline(std::string_view callsign);
// The airline index of private aircraft, "PVT".
std::uint16_t gf_privateAirline();

}  // namespace tfx
