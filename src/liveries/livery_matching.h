// Livery matching as the traffic engine calls it: a title for an aircraft,
// the memory of what each aircraft got, and the titles the simulator refused.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "traffic/aircraft.h"

namespace tfx {

// Live aircraft: fills livery (and fsltlLivery, tcasOnly) or leaves it empty.
// altitude_ft is that of the aircraft's front stream point.
void gf_matchLivery(AircraftBase& ac, double altitude_ft);

// What the parking applier knows of the stand a static aircraft goes to.
struct StandForMatch {
    std::string_view name;
    bool cargo = false;
};
// Static aircraft: true when livery holds a title. The stand's cargo flag
// stands for the aircraft's own in the steps that use the key.
bool gf_matchStaticLivery(AircraftBase& ac, const StandForMatch& stand);

// hexid to title of live aircraft; a title refused since is forgotten.
std::optional<std::string_view> gf_rememberedLivery(std::uint32_t hexid);
void gf_rememberLivery(std::uint32_t hexid, std::string_view title);
bool gf_forgetLivery(std::uint32_t hexid);

// The title a registration stands for in the installed catalogue, or empty.
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

// Live aircraft matched at each step, for the life of the process.
const std::array<std::uint32_t, 9>& gf_liveryStepCounts();
// The matching summary in the log, when anything was matched.
void gf_liveryMatchSummary();
// The end of the traffic: both summaries in the log and the livery-gap
// report written.
void gf_liveryTrafficEnded();

// A fresh process's refused titles and step counts (these otherwise live as
// long as the process).
void gf_clearLiveryFailures();

// The start of a new traffic: remembered liveries, no-match keys and what
// the gap report has seen go.
void gf_resetLiveryMemory();

}  // namespace tfx
