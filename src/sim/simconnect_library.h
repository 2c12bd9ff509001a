// The provider that talks to the simulator through its own client library,
// loaded at run time: SimConnect.dll on Windows (the built-in simulator's
// facade library stands in for it in the tests, on Linux as SimConnect.so).
//
// The library is looked for in a list of files, in order; the first that
// loads and has every function of simconnect_c_api.h is taken, and the log
// names it. When none does, the log lists every file with the reason, the
// window says where the library was looked for, and opening fails as it does
// while the simulator isn't running: the simulator thread keeps trying, and
// the list is tried again now and then, so a library copied in later is found
// without a restart. A loaded library stays for the life of the process.
#pragma once

#include <atomic>
#include <chrono>
#include <filesystem>
#include <mutex>
#include <string>
#include <vector>

#include "sim/simconnect_c_api.h"

namespace tfx {

// The files to try, in order. A named file (the run word "--simconnect
// FILE") is the only one. Otherwise, on Windows: SimConnect.dll beside the
// program, then in the "SimConnect SDK\lib" folder of the simulator's SDK,
// as the SDK installer names it in MSFS2024_SDK and MSFS_SDK and in its
// default folders "C:\MSFS 2024 SDK" and "C:\MSFS SDK", the SDK of the
// selected simulator first. Elsewhere no simulator exists: the list is empty.
std::vector<std::filesystem::path> gf_simConnectLibraryFiles(const std::filesystem::path& named,
                                                             bool msfs2020);

class SimConnectLibrary final : public SimConnectApi {
public:
    explicit SimConnectLibrary(std::vector<std::filesystem::path> files);
    SimConnectLibrary(const SimConnectLibrary&) = delete;
    SimConnectLibrary& operator=(const SimConnectLibrary&) = delete;

    // Tries the files now, unless a library is loaded; true when one is. A
    // failure is logged when it differs from the one logged last.
    bool load();
    bool loaded() const { return loaded_.load(std::memory_order_acquire); }
    // The file in use; empty until one is loaded.
    std::filesystem::path file() const;
    // Another list for the next attempts, while none is loaded.
    void setFiles(std::vector<std::filesystem::path> files);

    // Loads the library first when needed: at the first open, then at most
    // once per retry pause.
    HRESULT SimConnect_Open(HANDLE* phSimConnect, LPCSTR szName, HWND hWnd, DWORD UserEventWin32,
                            HANDLE hEventHandle, DWORD ConfigIndex) override;
    HRESULT SimConnect_Close(HANDLE hSimConnect) override;
    // The records reach pfcnDispatch unchanged, through a relay that keeps
    // an exception out of the library's frames: it is thrown here once the
    // library has returned, and the records after it in that round are lost.
    HRESULT SimConnect_CallDispatch(HANDLE hSimConnect, DispatchProc pfcnDispatch,
                                    void* pContext) override;

#define TFX_DECLARE_FORWARD(name, params, args) HRESULT name params override;
    TFX_SIMCONNECT_PLAIN_FUNCTIONS(TFX_DECLARE_FORWARD)
#undef TFX_DECLARE_FORWARD

private:
    struct Functions {
#define TFX_FUNCTION_POINTER(name, params, args) \
    HRESULT(TFX_SIMCONNECT_CALL* name) params = nullptr;
        TFX_SIMCONNECT_FUNCTIONS(TFX_FUNCTION_POINTER)
#undef TFX_FUNCTION_POINTER
    };

    bool loadLocked();

    mutable std::mutex mutex_;
    std::vector<std::filesystem::path> files_;
    std::filesystem::path file_;
    Functions functions_;
    std::atomic<bool> loaded_{false};
    std::chrono::steady_clock::time_point lastTry_{};
    bool tried_ = false;
    std::string lastReport_;  // the failure last logged, so that a wait logs it once
};

}  // namespace tfx
