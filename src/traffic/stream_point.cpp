#include "traffic/stream_point.h"

#include <bit>

namespace tfx {

namespace {
constexpr std::size_t FIRST_CAPACITY = 16;
}

void PointQueue::reserve(std::size_t n) {
    if (n <= ring_.size()) return;
    std::vector<StreamPoint> bigger(std::bit_ceil(n));
    for (std::size_t i = 0; i < count_; ++i) bigger[i] = (*this)[i];
    ring_.swap(bigger);
    mask_ = ring_.size() - 1;
    head_ = 0;
}

void PointQueue::grow() {
    reserve(ring_.empty() ? FIRST_CAPACITY : ring_.size() * 2);
}

void PointQueue::push_back(const StreamPoint& p) {
    if (count_ == ring_.size()) grow();
    ring_[(head_ + count_) & mask_] = p;
    ++count_;
}

void PointQueue::push_front(const StreamPoint& p) {
    if (count_ == ring_.size()) grow();
    head_ = (head_ + ring_.size() - 1) & mask_;
    ring_[head_] = p;
    ++count_;
}

void PointQueue::insert(std::size_t index, const StreamPoint& p) {
    if (index > count_) index = count_;
    push_back(p);
    for (std::size_t i = count_ - 1; i > index; --i) (*this)[i] = (*this)[i - 1];
    (*this)[index] = p;
}

void PointQueue::pop_front() {
    if (count_ == 0) return;
    head_ = (head_ + 1) & mask_;
    --count_;
}

void PointQueue::pop_back() {
    if (count_ > 0) --count_;
}

void PointQueue::erase(std::size_t first, std::size_t last) {
    if (last > count_) last = count_;
    if (first >= last) return;
    const std::size_t gap = last - first;
    for (std::size_t i = first; i + gap < count_; ++i) (*this)[i] = (*this)[i + gap];
    count_ -= gap;
}

}  // namespace tfx
