// Swapping a freshly written file into its place in one step, so that a reader
// sees the old file or the new one, never half of either.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <system_error>

namespace tfx {

// Replaces target by source (rename; ReplaceFileW/MoveFileExW on Windows).
bool pf_replaceFile(const std::filesystem::path& source, const std::filesystem::path& target,
                    std::error_code& ec);

// The name a file is written under before it is swapped in: beside the
// target, so the swap never crosses file systems. "<target>.tmp<process id>".
std::filesystem::path pf_temporaryNameFor(const std::filesystem::path& target);

// The process that wrote a name of pf_temporaryNameFor's form, or nothing for
// any other name.
std::optional<std::uint64_t> pf_temporaryOwner(const std::filesystem::path& file);

// Whether a process with this identifier runs now (ours included).
bool pf_processAlive(std::uint64_t processId);

}  // namespace tfx
