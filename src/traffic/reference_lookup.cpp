#include "traffic/reference_lookup.h"

#include "liveries/reference_db.h"

namespace tfx {

AircraftCategory gf_categoryOfModel(std::uint16_t model) {
    return gf_modelCategory(model);
}

double gf_halfSpanOfModel(std::uint16_t model) {
    const double halfSpan_nm = gf_halfWingspanNm(model);
    return halfSpan_nm > 0 ? halfSpan_nm : maxHalfWingspan;
}

std::optional<Aimo> gf_regcodeAimo(std::string_view regcode) {
    if (regcode.empty()) return std::nullopt;
    const RegcodeRecord& record = gf_lookupRegcode(regcode);
    if (!record.valid) return std::nullopt;
    Aimo aimo;
    aimo.airline = record.airline;
    aimo.operator_ = record.opr;
    aimo.model = record.model;
    aimo.cargo = record.cargo ? 1 : 0;
    aimo.locked = 1;
    return aimo;
}

std::uint16_t gf_callsignAirline(std::string_view callsign) {
    const auto code = gf_airlineOfCallsign(callsign);
    return code ? gf_airlineIndex(*code) : 0;
}

std::uint16_t gf_privateAirline() {
    // Looked up each time: the tables are read again after a data update.
    return gf_airlineIndex("PVT");
}

}  // namespace tfx
