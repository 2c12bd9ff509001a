// Heap allocations counted per thread, so that the tick can show it never
// allocates in its steady state. Builds with a sanitizer bring their own
// allocator; they count nothing.
#pragma once

#include <cstdint>

namespace tfx {

// Whether this build counts allocations.
bool gf_allocationsCounted();
// Allocations made by the calling thread since it started (0 when not counted).
std::uint64_t gf_threadAllocations();

}  // namespace tfx
