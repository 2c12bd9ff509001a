// The declarations every connection makes before its first dispatch: system
// events, data definitions, client events and their notification group. Each
// failure is logged with the call as written, and the rest still runs, so one
// look at the log names every refused declaration.
#include <array>
#include <string_view>

#include <fmt/format.h>

#include "app/log.h"
#include "sim/sim_client_internal.h"

namespace tfx {
namespace {

struct SystemEventDecl {
    DWORD id;
    std::string_view idName;
    const char* name;
};
constexpr std::array<SystemEventDecl, 5> SYSTEM_EVENTS = {{
    {EVENT_SIM, "EVENT_SIM", "Sim"},
    {EVENT_OBJECT_ADDED, "EVENT_OBJECT_ADDED", "ObjectAdded"},
    {EVENT_OBJECT_REMOVED, "EVENT_OBJECT_REMOVED", "ObjectRemoved"},
    {EVENT_FLIGHT_LOADED, "EVENT_FLIGHT_LOADED", "FlightLoaded"},
    {EVENT_FRAME, "EVENT_FRAME", "Frame"},
}};

struct DatumDecl {
    DWORD definition;
    std::string_view definitionName;
    const char* name;
    const char* unit;  // nullptr: none
    SIMCONNECT_DATATYPE type;
    std::string_view typeName;
};
#define ZEPT_F64 SIMCONNECT_DATATYPE_FLOAT64, "SIMCONNECT_DATATYPE_FLOAT64"
#define ZEPT_I64 SIMCONNECT_DATATYPE_INT64, "SIMCONNECT_DATATYPE_INT64"
#define ZEPT_S32 SIMCONNECT_DATATYPE_STRING32, "SIMCONNECT_DATATYPE_STRING32"
#define ZEPT_DEF(d) d, #d
constexpr std::array<DatumDecl, 36> DATA_DEFINITIONS = {{
    {ZEPT_DEF(DEFINITION_USER_AC_GET_TITLE), "TITLE", nullptr, SIMCONNECT_DATATYPE_STRINGV,
     "SIMCONNECT_DATATYPE_STRINGV"},
    {ZEPT_DEF(DEFINITION_USER_AC_GET_MODEL), "ATC MODEL", nullptr, ZEPT_S32},
    {ZEPT_DEF(DEFINITION_USER_AC_GET_ONGROUND), "SIM ON GROUND", "Bool", ZEPT_I64},
    {ZEPT_DEF(DEFINITION_LATLONPIBAHEALVSTAS), "Plane Latitude", "degree", ZEPT_F64},
    {ZEPT_DEF(DEFINITION_LATLONPIBAHEALVSTAS), "Plane Longitude", "degree", ZEPT_F64},
    {ZEPT_DEF(DEFINITION_LATLONPIBAHEALVSTAS), "Plane Pitch degrees", "radian", ZEPT_F64},
    {ZEPT_DEF(DEFINITION_LATLONPIBAHEALVSTAS), "Plane Bank degrees", "radian", ZEPT_F64},
    {ZEPT_DEF(DEFINITION_LATLONPIBAHEALVSTAS), "Plane Heading degrees true", "radian", ZEPT_F64},
    {ZEPT_DEF(DEFINITION_LATLONPIBAHEALVSTAS), "Plane Altitude", "feet", ZEPT_F64},
    {ZEPT_DEF(DEFINITION_LATLONPIBAHEALVSTAS), "Vertical Speed", "feet per minute", ZEPT_F64},
    {ZEPT_DEF(DEFINITION_LATLONPIBAHEALVSTAS), "Airspeed True", "knots", ZEPT_F64},
    {ZEPT_DEF(DEFINITION_LATLONPIBAVSHETRALTGSZULI), "Plane Latitude", "degree", ZEPT_F64},
    {ZEPT_DEF(DEFINITION_LATLONPIBAVSHETRALTGSZULI), "Plane Longitude", "degree", ZEPT_F64},
    {ZEPT_DEF(DEFINITION_LATLONPIBAVSHETRALTGSZULI), "Plane Pitch degrees", "radian", ZEPT_F64},
    {ZEPT_DEF(DEFINITION_LATLONPIBAVSHETRALTGSZULI), "Plane Bank degrees", "radian", ZEPT_F64},
    {ZEPT_DEF(DEFINITION_LATLONPIBAVSHETRALTGSZULI), "Vertical Speed", "feet per minute", ZEPT_F64},
    {ZEPT_DEF(DEFINITION_LATLONPIBAVSHETRALTGSZULI), "Plane Heading degrees true", "radian",
     ZEPT_F64},
    {ZEPT_DEF(DEFINITION_LATLONPIBAVSHETRALTGSZULI), "Plane Altitude", "feet", ZEPT_F64},
    {ZEPT_DEF(DEFINITION_LATLONPIBAVSHETRALTGSZULI), "Indicated Altitude", "feet", ZEPT_F64},
    {ZEPT_DEF(DEFINITION_LATLONPIBAVSHETRALTGSZULI), "Plane Alt Above Ground", "feet", ZEPT_F64},
    {ZEPT_DEF(DEFINITION_LATLONPIBAVSHETRALTGSZULI), "Ground Velocity", "knots", ZEPT_F64},
    {ZEPT_DEF(DEFINITION_LATLONPIBAVSHETRALTGSZULI), "ZULU TIME", "Seconds", ZEPT_I64},
    {ZEPT_DEF(DEFINITION_LATLONPIBAVSHETRALTGSZULI), "ZULU DAY OF YEAR", "Number", ZEPT_I64},
    {ZEPT_DEF(DEFINITION_LATLONPIBAVSHETRALTGSZULI), "ZULU YEAR", "Number", ZEPT_I64},
    {ZEPT_DEF(DEFINITION_LATLONPIBAVSHETRALTGSZULI), "LIGHT STATES", "Mask", ZEPT_I64},
    {ZEPT_DEF(DEFINITION_LATLONPIBAVSHETRALTGSZULI), "GPS Ground True Track", "degree", ZEPT_F64},
    {ZEPT_DEF(DEFINITION_AI_GET_STATIC_CG_AND_PITCH), "Static CG to Ground", "feet", ZEPT_F64},
    {ZEPT_DEF(DEFINITION_AI_GET_STATIC_CG_AND_PITCH), "Static Pitch", "radian", ZEPT_F64},
    {ZEPT_DEF(DEFINITION_AI_LIGHTS), "Light On States", "Mask", ZEPT_I64},
    {ZEPT_DEF(DEFINITION_AI_GET_POSITION), "Plane Alt Above Ground", "feet", ZEPT_F64},
    {ZEPT_DEF(DEFINITION_AI_GET_POSITION), "Ground Altitude", "feet", ZEPT_F64},
    {ZEPT_DEF(DEFINITION_AI_GET_POSITION), "SIM ON GROUND", "Bool", ZEPT_I64},
    {ZEPT_DEF(DEFINITION_AI_GET_POSITION), "ATC ID", nullptr, ZEPT_S32},
    {ZEPT_DEF(DEFINITION_REVERSE_THRUST), "SPOILERS HANDLE POSITION", "percent", ZEPT_F64},
    {ZEPT_DEF(DEFINITION_REVERSE_THRUST), "GENERAL ENG THROTTLE LEVER POSITION:1", "percent",
     ZEPT_F64},
    {ZEPT_DEF(DEFINITION_REVERSE_THRUST), "GENERAL ENG THROTTLE LEVER POSITION:2", "percent",
     ZEPT_F64},
}};
#undef ZEPT_F64
#undef ZEPT_I64
#undef ZEPT_S32
#undef ZEPT_DEF

struct ClientEventDecl {
    DWORD id;
    const char* name;
};
constexpr std::array<ClientEventDecl, 17> CLIENT_EVENTS = {{
    {219, "GEAR_SET"},
    {220, "ENGINE_AUTO_START"},
    {221, "ENGINE_AUTO_SHUTDOWN"},
    {222, "THROTTLE_SET"},
    {217, "FLAPS_SET"},
    {218, "SPOILERS_SET"},
    {207, "NAV_LIGHTS_SET"},
    {206, "BEACON_LIGHTS_SET"},
    {210, "LANDING_LIGHTS_SET"},
    {208, "TAXI_LIGHTS_SET"},
    {209, "STROBES_SET"},
    {212, "LOGO_LIGHTS_SET"},
    {211, "CABIN_LIGHTS_SET"},
    {213, "ALL_LIGHTS_TOGGLE"},
    {214, "FREEZE_LATITUDE_LONGITUDE_SET"},
    {215, "FREEZE_ALTITUDE_SET"},
    {216, "FREEZE_ATTITUDE_SET"},
}};

// The maskable members of the group, in the order they join it; 220 (engine
// start) stays out.
constexpr std::array<DWORD, 16> GROUP_EVENTS = {207, 206, 210, 208, 209, 212, 211, 213,
                                                217, 218, 219, 221, 222, 214, 215, 216};

bool lf_check(HRESULT hr, std::string_view call) {
    if (!gf_hrFailed(hr)) return true;
    gf_logError(fmt::format("SimConnect setup failed: {} (hr=0x{:08X})", call,
                            static_cast<std::uint32_t>(hr)));
    return false;
}

std::string lf_quoted(const char* text) {
    return text == nullptr ? std::string("nullptr") : fmt::format("\"{}\"", text);
}

}  // namespace

bool lf_setupConnection(HANDLE handle) {
    bool ok = true;
    for (const SystemEventDecl& e : SYSTEM_EVENTS) {
        ok &= lf_check(SimConnect_SubscribeToSystemEvent(handle, e.id, e.name),
                       fmt::format("SimConnect_SubscribeToSystemEvent(l_hsimconnect, {}, \"{}\")",
                                   e.idName, e.name));
    }
    for (const DatumDecl& d : DATA_DEFINITIONS) {
        ok &= lf_check(
            SimConnect_AddToDataDefinition(handle, d.definition, d.name, d.unit, d.type),
            fmt::format("SimConnect_AddToDataDefinition(l_hsimconnect, {}, \"{}\", {}, {})",
                        d.definitionName, d.name, lf_quoted(d.unit), d.typeName));
    }
    for (const ClientEventDecl& e : CLIENT_EVENTS) {
        ok &= lf_check(SimConnect_MapClientEventToSimEvent(handle, e.id, e.name),
                       fmt::format("SimConnect_MapClientEventToSimEvent(l_hsimconnect, {}, \"{}\")",
                                   e.id, e.name));
    }
    for (DWORD id : GROUP_EVENTS) {
        ok &= lf_check(SimConnect_AddClientEventToNotificationGroup(handle, TRAFFIC_APP, id, TRUE),
                       fmt::format("SimConnect_AddClientEventToNotificationGroup(l_hsimconnect, "
                                   "TRAFFIC_APP, {}, TRUE)",
                                   id));
    }
    ok &= lf_check(SimConnect_SetNotificationGroupPriority(handle, TRAFFIC_APP,
                                                           SIMCONNECT_GROUP_PRIORITY_HIGHEST),
                   "SimConnect_SetNotificationGroupPriority(l_hsimconnect, TRAFFIC_APP, "
                   "SIMCONNECT_GROUP_PRIORITY_HIGHEST)");
    return ok;
}

}  // namespace tfx
