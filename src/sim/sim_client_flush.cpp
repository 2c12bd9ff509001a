// The frame step: positions of the injected aircraft, then the commands the
// tick queued since the last frame, in a fixed order. Runs on the simulator
// thread at each "Frame" event; no lock is held across a simulator call.
#include <array>

#include <fmt/format.h>

#include "app/exit_request.h"
#include "app/log.h"
#include "app/options.h"
#include "app/run_state.h"
#include "gui/gui.h"
#include "sim/flight_plan.h"
#include "sim/object_id_text.h"
#include "sim/sim_client.h"
#include "sim/sim_client_internal.h"
#include "sim/sim_ids.h"
#include "sim/sim_queues.h"

namespace tfx {

namespace {

// The buffers of one flush; kept between frames so their memory stays.
SimCommands taken;

bool lf_stopped() {
    return SimRunState.load() == 3;
}

void lf_failed(const std::string& text) {
    gf_logError(text);
    lf_requestFailed();
}

void lf_sendPositions(HANDLE handle) {
    sendingFrame.clear();
    gf_trySwapFrame(sendingFrame);
    const std::uint32_t user = userObjectId.load();
    for (const FrameTable::Entry& e : sendingFrame) {
        if (e.objectid == user) continue;
        MotionBlock motion = e.motion;
        if (gf_hrFailed(SimConnect_SetDataOnSimObject(handle, DEFINITION_LATLONPIBAHEALVSTAS,
                                                      e.objectid, 0, 0, sizeof(MotionBlock),
                                                      &motion))) {
            lf_failed(fmt::format("SimConnect_SetDataOnSimObject batch failed, objectid: {}",
                                  e.objectid));
            return;
        }
    }
}

void lf_request(HANDLE handle, const SimRequest& r) {
    lf_requestServed(r.kind);
    auto onUser = [&](DWORD requestId, DWORD definition, SIMCONNECT_PERIOD period,
                      const char* failure) {
        if (gf_hrFailed(SimConnect_RequestDataOnSimObject(handle, requestId, definition,
                                                          SIMCONNECT_OBJECT_ID_USER, period))) {
            lf_failed(failure);
            return false;
        }
        return true;
    };
    switch (r.kind) {
        case REQUEST_AIRCRAFT_IN_RANGE: {
            const OptionsPtr options = gf_options();
            const auto radius_m = static_cast<DWORD>(options ? options->requestRadius_m : 0.0);
            if (gf_hrFailed(SimConnect_RequestDataOnSimObjectType(
                    handle, REQUEST_ID_AC_IN_RANGE, DEFINITION_AI_GET_POSITION, radius_m,
                    SIMCONNECT_SIMOBJECT_TYPE_AIRCRAFT)))
                lf_failed("SimConnect request ac within range fails");
            return;
        }
        case REQUEST_USER_TITLE_MODEL:
            if (onUser(REQUEST_ID_USER_TITLE, DEFINITION_USER_AC_GET_TITLE, SIMCONNECT_PERIOD_ONCE,
                       "SimConnect request user ac title fails"))
                onUser(REQUEST_ID_USER_MODEL, DEFINITION_USER_AC_GET_MODEL, SIMCONNECT_PERIOD_ONCE,
                       "SimConnect request user ac model fails");
            return;
        case REQUEST_USER_ON_GROUND:
            onUser(REQUEST_ID_USER_ON_GROUND, DEFINITION_USER_AC_GET_ONGROUND,
                   SIMCONNECT_PERIOD_SECOND, "SimConnect request ac gnd/air fails");
            return;
        case REQUEST_USER_POSITION:
            onUser(REQUEST_ID_USER_POSITION, DEFINITION_LATLONPIBAVSHETRALTGSZULI,
                   SIMCONNECT_PERIOD_ONCE, "SimConnect request user ac position fails");
            return;
        case REQUEST_STATIC_DATA:
            if (gf_hrFailed(SimConnect_RequestDataOnSimObject(handle, REQUEST_ID_STATIC_DATA,
                                                              DEFINITION_AI_GET_STATIC_CG_AND_PITCH,
                                                              r.objectid, SIMCONNECT_PERIOD_ONCE)))
                lf_failed("SimConnect request StaticCG fails");
            return;
        default:
            return;
    }
}

void lf_clientEvent(HANDLE handle, const ClientEvent& e) {
    const bool flaps = e.event == EVENT_FLAPS_SET;
    // The simulator's own AI would move the flaps back; control is released
    // around the change.
    if (flaps) SimConnect_AIReleaseControl(handle, e.objectid, REQUEST_ID_RELEASE_CONTROL);
    const HRESULT hr =
        SimConnect_TransmitClientEvent(handle, e.objectid, e.event, e.value, TRAFFIC_APP, 0);
    if (flaps && !gf_hrFailed(hr))
        SimConnect_AIReleaseControl(handle, e.objectid, REQUEST_ID_RELEASE_CONTROL);
}

void lf_flightPlan(HANDLE handle, const FlightPlanCommand& plan) {
    if (!gf_carryOutFlightPlan(plan) || !gf_isMSFS2020()) return;
    const std::u8string path = plan.path.u8string();
    SimConnect_AISetAircraftFlightPlan(
        handle, plan.objectid, reinterpret_cast<const char*>(path.c_str()), REQUEST_ID_FLIGHT_PLAN);
}

void lf_remove(HANDLE handle, std::uint32_t objectid) {
    if (objectid == userObjectId.load()) return;
    if (gf_hrFailed(SimConnect_AIRemoveObject(handle, objectid, REQUEST_ID_REMOVE_OBJECT))) {
        lf_failed(fmt::format("!SimConnect call to remove AI ac from sim failed, id {}?",
                              gf_objectIdText(objectid)));
        return;
    }
    gf_logLine(
        fmt::format("SimConnect call to remove ac with objectid {}", gf_objectIdText(objectid)));
}

void lf_thrust(HANDLE handle, const ThrustCommand& t) {
    // Spoilers handle, throttle lever 1, throttle lever 2, in percent; the
    // liveries of one package reverse with negative levers.
    std::array<double, 3> values{0.0, 0.0, 0.0};
    if (t.reverse != 0) {
        const double lever = t.fsltlLivery != 0 ? -100.0 : 100.0;
        values = {100.0, lever, lever};
    }
    SimConnect_SetDataOnSimObject(handle, DEFINITION_REVERSE_THRUST, t.objectid, 0, 0,
                                  sizeof values, values.data());
}

// Serves one buffer; stops at the first element after which the commands
// are off for the session.
template <class T, class Serve>
bool lf_serve(const std::vector<T>& items, Serve serve) {
    for (const T& item : items) {
        serve(item);
        if (lf_stopped()) return false;
    }
    return true;
}

void lf_flush(HANDLE handle) {
    gf_takeSimCommands(taken);
    if (lf_stopped()) {
        taken.clear();
        return;
    }
    lf_serve(taken.requests, [&](const SimRequest& r) { lf_request(handle, r); }) &&
        lf_serve(taken.clientEvents, [&](const ClientEvent& e) { lf_clientEvent(handle, e); }) &&
        lf_serve(taken.flightPlans,
                 [&](const FlightPlanCommand& p) { lf_flightPlan(handle, p); }) &&
        lf_serve(taken.creates, [&](const CreateRequest& c) { lf_create(handle, c); }) &&
        lf_serve(taken.removes, [&](std::uint32_t id) { lf_remove(handle, id); }) &&
        lf_serve(taken.thrusts, [&](const ThrustCommand& t) { lf_thrust(handle, t); });
    taken.clear();
}

}  // namespace

void lf_requestFailed() {
    gf_showStatus("SimConnect request error");
    Gui::enqueueUpdate({GuiKind::SimRunning, false});
    SimRunState = 3;
    gf_requestExit(ExitReason::SimConnectError, 9);
}

void lf_frameStep(HANDLE handle) {
    if (!lf_stopped()) lf_sendPositions(handle);
    lf_keepUserDataFresh();
    lf_flush(handle);
}

}  // namespace tfx
