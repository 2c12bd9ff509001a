#include "sim/frame_table.h"

#include <algorithm>
#include <bit>

namespace tfx {

namespace {
constexpr std::size_t MIN_SLOTS = 16;
}

std::size_t FrameTable::home(std::uint32_t objectid) const {
    return (static_cast<std::size_t>(objectid) * 0x9E3779B1u) & mask_;
}

std::size_t FrameTable::slotOf(std::uint32_t objectid) const {
    std::size_t i = home(objectid);
    while (slots_[i] != 0 && entries_[slots_[i] - 1].objectid != objectid) i = (i + 1) & mask_;
    return i;
}

void FrameTable::rehash(std::size_t slotCount) {
    slots_.assign(slotCount, 0);
    mask_ = slotCount - 1;
    for (std::size_t e = 0; e < entries_.size(); ++e) {
        slots_[slotOf(entries_[e].objectid)] = static_cast<std::uint32_t>(e + 1);
    }
}

void FrameTable::reserve(std::size_t n) {
    entries_.reserve(n);
    const std::size_t wanted = std::max(MIN_SLOTS, std::bit_ceil(n * 2));
    if (wanted > slots_.size()) rehash(wanted);
}

void FrameTable::put(std::uint32_t objectid, const MotionBlock& motion) {
    if (objectid == 0) return;
    if ((entries_.size() + 1) * 2 > slots_.size()) {
        reserve(std::max(entries_.size() + 1, slots_.size()));
    }
    const std::size_t i = slotOf(objectid);
    if (slots_[i] != 0) {
        entries_[slots_[i] - 1].motion = motion;
        return;
    }
    entries_.push_back({objectid, motion});
    slots_[i] = static_cast<std::uint32_t>(entries_.size());
}

bool FrameTable::erase(std::uint32_t objectid) {
    if (objectid == 0 || entries_.empty()) return false;
    std::size_t i = slotOf(objectid);
    if (slots_[i] == 0) return false;
    const std::size_t e = slots_[i] - 1;

    // Close the gap in the probe sequence (backward shift): a later entry moves
    // into the hole unless its home lies cyclically in (hole, j].
    std::size_t hole = i;
    for (std::size_t j = (i + 1) & mask_; slots_[j] != 0; j = (j + 1) & mask_) {
        const std::size_t k = home(entries_[slots_[j] - 1].objectid);
        const bool homeBetween = hole <= j ? (hole < k && k <= j) : (hole < k || k <= j);
        if (homeBetween) continue;
        slots_[hole] = slots_[j];
        hole = j;
    }
    slots_[hole] = 0;

    // Move the last entry into the freed place of the dense table.
    const std::size_t last = entries_.size() - 1;
    if (e != last) {
        entries_[e] = entries_[last];
        slots_[slotOf(entries_[e].objectid)] = static_cast<std::uint32_t>(e + 1);
    }
    entries_.pop_back();
    return true;
}

const MotionBlock* FrameTable::find(std::uint32_t objectid) const {
    if (objectid == 0 || entries_.empty()) return nullptr;
    const std::size_t i = slotOf(objectid);
    return slots_[i] == 0 ? nullptr : &entries_[slots_[i] - 1].motion;
}

void FrameTable::clear() {
    if (entries_.empty()) return;
    entries_.clear();
    std::fill(slots_.begin(), slots_.end(), 0u);
}

void FrameTable::swap(FrameTable& other) noexcept {
    entries_.swap(other.entries_);
    slots_.swap(other.slots_);
    std::swap(mask_, other.mask_);
}

}  // namespace tfx
