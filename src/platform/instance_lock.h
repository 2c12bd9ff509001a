// One running ZEPT per user and per program folder: a lock on a file in the
// data folder stands in for the named mutex, and a lock on the program folder
// itself keeps a second instance with another data folder out of the same
// Log.txt. The locks die with the process, so a crash never leaves a stale one.
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
// The same for a folder, which is locked as it stands: nothing is written into
// it, so a read-only folder can be locked too.
bool pf_acquireFolderLock(const std::filesystem::path& folder, InstanceLock& lock);
void pf_releaseInstanceLock(InstanceLock& lock);

}  // namespace tfx
