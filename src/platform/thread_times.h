// The calling thread's own processor time and how often it gave the
// processor up of its own accord (a wait on a lock, a disk, a socket), for
// telling a tick's work from the time it waited or was pushed aside.
#pragma once

#include <cstdint>

namespace tfx {

struct ThreadTimes {
    std::int64_t cpu_us = 0;
    std::int64_t waits = -1;  // voluntary switches; -1 where the system doesn't count them
};

ThreadTimes pf_threadTimes();

}  // namespace tfx
