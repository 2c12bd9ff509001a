// The small flight plan file that MSFS 2020 gets for a live aircraft with a
// known route: it lets the simulator show where the aircraft comes from and
// goes to. MSFS 2024 gets none.
#include "sim/flight_plan.h"

#include <filesystem>
#include <fstream>
#include <string>

#include <fmt/format.h>

#include "app/log.h"
#include "app/parameters.h"
#include "app/run_state.h"
#include "sim/sim_queues.h"
#include "traffic/aircraft_base.h"

namespace tfx {
namespace {

std::string lf_letters(const AirportRef& ref) {
    std::string text;
    for (char c : ref.iata)
        if (c != 0) text += c;
    return text;
}

bool lf_flownByRules(AircraftCategory category) {
    return category == AircraftCategory::Bizjet || category == AircraftCategory::Large ||
           category == AircraftCategory::Heavy;
}

std::filesystem::path lf_planPath(std::uint32_t objectid) {
    return gf_dataFolder() / "orig_dest" / fmt::format("{}.pln", objectid);
}

std::string lf_planText(const LiveAircraft& ac) {
    return fmt::format(
        "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        "<SimBase.Document Type=\"AceXML\" version=\"4,3\">\n"
        "<FlightPlan.FlightPlan>\n"
        "<FPType>{}</FPType>\n"
        "<DepartureID>{}</DepartureID>\n"
        "<DestinationID>{}</DestinationID>\n"
        "</FlightPlan.FlightPlan>\n"
        "</SimBase.Document>\n"
        "\n",
        lf_flownByRules(ac.category) ? "IFR" : "VFR", lf_letters(ac.orig), lf_letters(ac.dest));
}

}  // namespace

void gf_createFlightPlan(LiveAircraft& ac) {
    ac.hasFlightPlan = 0;
    if (!gf_isMSFS2020() || !ac.orig.known() || !ac.dest.known()) return;
    // The simulator's thread writes the file before it hands the plan over;
    // the aircraft's name goes along for its complaint.
    gf_queueFlightPlan({ac.objectid, lf_planPath(ac.objectid), lf_planText(ac),
                        fmt::format("{:8} {} {}", gf_routeText(ac.orig, ac.dest), ac.callsign,
                                    gf_aimoText(ac.aimo))});
    ac.hasFlightPlan = 1;
}

void gf_removeFlightPlan(LiveAircraft& ac) {
    if (ac.hasFlightPlan == 0 || ac.objectid == 0) return;
    gf_queueFlightPlan({ac.objectid, lf_planPath(ac.objectid), {}, {}});
    ac.hasFlightPlan = 0;
}

bool gf_carryOutFlightPlan(const FlightPlanCommand& plan) {
    if (plan.text.empty()) {
        std::error_code ec;
        std::filesystem::remove(plan.path, ec);
        if (ec) gf_logError(fmt::format("gf_removeFlightPlan: {}", ec.message()));
        return false;
    }
    std::ofstream out(plan.path, std::ios::binary | std::ios::trunc);
    out << plan.text;
    out.close();
    if (!out) {
        gf_logError(fmt::format("{} creating a flight plan failed", plan.label));
        return false;
    }
    return true;
}

}  // namespace tfx
