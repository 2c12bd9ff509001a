#include "parking/airport_context.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "airports/airport_file_io.h"
#include "airports/airport_paths.h"
#include "app/log.h"
#include "app/options.h"
#include "app/parameters.h"
#include "feeds/rtapp/reader_state.h"
#include "gui/gui.h"
#include "parking/park_airport.h"
#include "parking/park_airport_list.h"
#include "parking/parked_count.h"
#include "parking/parking_applier.h"
#include "parking/parking_state.h"
#include "parking/parking_update.h"
#include "parking/user_stand.h"
#include "sim/sim_client.h"
#include "traffic/user_aircraft.h"

namespace tfx {

bool parkAirportLoadPending = false;

namespace {

std::string userDestStand;

bool lf_atZero(const UserData& user) {
    return std::fabs(user.lat) <= 0.0001 && std::fabs(user.lon) <= 0.0001;
}

LatLon lf_parkPosition() {
    return {parkAirport.lat, parkAirport.lon};
}

void lf_choose(const Airport& airport) {
    gf_setParkAirport(airport);
    gf_logLine(fmt::format("\nThe park airport is {}", airport.icao.text()));
    Gui::enqueueUpdate({GuiKind::ParkAirport, std::string(airport.icao.text())});
    // The feed takes ground reports around it from now on.
    gf_publishReaderPosition(trafficReaderState);
}

void lf_leave() {
    lf_removeAllStaticAndLiveAtAirport();
    lf_leaveAirport();
}

}  // namespace

bool gf_airportInSight(const UserData& user, LatLon airport) {
    const OptionsPtr options = gf_options();
    if (user.agl > options->AIRP_HEIGHT) return false;
    const double range = options->AIRP_RANGE;
    return gf_flatSquaredNm({user.lat, user.lon}, airport) <= range * range;
}

void gf_checkForParkAirport(const UserData& user) {
    if (userOnGround.load() == 1) {
        const Airport* closest = gf_closestAirport({user.lat, user.lon});
        if (closest == nullptr) {
            gf_showStatus("User aircraft on the ground, no RT supported airport in sight");
            return;
        }
        if (!gf_airportFileKnown(closest->icao)) {
            gf_showStatus(fmt::format("User aircraft on the ground at {}, no airport file found",
                                      closest->icao.text()));
            return;
        }
        gf_logLine(fmt::format("User aircraft on the ground at {}", closest->icao.text()));
        lf_choose(*closest);
        parkAirportLoadPending = true;
        return;
    }
    if (parkAirportList.empty()) return;
    const ParkAirport& front = parkAirportList.front();
    if (!gf_airportInSight(user, {front.latitude, front.longitude})) return;
    const Airport* airport = gf_airportByCode(front.code);
    if (airport == nullptr) {
        gf_clearStatus();
        return;
    }
    lf_choose(*airport);
    gf_showStatus(fmt::format("{} in sight", airport->icao.text()));
    parkAirportLoadPending = true;
}

void gf_checkParkAirportInSight(const UserData& user) {
    if (userOnGround.load() == 1) return;
    const LatLon here{user.lat, user.lon};
    if (gf_airportInSight(user, lf_parkPosition())) {
        if (parkAirportList.empty()) return;
        const ParkAirport& front = parkAirportList.front();
        const LatLon frontPosition{front.latitude, front.longitude};
        if (front.code == parkAirport.code || !gf_airportInSight(user, frontPosition)) return;
        const bool nearer =
            gf_flatSquaredNm(here, frontPosition) <= gf_flatSquaredNm(here, lf_parkPosition()) &&
            gf_distanceNm(here, frontPosition) <= gf_distanceNm(here, lf_parkPosition());
        if (!nearer) return;
        gf_logLine(fmt::format("\n{} {} is in sight, parked aircraft at {} will be removed first",
                               gf_nowText(), front.code.text(), parkAirport.code.text()));
    } else {
        gf_logLine(fmt::format("\n{} {} is out of sight, parked aircraft will be removed",
                               gf_nowText(), parkAirport.code.text()));
    }
    lf_leave();
}

void gf_parkAirportCheck() {
    if (gf_adjustmentPrepared()) return;
    if (parking.searchRunning && parking.plan.empty()) {
        parking.searchRunning = false;
        Gui::enqueueUpdate({GuiKind::StaticQueued, std::int64_t{0}});
    }
    if (parkAirportLoadPending) {
        parkAirportLoadPending = false;
        gf_parkAtAirport();
        return;
    }
    const UserData user = userAircraft;
    if (lf_atZero(user)) return;
    const OptionsPtr options = gf_options();
    if (options->DESTINATION.empty() && userOnGround.load() != 1 && user.agl < options->AIRP_HEIGHT)
        gf_updateNearestParkAirport({user.lat, user.lon});
    if (parkAirport.known()) {
        gf_checkParkAirportInSight(user);
    } else {
        gf_checkForParkAirport(user);
    }
}

std::string gf_userDestStand() {
    return userDestStand;
}

void lf_afterAirportLoad() {
    std::optional<std::string> userStand;
    if (userOnGround.load() == 1) {
        const UserData user = userAircraft;
        userStand = gf_closestStandToUser({user.lat, user.lon});
        gf_logLine(userStand ? fmt::format("\nUser aircraft at stand: {}", *userStand)
                             : std::string("\nUser aircraft is not at a stand"));
        Gui::enqueueUpdate({GuiKind::UserStand, userStand.value_or("")});
    }
    const bool atFront =
        !parkAirportList.empty() && parkAirportList.front().code == parkAirport.code;
    if (atFront) {
        if (userStand && *userStand != parkAirportList.front().reservedStand)
            parkAirportList.front().reservedStand = *userStand;
    } else {
        // A reservation made before stays while the user stands elsewhere.
        const std::string stand =
            userStand.value_or(gf_reservedStand(parkAirport.code).value_or(""));
        gf_setReservedStand(parkAirport.code, lf_parkPosition(), stand);
    }
    userDestStand = parkAirportList.front().reservedStand;
}

void lf_forgetParkAirport() {
    userDestStand.clear();
    parkAirportLoadPending = false;
    gf_clearParkAirport();
    gf_publishStandPositions({});
    gf_publishReaderPosition(trafficReaderState);
    Gui::enqueueUpdate({GuiKind::ParkAirport, std::string()});
    Gui::enqueueUpdate({GuiKind::UserStand, std::string()});
}

void gf_setDestination(const std::string& text) {
    if (text.empty()) {
        params.DESTINATION.current.clear();
        params.STAND_SELECTOR.current.clear();
        gf_saveParameter(params.DESTINATION);
        updateOptions(params.DESTINATION);
        gf_showStatus("destination set to empty");
        return;
    }
    if (text.size() != 4) {
        gf_showStatus(fmt::format("destination '{}' is not valid", text));
        return;
    }
    IcaoCode code;
    if (!gf_tryIcaoCode(text, code)) {
        gf_showStatus(fmt::format("destination '{}' is not valid", text));
        return;
    }
    const std::string upper(code.text());
    if (upper == params.DESTINATION.current) {
        gf_showStatus(fmt::format("destination '{}' was already set ...", upper));
        return;
    }
    const Airport* airport = gf_airportByCode(code);
    if (airport == nullptr) {
        gf_showStatus(fmt::format("destination '{}' is not supported ...", upper));
        return;
    }
    params.DESTINATION.current = upper;
    gf_saveParameter(params.DESTINATION);
    updateOptions(params.DESTINATION);
    const std::vector<std::string> stands = gf_readApfForStands(code);
    const std::string reserved = gf_reservedStand(code).value_or("");
    if (!reserved.empty() && std::find(stands.begin(), stands.end(), reserved) != stands.end()) {
        gf_showStatus(fmt::format("New destination: {}, with reserved stand: {}", upper, reserved));
        params.STAND_SELECTOR.current = reserved;
    } else if (stands.empty()) {
        gf_showStatus(fmt::format("New destination: {}, no stands available", upper));
    } else {
        gf_showStatus(fmt::format("New destination: {}", upper));
    }
    gf_addParkAirport(code, {airport->latitude, airport->longitude});
}

void gf_takeStoredDestination() {
    const std::string destination = params.DESTINATION.current;
    if (destination.empty() || !gf_airportKnown(destination)) return;
    params.DESTINATION.current.clear();  // taken up again as a new one
    gf_setDestination(destination);
}

void gf_parkAirportAtStart() {
    if (userOnGround.load() != 1) return;
    const UserData user = gf_userData();
    const Airport* closest = gf_closestAirport({user.lat, user.lon});
    if (closest == nullptr) return;
    gf_logLine(fmt::format("User aircraft on the ground at {}", closest->icao.text()));
    lf_choose(*closest);
}

void gf_parkAtStartAirport() {
    if (!parkAirport.known()) return;
    gf_takeOverUserAircraft();
    if (gf_airportFileKnown(parkAirport.code)) {
        gf_parkAtAirport();
        return;
    }
    gf_showStatus(fmt::format("User aircraft on the ground at {}, no airport file found",
                              parkAirport.code.text()));
}

}  // namespace tfx
