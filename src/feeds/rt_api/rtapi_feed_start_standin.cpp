// STAND-IN for the start of the road "RT Direct" until the web API readers
// exist: nothing is started and the session goes on without traffic. The
// real start replaces this file.
#include "feeds/feed_start.h"

namespace tfx {

bool lf_startRTAPIFeeds() {
    return true;
}

}  // namespace tfx
