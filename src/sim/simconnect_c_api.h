// The simulator's client library as a C library: the entry points this
// program calls, with their C signatures, one row per function. The provider
// for the real library (simconnect_library.h) looks each up by name; the
// built-in simulator's facade library (builtin/facade/) exports the same
// rows, so both sides are declared from this one table.
//
// Every signature follows the function's page in Microsoft's SimConnect API
// reference (docs.flightsimulator.com, "SimConnect API Reference", the pages
// "SimConnect_Open", "SimConnect_CallDispatch", "DispatchProc", ...). The
// library exports the names undecorated with C linkage. Its functions and the
// DispatchProc callback are __stdcall (CALLBACK); on 64-bit Windows, the only
// target of the simulator, there is a single calling convention, so the
// keyword matters only to a 32-bit build.
#pragma once

#include <type_traits>

#include "sim/simconnect_api.h"

#if defined(_WIN32) && !defined(_WIN64)
#define TFX_SIMCONNECT_CALL __stdcall
#else
#define TFX_SIMCONNECT_CALL
#endif

namespace tfx {

// The callback the library calls inside SimConnect_CallDispatch.
using SimConnectDispatchProc = void(TFX_SIMCONNECT_CALL*)(SIMCONNECT_RECV* pData, DWORD cbData,
                                                          void* pContext);
// One convention: the program's dispatch procedures go to the library as they are.
static_assert(std::is_same_v<SimConnectDispatchProc, DispatchProc>,
              "a 32-bit build needs a relay with the library's calling convention");

// The name of the library file on this platform. The built-in simulator's
// facade is built under the same name, so that it can stand where the real
// one would.
#ifdef _WIN32
inline constexpr const wchar_t* SIMCONNECT_LIBRARY_FILE = L"SimConnect.dll";
#else
inline constexpr const wchar_t* SIMCONNECT_LIBRARY_FILE = L"SimConnect.so";
#endif

}  // namespace tfx

// X(name, parameters, arguments): one row per function. The first rows need
// more than forwarding on one side or the other (the provider loads the
// library at the first open and dispatches through a relay that keeps C++
// exceptions out of the library's frames; the facade's simulator stands
// still while no client is open), so they stand apart from the plain calls.
#define TFX_SIMCONNECT_SPECIAL_FUNCTIONS(X)                                                        \
    X(SimConnect_Open,                                                                             \
      (HANDLE * phSimConnect, LPCSTR szName, HWND hWnd, DWORD UserEventWin32, HANDLE hEventHandle, \
       DWORD ConfigIndex),                                                                         \
      (phSimConnect, szName, hWnd, UserEventWin32, hEventHandle, ConfigIndex))                     \
    X(SimConnect_Close, (HANDLE hSimConnect), (hSimConnect))                                       \
    X(SimConnect_CallDispatch,                                                                     \
      (HANDLE hSimConnect, ::tfx::SimConnectDispatchProc pfcnDispatch, void* pContext),            \
      (hSimConnect, pfcnDispatch, pContext))

#define TFX_SIMCONNECT_PLAIN_FUNCTIONS(X)                                                          \
    X(SimConnect_GetLastSentPacketID, (HANDLE hSimConnect, DWORD * pdwSendID),                     \
      (hSimConnect, pdwSendID))                                                                    \
    X(SimConnect_SubscribeToSystemEvent,                                                           \
      (HANDLE hSimConnect, SIMCONNECT_CLIENT_EVENT_ID EventID, const char* SystemEventName),       \
      (hSimConnect, EventID, SystemEventName))                                                     \
    X(SimConnect_AddToDataDefinition,                                                              \
      (HANDLE hSimConnect, SIMCONNECT_DATA_DEFINITION_ID DefineID, const char* DatumName,          \
       const char* UnitsName, SIMCONNECT_DATATYPE DatumType, float fEpsilon, DWORD DatumID),       \
      (hSimConnect, DefineID, DatumName, UnitsName, DatumType, fEpsilon, DatumID))                 \
    X(SimConnect_MapClientEventToSimEvent,                                                         \
      (HANDLE hSimConnect, SIMCONNECT_CLIENT_EVENT_ID EventID, const char* EventName),             \
      (hSimConnect, EventID, EventName))                                                           \
    X(SimConnect_AddClientEventToNotificationGroup,                                                \
      (HANDLE hSimConnect, SIMCONNECT_NOTIFICATION_GROUP_ID GroupID,                               \
       SIMCONNECT_CLIENT_EVENT_ID EventID, BOOL bMaskable),                                        \
      (hSimConnect, GroupID, EventID, bMaskable))                                                  \
    X(SimConnect_SetNotificationGroupPriority,                                                     \
      (HANDLE hSimConnect, SIMCONNECT_NOTIFICATION_GROUP_ID GroupID, DWORD uPriority),             \
      (hSimConnect, GroupID, uPriority))                                                           \
    X(SimConnect_RequestDataOnSimObject,                                                           \
      (HANDLE hSimConnect, SIMCONNECT_DATA_REQUEST_ID RequestID,                                   \
       SIMCONNECT_DATA_DEFINITION_ID DefineID, SIMCONNECT_OBJECT_ID ObjectID,                      \
       SIMCONNECT_PERIOD Period, SIMCONNECT_DATA_REQUEST_FLAG Flags, DWORD origin, DWORD interval, \
       DWORD limit),                                                                               \
      (hSimConnect, RequestID, DefineID, ObjectID, Period, Flags, origin, interval, limit))        \
    X(SimConnect_RequestDataOnSimObjectType,                                                       \
      (HANDLE hSimConnect, SIMCONNECT_DATA_REQUEST_ID RequestID,                                   \
       SIMCONNECT_DATA_DEFINITION_ID DefineID, DWORD dwRadiusMeters,                               \
       SIMCONNECT_SIMOBJECT_TYPE type),                                                            \
      (hSimConnect, RequestID, DefineID, dwRadiusMeters, type))                                    \
    X(SimConnect_SetDataOnSimObject,                                                               \
      (HANDLE hSimConnect, SIMCONNECT_DATA_DEFINITION_ID DefineID, SIMCONNECT_OBJECT_ID ObjectID,  \
       SIMCONNECT_DATA_SET_FLAG Flags, DWORD ArrayCount, DWORD cbUnitSize, void* pDataSet),        \
      (hSimConnect, DefineID, ObjectID, Flags, ArrayCount, cbUnitSize, pDataSet))                  \
    /* the position goes by value: on 64-bit Windows as a pointer to a copy */                     \
    X(SimConnect_AICreateNonATCAircraft,                                                           \
      (HANDLE hSimConnect, const char* szContainerTitle, const char* szTailNumber,                 \
       SIMCONNECT_DATA_INITPOSITION InitPos, SIMCONNECT_DATA_REQUEST_ID RequestID),                \
      (hSimConnect, szContainerTitle, szTailNumber, InitPos, RequestID))                           \
    X(SimConnect_AIReleaseControl,                                                                 \
      (HANDLE hSimConnect, SIMCONNECT_OBJECT_ID ObjectID, SIMCONNECT_DATA_REQUEST_ID RequestID),   \
      (hSimConnect, ObjectID, RequestID))                                                          \
    X(SimConnect_AIRemoveObject,                                                                   \
      (HANDLE hSimConnect, SIMCONNECT_OBJECT_ID ObjectID, SIMCONNECT_DATA_REQUEST_ID RequestID),   \
      (hSimConnect, ObjectID, RequestID))                                                          \
    X(SimConnect_AISetAircraftFlightPlan,                                                          \
      (HANDLE hSimConnect, SIMCONNECT_OBJECT_ID ObjectID, const char* szFlightPlanPath,            \
       SIMCONNECT_DATA_REQUEST_ID RequestID),                                                      \
      (hSimConnect, ObjectID, szFlightPlanPath, RequestID))                                        \
    X(SimConnect_TransmitClientEvent,                                                              \
      (HANDLE hSimConnect, SIMCONNECT_OBJECT_ID ObjectID, SIMCONNECT_CLIENT_EVENT_ID EventID,      \
       DWORD dwData, SIMCONNECT_NOTIFICATION_GROUP_ID GroupID, SIMCONNECT_EVENT_FLAG Flags),       \
      (hSimConnect, ObjectID, EventID, dwData, GroupID, Flags))                                    \
    X(SimConnect_AddToFacilityDefinition,                                                          \
      (HANDLE hSimConnect, SIMCONNECT_DATA_DEFINITION_ID DefineID, const char* FieldName),         \
      (hSimConnect, DefineID, FieldName))                                                          \
    X(SimConnect_RequestFacilityData,                                                              \
      (HANDLE hSimConnect, SIMCONNECT_DATA_DEFINITION_ID DefineID,                                 \
       SIMCONNECT_DATA_REQUEST_ID RequestID, const char* ICAO, const char* Region),                \
      (hSimConnect, DefineID, RequestID, ICAO, Region))

#define TFX_SIMCONNECT_FUNCTIONS(X)     \
    TFX_SIMCONNECT_SPECIAL_FUNCTIONS(X) \
    TFX_SIMCONNECT_PLAIN_FUNCTIONS(X)
