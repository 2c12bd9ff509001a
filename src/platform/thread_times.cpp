#include "platform/thread_times.h"

#ifdef _WIN32
#include "platform/windows_headers.h"
#else
#include <sys/resource.h>
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
    rusage usage{};
    if (::getrusage(RUSAGE_THREAD, &usage) == 0) {
        t.cpu_us = (usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) * 1000000LL +
                   usage.ru_utime.tv_usec + usage.ru_stime.tv_usec;
        t.waits = usage.ru_nvcsw;
    }
#endif
    return t;
}

}  // namespace tfx
