#include "platform/instance_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

namespace tfx {
namespace {

bool lf_lock(const std::filesystem::path& path, int flags, InstanceLock& lock) {
    const int fd = ::open(path.c_str(), flags | O_CLOEXEC, 0644);
    if (fd < 0)
        throw std::runtime_error("cannot open " + path.string() + ": " + std::strerror(errno));
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        ::close(fd);
        return false;
    }
    lock.fd = fd;
    return true;
}

}  // namespace

bool pf_acquireInstanceLock(const std::filesystem::path& lockFile, InstanceLock& lock) {
    return lf_lock(lockFile, O_RDWR | O_CREAT, lock);
}

bool pf_acquireFolderLock(const std::filesystem::path& folder, InstanceLock& lock) {
    return lf_lock(folder, O_RDONLY | O_DIRECTORY, lock);
}

void pf_releaseInstanceLock(InstanceLock& lock) {
    if (lock.fd < 0) return;
    ::flock(lock.fd, LOCK_UN);
    ::close(lock.fd);
    lock.fd = -1;
}

}  // namespace tfx
