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

bool lf_writePlan(const std::filesystem::path& path, const LiveAircraft& ac) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out) return false;
    out << "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
        << "<SimBase.Document Type=\"AceXML\" version=\"4,3\">\n"
        << "<FlightPlan.FlightPlan>\n"
        << "<FPType>" << (lf_flownByRules(ac.category) ? "IFR" : "VFR") << "</FPType>\n"
        << "<DepartureID>" << lf_letters(ac.orig) << "</DepartureID>\n"
        << "<DestinationID>" << lf_letters(ac.dest) << "</DestinationID>\n"
        << "</FlightPlan.FlightPlan>\n"
        << "</SimBase.Document>\n"
        << "\n";
    out.close();
    return static_cast<bool>(out);
}

}  // namespace

void gf_createFlightPlan(LiveAircraft& ac) {
    ac.hasFlightPlan = 0;
    if (!gf_isMSFS2020() || !ac.orig.known() || !ac.dest.known()) return;
    const std::filesystem::path path = lf_planPath(ac.objectid);
    if (!lf_writePlan(path, ac)) {
        gf_logError(fmt::format("{} creating a flight plan failed",
                                fmt::format("{:8} {} {}", gf_routeText(ac.orig, ac.dest),
                                            ac.callsign, gf_aimoText(ac.aimo))));
        return;
    }
    gf_queueFlightPlan(ac.objectid, path);
    ac.hasFlightPlan = 1;
}

void gf_removeFlightPlan(LiveAircraft& ac) {
    if (ac.hasFlightPlan == 0 || ac.objectid == 0) return;
    try {
        std::error_code ec;
        std::filesystem::remove(lf_planPath(ac.objectid), ec);
        if (ec) gf_logError(fmt::format("gf_removeFlightPlan: {}", ec.message()));
        ac.hasFlightPlan = 0;
    } catch (const std::exception& e) {
        gf_logError(fmt::format("{}: removing flight plan for {} failed: {}",
                                "lf_cleanupLiveAircraft", ac.callsign, e.what()));
    }
}

}  // namespace tfx
