// STAND-IN for the automatic traffic radius: the radius stays as it is. The
// real body replaces this file.
#include "app/auto_range.h"

namespace tfx {

void gf_setAutoRange() {}

}  // namespace tfx
