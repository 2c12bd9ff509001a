// Finding, loading and calling the simulator's client library.
#include "sim/simconnect_library.h"

#include <algorithm>
#include <exception>
#include <system_error>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "app/log.h"
#include "gui/gui.h"
#include "platform/process_inputs.h"
#include "platform/shared_library.h"

namespace tfx {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;

// While no library loads, the files are tried again at most this often.
constexpr auto RETRY_PAUSE = 10s;

// A path for the log and the window, in UTF-8 whatever the code page.
std::string lf_text(const fs::path& path) {
    const std::u8string text = path.u8string();
    return {text.begin(), text.end()};
}

#ifdef _WIN32
// Where the SDK keeps the library, below its top folder.
const fs::path SDK_LIBRARY = fs::path("SimConnect SDK") / "lib" / SIMCONNECT_LIBRARY_FILE;

struct SdkFolder {
    const char* variable;     // set by the SDK's installer
    const char* defaultPath;  // the installer's default folder
};
constexpr SdkFolder SDK_2024 = {"MSFS2024_SDK", "C:\\MSFS 2024 SDK"};
constexpr SdkFolder SDK_2020 = {"MSFS_SDK", "C:\\MSFS SDK"};

void lf_addOnce(std::vector<fs::path>& files, const fs::path& file) {
    if (std::find(files.begin(), files.end(), file) == files.end()) files.push_back(file);
}
#endif

// Why a file is no usable library; empty when it is, with every function set.
template <class Functions>
std::string lf_tryFile(const fs::path& file, Functions& functions) {
    std::error_code ec;
    if (!fs::is_regular_file(file, ec)) return "no such file";
    std::string why;
    void* library = pf_loadLibrary(file, why);
    if (library == nullptr) return fmt::format("can't be loaded: {}", why);
    std::vector<std::string> missing;
#define TFX_RESOLVE(name, params, args)                                                            \
    functions.name = reinterpret_cast<decltype(functions.name)>(pf_librarySymbol(library, #name)); \
    if (functions.name == nullptr) missing.emplace_back(#name);
    TFX_SIMCONNECT_FUNCTIONS(TFX_RESOLVE)
#undef TFX_RESOLVE
    if (missing.empty()) return {};
    functions = {};
    return fmt::format("is not the simulator's client library: it lacks {}",
                       fmt::join(missing, ", "));
}

struct Relay {
    DispatchProc proc;
    void* context;
    std::exception_ptr error;
};

void TFX_SIMCONNECT_CALL lf_relay(SIMCONNECT_RECV* data, DWORD cbData, void* context) {
    auto& relay = *static_cast<Relay*>(context);
    if (relay.error) return;
    try {
        relay.proc(data, cbData, relay.context);
    } catch (...) {
        relay.error = std::current_exception();
    }
}

}  // namespace

std::vector<fs::path> gf_simConnectLibraryFiles(const fs::path& named, bool msfs2020) {
    std::vector<fs::path> files;
    if (!named.empty()) {
        // Absolute, so that the libraries it needs are looked for beside it.
        std::error_code ec;
        const fs::path absolute = fs::absolute(named, ec);
        files.push_back(ec ? named : absolute);
        return files;
    }
#ifdef _WIN32
    if (const auto folder = pf_programFolder())
        lf_addOnce(files, *folder / SIMCONNECT_LIBRARY_FILE);
    const SdkFolder first = msfs2020 ? SDK_2020 : SDK_2024;
    const SdkFolder second = msfs2020 ? SDK_2024 : SDK_2020;
    for (const SdkFolder& sdk : {first, second})
        if (const auto folder = pf_environmentPath(sdk.variable))
            lf_addOnce(files, *folder / SDK_LIBRARY);
    for (const SdkFolder& sdk : {first, second})
        lf_addOnce(files, fs::path(sdk.defaultPath) / SDK_LIBRARY);
#else
    (void)msfs2020;
#endif
    return files;
}

SimConnectLibrary::SimConnectLibrary(std::vector<fs::path> files) : files_(std::move(files)) {}

fs::path SimConnectLibrary::file() const {
    std::lock_guard lock(mutex_);
    return file_;
}

void SimConnectLibrary::setFiles(std::vector<fs::path> files) {
    std::lock_guard lock(mutex_);
    files_ = std::move(files);
}

bool SimConnectLibrary::load() {
    std::lock_guard lock(mutex_);
    return loadLocked();
}

bool SimConnectLibrary::loadLocked() {
    if (loaded()) return true;
    std::string report;
    for (const fs::path& file : files_) {
        Functions functions;
        const std::string why = lf_tryFile(file, functions);
        if (why.empty()) {
            functions_ = functions;
            file_ = file;
            loaded_.store(true, std::memory_order_release);
            lastReport_.clear();
            gf_logLine(fmt::format("SimConnect library loaded: {}", lf_text(file)));
            return true;
        }
        report += fmt::format("\n    {}: {}", lf_text(file), why);
    }
    if (report != lastReport_) {
        lastReport_ = report;
        const std::string name = lf_text(SIMCONNECT_LIBRARY_FILE);
        if (files_.empty()) {
            gf_logError(fmt::format("No {} to look for", name));
        } else {
            gf_logError(fmt::format(
                "No usable {} was found; ZEPT talks to the simulator through it. Looked for:{}\n"
                "    It comes with the Microsoft Flight Simulator SDK (folder "
                "\"SimConnect SDK\\lib\"): install the SDK, or copy the file beside ZEPT's "
                "program. ZEPT waits for it as for the simulator.",
                name, report));
        }
    }
    // Shown at every attempt: the simulator thread's own waiting line comes
    // after the first one.
    std::vector<std::string> places;
    for (const fs::path& file : files_) places.push_back(lf_text(file.parent_path()));
    gf_showStatus(fmt::format("{} not found (looked in {}); waiting for it ...",
                              lf_text(SIMCONNECT_LIBRARY_FILE), fmt::join(places, "; ")));
    return false;
}

HRESULT SimConnectLibrary::SimConnect_Open(HANDLE* phSimConnect, LPCSTR szName, HWND hWnd,
                                           DWORD UserEventWin32, HANDLE hEventHandle,
                                           DWORD ConfigIndex) {
    if (phSimConnect != nullptr) *phSimConnect = nullptr;
    if (!loaded()) {
        std::lock_guard lock(mutex_);
        const auto now = std::chrono::steady_clock::now();
        if (tried_ && now - lastTry_ < RETRY_PAUSE) return E_FAIL;
        tried_ = true;
        lastTry_ = now;
        if (!loadLocked()) return E_FAIL;
    }
    return functions_.SimConnect_Open(phSimConnect, szName, hWnd, UserEventWin32, hEventHandle,
                                      ConfigIndex);
}

HRESULT SimConnectLibrary::SimConnect_Close(HANDLE hSimConnect) {
    if (!loaded()) return E_FAIL;
    return functions_.SimConnect_Close(hSimConnect);
}

HRESULT SimConnectLibrary::SimConnect_CallDispatch(HANDLE hSimConnect, DispatchProc pfcnDispatch,
                                                   void* pContext) {
    if (!loaded()) return E_FAIL;
    if (pfcnDispatch == nullptr) return E_INVALIDARG;
    Relay relay{pfcnDispatch, pContext, nullptr};
    const HRESULT hr = functions_.SimConnect_CallDispatch(hSimConnect, &lf_relay, &relay);
    if (relay.error) std::rethrow_exception(relay.error);
    return hr;
}

#define TFX_DEFINE_FORWARD(name, params, args) \
    HRESULT SimConnectLibrary::name params {   \
        if (!loaded()) return E_FAIL;          \
        return functions_.name args;           \
    }
TFX_SIMCONNECT_PLAIN_FUNCTIONS(TFX_DEFINE_FORWARD)
#undef TFX_DEFINE_FORWARD

}  // namespace tfx
