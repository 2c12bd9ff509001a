// The counting hook: the program's own operator new, which counts on the
// calling thread and takes its memory from malloc, so that the library's
// operator delete (free) matches it. Compiled in only where no sanitizer
// replaces the allocator.
#include "traffic/allocation_count.h"

#include <cstdlib>
#include <new>

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define ZEPT_COUNT_ALLOCATIONS 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || \
    __has_feature(memory_sanitizer)
#define ZEPT_COUNT_ALLOCATIONS 0
#endif
#endif
#ifndef ZEPT_COUNT_ALLOCATIONS
#define ZEPT_COUNT_ALLOCATIONS 1
#endif

namespace {
// Constant-initialised: safe to touch from operator new at any time.
thread_local std::uint64_t threadAllocations = 0;
}  // namespace

namespace tfx {

bool gf_allocationsCounted() {
    return ZEPT_COUNT_ALLOCATIONS != 0;
}

std::uint64_t gf_threadAllocations() {
    return threadAllocations;
}

}  // namespace tfx

#if ZEPT_COUNT_ALLOCATIONS

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic ignored "-Wmismatched-new-delete"
#endif

void* operator new(std::size_t size) {
    ++threadAllocations;
    for (;;) {
        if (void* p = std::malloc(size == 0 ? 1 : size)) return p;
        const std::new_handler handler = std::get_new_handler();
        if (handler == nullptr) throw std::bad_alloc();
        handler();
    }
}
void* operator new[](std::size_t size) {
    return ::operator new(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return ::operator new(size);
    } catch (...) {
        return nullptr;
    }
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    try {
        return ::operator new(size);
    } catch (...) {
        return nullptr;
    }
}
void operator delete(void* p) noexcept {
    std::free(p);
}
void operator delete[](void* p) noexcept {
    std::free(p);
}
void operator delete(void* p, std::size_t) noexcept {
    std::free(p);
}
void operator delete[](void* p, std::size_t) noexcept {
    std::free(p);
}

#endif
