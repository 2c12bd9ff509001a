// What the simulator sends: each record is measured, then handled by kind.
// Nothing here blocks; an exception is parked in the context for the thread,
// since it must not cross the simulator's dispatch.
#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <string>

#include <fmt/format.h>

#include "app/exit_request.h"
#include "app/log.h"
#include "app/run_flags.h"
#include "app/run_state.h"
#include "app/user_exception.h"
#include "gui/gui.h"
#include "sim/sim_client.h"
#include "sim/sim_client_internal.h"
#include "sim/sim_queues.h"
#include "sim/user_data.h"

namespace tfx {
namespace {

constexpr double MAX_REPORT_AGL_FT = 2500;
constexpr double ZERO_POSITION_DEG = 0.0001;
constexpr DWORD ATC_ID_BYTES = 32;

// The size a record of this kind needs, with its name for the log.
struct Layout {
    const char* name;
    DWORD bytes;
};

Layout lf_layoutOf(const SIMCONNECT_RECV& record) {
    switch (record.dwID) {
        case SIMCONNECT_RECV_ID_EXCEPTION:
            return {"EXCEPTION", 24};
        case SIMCONNECT_RECV_ID_OPEN:
            return {"OPEN", 308};
        case SIMCONNECT_RECV_ID_EVENT:
            return {"EVENT", 24};
        case SIMCONNECT_RECV_ID_EVENT_OBJECT_ADDREMOVE:
            return {"EVENT_OBJECT_ADDREMOVE", 28};
        case SIMCONNECT_RECV_ID_ASSIGNED_OBJECT_ID:
            return {"ASSIGNED_OBJECT_ID", 20};
        case SIMCONNECT_RECV_ID_SIMOBJECT_DATA_BYTYPE:
            return {"AI_POSITION", 96};
        case SIMCONNECT_RECV_ID_SIMOBJECT_DATA:
            switch (static_cast<const SIMCONNECT_RECV_SIMOBJECT_DATA&>(record).dwRequestID) {
                case REQUEST_ID_USER_ON_GROUND:
                    return {"USER_AC_ON_GROUND", 48};
                case REQUEST_ID_USER_POSITION:
                    return {"USER_AC_POSITION", 160};
                case REQUEST_ID_USER_TITLE:
                    return {"USER_AC_TITLE", 41};
                case REQUEST_ID_USER_MODEL:
                    return {"USER_AC_MODEL", 72};
                case REQUEST_ID_STATIC_DATA:
                    return {"AI_STATIC_CG_AND_PITCH", 56};
                default:
                    return {"SIMOBJECT_DATA", 40};
            }
        default:
            return {"RECV", 12};
    }
}

template <class T>
T lf_datum(const SIMCONNECT_RECV_SIMOBJECT_DATA& record, std::size_t offset) {
    T value;
    std::memcpy(&value, reinterpret_cast<const char*>(&record.dwData) + offset, sizeof value);
    return value;
}

void lf_open(const SIMCONNECT_RECV_OPEN& open, DispatchContext& context) {
    std::string name;
    for (char c : std::string(open.szApplicationName, strnlen(open.szApplicationName, 256))) {
        const auto u = static_cast<unsigned char>(c);
        if (std::isalnum(u) || c == ' ') name += c;
    }
    if (name.empty()) {
        gf_logError("! Simulator name empty?");
        return;
    }
    if (name == "KittyHawk" || name == "SunRise") {
        const bool is2020 = name == "KittyHawk";
        context.runningSim = is2020 ? "MSFS 2020" : "MSFS 2024";
        if (is2020 != gf_isMSFS2020())
            throw UserRelatedException(SIM_MISMATCH_CODE, context.runningSim);
    } else {
        throw UserRelatedException(
            77, fmt::format("'{}' not being MSFS 2020 or MSFS 2024 connects ... ?", name));
    }
    const std::string text = fmt::format(
        "{} ({}.{}.{}.{})", name, open.dwApplicationVersionMajor, open.dwApplicationVersionMinor,
        open.dwApplicationBuildMajor, open.dwApplicationBuildMinor);
    gf_logLine(fmt::format("{} connected", text));
    Gui::enqueueUpdate({GuiKind::SimText, text});
    gf_clearStatus();
    SimRunState = 1;
}

void lf_exception(const SIMCONNECT_RECV_EXCEPTION& e) {
    switch (e.dwException) {
        case SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID:
            return;
        case SIMCONNECT_EXCEPTION_VERSION_MISMATCH:
            throw UserRelatedException(
                95, fmt::format("SimConnect Version Mismatch, dwIndex: {}", e.dwIndex));
        case SIMCONNECT_EXCEPTION_TOO_MANY_OBJECTS:
            gf_showStatus("SimConnect: too many objects (max 1000)");
            return;
        case SIMCONNECT_EXCEPTION_INVALID_DATA_SIZE:
            gf_logLine("SIMCONNECT_EXCEPTION_INVALID_DATA_SIZE");
            return;
        case SIMCONNECT_EXCEPTION_CREATE_OBJECT_FAILED:
            lf_createFailed(e.dwSendID);
            return;
        case SIMCONNECT_EXCEPTION_LOAD_FLIGHTPLAN_FAILED:
            gf_logLine("SimConnect exception: load flight plan failed");
            return;
        case SIMCONNECT_EXCEPTION_OPERATION_INVALID_FOR_OBJECT_TYPE:
            gf_logLine("SIMCONNECT_EXCEPTION_OPERATION_INVALID_FOR_OBJECT_TYPE");
            return;
        default:
            gf_logLine(fmt::format("SIMCONNECT_EXCEPTION #{}", e.dwException));
    }
}

void lf_flightEnded() {
    gf_logLine("SimConnect: flight loaded event");
    gf_updateUserStand();
    gf_requestExit(ExitReason::NewFlight, 60);
}

void lf_event(const SIMCONNECT_RECV_EVENT& event) {
    if (event.uEventID == EVENT_SIM) {
        if (SimRunState.load() == 3) return;
        SimRunState = event.dwData == 1 ? 2 : 1;
        Gui::enqueueUpdate({GuiKind::SimRunning, event.dwData == 1});
    } else if (event.uEventID == EVENT_FLIGHT_LOADED) {
        lf_flightEnded();
    }
}

// Ground and height of the objects around, for the tick's checks of what
// stands near the user; static aircraft (tail number ending in '*') and
// objects high up are of no interest.
void lf_aircraftInRange(const SIMCONNECT_RECV_SIMOBJECT_DATA& record) {
    if (record.dwObjectID == userObjectId.load()) return;
    const char* atcId = reinterpret_cast<const char*>(&record.dwData) + 24;
    const std::size_t atcLength = strnlen(atcId, ATC_ID_BYTES);
    if (atcLength == 0 || atcId[atcLength - 1] == '*') return;
    const double agl = lf_datum<double>(record, 0);
    if (agl > MAX_REPORT_AGL_FT) return;
    SimMessage m;
    m.kind = SIM_POSITION_REPORT;
    m.objectid = record.dwObjectID;
    m.hexid = static_cast<std::uint32_t>(lf_datum<std::int64_t>(record, 16));
    m.a = lf_datum<double>(record, 8);
    m.b = agl;
    gf_postSimMessage(m);
}

void lf_userOnGround(const SIMCONNECT_RECV_SIMOBJECT_DATA& record) {
    secondBeat = 1;
    const UserData user = gf_userData();
    if (std::abs(user.lat) < ZERO_POSITION_DEG && std::abs(user.lon) < ZERO_POSITION_DEG) return;
    userOnGround = lf_datum<std::int64_t>(record, 0) != 0 ? 1 : 0;
}

void lf_objectData(const SIMCONNECT_RECV_SIMOBJECT_DATA& record, DWORD cbData) {
    switch (record.dwRequestID) {
        case REQUEST_ID_USER_ON_GROUND:
            lf_userOnGround(record);
            return;
        case REQUEST_ID_USER_POSITION:
            lf_userPositionReply(record);
            return;
        case REQUEST_ID_USER_TITLE:
            lf_userTitleReply(record, cbData);
            return;
        case REQUEST_ID_USER_MODEL:
            lf_userModelReply(record);
            return;
        case REQUEST_ID_STATIC_DATA: {
            SimMessage m;
            m.kind = SIM_STATIC_DATA;
            m.objectid = record.dwObjectID;
            m.a = lf_datum<double>(record, 0);
            m.b = lf_datum<double>(record, 8);
            gf_postSimMessage(m);
            return;
        }
        default:
            return;
    }
}

void lf_handle(SIMCONNECT_RECV& record, DWORD cbData, DispatchContext& context) {
    const Layout layout = lf_layoutOf(record);
    if (cbData < layout.bytes) {
        gf_logError(fmt::format("SimConnect {} payload too small: {} < {} bytes", layout.name,
                                cbData, layout.bytes));
        return;
    }
    switch (record.dwID) {
        case SIMCONNECT_RECV_ID_EXCEPTION:
            lf_exception(static_cast<SIMCONNECT_RECV_EXCEPTION&>(record));
            return;
        case SIMCONNECT_RECV_ID_OPEN:
            lf_open(static_cast<SIMCONNECT_RECV_OPEN&>(record), context);
            simPinned = false;
            return;
        case SIMCONNECT_RECV_ID_QUIT:
            context.quit = true;
            if (SimRunState.load() != 3) {
                SimRunState = 0;
                Gui::enqueueUpdate({GuiKind::SimRunning, false});
            }
            return;
        case SIMCONNECT_RECV_ID_EVENT:
            lf_event(static_cast<SIMCONNECT_RECV_EVENT&>(record));
            return;
        case SIMCONNECT_RECV_ID_EVENT_OBJECT_ADDREMOVE: {
            const auto& e = static_cast<SIMCONNECT_RECV_EVENT_OBJECT_ADDREMOVE&>(record);
            if (e.eObjType == SIMCONNECT_SIMOBJECT_TYPE_AIRCRAFT &&
                e.uEventID == EVENT_OBJECT_REMOVED) {
                lf_objectGone(e.dwData);
                SimMessage m;
                m.kind = SIM_OBJECT_REMOVED;
                m.objectid = e.dwData;
                gf_postSimMessage(m);
            }
            return;
        }
        case SIMCONNECT_RECV_ID_EVENT_FILENAME:
            gf_logLine("SimConnect: New file event");
            lf_flightEnded();
            return;
        case SIMCONNECT_RECV_ID_EVENT_FRAME:
            if (HANDLE handle = l_hsimconnect.load()) lf_frameStep(handle);
            return;
        case SIMCONNECT_RECV_ID_SIMOBJECT_DATA:
            lf_objectData(static_cast<SIMCONNECT_RECV_SIMOBJECT_DATA&>(record), cbData);
            return;
        case SIMCONNECT_RECV_ID_SIMOBJECT_DATA_BYTYPE: {
            const auto& data = static_cast<SIMCONNECT_RECV_SIMOBJECT_DATA&>(record);
            if (data.dwRequestID == REQUEST_ID_AC_IN_RANGE) lf_aircraftInRange(data);
            return;
        }
        case SIMCONNECT_RECV_ID_ASSIGNED_OBJECT_ID: {
            const auto& a = static_cast<SIMCONNECT_RECV_ASSIGNED_OBJECT_ID&>(record);
            if (HANDLE handle = l_hsimconnect.load())
                lf_objectAssigned(handle, a.dwRequestID, a.dwObjectID);
            return;
        }
        case 16:
        case 27:
            return;  // what these bring is not used
        default:
            gf_logLine(fmt::format("! Unknown Dispatch dwID {}", record.dwID));
    }
}

}  // namespace

void lf_dispatch(SIMCONNECT_RECV* data, DWORD cbData, void* contextPtr) {
    auto& context = *static_cast<DispatchContext*>(contextPtr);
    // After a quit or a fault the connection is over; what follows is stale.
    if (context.quit || context.error || data == nullptr) return;
    try {
        lf_handle(*data, cbData, context);
    } catch (const UserRelatedException& e) {
        if (e.code == SIM_MISMATCH_CODE) {
            context.quit = true;
            context.mismatch = true;
        } else {
            context.error = std::current_exception();
        }
    } catch (...) {
        context.error = std::current_exception();
    }
}

}  // namespace tfx
