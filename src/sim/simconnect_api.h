// The simulator's client interface: the SimConnect operations this program
// calls, with the same names, arguments and received records as the
// simulator's own client library, so that the code above it reads like any
// SimConnect client and does not know which provider answers.
//
// A provider implements SimConnectApi; the free functions at the bottom
// forward to the provider set with gf_setSimConnectApi: the built-in
// simulator (builtin/builtin_sim.h), or the simulator's own client library
// loaded at run time (simconnect_library.h).
//
// Types are our own, laid out like the simulator's records (simconnect_layouts.h
// holds them to the documentation), so the library's records pass through
// unchanged.
#pragma once

#include <cstdint>

namespace tfx {

using DWORD = std::uint32_t;
using HRESULT = std::int32_t;
using BOOL = std::int32_t;
using HANDLE = void*;
using HWND = void*;
using LPCSTR = const char*;

// Windows headers define these as macros; keep theirs when present.
#ifndef S_OK
inline constexpr HRESULT S_OK = 0;
#endif
#ifndef E_FAIL
inline constexpr HRESULT E_FAIL = static_cast<HRESULT>(0x80004005u);
#endif
#ifndef E_INVALIDARG
inline constexpr HRESULT E_INVALIDARG = static_cast<HRESULT>(0x80070057u);
#endif
#ifndef TRUE
inline constexpr BOOL TRUE = 1;
#endif
#ifndef FALSE
inline constexpr BOOL FALSE = 0;
#endif

// A failed result is a negative one.
inline bool gf_hrFailed(HRESULT hr) {
    return hr < 0;
}

using SIMCONNECT_OBJECT_ID = DWORD;
using SIMCONNECT_DATA_DEFINITION_ID = DWORD;
using SIMCONNECT_DATA_REQUEST_ID = DWORD;
using SIMCONNECT_CLIENT_EVENT_ID = DWORD;
using SIMCONNECT_NOTIFICATION_GROUP_ID = DWORD;
using SIMCONNECT_DATA_REQUEST_FLAG = DWORD;
using SIMCONNECT_DATA_SET_FLAG = DWORD;
using SIMCONNECT_EVENT_FLAG = DWORD;

inline constexpr DWORD SIMCONNECT_UNUSED = 0xFFFFFFFFu;
inline constexpr SIMCONNECT_OBJECT_ID SIMCONNECT_OBJECT_ID_USER = 0;
inline constexpr DWORD SIMCONNECT_GROUP_PRIORITY_HIGHEST = 1;
inline constexpr DWORD SIMCONNECT_GROUP_PRIORITY_STANDARD = 1900000000;
inline constexpr SIMCONNECT_DATA_REQUEST_FLAG SIMCONNECT_DATA_REQUEST_FLAG_DEFAULT = 0;
inline constexpr SIMCONNECT_DATA_REQUEST_FLAG SIMCONNECT_DATA_REQUEST_FLAG_CHANGED = 1;
inline constexpr SIMCONNECT_DATA_REQUEST_FLAG SIMCONNECT_DATA_REQUEST_FLAG_TAGGED = 2;
inline constexpr SIMCONNECT_DATA_SET_FLAG SIMCONNECT_DATA_SET_FLAG_DEFAULT = 0;
inline constexpr SIMCONNECT_EVENT_FLAG SIMCONNECT_EVENT_FLAG_DEFAULT = 0;
inline constexpr SIMCONNECT_EVENT_FLAG SIMCONNECT_EVENT_FLAG_GROUPID_IS_PRIORITY = 0x10;
inline constexpr DWORD SIMCONNECT_MAX_PATH = 260;

// Record kinds in SIMCONNECT_RECV::dwID (only those this program meets).
enum SIMCONNECT_RECV_ID : DWORD {
    SIMCONNECT_RECV_ID_NULL = 0,
    SIMCONNECT_RECV_ID_EXCEPTION = 1,
    SIMCONNECT_RECV_ID_OPEN = 2,
    SIMCONNECT_RECV_ID_QUIT = 3,
    SIMCONNECT_RECV_ID_EVENT = 4,
    SIMCONNECT_RECV_ID_EVENT_OBJECT_ADDREMOVE = 5,
    SIMCONNECT_RECV_ID_EVENT_FILENAME = 6,
    SIMCONNECT_RECV_ID_EVENT_FRAME = 7,
    SIMCONNECT_RECV_ID_SIMOBJECT_DATA = 8,
    SIMCONNECT_RECV_ID_SIMOBJECT_DATA_BYTYPE = 9,
    SIMCONNECT_RECV_ID_ASSIGNED_OBJECT_ID = 12,
    SIMCONNECT_RECV_ID_FACILITY_DATA = 29,  // 28 is EVENT_EX1
    SIMCONNECT_RECV_ID_FACILITY_DATA_END = 30,
};

enum SIMCONNECT_DATATYPE : DWORD {
    SIMCONNECT_DATATYPE_INVALID,
    SIMCONNECT_DATATYPE_INT32,
    SIMCONNECT_DATATYPE_INT64,
    SIMCONNECT_DATATYPE_FLOAT32,
    SIMCONNECT_DATATYPE_FLOAT64,
    SIMCONNECT_DATATYPE_STRING8,
    SIMCONNECT_DATATYPE_STRING32,
    SIMCONNECT_DATATYPE_STRING64,
    SIMCONNECT_DATATYPE_STRING128,
    SIMCONNECT_DATATYPE_STRING256,
    SIMCONNECT_DATATYPE_STRING260,
    SIMCONNECT_DATATYPE_STRINGV,
};

enum SIMCONNECT_EXCEPTION : DWORD {
    SIMCONNECT_EXCEPTION_NONE,
    SIMCONNECT_EXCEPTION_ERROR,
    SIMCONNECT_EXCEPTION_SIZE_MISMATCH,
    SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID,
    SIMCONNECT_EXCEPTION_UNOPENED,
    SIMCONNECT_EXCEPTION_VERSION_MISMATCH,
    SIMCONNECT_EXCEPTION_TOO_MANY_GROUPS,
    SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED,
    SIMCONNECT_EXCEPTION_TOO_MANY_EVENT_NAMES,
    SIMCONNECT_EXCEPTION_EVENT_ID_DUPLICATE,
    SIMCONNECT_EXCEPTION_TOO_MANY_MAPS,
    SIMCONNECT_EXCEPTION_TOO_MANY_OBJECTS,
    SIMCONNECT_EXCEPTION_TOO_MANY_REQUESTS,
    SIMCONNECT_EXCEPTION_WEATHER_INVALID_PORT,
    SIMCONNECT_EXCEPTION_WEATHER_INVALID_METAR,
    SIMCONNECT_EXCEPTION_WEATHER_UNABLE_TO_GET_OBSERVATION,
    SIMCONNECT_EXCEPTION_WEATHER_UNABLE_TO_CREATE_STATION,
    SIMCONNECT_EXCEPTION_WEATHER_UNABLE_TO_REMOVE_STATION,
    SIMCONNECT_EXCEPTION_INVALID_DATA_TYPE,
    SIMCONNECT_EXCEPTION_INVALID_DATA_SIZE,
    SIMCONNECT_EXCEPTION_DATA_ERROR,
    SIMCONNECT_EXCEPTION_INVALID_ARRAY,
    SIMCONNECT_EXCEPTION_CREATE_OBJECT_FAILED,
    SIMCONNECT_EXCEPTION_LOAD_FLIGHTPLAN_FAILED,
    SIMCONNECT_EXCEPTION_OPERATION_INVALID_FOR_OBJECT_TYPE,
    SIMCONNECT_EXCEPTION_ILLEGAL_OPERATION,
    SIMCONNECT_EXCEPTION_ALREADY_SUBSCRIBED,
    SIMCONNECT_EXCEPTION_INVALID_ENUM,
};

enum SIMCONNECT_PERIOD : DWORD {
    SIMCONNECT_PERIOD_NEVER,
    SIMCONNECT_PERIOD_ONCE,
    SIMCONNECT_PERIOD_VISUAL_FRAME,
    SIMCONNECT_PERIOD_SIM_FRAME,
    SIMCONNECT_PERIOD_SECOND,
};

enum SIMCONNECT_SIMOBJECT_TYPE : DWORD {
    SIMCONNECT_SIMOBJECT_TYPE_USER,
    SIMCONNECT_SIMOBJECT_TYPE_ALL,
    SIMCONNECT_SIMOBJECT_TYPE_AIRCRAFT,
    SIMCONNECT_SIMOBJECT_TYPE_HELICOPTER,
    SIMCONNECT_SIMOBJECT_TYPE_BOAT,
    SIMCONNECT_SIMOBJECT_TYPE_GROUND,
};

// Position of a new object: degrees, feet; OnGround 0 or 1; Airspeed knots.
struct SIMCONNECT_DATA_INITPOSITION {
    double Latitude;
    double Longitude;
    double Altitude;
    double Pitch;
    double Bank;
    double Heading;
    DWORD OnGround;
    DWORD Airspeed;
};

// ---- received records ----
struct SIMCONNECT_RECV {
    DWORD dwSize;  // of the whole record
    DWORD dwVersion;
    DWORD dwID;  // SIMCONNECT_RECV_ID
};
struct SIMCONNECT_RECV_QUIT : SIMCONNECT_RECV {};
struct SIMCONNECT_RECV_EXCEPTION : SIMCONNECT_RECV {
    DWORD dwException;  // SIMCONNECT_EXCEPTION
    DWORD dwSendID;     // the packet, as SimConnect_GetLastSentPacketID named it
    DWORD dwIndex;      // 1-based argument at fault
};
struct SIMCONNECT_RECV_OPEN : SIMCONNECT_RECV {
    char szApplicationName[256];
    DWORD dwApplicationVersionMajor;
    DWORD dwApplicationVersionMinor;
    DWORD dwApplicationBuildMajor;
    DWORD dwApplicationBuildMinor;
    DWORD dwSimConnectVersionMajor;
    DWORD dwSimConnectVersionMinor;
    DWORD dwSimConnectBuildMajor;
    DWORD dwSimConnectBuildMinor;
    DWORD dwReserved1;
    DWORD dwReserved2;
};
struct SIMCONNECT_RECV_EVENT : SIMCONNECT_RECV {
    DWORD uGroupID;
    DWORD uEventID;
    DWORD dwData;
};
struct SIMCONNECT_RECV_EVENT_OBJECT_ADDREMOVE : SIMCONNECT_RECV_EVENT {
    SIMCONNECT_SIMOBJECT_TYPE eObjType;  // dwData holds the object identifier
};
struct SIMCONNECT_RECV_EVENT_FILENAME : SIMCONNECT_RECV_EVENT {
    char szFileName[SIMCONNECT_MAX_PATH];
    DWORD dwFlags;
};
struct SIMCONNECT_RECV_EVENT_FRAME : SIMCONNECT_RECV_EVENT {
    float fFrameRate;
    float fSimSpeed;
};
// The block of a data definition starts at dwData, in the declared order.
struct SIMCONNECT_RECV_SIMOBJECT_DATA : SIMCONNECT_RECV {
    DWORD dwRequestID;
    DWORD dwObjectID;
    DWORD dwDefineID;
    DWORD dwFlags;
    DWORD dwentrynumber;  // 1-based
    DWORD dwoutof;
    DWORD dwDefineCount;
    DWORD dwData;
};
struct SIMCONNECT_RECV_SIMOBJECT_DATA_BYTYPE : SIMCONNECT_RECV_SIMOBJECT_DATA {};
struct SIMCONNECT_RECV_ASSIGNED_OBJECT_ID : SIMCONNECT_RECV {
    DWORD dwRequestID;
    DWORD dwObjectID;
};
struct SIMCONNECT_RECV_FACILITY_DATA : SIMCONNECT_RECV {
    DWORD UserRequestId;
    DWORD UniqueRequestId;
    DWORD ParentUniqueRequestId;
    DWORD Type;
    bool IsListItem;
    DWORD ItemIndex;
    DWORD ListSize;
    DWORD Data;
};
struct SIMCONNECT_RECV_FACILITY_DATA_END : SIMCONNECT_RECV {
    DWORD RequestId;
};

// Where the data block of SIMCONNECT_RECV_SIMOBJECT_DATA begins.
inline constexpr DWORD SIMOBJECT_DATA_OFFSET = 40;

static_assert(sizeof(SIMCONNECT_RECV) == 12);
static_assert(sizeof(SIMCONNECT_RECV_EXCEPTION) == 24);
static_assert(sizeof(SIMCONNECT_RECV_OPEN) == 308);
static_assert(sizeof(SIMCONNECT_RECV_EVENT) == 24);
static_assert(sizeof(SIMCONNECT_RECV_EVENT_OBJECT_ADDREMOVE) == 28);
static_assert(sizeof(SIMCONNECT_RECV_EVENT_FILENAME) == 288);
static_assert(sizeof(SIMCONNECT_RECV_EVENT_FRAME) == 32);
static_assert(sizeof(SIMCONNECT_RECV_SIMOBJECT_DATA) == SIMOBJECT_DATA_OFFSET + 4);
static_assert(sizeof(SIMCONNECT_RECV_ASSIGNED_OBJECT_ID) == 20);
static_assert(sizeof(SIMCONNECT_RECV_FACILITY_DATA) == 44);
static_assert(sizeof(SIMCONNECT_RECV_FACILITY_DATA_END) == 16);
static_assert(sizeof(SIMCONNECT_DATA_INITPOSITION) == 56);

// Called inside SimConnect_CallDispatch on the caller's thread, once per
// received record; cbData is the record's size. The record lives only for
// the call.
using DispatchProc = void (*)(SIMCONNECT_RECV* pData, DWORD cbData, void* pContext);

// One provider of the operations. Every operation may be called from any
// thread; records reach the client only through SimConnect_CallDispatch.
struct SimConnectApi {
    virtual ~SimConnectApi() = default;

    virtual HRESULT SimConnect_Open(HANDLE* phSimConnect, LPCSTR szName, HWND hWnd,
                                    DWORD UserEventWin32, HANDLE hEventHandle,
                                    DWORD ConfigIndex) = 0;
    virtual HRESULT SimConnect_Close(HANDLE hSimConnect) = 0;
    virtual HRESULT SimConnect_CallDispatch(HANDLE hSimConnect, DispatchProc pfcnDispatch,
                                            void* pContext) = 0;
    virtual HRESULT SimConnect_GetLastSentPacketID(HANDLE hSimConnect, DWORD* pdwSendID) = 0;

    virtual HRESULT SimConnect_SubscribeToSystemEvent(HANDLE hSimConnect,
                                                      SIMCONNECT_CLIENT_EVENT_ID EventID,
                                                      const char* SystemEventName) = 0;
    virtual HRESULT SimConnect_AddToDataDefinition(HANDLE hSimConnect,
                                                   SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                                   const char* DatumName, const char* UnitsName,
                                                   SIMCONNECT_DATATYPE DatumType, float fEpsilon,
                                                   DWORD DatumID) = 0;
    virtual HRESULT SimConnect_MapClientEventToSimEvent(HANDLE hSimConnect,
                                                        SIMCONNECT_CLIENT_EVENT_ID EventID,
                                                        const char* EventName) = 0;
    virtual HRESULT SimConnect_AddClientEventToNotificationGroup(
        HANDLE hSimConnect, SIMCONNECT_NOTIFICATION_GROUP_ID GroupID,
        SIMCONNECT_CLIENT_EVENT_ID EventID, BOOL bMaskable) = 0;
    virtual HRESULT SimConnect_SetNotificationGroupPriority(
        HANDLE hSimConnect, SIMCONNECT_NOTIFICATION_GROUP_ID GroupID, DWORD uPriority) = 0;

    virtual HRESULT SimConnect_RequestDataOnSimObject(
        HANDLE hSimConnect, SIMCONNECT_DATA_REQUEST_ID RequestID,
        SIMCONNECT_DATA_DEFINITION_ID DefineID, SIMCONNECT_OBJECT_ID ObjectID,
        SIMCONNECT_PERIOD Period, SIMCONNECT_DATA_REQUEST_FLAG Flags, DWORD origin, DWORD interval,
        DWORD limit) = 0;
    virtual HRESULT SimConnect_RequestDataOnSimObjectType(HANDLE hSimConnect,
                                                          SIMCONNECT_DATA_REQUEST_ID RequestID,
                                                          SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                                          DWORD dwRadiusMeters,
                                                          SIMCONNECT_SIMOBJECT_TYPE type) = 0;
    virtual HRESULT SimConnect_SetDataOnSimObject(HANDLE hSimConnect,
                                                  SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                                  SIMCONNECT_OBJECT_ID ObjectID,
                                                  SIMCONNECT_DATA_SET_FLAG Flags, DWORD ArrayCount,
                                                  DWORD cbUnitSize, void* pDataSet) = 0;

    virtual HRESULT SimConnect_AICreateNonATCAircraft(HANDLE hSimConnect,
                                                      const char* szContainerTitle,
                                                      const char* szTailNumber,
                                                      SIMCONNECT_DATA_INITPOSITION InitPos,
                                                      SIMCONNECT_DATA_REQUEST_ID RequestID) = 0;
    virtual HRESULT SimConnect_AIReleaseControl(HANDLE hSimConnect, SIMCONNECT_OBJECT_ID ObjectID,
                                                SIMCONNECT_DATA_REQUEST_ID RequestID) = 0;
    virtual HRESULT SimConnect_AIRemoveObject(HANDLE hSimConnect, SIMCONNECT_OBJECT_ID ObjectID,
                                              SIMCONNECT_DATA_REQUEST_ID RequestID) = 0;
    virtual HRESULT SimConnect_AISetAircraftFlightPlan(HANDLE hSimConnect,
                                                       SIMCONNECT_OBJECT_ID ObjectID,
                                                       const char* szFlightPlanPath,
                                                       SIMCONNECT_DATA_REQUEST_ID RequestID) = 0;
    virtual HRESULT SimConnect_TransmitClientEvent(HANDLE hSimConnect,
                                                   SIMCONNECT_OBJECT_ID ObjectID,
                                                   SIMCONNECT_CLIENT_EVENT_ID EventID, DWORD dwData,
                                                   SIMCONNECT_NOTIFICATION_GROUP_ID GroupID,
                                                   SIMCONNECT_EVENT_FLAG Flags) = 0;

    virtual HRESULT SimConnect_AddToFacilityDefinition(HANDLE hSimConnect,
                                                       SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                                       const char* FieldName) = 0;
    virtual HRESULT SimConnect_RequestFacilityData(HANDLE hSimConnect,
                                                   SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                                   SIMCONNECT_DATA_REQUEST_ID RequestID,
                                                   const char* ICAO, const char* Region) = 0;
};

// The provider behind the free functions; nullptr (the start) makes every
// operation fail with E_FAIL, as when no simulator is installed. Returns the
// previous one. The provider must outlive its use.
SimConnectApi* gf_setSimConnectApi(SimConnectApi* api);
SimConnectApi* gf_simConnectApi();

// ---- the operations, with the library's default arguments ----
HRESULT SimConnect_Open(HANDLE* phSimConnect, LPCSTR szName, HWND hWnd, DWORD UserEventWin32,
                        HANDLE hEventHandle, DWORD ConfigIndex);
HRESULT SimConnect_Close(HANDLE hSimConnect);
HRESULT SimConnect_CallDispatch(HANDLE hSimConnect, DispatchProc pfcnDispatch, void* pContext);
HRESULT SimConnect_GetLastSentPacketID(HANDLE hSimConnect, DWORD* pdwSendID);
HRESULT SimConnect_SubscribeToSystemEvent(HANDLE hSimConnect, SIMCONNECT_CLIENT_EVENT_ID EventID,
                                          const char* SystemEventName);
HRESULT SimConnect_AddToDataDefinition(HANDLE hSimConnect, SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                       const char* DatumName, const char* UnitsName,
                                       SIMCONNECT_DATATYPE DatumType = SIMCONNECT_DATATYPE_FLOAT64,
                                       float fEpsilon = 0, DWORD DatumID = SIMCONNECT_UNUSED);
HRESULT SimConnect_MapClientEventToSimEvent(HANDLE hSimConnect, SIMCONNECT_CLIENT_EVENT_ID EventID,
                                            const char* EventName = "");
HRESULT SimConnect_AddClientEventToNotificationGroup(HANDLE hSimConnect,
                                                     SIMCONNECT_NOTIFICATION_GROUP_ID GroupID,
                                                     SIMCONNECT_CLIENT_EVENT_ID EventID,
                                                     BOOL bMaskable = FALSE);
HRESULT SimConnect_SetNotificationGroupPriority(HANDLE hSimConnect,
                                                SIMCONNECT_NOTIFICATION_GROUP_ID GroupID,
                                                DWORD uPriority);
HRESULT SimConnect_RequestDataOnSimObject(HANDLE hSimConnect, SIMCONNECT_DATA_REQUEST_ID RequestID,
                                          SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                          SIMCONNECT_OBJECT_ID ObjectID, SIMCONNECT_PERIOD Period,
                                          SIMCONNECT_DATA_REQUEST_FLAG Flags = 0, DWORD origin = 0,
                                          DWORD interval = 0, DWORD limit = 0);
HRESULT SimConnect_RequestDataOnSimObjectType(HANDLE hSimConnect,
                                              SIMCONNECT_DATA_REQUEST_ID RequestID,
                                              SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                              DWORD dwRadiusMeters, SIMCONNECT_SIMOBJECT_TYPE type);
HRESULT SimConnect_SetDataOnSimObject(HANDLE hSimConnect, SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                      SIMCONNECT_OBJECT_ID ObjectID, SIMCONNECT_DATA_SET_FLAG Flags,
                                      DWORD ArrayCount, DWORD cbUnitSize, void* pDataSet);
HRESULT SimConnect_AICreateNonATCAircraft(HANDLE hSimConnect, const char* szContainerTitle,
                                          const char* szTailNumber,
                                          SIMCONNECT_DATA_INITPOSITION InitPos,
                                          SIMCONNECT_DATA_REQUEST_ID RequestID);
HRESULT SimConnect_AIReleaseControl(HANDLE hSimConnect, SIMCONNECT_OBJECT_ID ObjectID,
                                    SIMCONNECT_DATA_REQUEST_ID RequestID);
HRESULT SimConnect_AIRemoveObject(HANDLE hSimConnect, SIMCONNECT_OBJECT_ID ObjectID,
                                  SIMCONNECT_DATA_REQUEST_ID RequestID);
HRESULT SimConnect_AISetAircraftFlightPlan(HANDLE hSimConnect, SIMCONNECT_OBJECT_ID ObjectID,
                                           const char* szFlightPlanPath,
                                           SIMCONNECT_DATA_REQUEST_ID RequestID);
HRESULT SimConnect_TransmitClientEvent(HANDLE hSimConnect, SIMCONNECT_OBJECT_ID ObjectID,
                                       SIMCONNECT_CLIENT_EVENT_ID EventID, DWORD dwData,
                                       SIMCONNECT_NOTIFICATION_GROUP_ID GroupID,
                                       SIMCONNECT_EVENT_FLAG Flags);
HRESULT SimConnect_AddToFacilityDefinition(HANDLE hSimConnect,
                                           SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                           const char* FieldName);
HRESULT SimConnect_RequestFacilityData(HANDLE hSimConnect, SIMCONNECT_DATA_DEFINITION_ID DefineID,
                                       SIMCONNECT_DATA_REQUEST_ID RequestID, const char* ICAO,
                                       const char* Region = "");

}  // namespace tfx
