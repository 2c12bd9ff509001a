// The one aircraft the user has blocked. Its callsign, registration and
// transponder address may be only partly known when the block is set; each
// match learns what the record adds, so that the block still holds when the
// callsign later changes.
#include "feeds/decode_context.h"

namespace tfx {

namespace {

void lf_learn(const std::function<void(Options&)>& change) {
    gf_publishOptions(change);
}

}  // namespace

bool gf_isBlocked(const TrafficMessage& m, const Options& block) {
    if (block.blockHexid != 0 && m.hexid == block.blockHexid) {
        if (block.blockRegcode == "null" && !m.regcode.empty())
            lf_learn([&](Options& o) { o.blockRegcode = m.regcode; });
        return true;
    }
    if (!block.blockRegcode.empty() && m.regcode == block.blockRegcode) {
        lf_learn([&](Options& o) { o.blockHexid = m.hexid; });
        return true;
    }
    if (!block.blockCallsign.empty() && m.callsign == block.blockCallsign) {
        lf_learn([&](Options& o) {
            o.blockHexid = m.hexid;
            if (!m.regcode.empty()) o.blockRegcode = m.regcode;
        });
        return true;
    }
    if (block.blockTrailing && !block.blockCallsign.empty() && !m.callsign.empty() &&
        std::string_view(block.blockCallsign).substr(0, block.blockCallsign.size() - 1) ==
            m.callsign) {
        lf_learn([&](Options& o) {
            o.blockCallsign = m.callsign;
            o.blockHexid = m.hexid;
            if (!m.regcode.empty()) o.blockRegcode = m.regcode;
            o.blockTrailing = false;
        });
        return true;
    }
    return false;
}

}  // namespace tfx
