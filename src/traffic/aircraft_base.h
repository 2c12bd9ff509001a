// Building and describing aircraft records.
#pragma once

#include <string>
#include <string_view>

#include "traffic/aircraft.h"

namespace tfx {

// A fresh record from a message: names, route, hexid, and the constants of the
// model's category. Throws std::logic_error for a category outside the table.
AircraftBase gf_makeAircraftBase(const TrafficMessage& message);
// The category and every constant that follows from the model: wing span,
// clearance, stand search radii and the category's performance values.
// Throws std::logic_error for a category outside the table.
void gf_deriveFromModel(AircraftBase& ac);
// Takes a new key (a registration lookup); when it names another model, the
// values that follow from the model are derived again.
void gf_takeAimo(AircraftBase& ac, const Aimo& aimo);

// value plus or minus percent of it, the sign by one random bit.
double gf_randomSpread(double value, double percent);

// No-op when the state is already the one asked for.
void gf_setFlightState(LiveAircraft& ac, FlightState state);

std::string_view gf_flightStateName(FlightState state);
std::string_view gf_simStateName(SimState state);
// Whether the options let this category be shown.
bool gf_categoryEnabled(AircraftCategory category);

// "{:3}{:4} {:4}{}{:3}": airline, ",operator", model, cargo mark.
std::string gf_aimoText(const Aimo& aimo);
// "{:3}->{:3}", or eight blanks when both ends are unknown.
std::string gf_routeText(const AirportRef& orig, const AirportRef& dest);
// "{:8} {:12} {} {}": callsign, regcode, route, aimo.
std::string gf_logName(const AircraftBase& ac);

}  // namespace tfx
