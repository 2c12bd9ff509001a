// One timed position of an aircraft, and the double-ended queue of them that
// an aircraft flies along.
#pragma once

#include <cstddef>
#include <cstdint>
#include <iterator>
#include <vector>

namespace tfx {

struct StreamPoint {
    double lat = 0;
    double lon = 0;
    double alt = 0;         // feet; 0 on the ground
    double speed = 0;       // ground speed, knots
    double track = 0;       // ground track, degrees
    double vs = 0;          // feet per minute
    double tas = 0;         // knots
    std::int32_t time = 0;  // simTick at which the aircraft is to be here
    std::uint8_t inAir = 0;
    std::uint8_t same = 0;         // the aircraft does not move towards this point
    std::uint8_t hasAttitude = 0;  // heading and bank may steer the aircraft directly
    std::uint8_t inserted = 0;     // added by the engine in a ground turn
    double bank = 0;               // radians
    std::uint8_t bankValid = 0;
    double heading = 0;  // true heading, radians
    std::uint8_t headingValid = 0;
};

// A ring buffer with the operations of a double-ended queue. It only grows,
// so an aircraft that keeps a steady stream never allocates again.
class PointQueue {
public:
    PointQueue() = default;

    std::size_t size() const { return count_; }
    bool empty() const { return count_ == 0; }
    std::size_t capacity() const { return ring_.size(); }
    void reserve(std::size_t n);

    StreamPoint& operator[](std::size_t i) { return ring_[(head_ + i) & mask_]; }
    const StreamPoint& operator[](std::size_t i) const { return ring_[(head_ + i) & mask_]; }
    StreamPoint& front() { return (*this)[0]; }
    const StreamPoint& front() const { return (*this)[0]; }
    StreamPoint& back() { return (*this)[count_ - 1]; }
    const StreamPoint& back() const { return (*this)[count_ - 1]; }

    void push_back(const StreamPoint& p);
    void push_front(const StreamPoint& p);
    // Puts p at index (0 .. size), moving the points from there on back.
    void insert(std::size_t index, const StreamPoint& p);
    void pop_front();
    void pop_back();
    void clear() { head_ = count_ = 0; }
    // Keeps the first n points.
    void truncate(std::size_t n) {
        if (n < count_) count_ = n;
    }
    // Removes the points first .. last - 1, keeping the order of the rest.
    void erase(std::size_t first, std::size_t last);
    void erase(std::size_t index) { erase(index, index + 1); }

    template <typename Q, typename P>
    struct Iter {
        using iterator_category = std::forward_iterator_tag;
        using value_type = StreamPoint;
        using difference_type = std::ptrdiff_t;
        using pointer = P*;
        using reference = P&;
        Q* q = nullptr;
        std::size_t i = 0;
        P& operator*() const { return (*q)[i]; }
        P* operator->() const { return &(*q)[i]; }
        Iter& operator++() {
            ++i;
            return *this;
        }
        Iter operator++(int) {
            Iter old = *this;
            ++i;
            return old;
        }
        bool operator==(const Iter& o) const { return i == o.i; }
    };
    using iterator = Iter<PointQueue, StreamPoint>;
    using const_iterator = Iter<const PointQueue, const StreamPoint>;
    iterator begin() { return {this, 0}; }
    iterator end() { return {this, count_}; }
    const_iterator begin() const { return {this, 0}; }
    const_iterator end() const { return {this, count_}; }

private:
    void grow();
    std::vector<StreamPoint> ring_;
    std::size_t mask_ = 0;
    std::size_t head_ = 0;
    std::size_t count_ = 0;
};

}  // namespace tfx
