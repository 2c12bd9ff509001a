// The user's position report to the RealTraffic application.
#pragma once

namespace tfx {

// Every 200 ms from the tick on the road "RT App".
void gf_sendPosition();

}  // namespace tfx
