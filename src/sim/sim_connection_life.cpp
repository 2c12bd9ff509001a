// What one connection to the simulator owns and what must be done again on
// the next: the user's data kept fresh while it lasts, the periodic requests
// made anew after the simulator restarts, and the objects it created, which
// the simulator drops with the connection without a word.
#include <atomic>
#include <chrono>
#include <unordered_set>

#include <fmt/format.h>

#include "app/log.h"
#include "sim/sim_client.h"
#include "sim/sim_client_internal.h"
#include "sim/sim_ids.h"
#include "sim/sim_message.h"
#include "sim/sim_queues.h"

namespace tfx {

namespace {

using Clock = std::chrono::steady_clock;

// The user aircraft moves on every frame, and nothing else asks for its
// position after the start: it is asked for every few frames, and after a
// long gap between frames at the next one.
constexpr int USER_REQUEST_EVERY_FRAMES = 8;
constexpr auto USER_REQUEST_AFTER = std::chrono::milliseconds(500);

int framesSinceUserRequest = USER_REQUEST_EVERY_FRAMES;
Clock::time_point lastUserRequest{};

// Requests of this session that a new connection must repeat: a periodic
// request lives only as long as the connection that made it.
std::atomic<bool> onGroundRequested{false};
std::atomic<bool> titleRequested{false};

// Objects the present connection created and the simulator has not reported
// gone.
std::unordered_set<std::uint32_t> connectionObjects;

}  // namespace

void lf_keepUserDataFresh() {
    const Clock::time_point now = Clock::now();
    if (++framesSinceUserRequest < USER_REQUEST_EVERY_FRAMES &&
        now - lastUserRequest < USER_REQUEST_AFTER)
        return;
    framesSinceUserRequest = 0;
    lastUserRequest = now;
    gf_requestSimData(REQUEST_USER_POSITION, 0);
}

void lf_requestServed(std::uint32_t kind) {
    if (kind == REQUEST_USER_ON_GROUND) onGroundRequested = true;
    if (kind == REQUEST_USER_TITLE_MODEL) titleRequested = true;
}

void lf_connectionOpened() {
    framesSinceUserRequest = USER_REQUEST_EVERY_FRAMES;  // at the first frame
    if (onGroundRequested) gf_requestSimData(REQUEST_USER_ON_GROUND, 0);
    // The user may have chosen another aircraft meanwhile.
    if (titleRequested) gf_requestSimData(REQUEST_USER_TITLE_MODEL, 0);
}

void lf_objectCreated(std::uint32_t objectid) {
    connectionObjects.insert(objectid);
}

void lf_objectGone(std::uint32_t objectid) {
    connectionObjects.erase(objectid);
}

void lf_connectionLost() {
    if (!connectionObjects.empty()) {
        gf_logLine(fmt::format("SimConnect: {} object{} gone with the connection",
                               connectionObjects.size(), connectionObjects.size() == 1 ? "" : "s"));
    }
    // The tick ends their aircraft as if the simulator had reported each one;
    // identifiers may come back for other objects on the next connection.
    for (const std::uint32_t objectid : connectionObjects) {
        SimMessage m;
        m.kind = SIM_OBJECT_REMOVED;
        m.objectid = objectid;
        gf_postSimMessage(m);
    }
    connectionObjects.clear();
    // Packet numbers start again with each connection: an old entry would
    // match a new packet. Creates still unanswered never will be on this
    // connection; their aircraft wait for them, so they go out again on the
    // next one.
    packetRequests.clear();
    if (!pendingCreates.empty()) {
        gf_logLine(fmt::format("SimConnect: {} unanswered create{} sent again",
                               pendingCreates.size(), pendingCreates.size() == 1 ? "" : "s"));
    }
    for (auto& [requestId, pending] : pendingCreates) gf_queueCreate(std::move(pending.request));
    pendingCreates.clear();
}

void lf_resetConnectionLife() {
    framesSinceUserRequest = USER_REQUEST_EVERY_FRAMES;
    lastUserRequest = {};
    onGroundRequested = false;
    titleRequested = false;
    connectionObjects.clear();
}

}  // namespace tfx
