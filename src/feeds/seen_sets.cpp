#include "feeds/seen_sets.h"

#include "app/run_state.h"

namespace tfx {

SeenSets rtAppSeen;
SeenSets rtApiSeen;

SeenSets& gf_roadSeen() {
    return gf_isRTDirect() ? rtApiSeen : rtAppSeen;
}

void gf_clearSeen(SeenSets& sets) {
    {
        std::lock_guard lock(sets.callsignLock);
        sets.callsigns.clear();
    }
    std::lock_guard lock(sets.hexidLock);
    sets.hexids.clear();
}

void gf_startSeenCollection() {
    SeenSets& sets = gf_roadSeen();
    gf_clearSeen(sets);
    sets.collecting = true;
}

void gf_addSeen(BatchSeen& batch, const SeenEntry& entry) {
    if (!entry.callsign.empty() && batch.callsigns.size() < MAX_SEEN)
        batch.callsigns.insert(entry.callsign);
    if (batch.hexids.size() < MAX_SEEN) batch.hexids.insert(entry.hexid);
}

namespace {

template <typename Set>
void lf_mergeBounded(Set& road, Set& batch) {
    if (road.size() + batch.size() <= MAX_SEEN) {
        road.merge(batch);
        return;
    }
    for (auto it = batch.begin(); it != batch.end() && road.size() < MAX_SEEN; ++it)
        road.insert(*it);
}

}  // namespace

void gf_mergeSeen(SeenSets& road, BatchSeen& batch) {
    if (!batch.callsigns.empty()) {
        std::lock_guard lock(road.callsignLock);
        lf_mergeBounded(road.callsigns, batch.callsigns);
    }
    if (!batch.hexids.empty()) {
        std::lock_guard lock(road.hexidLock);
        lf_mergeBounded(road.hexids, batch.hexids);
    }
    batch.callsigns.clear();
    batch.hexids.clear();
}

bool gf_callsignSeen(std::string_view callsign) {
    SeenSets& sets = gf_roadSeen();
    std::lock_guard lock(sets.callsignLock);
    return sets.callsigns.contains(std::string(callsign));
}

bool gf_hexidSeen(std::uint32_t hexid) {
    SeenSets& sets = gf_roadSeen();
    std::lock_guard lock(sets.hexidLock);
    return sets.hexids.contains(hexid);
}

}  // namespace tfx
