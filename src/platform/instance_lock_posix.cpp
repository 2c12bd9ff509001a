#include "platform/instance_lock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <string>

namespace tfx {

bool pf_acquireInstanceLock(const std::filesystem::path& lockFile, InstanceLock& lock) {
    const int fd = ::open(lockFile.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (fd < 0)
        throw std::runtime_error("cannot open " + lockFile.string() + ": " + std::strerror(errno));
    if (::flock(fd, LOCK_EX | LOCK_NB) != 0) {
        ::close(fd);
        return false;
    }
    lock.fd = fd;
    return true;
}

void pf_releaseInstanceLock(InstanceLock& lock) {
    if (lock.fd < 0) return;
    ::flock(lock.fd, LOCK_UN);
    ::close(lock.fd);
    lock.fd = -1;
}

}  // namespace tfx
