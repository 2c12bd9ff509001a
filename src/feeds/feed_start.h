// Starting and stopping the feed of a session: the reader threads of the
// road chosen (the RealTraffic application, or the web API).
#pragma once

namespace tfx {

// Start the weather reader, then the traffic reader, and wait for the first
// traffic. False ends the session.
bool lf_startRTAppFeeds();
bool lf_startRTAPIFeeds();
// Sets the readers' stop flags and joins the weather thread, then the traffic
// thread. Safe to call when nothing was started.
void gf_stopFeedReaders();
// Closes the RealTraffic application link (server socket and client).
void gf_closeRTApp();

}  // namespace tfx
