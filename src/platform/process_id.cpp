#include "platform/process_id.h"

#ifdef _WIN32
#include "platform/windows_headers.h"
#else
#include <unistd.h>
#endif

namespace tfx {

std::uint64_t pf_processId() {
#ifdef _WIN32
    return static_cast<std::uint64_t>(::GetCurrentProcessId());
#else
    return static_cast<std::uint64_t>(::getpid());
#endif
}

}  // namespace tfx
