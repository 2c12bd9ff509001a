// The simulator thread's frame step with 500 and 2000 objects: the swap of
// the position maps, one position per object, and a burst of commands (a
// light set for every tenth object, a few creates and removals). The
// simulator behind it accepts every call at once, so the time is this
// program's own.
#include <benchmark/benchmark.h>

#include <cstdint>

#include "app/run_state.h"
#include "sim/sim_client_internal.h"
#include "sim/sim_queues.h"

namespace tfx {
namespace {

struct AcceptingSim final : SimConnectApi {
    DWORD packets = 0;
    HRESULT SimConnect_Open(HANDLE*, LPCSTR, HWND, DWORD, HANDLE, DWORD) override { return S_OK; }
    HRESULT SimConnect_Close(HANDLE) override { return S_OK; }
    HRESULT SimConnect_CallDispatch(HANDLE, DispatchProc, void*) override { return S_OK; }
    HRESULT SimConnect_GetLastSentPacketID(HANDLE, DWORD* id) override {
        *id = packets;
        return S_OK;
    }
    HRESULT SimConnect_SubscribeToSystemEvent(HANDLE, SIMCONNECT_CLIENT_EVENT_ID,
                                              const char*) override {
        return S_OK;
    }
    HRESULT SimConnect_AddToDataDefinition(HANDLE, SIMCONNECT_DATA_DEFINITION_ID, const char*,
                                           const char*, SIMCONNECT_DATATYPE, float,
                                           DWORD) override {
        return S_OK;
    }
    HRESULT SimConnect_MapClientEventToSimEvent(HANDLE, SIMCONNECT_CLIENT_EVENT_ID,
                                                const char*) override {
        return S_OK;
    }
    HRESULT SimConnect_AddClientEventToNotificationGroup(HANDLE, SIMCONNECT_NOTIFICATION_GROUP_ID,
                                                         SIMCONNECT_CLIENT_EVENT_ID,
                                                         BOOL) override {
        return S_OK;
    }
    HRESULT SimConnect_SetNotificationGroupPriority(HANDLE, SIMCONNECT_NOTIFICATION_GROUP_ID,
                                                    DWORD) override {
        return S_OK;
    }
    HRESULT SimConnect_RequestDataOnSimObject(HANDLE, SIMCONNECT_DATA_REQUEST_ID,
                                              SIMCONNECT_DATA_DEFINITION_ID, SIMCONNECT_OBJECT_ID,
                                              SIMCONNECT_PERIOD, SIMCONNECT_DATA_REQUEST_FLAG,
                                              DWORD, DWORD, DWORD) override {
        return S_OK;
    }
    HRESULT SimConnect_RequestDataOnSimObjectType(HANDLE, SIMCONNECT_DATA_REQUEST_ID,
                                                  SIMCONNECT_DATA_DEFINITION_ID, DWORD,
                                                  SIMCONNECT_SIMOBJECT_TYPE) override {
        return S_OK;
    }
    HRESULT SimConnect_SetDataOnSimObject(HANDLE, SIMCONNECT_DATA_DEFINITION_ID,
                                          SIMCONNECT_OBJECT_ID, SIMCONNECT_DATA_SET_FLAG, DWORD,
                                          DWORD, void* data) override {
        benchmark::DoNotOptimize(data);
        return S_OK;
    }
    HRESULT SimConnect_AICreateNonATCAircraft(HANDLE, const char*, const char*,
                                              SIMCONNECT_DATA_INITPOSITION,
                                              SIMCONNECT_DATA_REQUEST_ID) override {
        ++packets;
        return S_OK;
    }
    HRESULT SimConnect_AIReleaseControl(HANDLE, SIMCONNECT_OBJECT_ID,
                                        SIMCONNECT_DATA_REQUEST_ID) override {
        return S_OK;
    }
    HRESULT SimConnect_AIRemoveObject(HANDLE, SIMCONNECT_OBJECT_ID,
                                      SIMCONNECT_DATA_REQUEST_ID) override {
        return S_OK;
    }
    HRESULT SimConnect_AISetAircraftFlightPlan(HANDLE, SIMCONNECT_OBJECT_ID, const char*,
                                               SIMCONNECT_DATA_REQUEST_ID) override {
        return S_OK;
    }
    HRESULT SimConnect_TransmitClientEvent(HANDLE, SIMCONNECT_OBJECT_ID, SIMCONNECT_CLIENT_EVENT_ID,
                                           DWORD, SIMCONNECT_NOTIFICATION_GROUP_ID,
                                           SIMCONNECT_EVENT_FLAG) override {
        return S_OK;
    }
    HRESULT SimConnect_AddToFacilityDefinition(HANDLE, SIMCONNECT_DATA_DEFINITION_ID,
                                               const char*) override {
        return S_OK;
    }
    HRESULT SimConnect_RequestFacilityData(HANDLE, SIMCONNECT_DATA_DEFINITION_ID,
                                           SIMCONNECT_DATA_REQUEST_ID, const char*,
                                           const char*) override {
        return S_OK;
    }
};

void BM_SimFrameStep(benchmark::State& state) {
    const auto count = static_cast<std::uint32_t>(state.range(0));
    AcceptingSim sim;
    SimConnectApi* before = gf_setSimConnectApi(&sim);
    gf_clearSimBuffers();
    SimRunState = 2;
    HANDLE handle = reinterpret_cast<HANDLE>(std::uintptr_t{1});
    CreateRequest create;
    create.title = "Airbus A320 Neo Asobo";
    create.callsign = "BENCH1";
    create.hexid = 0x400000;
    MotionBlock motion;
    for (auto _ : state) {
        state.PauseTiming();
        for (std::uint32_t id = 3; id < count + 3; ++id) {
            motion.lat = 51 + id * 1e-5;
            gf_framePut(id, motion);
            if (id % 10 == 0) gf_setLights(id, Lights{true, true, false, false, true, true, true});
        }
        gf_publishFrame();
        for (int i = 0; i < 2; ++i) {
            gf_queueCreate(create);
            gf_queueRemoval(count + 100 + static_cast<std::uint32_t>(i));
        }
        state.ResumeTiming();
        lf_frameStep(handle);
    }
    // Creates are never answered here; the tables only grow.
    pendingCreates.clear();
    packetRequests.clear();
    gf_clearSimBuffers();
    SimRunState = 0;
    gf_setSimConnectApi(before);
    state.counters["objects"] = count;
}
BENCHMARK(BM_SimFrameStep)->Arg(500)->Arg(2000)->Unit(benchmark::kMicrosecond);

}  // namespace
}  // namespace tfx
