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

std::optional<std::uint64_t> pf_temporaryOwner(const std::filesystem::path& file) {
    const std::string name = file.filename().string();
    const auto mark = name.rfind(".tmp");
    if (mark == std::string::npos || mark == 0) return std::nullopt;
    const std::string digits = name.substr(mark + 4);
    if (digits.empty() || digits.size() > 10) return std::nullopt;
    std::uint64_t id = 0;
    for (char c : digits) {
        if (c < '0' || c > '9') return std::nullopt;
        id = id * 10 + static_cast<std::uint64_t>(c - '0');
    }
    return id;
}

bool pf_processAlive(std::uint64_t processId) {
    if (processId == 0 || processId > 0x7fffffffu) return false;
    // Signal 0 only asks; EPERM means it runs under another user.
    return ::kill(static_cast<pid_t>(processId), 0) == 0 || errno == EPERM;
}

}  // namespace tfx
