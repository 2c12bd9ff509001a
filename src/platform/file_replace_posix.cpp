#include "platform/file_replace.h"

#include <unistd.h>

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

}  // namespace tfx
