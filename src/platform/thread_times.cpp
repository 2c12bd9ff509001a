#include "platform/thread_times.h"

#ifdef _WIN32
#include "platform/windows_headers.h"
#else
#include <sys/resource.h>
#include <time.h>
#endif

namespace tfx {

ThreadTimes pf_threadTimes() {
    ThreadTimes t;
#ifdef _WIN32
    FILETIME created, ended, kernel, user;
    if (::GetThreadTimes(::GetCurrentThread(), &created, &ended, &kernel, &user)) {
        const auto ticks = [](const FILETIME& f) {
            return (static_cast<std::int64_t>(f.dwHighDateTime) << 32) | f.dwLowDateTime;
        };
        t.cpu_us = (ticks(kernel) + ticks(user)) / 10;  // 100 ns units, coarse
    }
#else
    // The thread's clock is exact; the usage record's times are apportioned
    // from samples and may jump by milliseconds between two calls.
    timespec cpu{};
    if (::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &cpu) == 0)
        t.cpu_us = static_cast<std::int64_t>(cpu.tv_sec) * 1000000LL + cpu.tv_nsec / 1000;
    rusage usage{};
    if (::getrusage(RUSAGE_THREAD, &usage) == 0) t.waits = usage.ru_nvcsw;
#endif
    return t;
}

}  // namespace tfx
