// STAND-IN for the park airport checks: the park airport never changes and no
// destination stand is known. The real bodies replace this file.
#include "parking/airport_context.h"

namespace tfx {

void gf_parkAirportCheck() {}

std::string gf_userDestStand() {
    return {};
}

}  // namespace tfx
