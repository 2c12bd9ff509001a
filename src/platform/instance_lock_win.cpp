#include "platform/instance_lock.h"

#include <stdexcept>
#include <string>

#include "platform/windows_headers.h"

namespace tfx {

bool pf_acquireInstanceLock(const std::filesystem::path&, InstanceLock& lock) {
    // "Local\" keeps the name to this logon session: another user on the
    // same machine may run a ZEPT of their own.
    HANDLE mutex = ::CreateMutexW(nullptr, FALSE, L"Local\\$ZEPT$");
    if (mutex == nullptr)
        throw std::runtime_error("CreateMutex failed, error " + std::to_string(::GetLastError()));
    if (::GetLastError() == ERROR_ALREADY_EXISTS) {
        ::CloseHandle(mutex);
        return false;
    }
    lock.mutex = mutex;
    return true;
}

void pf_releaseInstanceLock(InstanceLock& lock) {
    if (lock.mutex == nullptr) return;
    ::CloseHandle(static_cast<HANDLE>(lock.mutex));
    lock.mutex = nullptr;
}

}  // namespace tfx
