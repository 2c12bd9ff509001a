// The built-in simulator behind the C functions of the simulator's client
// library, built as a shared library of the same name (SimConnect.dll,
// SimConnect.so), so that the provider for the real library runs its whole
// path in the tests: loading, every call, the bytes of every record, the
// dispatch callbacks and the exception records that quote packet ids.
//
// It plays the simulator of another process. The simulator starts at the
// first call, from the scenario that the program's own built-in simulator
// would read (ZEPT_SIM_SCENARIO, else sim_scenario.json in the working
// folder); ZEPT_SIM_RECORD names a CSV file for every position it is sent,
// ZEPT_SIM_LOG a log of its own. It lives to the end of the process.
//
// The functions are exactly those of simconnect_c_api.h, no more; nothing
// else leaves the library (the export list holds them alone), so the copy of
// the program's code inside it never mixes with the program's own.
#include <memory>

#include "app/log.h"
#include "platform/process_inputs.h"
#include "sim/builtin/builtin_sim_start.h"
#include "sim/simconnect_c_api.h"
#include "sim/simconnect_layouts.h"

#ifdef _WIN32
#define TFX_FACADE_EXPORT __declspec(dllexport)
#else
#define TFX_FACADE_EXPORT __attribute__((visibility("default")))
#endif

namespace {

std::filesystem::path lf_envPath(const char* name) {
    return tfx::pf_environmentPath(name).value_or(std::filesystem::path());
}

struct Facade {
    Facade() {
        if (const auto log = lf_envPath("ZEPT_SIM_LOG"); !log.empty()) tfx::gf_openLogAt(log);
        sim = tfx::gf_startBuiltinSim(lf_envPath("ZEPT_SIM_RECORD"));
    }
    ~Facade() {
        sim.reset();  // the recording takes its name
        tfx::gf_closeLog();
    }
    std::unique_ptr<tfx::BuiltinSim> sim;
};

tfx::BuiltinSim& lf_sim() {
    static Facade facade;
    return *facade.sim;
}

// Nothing may leave a C function as an exception.
template <class Call>
tfx::HRESULT lf_guarded(Call call) noexcept {
    try {
        return call();
    } catch (...) {
        return tfx::E_FAIL;
    }
}

}  // namespace

using namespace tfx;

extern "C" {

// The simulator's clock stands while no client is connected, so that its
// thread is never running when the process ends: on Windows a library's
// thread can't be joined while the library is being unloaded.
TFX_FACADE_EXPORT HRESULT TFX_SIMCONNECT_CALL SimConnect_Open(HANDLE* phSimConnect, LPCSTR szName,
                                                              HWND hWnd, DWORD UserEventWin32,
                                                              HANDLE hEventHandle,
                                                              DWORD ConfigIndex) {
    return lf_guarded([&] {
        lf_sim().startThread();
        return lf_sim().SimConnect_Open(phSimConnect, szName, hWnd, UserEventWin32, hEventHandle,
                                        ConfigIndex);
    });
}

TFX_FACADE_EXPORT HRESULT TFX_SIMCONNECT_CALL SimConnect_CallDispatch(HANDLE hSimConnect,
                                                                      SimConnectDispatchProc proc,
                                                                      void* pContext) {
    return lf_guarded(
        [&] { return lf_sim().SimConnect_CallDispatch(hSimConnect, proc, pContext); });
}

TFX_FACADE_EXPORT HRESULT TFX_SIMCONNECT_CALL SimConnect_Close(HANDLE hSimConnect) {
    return lf_guarded([&] {
        const HRESULT hr = lf_sim().SimConnect_Close(hSimConnect);
        if (lf_sim().openConnections() == 0) lf_sim().stopThread();
        return hr;
    });
}

#define TFX_EXPORT_FUNCTION(name, params, args)                 \
    TFX_FACADE_EXPORT HRESULT TFX_SIMCONNECT_CALL name params { \
        return lf_guarded([&] { return lf_sim().name args; });  \
    }
TFX_SIMCONNECT_PLAIN_FUNCTIONS(TFX_EXPORT_FUNCTION)
#undef TFX_EXPORT_FUNCTION

}  // extern "C"
