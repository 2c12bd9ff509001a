// Stand-in until the RealTraffic application link exists: the position
// report goes nowhere.
#include "feeds/rt_app/rt_app_position.h"

namespace tfx {

void gf_sendPosition() {}

}  // namespace tfx
