// Livery matching as the traffic engine calls it: a title for an aircraft,
// the memory of what each aircraft got, and the titles the simulator refused.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "traffic/aircraft.h"

namespace tfx {

// Live aircraft: fills livery (and fsltlLivery, tcasOnly) or leaves it empty.
// altitude_ft is that of the aircraft's front stream point.
void gf_matchLivery(AircraftBase& ac, double altitude_ft);

// hexid to title of live aircraft; a title refused since is forgotten.
std::optional<std::string_view> gf_rememberedLivery(std::uint32_t hexid);
void gf_rememberLivery(std::uint32_t hexid, std::string_view title);
bool gf_forgetLivery(std::uint32_t hexid);

// The title remembered for a registration, or empty.
std::string_view gf_regcodeLivery(std::string_view regcode);

// Aircraft without a match, by their key (printed aimo, a blank, the regcode).
void gf_rememberNoMatch(const AircraftBase& ac);
bool gf_isRememberedNoMatch(const AircraftBase& ac);
// "\nNo match found for:", one line per key, an empty line; nothing when none.
void gf_noMatchSummary(std::string& out);

// The simulator refused ac.livery. From the 20th refused title this throws
// tfx::UserRelatedException with code 81.
void gf_liveryCreateFailed(const AircraftBase& ac);
bool gf_isFailedTitle(std::string_view title);

// The start of a new traffic: remembered liveries and no-match keys go.
void gf_resetLiveryMemory();

}  // namespace tfx
