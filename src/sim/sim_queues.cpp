#include "sim/sim_queues.h"

#include <utility>

#include "sim/sim_ids.h"

namespace tfx {

FrameTable sendingFrame;

namespace {

constexpr std::size_t FRAME_RESERVE = 512;
constexpr std::size_t SIM_MESSAGES_RESERVE = 256;

std::mutex commandLock;
SimCommands commands;
bool tornDown = false;  // under commandLock

std::mutex messageLock;
std::vector<SimMessage> simMessages;

std::mutex frameLock;
FrameTable pendingFrame;
FrameTable tickFrame;  // the tick's thread alone

struct Reserved {
    Reserved() {
        commands.reserve();
        simMessages.reserve(SIM_MESSAGES_RESERVE);
        pendingFrame.reserve(FRAME_RESERVE);
        tickFrame.reserve(FRAME_RESERVE);
        sendingFrame.reserve(FRAME_RESERVE);
    }
} const reserved;

}  // namespace

void SimCommands::reserve() {
    clientEvents.reserve(512);
    creates.reserve(256);
    removes.reserve(256);
    requests.reserve(64);
    thrusts.reserve(128);
    flightPlans.reserve(64);
}

void SimCommands::clear() {
    clientEvents.clear();
    creates.clear();
    removes.clear();
    requests.clear();
    thrusts.clear();
    flightPlans.clear();
}

bool SimCommands::empty() const {
    return clientEvents.empty() && creates.empty() && removes.empty() && requests.empty() &&
           thrusts.empty() && flightPlans.empty();
}

void gf_sendEvent(std::uint32_t objectid, std::uint32_t event, std::uint32_t value) {
    std::lock_guard lock(commandLock);
    if (tornDown) return;
    commands.clientEvents.push_back({objectid, event, value});
}

void gf_startEngines(std::uint32_t objectid) {
    gf_sendEvent(objectid, EVENT_ENGINE_AUTO_START, 0);
}

void gf_stopEngines(std::uint32_t objectid) {
    gf_sendEvent(objectid, EVENT_ENGINE_AUTO_SHUTDOWN, 0);
}

void gf_setLights(std::uint32_t objectid, const Lights& l) {
    std::lock_guard lock(commandLock);
    if (tornDown) return;
    auto& events = commands.clientEvents;
    events.push_back({objectid, EVENT_NAV_LIGHTS_SET, l.nav ? 1u : 0u});
    events.push_back({objectid, EVENT_BEACON_LIGHTS_SET, l.beacon ? 1u : 0u});
    events.push_back({objectid, EVENT_LANDING_LIGHTS_SET, l.landing ? 1u : 0u});
    events.push_back({objectid, EVENT_TAXI_LIGHTS_SET, l.taxi ? 1u : 0u});
    events.push_back({objectid, EVENT_STROBES_SET, l.strobes ? 1u : 0u});
    events.push_back({objectid, EVENT_LOGO_LIGHTS_SET, l.logo ? 1u : 0u});
    events.push_back({objectid, EVENT_CABIN_LIGHTS_SET, l.cabin ? 1u : 0u});
}

void gf_setNavLight(std::uint32_t objectid, bool on) {
    gf_sendEvent(objectid, EVENT_NAV_LIGHTS_SET, on ? 1u : 0u);
}

void gf_setCabinLight(std::uint32_t objectid, bool on) {
    gf_sendEvent(objectid, EVENT_CABIN_LIGHTS_SET, on ? 1u : 0u);
}

void gf_setReverseThrust(std::uint32_t objectid, bool reverse, std::uint8_t fsltlLivery) {
    std::lock_guard lock(commandLock);
    if (tornDown) return;
    commands.thrusts.push_back({objectid, static_cast<std::uint8_t>(reverse ? 1 : 0), fsltlLivery});
}

void gf_queueCreate(CreateRequest request) {
    std::lock_guard lock(commandLock);
    if (tornDown) return;
    commands.creates.push_back(std::move(request));
}

void gf_queueRemoval(std::uint32_t objectid) {
    // The positions go in any case: none may follow a removal.
    tickFrame.erase(objectid);
    {
        std::lock_guard lock(frameLock);
        pendingFrame.erase(objectid);
    }
    std::lock_guard lock(commandLock);
    if (tornDown) return;
    commands.removes.push_back(objectid);
}

void gf_queueFlightPlan(FlightPlanCommand plan) {
    std::lock_guard lock(commandLock);
    if (tornDown) return;
    commands.flightPlans.push_back(std::move(plan));
}

void gf_requestSimData(std::uint32_t kind, std::uint32_t objectid) {
    std::lock_guard lock(commandLock);
    if (tornDown) return;
    commands.requests.push_back({kind, objectid});
}

void gf_takeSimCommands(SimCommands& out) {
    std::lock_guard lock(commandLock);
    std::swap(out, commands);
}

void gf_postSimMessage(const SimMessage& message) {
    std::lock_guard lock(messageLock);
    simMessages.push_back(message);
}

void gf_takeSimMessages(std::vector<SimMessage>& out) {
    out.clear();
    std::lock_guard lock(messageLock);
    out.swap(simMessages);
}

void gf_framePut(std::uint32_t objectid, const MotionBlock& motion) {
    tickFrame.put(objectid, motion);
}

void gf_publishFrame() {
    if (tickFrame.empty()) return;
    {
        std::lock_guard lock(frameLock);
        for (const auto& entry : tickFrame) pendingFrame.put(entry.objectid, entry.motion);
    }
    tickFrame.clear();
}

bool gf_trySwapFrame(FrameTable& sending) {
    std::unique_lock lock(frameLock, std::try_to_lock);
    if (!lock.owns_lock() || pendingFrame.empty()) return false;
    pendingFrame.swap(sending);
    return true;
}

void gf_clearFrameTables() {
    tickFrame.clear();
    std::lock_guard lock(frameLock);
    pendingFrame.clear();
}

void gf_clearSimBuffers() {
    {
        std::lock_guard lock(commandLock);
        commands.clear();
        tornDown = false;
    }
    {
        std::lock_guard lock(messageLock);
        simMessages.clear();
    }
    {
        std::lock_guard lock(frameLock);
        pendingFrame.clear();
    }
    tickFrame.clear();
    sendingFrame.clear();
}

void gf_tearDownSimBuffers() {
    // Only the commands: the position maps hold one entry per object at
    // most, and the tick's own table is not this thread's to touch.
    std::lock_guard lock(commandLock);
    tornDown = true;
    commands.clear();
}

bool gf_simBuffersTornDown() {
    std::lock_guard lock(commandLock);
    return tornDown;
}

SimCommands gf_peekSimCommands() {
    std::lock_guard lock(commandLock);
    return commands;
}

std::size_t gf_pendingFrameSize() {
    std::lock_guard lock(frameLock);
    return pendingFrame.size();
}

std::size_t gf_tickFrameSize() {
    return tickFrame.size();
}

}  // namespace tfx
