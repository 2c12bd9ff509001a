// Which aircraft a road has heard in the air or on the move, so that the
// parking does not put a twin of one of them on a stand.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>
#include <string>
#include <unordered_set>

#include "feeds/decode_context.h"

namespace tfx {

// A road's sets hold at most this many entries each between two parking
// updates; more aircraft than this are not heard in one place, so beyond it
// is a flood, whose entries are not kept.
inline constexpr std::size_t MAX_SEEN = 20000;

// A batch's own sets: filled by the reader without a lock.
struct BatchSeen {
    std::unordered_set<std::string> callsigns;
    std::unordered_set<std::uint32_t> hexids;
};

// A road's sets; each behind its own lock.
struct SeenSets {
    std::mutex callsignLock;
    std::unordered_set<std::string> callsigns;
    std::mutex hexidLock;
    std::unordered_set<std::uint32_t> hexids;
    std::atomic<bool> collecting{false};
};

extern SeenSets rtAppSeen;
extern SeenSets rtApiSeen;

// The sets of the road in use.
SeenSets& gf_roadSeen();
// Empties the road's sets and turns collecting on; once per parking update.
void gf_startSeenCollection();
void gf_clearSeen(SeenSets& sets);

void gf_addSeen(BatchSeen& batch, const SeenEntry& entry);
// Moves the batch's entries into the road's sets and empties the batch's.
void gf_mergeSeen(SeenSets& road, BatchSeen& batch);

bool gf_callsignSeen(std::string_view callsign);
bool gf_hexidSeen(std::uint32_t hexid);

}  // namespace tfx
