#include "platform/file_replace.h"

#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <string>

namespace tfx {

bool pf_replaceFile(const std::filesystem::path& source, const std::filesystem::path& target,
                    std::error_code& ec) {
    ec.clear();
    std::filesystem::rename(source, target, ec);
    return !ec;
}

std::filesystem::path pf_temporaryNameFor(const std::filesystem::path& target) {
    std::filesystem::path tmp = target;
    tmp += ".tmp" + std::to_string(static_cast<long>(::getpid()));
    return tmp;
}

bool pf_processAlive(std::uint64_t processId) {
    if (processId == 0 || processId > 0x7fffffffu) return false;
    // Signal 0 only asks; EPERM means it runs under another user.
    return ::kill(static_cast<pid_t>(processId), 0) == 0 || errno == EPERM;
}

}  // namespace tfx
