#include "platform/wide_text.h"

namespace tfx {

// Paths here are bytes, UTF-8 by convention.
std::filesystem::path pf_pathFromUtf8(std::string_view text) {
    return std::filesystem::path(std::string(text));
}

std::string pf_pathToUtf8(const std::filesystem::path& path) {
    return path.string();
}

}  // namespace tfx
