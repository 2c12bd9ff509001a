// Where every field of the records that cross the library boundary lies, in
// bytes, and the values of the constants this program hands over or reads.
// The numbers are those of Microsoft's SimConnect documentation
// (docs.flightsimulator.com, "SimConnect API Reference" > "Structures And
// Enumerations", one page per record, named in the comment of its rows): the
// page gives the members in order with their C types (DWORD and float 4
// bytes, double 8, char[N] N bytes), an enumeration counts from 0 in the
// order its page lists it.
//
// Packing: the pages do not state one. Every record below has only 4-byte
// members at offsets that are multiples of 4 (the position has its doubles
// first), so it lies the same with 1-byte packing and with natural
// alignment. SIMCONNECT_RECV_FACILITY_DATA, whose bool member would move the
// fields after it, is left out: the program reads none of it yet.
//
// The static_asserts at the end hold our declarations (simconnect_api.h) to
// this table; a test holds the bytes that come out of the facade library to
// it, so a layout that drifts on either side fails the build or the tests.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "sim/simconnect_api.h"

// X(record, field, offset, size)
#define TFX_SIMCONNECT_RECORD_FIELDS(X)                                          \
    /* page "SIMCONNECT_RECV" */                                                 \
    X(SIMCONNECT_RECV, dwSize, 0, 4)                                             \
    X(SIMCONNECT_RECV, dwVersion, 4, 4)                                          \
    X(SIMCONNECT_RECV, dwID, 8, 4)                                               \
    /* page "SIMCONNECT_RECV_EXCEPTION" */                                       \
    X(SIMCONNECT_RECV_EXCEPTION, dwException, 12, 4)                             \
    X(SIMCONNECT_RECV_EXCEPTION, dwSendID, 16, 4)                                \
    X(SIMCONNECT_RECV_EXCEPTION, dwIndex, 20, 4)                                 \
    /* page "SIMCONNECT_RECV_OPEN" */                                            \
    X(SIMCONNECT_RECV_OPEN, szApplicationName, 12, 256)                          \
    X(SIMCONNECT_RECV_OPEN, dwApplicationVersionMajor, 268, 4)                   \
    X(SIMCONNECT_RECV_OPEN, dwApplicationVersionMinor, 272, 4)                   \
    X(SIMCONNECT_RECV_OPEN, dwApplicationBuildMajor, 276, 4)                     \
    X(SIMCONNECT_RECV_OPEN, dwApplicationBuildMinor, 280, 4)                     \
    X(SIMCONNECT_RECV_OPEN, dwSimConnectVersionMajor, 284, 4)                    \
    X(SIMCONNECT_RECV_OPEN, dwSimConnectVersionMinor, 288, 4)                    \
    X(SIMCONNECT_RECV_OPEN, dwSimConnectBuildMajor, 292, 4)                      \
    X(SIMCONNECT_RECV_OPEN, dwSimConnectBuildMinor, 296, 4)                      \
    X(SIMCONNECT_RECV_OPEN, dwReserved1, 300, 4)                                 \
    X(SIMCONNECT_RECV_OPEN, dwReserved2, 304, 4)                                 \
    /* page "SIMCONNECT_RECV_EVENT" */                                           \
    X(SIMCONNECT_RECV_EVENT, uGroupID, 12, 4)                                    \
    X(SIMCONNECT_RECV_EVENT, uEventID, 16, 4)                                    \
    X(SIMCONNECT_RECV_EVENT, dwData, 20, 4)                                      \
    /* page "SIMCONNECT_RECV_EVENT_OBJECT_ADDREMOVE" (the object in dwData) */   \
    X(SIMCONNECT_RECV_EVENT_OBJECT_ADDREMOVE, eObjType, 24, 4)                   \
    /* page "SIMCONNECT_RECV_EVENT_FILENAME" (MAX_PATH is 260) */                \
    X(SIMCONNECT_RECV_EVENT_FILENAME, szFileName, 24, 260)                       \
    X(SIMCONNECT_RECV_EVENT_FILENAME, dwFlags, 284, 4)                           \
    /* page "SIMCONNECT_RECV_EVENT_FRAME" */                                     \
    X(SIMCONNECT_RECV_EVENT_FRAME, fFrameRate, 24, 4)                            \
    X(SIMCONNECT_RECV_EVENT_FRAME, fSimSpeed, 28, 4)                             \
    /* page "SIMCONNECT_RECV_SIMOBJECT_DATA"; the data block starts at dwData */ \
    X(SIMCONNECT_RECV_SIMOBJECT_DATA, dwRequestID, 12, 4)                        \
    X(SIMCONNECT_RECV_SIMOBJECT_DATA, dwObjectID, 16, 4)                         \
    X(SIMCONNECT_RECV_SIMOBJECT_DATA, dwDefineID, 20, 4)                         \
    X(SIMCONNECT_RECV_SIMOBJECT_DATA, dwFlags, 24, 4)                            \
    X(SIMCONNECT_RECV_SIMOBJECT_DATA, dwentrynumber, 28, 4)                      \
    X(SIMCONNECT_RECV_SIMOBJECT_DATA, dwoutof, 32, 4)                            \
    X(SIMCONNECT_RECV_SIMOBJECT_DATA, dwDefineCount, 36, 4)                      \
    X(SIMCONNECT_RECV_SIMOBJECT_DATA, dwData, 40, 4)                             \
    /* page "SIMCONNECT_RECV_SIMOBJECT_DATA_BYTYPE": the same members */         \
    X(SIMCONNECT_RECV_SIMOBJECT_DATA_BYTYPE, dwRequestID, 12, 4)                 \
    X(SIMCONNECT_RECV_SIMOBJECT_DATA_BYTYPE, dwObjectID, 16, 4)                  \
    X(SIMCONNECT_RECV_SIMOBJECT_DATA_BYTYPE, dwData, 40, 4)                      \
    /* page "SIMCONNECT_RECV_ASSIGNED_OBJECT_ID" */                              \
    X(SIMCONNECT_RECV_ASSIGNED_OBJECT_ID, dwRequestID, 12, 4)                    \
    X(SIMCONNECT_RECV_ASSIGNED_OBJECT_ID, dwObjectID, 16, 4)                     \
    /* page "SIMCONNECT_RECV_FACILITY_DATA_END" */                               \
    X(SIMCONNECT_RECV_FACILITY_DATA_END, RequestId, 12, 4)                       \
    /* page "SIMCONNECT_DATA_INITPOSITION" (sent, by value) */                   \
    X(SIMCONNECT_DATA_INITPOSITION, Latitude, 0, 8)                              \
    X(SIMCONNECT_DATA_INITPOSITION, Longitude, 8, 8)                             \
    X(SIMCONNECT_DATA_INITPOSITION, Altitude, 16, 8)                             \
    X(SIMCONNECT_DATA_INITPOSITION, Pitch, 24, 8)                                \
    X(SIMCONNECT_DATA_INITPOSITION, Bank, 32, 8)                                 \
    X(SIMCONNECT_DATA_INITPOSITION, Heading, 40, 8)                              \
    X(SIMCONNECT_DATA_INITPOSITION, OnGround, 48, 4)                             \
    X(SIMCONNECT_DATA_INITPOSITION, Airspeed, 52, 4)

// X(record, size): the whole record as the same pages give it (a data record
// is 40 bytes and its block; the declaration counts dwData in).
#define TFX_SIMCONNECT_RECORD_SIZES(X)            \
    X(SIMCONNECT_RECV, 12)                        \
    X(SIMCONNECT_RECV_QUIT, 12)                   \
    X(SIMCONNECT_RECV_EXCEPTION, 24)              \
    X(SIMCONNECT_RECV_OPEN, 308)                  \
    X(SIMCONNECT_RECV_EVENT, 24)                  \
    X(SIMCONNECT_RECV_EVENT_OBJECT_ADDREMOVE, 28) \
    X(SIMCONNECT_RECV_EVENT_FILENAME, 288)        \
    X(SIMCONNECT_RECV_EVENT_FRAME, 32)            \
    X(SIMCONNECT_RECV_SIMOBJECT_DATA, 44)         \
    X(SIMCONNECT_RECV_SIMOBJECT_DATA_BYTYPE, 44)  \
    X(SIMCONNECT_RECV_ASSIGNED_OBJECT_ID, 20)     \
    X(SIMCONNECT_RECV_FACILITY_DATA_END, 16)      \
    X(SIMCONNECT_DATA_INITPOSITION, 56)

// X(constant, value): what the program hands over or tells apart.
#define TFX_SIMCONNECT_CONSTANTS(X)                                                  \
    /* page "SIMCONNECT_RECV_ID" */                                                  \
    X(SIMCONNECT_RECV_ID_EXCEPTION, 1)                                               \
    X(SIMCONNECT_RECV_ID_OPEN, 2)                                                    \
    X(SIMCONNECT_RECV_ID_QUIT, 3)                                                    \
    X(SIMCONNECT_RECV_ID_EVENT, 4)                                                   \
    X(SIMCONNECT_RECV_ID_EVENT_OBJECT_ADDREMOVE, 5)                                  \
    X(SIMCONNECT_RECV_ID_EVENT_FILENAME, 6)                                          \
    X(SIMCONNECT_RECV_ID_EVENT_FRAME, 7)                                             \
    X(SIMCONNECT_RECV_ID_SIMOBJECT_DATA, 8)                                          \
    X(SIMCONNECT_RECV_ID_SIMOBJECT_DATA_BYTYPE, 9)                                   \
    X(SIMCONNECT_RECV_ID_ASSIGNED_OBJECT_ID, 12)                                     \
    X(SIMCONNECT_RECV_ID_FACILITY_DATA, 29)                                          \
    X(SIMCONNECT_RECV_ID_FACILITY_DATA_END, 30)                                      \
    /* page "SIMCONNECT_EXCEPTION" */                                                \
    X(SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID, 3)                                       \
    X(SIMCONNECT_EXCEPTION_VERSION_MISMATCH, 5)                                      \
    X(SIMCONNECT_EXCEPTION_NAME_UNRECOGNIZED, 7)                                     \
    X(SIMCONNECT_EXCEPTION_TOO_MANY_OBJECTS, 11)                                     \
    X(SIMCONNECT_EXCEPTION_INVALID_DATA_SIZE, 19)                                    \
    X(SIMCONNECT_EXCEPTION_CREATE_OBJECT_FAILED, 22)                                 \
    X(SIMCONNECT_EXCEPTION_LOAD_FLIGHTPLAN_FAILED, 23)                               \
    X(SIMCONNECT_EXCEPTION_OPERATION_INVALID_FOR_OBJECT_TYPE, 24)                    \
    /* page "SIMCONNECT_PERIOD" */                                                   \
    X(SIMCONNECT_PERIOD_ONCE, 1)                                                     \
    X(SIMCONNECT_PERIOD_SECOND, 4)                                                   \
    /* page "SIMCONNECT_SIMOBJECT_TYPE" */                                           \
    X(SIMCONNECT_SIMOBJECT_TYPE_USER, 0)                                             \
    X(SIMCONNECT_SIMOBJECT_TYPE_AIRCRAFT, 2)                                         \
    /* page "SIMCONNECT_DATATYPE" */                                                 \
    X(SIMCONNECT_DATATYPE_INT64, 2)                                                  \
    X(SIMCONNECT_DATATYPE_FLOAT64, 4)                                                \
    X(SIMCONNECT_DATATYPE_STRING32, 6)                                               \
    X(SIMCONNECT_DATATYPE_STRINGV, 11)                                               \
    /* pages "SimConnect_SetNotificationGroupPriority", "SimConnect_Open" ... */     \
    X(SIMCONNECT_GROUP_PRIORITY_HIGHEST, 1)                                          \
    X(SIMCONNECT_OBJECT_ID_USER, 0)                                                  \
    X(SIMCONNECT_UNUSED, 0xFFFFFFFFu)                                                \
    /* pages "SimConnect_RequestDataOnSimObject", "SimConnect_SetDataOnSimObject" */ \
    X(SIMCONNECT_DATA_REQUEST_FLAG_DEFAULT, 0)                                       \
    X(SIMCONNECT_DATA_SET_FLAG_DEFAULT, 0)                                           \
    /* page "SimConnect_TransmitClientEvent" */                                      \
    X(SIMCONNECT_EVENT_FLAG_DEFAULT, 0)

namespace tfx {

struct SimConnectField {
    std::string_view record, field;
    std::uint32_t offset, size;
};
struct SimConnectRecordSize {
    std::string_view record;
    std::uint32_t size;
};

#define TFX_FIELD_ROW(record, field, offset, size) {#record, #field, offset, size},
inline constexpr SimConnectField SIMCONNECT_FIELDS[] = {
    TFX_SIMCONNECT_RECORD_FIELDS(TFX_FIELD_ROW)};
#undef TFX_FIELD_ROW
#define TFX_SIZE_ROW(record, size) {#record, size},
inline constexpr SimConnectRecordSize SIMCONNECT_RECORD_SIZES[] = {
    TFX_SIMCONNECT_RECORD_SIZES(TFX_SIZE_ROW)};
#undef TFX_SIZE_ROW

// The row of one field; a name that is not in the table stops the build
// where it is used in a constant expression.
constexpr const SimConnectField& gf_simConnectField(std::string_view record,
                                                    std::string_view field) {
    for (const auto& row : SIMCONNECT_FIELDS)
        if (row.record == record && row.field == field) return row;
    throw "no such field in the SimConnect layout table";
}

// Our declarations lie as the documentation says. The records derive from
// SIMCONNECT_RECV, as on their pages; offsetof on them is what GCC and Clang
// compute for single inheritance.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Winvalid-offsetof"
#define TFX_CHECK_FIELD(record, field, offset, size)                          \
    static_assert(offsetof(record, field) == (offset) &&                      \
                      sizeof(static_cast<record*>(nullptr)->field) == (size), \
                  #record "::" #field " is not where the documentation puts it");
TFX_SIMCONNECT_RECORD_FIELDS(TFX_CHECK_FIELD)
#undef TFX_CHECK_FIELD
#pragma GCC diagnostic pop
#define TFX_CHECK_SIZE(record, size) \
    static_assert(sizeof(record) == (size), #record " is not the size the documentation gives");
TFX_SIMCONNECT_RECORD_SIZES(TFX_CHECK_SIZE)
#undef TFX_CHECK_SIZE
#define TFX_CHECK_CONSTANT(name, value) \
    static_assert(static_cast<std::uint32_t>(name) == (value), #name " has the wrong value");
TFX_SIMCONNECT_CONSTANTS(TFX_CHECK_CONSTANT)
#undef TFX_CHECK_CONSTANT

}  // namespace tfx
