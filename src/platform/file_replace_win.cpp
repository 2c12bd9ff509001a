#include "platform/file_replace.h"

#include <chrono>
#include <string>
#include <thread>

#include "platform/process_id.h"
#include "platform/windows_headers.h"

namespace tfx {
namespace {

// Windows refuses to replace a file that another handle holds open without
// delete sharing (a reader, a virus scanner, an editor). Such holds are
// usually short, so the swap is tried again for about half a second before
// the failure is reported.
constexpr int REPLACE_TRIES = 10;
constexpr auto REPLACE_PAUSE = std::chrono::milliseconds(50);

bool lf_isTransient(DWORD error) {
    return error == ERROR_SHARING_VIOLATION || error == ERROR_ACCESS_DENIED ||
           error == ERROR_LOCK_VIOLATION || error == ERROR_UNABLE_TO_MOVE_REPLACEMENT ||
           error == ERROR_UNABLE_TO_REMOVE_REPLACED;
}

DWORD lf_replaceOnce(const std::wstring& source, const std::wstring& target) {
    // ReplaceFileW keeps the target's attributes and security; it needs the
    // target to exist, so a first write falls back to a plain move.
    if (::ReplaceFileW(target.c_str(), source.c_str(), nullptr, REPLACEFILE_IGNORE_MERGE_ERRORS,
                       nullptr, nullptr))
        return ERROR_SUCCESS;
    const DWORD error = ::GetLastError();
    if (error != ERROR_FILE_NOT_FOUND) return error;
    if (::MoveFileExW(source.c_str(), target.c_str(),
                      MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        return ERROR_SUCCESS;
    return ::GetLastError();
}

}  // namespace

bool pf_replaceFile(const std::filesystem::path& source, const std::filesystem::path& target,
                    std::error_code& ec) {
    ec.clear();
    // Full paths: some implementations of ReplaceFileW (Wine's) refuse
    // relative ones.
    const std::wstring sourcePath = std::filesystem::absolute(source, ec).wstring();
    const std::wstring targetPath = std::filesystem::absolute(target, ec).wstring();
    if (ec) return false;
    // A folder is never replaced by a file (some implementations would move
    // the folder aside).
    const DWORD attributes = ::GetFileAttributesW(targetPath.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        ec = std::error_code(ERROR_ACCESS_DENIED, std::system_category());
        return false;
    }
    DWORD error = ERROR_SUCCESS;
    for (int attempt = 0; attempt < REPLACE_TRIES; ++attempt) {
        if (attempt > 0) std::this_thread::sleep_for(REPLACE_PAUSE);
        error = lf_replaceOnce(sourcePath, targetPath);
        if (error == ERROR_SUCCESS) return true;
        if (!lf_isTransient(error)) break;
    }
    ec = std::error_code(static_cast<int>(error), std::system_category());
    return false;
}

std::filesystem::path pf_temporaryNameFor(const std::filesystem::path& target) {
    std::filesystem::path tmp = target;
    tmp += ".tmp" + std::to_string(pf_processId());
    return tmp;
}

bool pf_processAlive(std::uint64_t processId) {
    if (processId == 0 || processId > 0xffffffffu) return false;
    HANDLE process =
        ::OpenProcess(PROCESS_QUERY_LIMITED_INFORMATION, FALSE, static_cast<DWORD>(processId));
    // Access denied means it runs under another user: alive all the same.
    if (process == nullptr) return ::GetLastError() == ERROR_ACCESS_DENIED;
    DWORD code = 0;
    const bool alive = ::GetExitCodeProcess(process, &code) && code == STILL_ACTIVE;
    ::CloseHandle(process);
    return alive;
}

}  // namespace tfx
