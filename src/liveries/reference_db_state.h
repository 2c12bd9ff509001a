// Internal to the reference database: the switch that turns on the use of
// the fix table in gf_modelIndex, set by the reader once the valid models are
// interned.
#pragma once

#include <atomic>

namespace tfx {

extern std::atomic<bool> modelFixesActive;

}  // namespace tfx
