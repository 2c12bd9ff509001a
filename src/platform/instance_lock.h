// One running ZEPT per user: a lock on a file in the data folder stands in
// for the named mutex. The lock dies with the process, so a crash never
// leaves a stale lock behind.
#pragma once

#include <filesystem>

namespace tfx {

struct InstanceLock {
#ifdef _WIN32
    void* mutex = nullptr;  // the named mutex "Local\$ZEPT$"
#else
    int fd = -1;
#endif
};

// True when this process now holds the lock; false when another holds it.
// Throws std::runtime_error when the lock file cannot be opened. On Windows
// the lock is the named mutex of the user's session and lockFile is unused.
bool pf_acquireInstanceLock(const std::filesystem::path& lockFile, InstanceLock& lock);
void pf_releaseInstanceLock(InstanceLock& lock);

}  // namespace tfx
