// The park airport checks, as far as the once-a-second work calls them.
#pragma once

#include <string>

namespace tfx {

// The 14-second work: a finished search, a pending re-park, or the in-sight
// checks of the park airport.
void gf_parkAirportCheck();
// The name of the user's destination stand, or empty.
std::string gf_userDestStand();

}  // namespace tfx
