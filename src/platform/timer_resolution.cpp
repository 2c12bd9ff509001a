#include "platform/timer_resolution.h"

#ifdef _WIN32
#include "platform/windows_headers.h"

#include <mmsystem.h>
#endif

namespace tfx {

#ifdef _WIN32
constexpr UINT TIMER_PERIOD_MS = 1;
#endif

bool pf_beginMillisecondTimer() {
#ifdef _WIN32
    return ::timeBeginPeriod(TIMER_PERIOD_MS) == TIMERR_NOERROR;
#else
    return true;
#endif
}

void pf_endMillisecondTimer() {
#ifdef _WIN32
    ::timeEndPeriod(TIMER_PERIOD_MS);
#endif
}

}  // namespace tfx
