// Swapping a freshly written file into its place in one step, so that a reader
// sees the old file or the new one, never half of either.
#pragma once

#include <filesystem>
#include <system_error>

namespace tfx {

// Replaces target by source (rename; ReplaceFileW/MoveFileExW on Windows).
bool pf_replaceFile(const std::filesystem::path& source, const std::filesystem::path& target,
                    std::error_code& ec);

// The name a file is written under before it is swapped in: beside the
// target, so the swap never crosses file systems.
std::filesystem::path pf_temporaryNameFor(const std::filesystem::path& target);

}  // namespace tfx
