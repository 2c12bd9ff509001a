// The traffic radius that follows the user's altitude.
#pragma once

namespace tfx {

// Run while AUTO_RANGE is set, at each feed start and every 30 seconds.
void gf_setAutoRange();

}  // namespace tfx
