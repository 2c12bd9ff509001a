// Object identifier to the eight motion doubles that go to the simulator each
// frame. A dense table with an open-addressed index: clearing keeps the
// memory, so a steady number of objects never allocates.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tfx {

// The simulator's definition of a moving object, in this order, 64 bytes.
struct MotionBlock {
    double lat = 0, lon = 0;                  // degrees
    double pitch = 0, bank = 0, heading = 0;  // radians
    double alt = 0;                           // feet
    double vs = 0;                            // feet per minute
    double tas = 0;                           // knots
};
static_assert(sizeof(MotionBlock) == 64);

class FrameTable {
public:
    struct Entry {
        std::uint32_t objectid;
        MotionBlock motion;
    };

    void reserve(std::size_t n);
    // Inserts or overwrites. objectid 0 is never an object and is ignored.
    void put(std::uint32_t objectid, const MotionBlock& motion);
    bool erase(std::uint32_t objectid);
    const MotionBlock* find(std::uint32_t objectid) const;
    void clear();
    std::size_t size() const { return entries_.size(); }
    bool empty() const { return entries_.empty(); }
    void swap(FrameTable& other) noexcept;

    std::vector<Entry>::const_iterator begin() const { return entries_.begin(); }
    std::vector<Entry>::const_iterator end() const { return entries_.end(); }

private:
    std::size_t home(std::uint32_t objectid) const;
    std::size_t slotOf(std::uint32_t objectid) const;  // slot holding it, or an empty one
    void rehash(std::size_t slotCount);

    std::vector<Entry> entries_;
    std::vector<std::uint32_t> slots_;  // 0 empty, else index into entries_ + 1
    std::size_t mask_ = 0;
};

}  // namespace tfx
