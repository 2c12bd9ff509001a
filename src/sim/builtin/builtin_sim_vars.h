// The simulation variables the built-in simulator knows, their units, and how
// a data definition's block is written from an object or applied to one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "sim/builtin/builtin_sim_state.h"

namespace tfx::bsim {

// Each family has one unit inside the simulator: degrees, feet, knots, feet
// per minute, 0/1, percent, seconds, plain numbers.
enum class VarFamily : std::uint8_t {
    Text,
    Angle,
    Length,
    Speed,
    VerticalSpeed,
    Flag,
    Percent,
    Time,
    Count
};

struct VarContext {
    const SimObject& object;
    double ground_ft;
    double zulu_s;                 // simulator UTC, seconds since the epoch
    double pressureOffset_ft = 0;  // what the altimeter reads above the true altitude
};

struct SimVarInfo {
    std::string_view name;  // upper case, without ":N"
    VarFamily family;
    bool indexed;  // takes ":1" to ":4"
    double (*get)(const VarContext& context, int index);
    void (*set)(SimObject& object, int index, double value);  // nullptr: read only
    std::string (*text)(const VarContext& context);           // the Text family
};

struct VarRef {
    std::uint16_t var;
    std::uint8_t index;
};
// "Plane Latitude", "GENERAL ENG THROTTLE LEVER POSITION:2": case does not matter.
std::optional<VarRef> gf_findVar(std::string_view datumName);
const SimVarInfo& gf_varInfo(std::uint16_t var);

// Factor from the family's unit to the named one; nullopt when the unit does
// not belong to the family.
std::optional<double> gf_unitFactor(VarFamily family, std::string_view unit);
// Bytes of a data type; 0 for STRINGV, nullopt for a type the simulator
// does not offer.
std::optional<DWORD> gf_datatypeBytes(SIMCONNECT_DATATYPE type);

// Appends the block of a definition for one object, in the declared order.
void gf_writeBlock(const DataDefinition& definition, const VarContext& context,
                   std::vector<std::byte>& out);
// Applies a block to an object; false when the definition holds a variable
// that can't be set.
bool gf_applyBlock(const DataDefinition& definition, const std::byte* data, SimObject& object);

}  // namespace tfx::bsim
