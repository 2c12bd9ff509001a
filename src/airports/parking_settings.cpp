// The per-airport parking settings: taken from a learned file, shown, and
// republished to the engine; written back with the learned file.
#include <algorithm>

#include <fmt/format.h>

#include "airports/loaded_airport.h"
#include "app/log.h"
#include "app/options.h"
#include "app/parameters.h"

namespace tfx {
namespace {

void lf_show(const ControlBinding& control, const std::string& text) {
    if (gf_showInControl) gf_showInControl(control, text);
}

void lf_setBool(BoolOption& p, bool value) {
    p.current = value;
    lf_show(p, value ? "true" : "false");
    updateOptions(p);
}

void lf_setInt(IntSelector& p, std::int32_t value) {
    p.current = std::clamp(value, p.minimum, p.maximum);
    lf_show(p, fmt::format("{}", p.current));
    updateOptions(p);
}

}  // namespace

ParkingSettings gf_currentParkingSettings() {
    ParkingSettings s;
    s.RT_PARKTRAFFIC_ONLY = params.RT_PARKTRAFFIC_ONLY.current;
    s.AUTO_PARK = params.AUTO_PARK.current;
    s.WEEK = params.WEEK.current;
    s.PARK_SOFT = params.PARK_SOFT.current;
    s.parking_percentage = params.parking_percentage.current;
    s.MAX_FIT = params.MAX_FIT.current;
    return s;
}

void gf_applyParkingSettings(const ParkingSettings& s) {
    lf_setBool(params.RT_PARKTRAFFIC_ONLY, s.RT_PARKTRAFFIC_ONLY);
    lf_setBool(params.AUTO_PARK, s.AUTO_PARK);
    lf_setBool(params.WEEK, s.WEEK);
    lf_setBool(params.PARK_SOFT, s.PARK_SOFT);
    lf_setInt(params.parking_percentage, s.parking_percentage);
    params.MAX_FIT.current = std::clamp(s.MAX_FIT, params.MAX_FIT.minimum, params.MAX_FIT.maximum);
    updateOptions(params.MAX_FIT);
}

}  // namespace tfx
