#include "traffic/traffic_tables.h"

namespace tfx {

std::vector<LiveAircraft> liveAircraft;
std::vector<StaticAircraft> staticAircraft;
std::mutex pendingLock;
std::vector<TrafficMessage> pendingMessages;
std::mutex historyLock;
std::vector<TrafficMessage> historyMessages;
std::vector<std::uint32_t> spawnStack;
std::deque<CreateRequest> liveCreates;
std::deque<CreateRequest> staticCreates;
std::deque<std::uint32_t> removals;
std::deque<std::uint32_t> nameLookups;
std::vector<SimMessage> delayedMessages;
std::vector<std::string> ghostList;
bool staticErasePending = false;

void gf_reserveTrafficTables() {
    liveAircraft.reserve(512);
    staticAircraft.reserve(256);
    spawnStack.reserve(64);
    delayedMessages.reserve(128);
    ghostList.reserve(64);
}

LiveAircraft* gf_findLive(std::uint32_t hexid) {
    for (auto& ac : liveAircraft) {
        if (ac.hexid == hexid) return &ac;
    }
    return nullptr;
}

LiveAircraft* gf_findLiveByObjectId(std::uint32_t objectid) {
    if (objectid == 0) return nullptr;
    for (auto& ac : liveAircraft) {
        if (ac.objectid == objectid) return &ac;
    }
    return nullptr;
}

StaticAircraft* gf_findStatic(std::uint32_t hexid) {
    for (auto& ac : staticAircraft) {
        if (ac.hexid == hexid) return &ac;
    }
    return nullptr;
}

StaticAircraft* gf_findStaticByObjectId(std::uint32_t objectid) {
    if (objectid == 0) return nullptr;
    for (auto& ac : staticAircraft) {
        if (ac.objectid == objectid) return &ac;
    }
    return nullptr;
}

}  // namespace tfx
