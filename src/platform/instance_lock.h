// One running ZEPT per user: a lock on a file in the data folder stands in
// for the named mutex. The lock dies with the process, so a crash never
// leaves a stale lock behind.
#pragma once

#include <filesystem>

namespace tfx {

struct InstanceLock {
    int fd = -1;
};

// True when this process now holds the lock; false when another holds it.
// Throws std::runtime_error when the lock file cannot be opened.
bool pf_acquireInstanceLock(const std::filesystem::path& lockFile, InstanceLock& lock);
void pf_releaseInstanceLock(InstanceLock& lock);

}  // namespace tfx
