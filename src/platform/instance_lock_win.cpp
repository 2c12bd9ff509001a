#include "platform/instance_lock.h"

#include <cwctype>
#include <stdexcept>
#include <string>

#include "platform/windows_headers.h"

namespace tfx {

namespace {

bool lf_takeMutex(const std::wstring& name, InstanceLock& lock) {
    HANDLE mutex = ::CreateMutexW(nullptr, FALSE, name.c_str());
    if (mutex == nullptr)
        throw std::runtime_error("CreateMutex failed, error " + std::to_string(::GetLastError()));
    if (::GetLastError() == ERROR_ALREADY_EXISTS) {
        ::CloseHandle(mutex);
        return false;
    }
    lock.mutex = mutex;
    return true;
}

}  // namespace

bool pf_acquireInstanceLock(const std::filesystem::path&, InstanceLock& lock) {
    // "Local\" keeps the name to this logon session: another user on the
    // same machine may run a ZEPT of their own.
    return lf_takeMutex(L"Local\\$ZEPT$", lock);
}

bool pf_acquireFolderLock(const std::filesystem::path& folder, InstanceLock& lock) {
    // A mutex named after the folder's full path, upper-cased (the file
    // system ignores case); backslashes are not allowed in the name.
    std::wstring name = std::filesystem::absolute(folder).lexically_normal().wstring();
    for (wchar_t& c : name) {
        if (c == L'\\') c = L'/';
        c = static_cast<wchar_t>(std::towupper(c));
    }
    return lf_takeMutex(L"Local\\$ZEPT$folder$" + name, lock);
}

void pf_releaseInstanceLock(InstanceLock& lock) {
    if (lock.mutex == nullptr) return;
    ::CloseHandle(static_cast<HANDLE>(lock.mutex));
    lock.mutex = nullptr;
}

}  // namespace tfx
