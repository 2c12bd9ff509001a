// The process that owns a working file, read from its name ("<name>.tmp<pid>").
#include <string>

#include "platform/file_replace.h"

namespace tfx {

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

}  // namespace tfx
