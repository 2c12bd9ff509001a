// The built-in simulator: a stand-in for the flight simulator behind the
// SimConnect operations, good enough to run the whole program on Linux, in
// tests and in the demo.
//
// It keeps a world (the user aircraft from a scenario, AI objects, a simple
// terrain), answers the operations the way the simulator does (records come
// only through SimConnect_CallDispatch, on the caller's thread; errors the
// simulator finds come as exception records naming the packet), and records
// every position it is sent.
//
// Time runs in one of two ways: startThread() gives it its own thread on the
// real clock, like a simulator process; without the thread, advance() steps
// the clock and the frames deterministically, for tests.
//
// Like the real one it is rough by default (see SimRoughness): pitch is
// negative nose up and bank negative in a right turn, the altimeter reads
// off the true altitude, frames come unevenly and stall, creates are
// answered late, out of order or never, ids come back, and a scenario can
// make it crash or quit and return in the middle of a flight.
//
// Not modelled: physics (a released object stays where it was put), weather,
// ATC, echoes of client events to notification groups, the "tagged" data
// format and the origin/interval/limit arguments of a data request. Facility
// requests answer with no data: only the end record.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "sim/builtin/builtin_sim_state.h"
#include "sim/simconnect_api.h"

namespace tfx {

// A copy of one object's state, for tests and the demo.
struct SimObjectView {
    std::uint32_t objectId = 0;
    std::string title, atcId;
    double lat_deg = 0, lon_deg = 0, alt_ft = 0, heading_deg = 0;
    double ground_ft = 0;
    bool onGround = false;
    bool released = false;
    bool freezeLatLon = false, freezeAltitude = false, freezeAttitude = false;
    std::uint32_t lightsMask = 0;
    bool gearDown = true;
    double flaps_pct = 0, spoilers_pct = 0;
    double throttle1_pct = 0, throttle2_pct = 0;
    bool enginesRunning = false;
    std::string flightPlan;
    double pitch_deg = 0, bank_deg = 0;  // negative: nose up, right wing down
};

class BuiltinSim final : public SimConnectApi {
public:
    explicit BuiltinSim(BuiltinSimConfig config = {});
    ~BuiltinSim() override;
    BuiltinSim(const BuiltinSim&) = delete;
    BuiltinSim& operator=(const BuiltinSim&) = delete;

    // ---- the world ----
    // Reads a scenario file; a bad one is logged and the world stays as it
    // was. Its "installed" titles, when given, become the known titles.
    bool loadScenario(const std::filesystem::path& path);
    void setScenario(Scenario scenario);
    // The titles an AI create may use.
    void setKnownTitles(std::vector<KnownTitle> titles);
    // The habits alone, the seed started again (a scenario brings its own).
    void setRoughness(const SimRoughness& rough);

    // ---- the simulator's life ----
    void run();   // the simulator starts: SimConnect_Open works from now on
    void quit();  // QUIT to every connection; SimConnect_Open fails again
    // Gone without a word: the connections break, no QUIT record comes.
    void crash();
    // A flight (re)loads: AI objects go, "FlightLoaded" then "Sim" 1.
    void loadFlight();
    void pause(bool paused);  // "Pause", and "Sim" 0 / 1
    void endFlight();         // back to the menu: "Sim" 0, AI objects go
    // The user aircraft jumps to a position and stays there; no altitude:
    // on the ground.
    void teleportUser(double lat_deg, double lon_deg, std::optional<double> alt_ft = std::nullopt);

    // ---- time ----
    void startThread();
    void stopThread();
    // Without the thread: moves the clock on, firing every frame and timer
    // that falls due.
    void advance(std::int64_t ms);
    std::int64_t now_ms() const;

    // ---- what happened ----
    std::vector<RecordedPosition> recordedPositions() const;
    std::vector<RecordedPosition> recordedPositions(std::uint32_t objectId) const;
    bool writeRecordingCsv(const std::filesystem::path& path) const;
    // From now on every position also goes to this CSV file, which takes its
    // name when the recording ends (or the simulator goes); keeping positions
    // in memory can be switched off for long runs (limit 0).
    bool startRecordingFile(const std::filesystem::path& path);
    bool endRecordingFile();
    void setRecordingLimit(std::size_t positions);
    std::uint32_t eventCount(std::uint32_t objectId, std::string_view simEvent) const;
    std::optional<SimObjectView> object(std::uint32_t objectId) const;  // 0: the user
    std::vector<std::uint32_t> aiObjectIds() const;
    std::size_t openConnections() const;
    bool isRunning() const;
    double groundAltitudeFt(double lat_deg, double lon_deg) const;

    // ---- the operations ----
    HRESULT SimConnect_Open(HANDLE* phSimConnect, LPCSTR szName, HWND hWnd, DWORD UserEventWin32,
                            HANDLE hEventHandle, DWORD ConfigIndex) override;
    HRESULT SimConnect_Close(HANDLE hSimConnect) override;
    HRESULT SimConnect_CallDispatch(HANDLE hSimConnect, DispatchProc pfcnDispatch,
                                    void* pContext) override;
    HRESULT SimConnect_GetLastSentPacketID(HANDLE hSimConnect, DWORD* pdwSendID) override;
    HRESULT SimConnect_SubscribeToSystemEvent(HANDLE hSimConnect,
                                              SIMCONNECT_CLIENT_EVENT_ID EventID,
                                              const char* SystemEventName) override;
    HRESULT SimConnect_AddToDataDefinition(HANDLE hSimConnect,
                                           SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                           const char* DatumName, const char* UnitsName,
                                           SIMCONNECT_DATATYPE DatumType, float fEpsilon,
                                           DWORD DatumID) override;
    HRESULT SimConnect_MapClientEventToSimEvent(HANDLE hSimConnect,
                                                SIMCONNECT_CLIENT_EVENT_ID EventID,
                                                const char* EventName) override;
    HRESULT SimConnect_AddClientEventToNotificationGroup(HANDLE hSimConnect,
                                                         SIMCONNECT_NOTIFICATION_GROUP_ID GroupID,
                                                         SIMCONNECT_CLIENT_EVENT_ID EventID,
                                                         BOOL bMaskable) override;
    HRESULT SimConnect_SetNotificationGroupPriority(HANDLE hSimConnect,
                                                    SIMCONNECT_NOTIFICATION_GROUP_ID GroupID,
                                                    DWORD uPriority) override;
    HRESULT SimConnect_RequestDataOnSimObject(HANDLE hSimConnect,
                                              SIMCONNECT_DATA_REQUEST_ID RequestID,
                                              SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                              SIMCONNECT_OBJECT_ID ObjectID,
                                              SIMCONNECT_PERIOD Period,
                                              SIMCONNECT_DATA_REQUEST_FLAG Flags, DWORD origin,
                                              DWORD interval, DWORD limit) override;
    HRESULT SimConnect_RequestDataOnSimObjectType(HANDLE hSimConnect,
                                                  SIMCONNECT_DATA_REQUEST_ID RequestID,
                                                  SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                                  DWORD dwRadiusMeters,
                                                  SIMCONNECT_SIMOBJECT_TYPE type) override;
    HRESULT SimConnect_SetDataOnSimObject(HANDLE hSimConnect,
                                          SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                          SIMCONNECT_OBJECT_ID ObjectID,
                                          SIMCONNECT_DATA_SET_FLAG Flags, DWORD ArrayCount,
                                          DWORD cbUnitSize, void* pDataSet) override;
    HRESULT SimConnect_AICreateNonATCAircraft(HANDLE hSimConnect, const char* szContainerTitle,
                                              const char* szTailNumber,
                                              SIMCONNECT_DATA_INITPOSITION InitPos,
                                              SIMCONNECT_DATA_REQUEST_ID RequestID) override;
    HRESULT SimConnect_AIReleaseControl(HANDLE hSimConnect, SIMCONNECT_OBJECT_ID ObjectID,
                                        SIMCONNECT_DATA_REQUEST_ID RequestID) override;
    HRESULT SimConnect_AIRemoveObject(HANDLE hSimConnect, SIMCONNECT_OBJECT_ID ObjectID,
                                      SIMCONNECT_DATA_REQUEST_ID RequestID) override;
    HRESULT SimConnect_AISetAircraftFlightPlan(HANDLE hSimConnect, SIMCONNECT_OBJECT_ID ObjectID,
                                               const char* szFlightPlanPath,
                                               SIMCONNECT_DATA_REQUEST_ID RequestID) override;
    HRESULT SimConnect_TransmitClientEvent(HANDLE hSimConnect, SIMCONNECT_OBJECT_ID ObjectID,
                                           SIMCONNECT_CLIENT_EVENT_ID EventID, DWORD dwData,
                                           SIMCONNECT_NOTIFICATION_GROUP_ID GroupID,
                                           SIMCONNECT_EVENT_FLAG Flags) override;
    HRESULT SimConnect_AddToFacilityDefinition(HANDLE hSimConnect,
                                               SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                               const char* FieldName) override;
    HRESULT SimConnect_RequestFacilityData(HANDLE hSimConnect,
                                           SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                           SIMCONNECT_DATA_REQUEST_ID RequestID, const char* ICAO,
                                           const char* Region) override;

private:
    // The open connection a handle names, with a new packet counted; nullptr
    // for a closed, unknown or dead one. Call under the lock.
    bsim::Connection* sending(HANDLE handle);
    // Fires every frame due up to the time (under the lock).
    void stepTo(std::int64_t target_us);
    void runFrame();
    void threadBody(std::stop_token stop);

    mutable std::mutex mutex_;
    bsim::SimWorld world_;
    std::condition_variable_any wake_;
    std::jthread thread_;
};

}  // namespace tfx
