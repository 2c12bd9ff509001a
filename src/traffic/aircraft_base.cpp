#include "traffic/aircraft_base.h"

#include <algorithm>
#include <random>
#include <stdexcept>

#include <fmt/format.h>

#include "app/options.h"
#include "liveries/code_interning.h"
#include "traffic/aircraft_tables.h"
#include "traffic/clock.h"
#include "traffic/reference_lookup.h"
#include "traffic/units.h"

namespace tfx {

namespace {

bool lf_randomBit() {
    thread_local std::minstd_rand engine{std::random_device{}()};
    return (engine() & 1u) != 0;
}

constexpr double lf_perTick(double degPerSecond) {
    return degPerSecond * RAD_PER_DEG / TICKS_PER_SECOND;
}

}  // namespace

double gf_randomSpread(double value, double percent) {
    const double spread = value * percent / 100;
    return lf_randomBit() ? value + spread : value - spread;
}

AircraftBase gf_makeAircraftBase(const TrafficMessage& message) {
    AircraftBase ac;
    ac.aimo = message.aimo;
    ac.orig = message.orig;
    ac.dest = message.dest;
    ac.altNamesLooked = message.altNamesLooked;
    ac.callsign = message.callsign;
    ac.flightA = message.flightA;
    ac.flightB = message.flightB;
    ac.regcode = message.regcode;
    ac.hexid = message.hexid;
    gf_deriveFromModel(ac);
    return ac;
}

void gf_deriveFromModel(AircraftBase& ac) {
    ac.category = gf_categoryOfModel(ac.aimo.model);
    const auto index = static_cast<std::size_t>(ac.category);
    if (index >= CATEGORY_TABLE.size()) {
        throw std::logic_error(fmt::format("gf_deriveFromModel: unknown category {}", index));
    }
    const CategoryRow& row = CATEGORY_TABLE[index];

    ac.halfSpan = gf_halfSpanOfModel(ac.aimo.model);
    ac.clearance = ac.halfSpan;
    const double search_m = std::clamp(ac.halfSpan * METRES_PER_NM * 1.8 + 12, 18.0, 65.0);
    ac.standSearchNear = search_m * NM_PER_M;
    ac.standSearchFar = 1.25 * ac.standSearchNear;
    ac.rotationPitch = gf_randomSpread(row.rotationPitch_deg * RAD_PER_DEG, 2.5);
    ac.climbPitch = gf_randomSpread(row.climbPitch_deg * RAD_PER_DEG, 5);
    ac.turnRate = lf_perTick(row.groundTurnRate_degps);
    ac.turnRateNow = ac.turnRate;
    ac.maxClimbStep = row.maxClimbStep_ftpt;
    ac.pushbackSpeed = row.pushbackSpeed_kt;
    ac.flareTicks = row.flare_ticks;
    ac.derotationTicks = row.derotation_ticks;
    ac.rotationTicks = row.rotation_ticks;
    ac.climbPitchTicks = row.climbPitch_ticks;
}

void gf_takeAimo(AircraftBase& ac, const Aimo& aimo) {
    const bool otherModel = aimo.model != ac.aimo.model;
    ac.aimo = aimo;
    if (otherModel) gf_deriveFromModel(ac);
}

void gf_setFlightState(LiveAircraft& ac, FlightState state) {
    if (ac.flightState == state) return;
    ac.prevPrevState = ac.prevState;
    ac.prevState = ac.flightState;
    ac.flightState = state;
    ac.stateTick = gf_simTick();
}

std::string_view gf_flightStateName(FlightState state) {
    const auto i = static_cast<std::size_t>(state);
    return i < FLIGHT_STATE_WORDS.size() ? FLIGHT_STATE_WORDS[i] : "?";
}

std::string_view gf_simStateName(SimState state) {
    const auto i = static_cast<std::size_t>(state);
    return i < SIM_STATE_WORDS.size() ? SIM_STATE_WORDS[i] : "?";
}

bool gf_categoryEnabled(AircraftCategory category) {
    const auto i = static_cast<std::size_t>(category);
    if (i >= CATEGORY_TABLE.size()) return false;
    const auto flag = CATEGORY_TABLE[i].enabledBy;
    return flag == nullptr || (*gf_options()).*flag;
}

std::string gf_aimoText(const Aimo& aimo) {
    const std::string operatorText =
        aimo.operator_ != 0 ? fmt::format(",{}", gf_airlineCode(aimo.operator_)) : std::string();
    return fmt::format("{:3}{:4} {:4}{}{:3}", gf_airlineCode(aimo.airline), operatorText,
                       gf_modelCode(aimo.model), "", aimo.cargo != 0 ? "(C)" : "");
}

std::string gf_routeText(const AirportRef& orig, const AirportRef& dest) {
    if (!orig.known() && !dest.known()) return std::string(8, ' ');
    auto letters = [](const AirportRef& ref) {
        std::string text;
        for (char c : ref.iata) {
            if (c != 0) text.push_back(c);
        }
        return text;
    };
    return fmt::format("{:3}->{:3}", letters(orig), letters(dest));
}

std::string gf_logName(const AircraftBase& ac) {
    return fmt::format("{:8} {:12} {} {}", ac.callsign, ac.regcode, gf_routeText(ac.orig, ac.dest),
                       gf_aimoText(ac.aimo));
}

}  // namespace tfx
