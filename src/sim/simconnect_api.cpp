// The free SimConnect operations: each forwards to the provider of the
// moment, or fails as an absent simulator would.
#include "sim/simconnect_api.h"

#include <atomic>

namespace tfx {

namespace {
std::atomic<SimConnectApi*> l_api{nullptr};
}  // namespace

SimConnectApi* gf_setSimConnectApi(SimConnectApi* api) {
    return l_api.exchange(api);
}
SimConnectApi* gf_simConnectApi() {
    return l_api.load();
}

#define TFX_FORWARD(call)              \
    SimConnectApi* api = l_api.load(); \
    if (api == nullptr) return E_FAIL; \
    return api->call

HRESULT SimConnect_Open(HANDLE* phSimConnect, LPCSTR szName, HWND hWnd, DWORD UserEventWin32,
                        HANDLE hEventHandle, DWORD ConfigIndex) {
    SimConnectApi* api = l_api.load();
    if (api == nullptr) {
        if (phSimConnect != nullptr) *phSimConnect = nullptr;
        return E_FAIL;
    }
    return api->SimConnect_Open(phSimConnect, szName, hWnd, UserEventWin32, hEventHandle,
                                ConfigIndex);
}
HRESULT SimConnect_Close(HANDLE hSimConnect) {
    TFX_FORWARD(SimConnect_Close(hSimConnect));
}
HRESULT SimConnect_CallDispatch(HANDLE hSimConnect, DispatchProc pfcnDispatch, void* pContext) {
    TFX_FORWARD(SimConnect_CallDispatch(hSimConnect, pfcnDispatch, pContext));
}
HRESULT SimConnect_GetLastSentPacketID(HANDLE hSimConnect, DWORD* pdwSendID) {
    TFX_FORWARD(SimConnect_GetLastSentPacketID(hSimConnect, pdwSendID));
}
HRESULT SimConnect_SubscribeToSystemEvent(HANDLE hSimConnect, SIMCONNECT_CLIENT_EVENT_ID EventID,
                                          const char* SystemEventName) {
    TFX_FORWARD(SimConnect_SubscribeToSystemEvent(hSimConnect, EventID, SystemEventName));
}
HRESULT SimConnect_AddToDataDefinition(HANDLE hSimConnect, SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                       const char* DatumName, const char* UnitsName,
                                       SIMCONNECT_DATATYPE DatumType, float fEpsilon,
                                       DWORD DatumID) {
    TFX_FORWARD(SimConnect_AddToDataDefinition(hSimConnect, DefineID, DatumName, UnitsName,
                                               DatumType, fEpsilon, DatumID));
}
HRESULT SimConnect_MapClientEventToSimEvent(HANDLE hSimConnect, SIMCONNECT_CLIENT_EVENT_ID EventID,
                                            const char* EventName) {
    TFX_FORWARD(SimConnect_MapClientEventToSimEvent(hSimConnect, EventID, EventName));
}
HRESULT SimConnect_AddClientEventToNotificationGroup(HANDLE hSimConnect,
                                                     SIMCONNECT_NOTIFICATION_GROUP_ID GroupID,
                                                     SIMCONNECT_CLIENT_EVENT_ID EventID,
                                                     BOOL bMaskable) {
    TFX_FORWARD(
        SimConnect_AddClientEventToNotificationGroup(hSimConnect, GroupID, EventID, bMaskable));
}
HRESULT SimConnect_SetNotificationGroupPriority(HANDLE hSimConnect,
                                                SIMCONNECT_NOTIFICATION_GROUP_ID GroupID,
                                                DWORD uPriority) {
    TFX_FORWARD(SimConnect_SetNotificationGroupPriority(hSimConnect, GroupID, uPriority));
}
HRESULT SimConnect_RequestDataOnSimObject(HANDLE hSimConnect, SIMCONNECT_DATA_REQUEST_ID RequestID,
                                          SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                          SIMCONNECT_OBJECT_ID ObjectID, SIMCONNECT_PERIOD Period,
                                          SIMCONNECT_DATA_REQUEST_FLAG Flags, DWORD origin,
                                          DWORD interval, DWORD limit) {
    TFX_FORWARD(SimConnect_RequestDataOnSimObject(hSimConnect, RequestID, DefineID, ObjectID,
                                                  Period, Flags, origin, interval, limit));
}
HRESULT SimConnect_RequestDataOnSimObjectType(HANDLE hSimConnect,
                                              SIMCONNECT_DATA_REQUEST_ID RequestID,
                                              SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                              DWORD dwRadiusMeters,
                                              SIMCONNECT_SIMOBJECT_TYPE type) {
    TFX_FORWARD(SimConnect_RequestDataOnSimObjectType(hSimConnect, RequestID, DefineID,
                                                      dwRadiusMeters, type));
}
HRESULT SimConnect_SetDataOnSimObject(HANDLE hSimConnect, SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                      SIMCONNECT_OBJECT_ID ObjectID, SIMCONNECT_DATA_SET_FLAG Flags,
                                      DWORD ArrayCount, DWORD cbUnitSize, void* pDataSet) {
    TFX_FORWARD(SimConnect_SetDataOnSimObject(hSimConnect, DefineID, ObjectID, Flags, ArrayCount,
                                              cbUnitSize, pDataSet));
}
HRESULT SimConnect_AICreateNonATCAircraft(HANDLE hSimConnect, const char* szContainerTitle,
                                          const char* szTailNumber,
                                          SIMCONNECT_DATA_INITPOSITION InitPos,
                                          SIMCONNECT_DATA_REQUEST_ID RequestID) {
    TFX_FORWARD(SimConnect_AICreateNonATCAircraft(hSimConnect, szContainerTitle, szTailNumber,
                                                  InitPos, RequestID));
}
HRESULT SimConnect_AIReleaseControl(HANDLE hSimConnect, SIMCONNECT_OBJECT_ID ObjectID,
                                    SIMCONNECT_DATA_REQUEST_ID RequestID) {
    TFX_FORWARD(SimConnect_AIReleaseControl(hSimConnect, ObjectID, RequestID));
}
HRESULT SimConnect_AIRemoveObject(HANDLE hSimConnect, SIMCONNECT_OBJECT_ID ObjectID,
                                  SIMCONNECT_DATA_REQUEST_ID RequestID) {
    TFX_FORWARD(SimConnect_AIRemoveObject(hSimConnect, ObjectID, RequestID));
}
HRESULT SimConnect_AISetAircraftFlightPlan(HANDLE hSimConnect, SIMCONNECT_OBJECT_ID ObjectID,
                                           const char* szFlightPlanPath,
                                           SIMCONNECT_DATA_REQUEST_ID RequestID) {
    TFX_FORWARD(
        SimConnect_AISetAircraftFlightPlan(hSimConnect, ObjectID, szFlightPlanPath, RequestID));
}
HRESULT SimConnect_TransmitClientEvent(HANDLE hSimConnect, SIMCONNECT_OBJECT_ID ObjectID,
                                       SIMCONNECT_CLIENT_EVENT_ID EventID, DWORD dwData,
                                       SIMCONNECT_NOTIFICATION_GROUP_ID GroupID,
                                       SIMCONNECT_EVENT_FLAG Flags) {
    TFX_FORWARD(
        SimConnect_TransmitClientEvent(hSimConnect, ObjectID, EventID, dwData, GroupID, Flags));
}
HRESULT SimConnect_AddToFacilityDefinition(HANDLE hSimConnect,
                                           SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                           const char* FieldName) {
    TFX_FORWARD(SimConnect_AddToFacilityDefinition(hSimConnect, DefineID, FieldName));
}
HRESULT SimConnect_RequestFacilityData(HANDLE hSimConnect, SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                       SIMCONNECT_DATA_REQUEST_ID RequestID, const char* ICAO,
                                       const char* Region) {
    TFX_FORWARD(SimConnect_RequestFacilityData(hSimConnect, DefineID, RequestID, ICAO, Region));
}

#undef TFX_FORWARD

}  // namespace tfx
