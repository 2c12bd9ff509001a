// Simulation variables of the built-in simulator and the data blocks built
// from them.
#include "sim/builtin/builtin_sim_vars.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <numbers>

namespace tfx::bsim {

namespace {

bool lf_sameText(std::string_view a, std::string_view b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::toupper(static_cast<unsigned char>(x)) ==
                      std::toupper(static_cast<unsigned char>(y));
           });
}

double lf_agl(const VarContext& c) {
    return c.object.alt_ft - c.ground_ft;
}
bool lf_onGround(const VarContext& c) {
    return lf_agl(c) <= c.object.staticCg_ft + 1.0;
}

// Year, day of year (1 = 1 January) of a day count since 1970-01-01.
void lf_civilOfDays(std::int64_t days, std::int64_t& year, std::int64_t& dayOfYear) {
    days += 719468;
    const std::int64_t era = (days >= 0 ? days : days - 146096) / 146097;
    const auto doe = static_cast<unsigned>(days - era * 146097);
    const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
    const unsigned doyMar = doe - (365 * yoe + yoe / 4 - yoe / 100);  // from 1 March
    const unsigned mp = (5 * doyMar + 2) / 153;
    const unsigned month = mp < 10 ? mp + 3 : mp - 9;
    year = static_cast<std::int64_t>(yoe) + era * 400 + (month <= 2 ? 1 : 0);
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    // 1 March is day 60 of a common year, 61 of a leap year.
    dayOfYear = month <= 2 ? doyMar - 305 : doyMar + 60 + (leap ? 1 : 0);
}

std::int64_t lf_days(const VarContext& c) {
    return static_cast<std::int64_t>(std::floor(c.zulu_s / 86400.0));
}

using Ctx = const VarContext&;
using Obj = SimObject&;

const SimVarInfo kVars[] = {
    {"TITLE", VarFamily::Text, false, nullptr, nullptr, [](Ctx c) { return c.object.title; }},
    {"ATC MODEL", VarFamily::Text, false, nullptr, nullptr,
     [](Ctx c) { return c.object.atcModel; }},
    {"ATC ID", VarFamily::Text, false, nullptr, nullptr, [](Ctx c) { return c.object.atcId; }},
    {"SIM ON GROUND", VarFamily::Flag, false, [](Ctx c, int) { return lf_onGround(c) ? 1.0 : 0.0; },
     nullptr, nullptr},
    {"PLANE LATITUDE", VarFamily::Angle, false, [](Ctx c, int) { return c.object.lat_deg; },
     [](Obj o, int, double v) { o.lat_deg = v; }, nullptr},
    {"PLANE LONGITUDE", VarFamily::Angle, false, [](Ctx c, int) { return c.object.lon_deg; },
     [](Obj o, int, double v) { o.lon_deg = v; }, nullptr},
    {"PLANE PITCH DEGREES", VarFamily::Angle, false, [](Ctx c, int) { return c.object.pitch_deg; },
     [](Obj o, int, double v) { o.pitch_deg = v; }, nullptr},
    {"PLANE BANK DEGREES", VarFamily::Angle, false, [](Ctx c, int) { return c.object.bank_deg; },
     [](Obj o, int, double v) { o.bank_deg = v; }, nullptr},
    {"PLANE HEADING DEGREES TRUE", VarFamily::Angle, false,
     [](Ctx c, int) { return c.object.heading_deg; },
     [](Obj o, int, double v) { o.heading_deg = v; }, nullptr},
    {"PLANE ALTITUDE", VarFamily::Length, false, [](Ctx c, int) { return c.object.alt_ft; },
     [](Obj o, int, double v) { o.alt_ft = v; }, nullptr},
    {"INDICATED ALTITUDE", VarFamily::Length, false,
     [](Ctx c, int) { return c.object.alt_ft + c.pressureOffset_ft; }, nullptr, nullptr},
    {"PLANE ALT ABOVE GROUND", VarFamily::Length, false, [](Ctx c, int) { return lf_agl(c); },
     nullptr, nullptr},
    {"GROUND ALTITUDE", VarFamily::Length, false, [](Ctx c, int) { return c.ground_ft; }, nullptr,
     nullptr},
    {"VERTICAL SPEED", VarFamily::VerticalSpeed, false, [](Ctx c, int) { return c.object.vs_fpm; },
     [](Obj o, int, double v) { o.vs_fpm = v; }, nullptr},
    {"AIRSPEED TRUE", VarFamily::Speed, false, [](Ctx c, int) { return c.object.tas_kt; },
     [](Obj o, int, double v) { o.tas_kt = v; }, nullptr},
    {"GROUND VELOCITY", VarFamily::Speed, false, [](Ctx c, int) { return c.object.gs_kt; }, nullptr,
     nullptr},
    {"GPS GROUND TRUE TRACK", VarFamily::Angle, false,
     [](Ctx c, int) { return c.object.track_deg; }, nullptr, nullptr},
    {"ZULU TIME", VarFamily::Time, false,
     [](Ctx c, int) { return c.zulu_s - static_cast<double>(lf_days(c)) * 86400.0; }, nullptr,
     nullptr},
    {"ZULU DAY OF YEAR", VarFamily::Count, false,
     [](Ctx c, int) {
         std::int64_t year = 0, day = 0;
         lf_civilOfDays(lf_days(c), year, day);
         return static_cast<double>(day);
     },
     nullptr, nullptr},
    {"ZULU YEAR", VarFamily::Count, false,
     [](Ctx c, int) {
         std::int64_t year = 0, day = 0;
         lf_civilOfDays(lf_days(c), year, day);
         return static_cast<double>(year);
     },
     nullptr, nullptr},
    {"LIGHT STATES", VarFamily::Count, false,
     [](Ctx c, int) { return static_cast<double>(c.object.lightsMask); }, nullptr, nullptr},
    {"LIGHT ON STATES", VarFamily::Count, false,
     [](Ctx c, int) { return static_cast<double>(c.object.lightsMask); }, nullptr, nullptr},
    {"STATIC CG TO GROUND", VarFamily::Length, false,
     [](Ctx c, int) { return c.object.staticCg_ft; }, nullptr, nullptr},
    {"STATIC PITCH", VarFamily::Angle, false, [](Ctx c, int) { return c.object.staticPitch_deg; },
     nullptr, nullptr},
    {"SPOILERS HANDLE POSITION", VarFamily::Percent, false,
     [](Ctx c, int) { return c.object.spoilers_pct; },
     [](Obj o, int, double v) { o.spoilers_pct = v; }, nullptr},
    {"GENERAL ENG THROTTLE LEVER POSITION", VarFamily::Percent, true,
     [](Ctx c, int i) { return c.object.throttle_pct[static_cast<std::size_t>(i - 1)]; },
     [](Obj o, int i, double v) { o.throttle_pct[static_cast<std::size_t>(i - 1)] = v; }, nullptr},
    {"GENERAL ENG COMBUSTION", VarFamily::Flag, true,
     [](Ctx c, int) { return c.object.enginesRunning ? 1.0 : 0.0; }, nullptr, nullptr},
    {"GEAR HANDLE POSITION", VarFamily::Flag, false,
     [](Ctx c, int) { return c.object.gearDown ? 1.0 : 0.0; }, nullptr, nullptr},
    {"FLAPS HANDLE PERCENT", VarFamily::Percent, false,
     [](Ctx c, int) { return c.object.flaps_pct; }, nullptr, nullptr},
};

struct UnitInfo {
    std::string_view name;
    VarFamily family;
    double perCanonical;
};

constexpr double kDegToRad = std::numbers::pi / 180.0;

const UnitInfo kUnits[] = {
    {"degree", VarFamily::Angle, 1},
    {"degrees", VarFamily::Angle, 1},
    {"radian", VarFamily::Angle, kDegToRad},
    {"radians", VarFamily::Angle, kDegToRad},
    {"feet", VarFamily::Length, 1},
    {"foot", VarFamily::Length, 1},
    {"meter", VarFamily::Length, 0.3048},
    {"meters", VarFamily::Length, 0.3048},
    {"knot", VarFamily::Speed, 1},
    {"knots", VarFamily::Speed, 1},
    {"meters per second", VarFamily::Speed, 0.514444},
    {"feet per minute", VarFamily::VerticalSpeed, 1},
    {"feet per second", VarFamily::VerticalSpeed, 1.0 / 60.0},
    {"bool", VarFamily::Flag, 1},
    {"boolean", VarFamily::Flag, 1},
    {"percent", VarFamily::Percent, 1},
    {"percent over 100", VarFamily::Percent, 0.01},
    {"second", VarFamily::Time, 1},
    {"seconds", VarFamily::Time, 1},
    {"number", VarFamily::Count, 1},
    {"mask", VarFamily::Count, 1},
    {"enum", VarFamily::Count, 1},
};

template <class T>
void lf_put(std::vector<std::byte>& out, T value) {
    const std::size_t at = out.size();
    out.resize(at + sizeof(T));
    std::memcpy(out.data() + at, &value, sizeof(T));
}

template <class T>
T lf_get(const std::byte* data) {
    T value;
    std::memcpy(&value, data, sizeof(T));
    return value;
}

}  // namespace

std::optional<VarRef> gf_findVar(std::string_view datumName) {
    std::string_view name = datumName;
    int index = 0;
    if (const auto colon = name.rfind(':'); colon != std::string_view::npos) {
        const std::string_view digits = name.substr(colon + 1);
        if (digits.size() != 1 || digits[0] < '1' || digits[0] > '4') return std::nullopt;
        index = digits[0] - '0';
        name = name.substr(0, colon);
    }
    for (std::size_t i = 0; i < std::size(kVars); ++i) {
        if (!lf_sameText(kVars[i].name, name)) continue;
        if (kVars[i].indexed != (index != 0)) return std::nullopt;
        return VarRef{static_cast<std::uint16_t>(i), static_cast<std::uint8_t>(index)};
    }
    return std::nullopt;
}

const SimVarInfo& gf_varInfo(std::uint16_t var) {
    return kVars[var];
}

std::optional<double> gf_unitFactor(VarFamily family, std::string_view unit) {
    if (family == VarFamily::Text) return 1.0;  // a text has no unit; whatever is named
    // Flags and counts answer to "number" as well.
    for (const UnitInfo& u : kUnits) {
        if (!lf_sameText(u.name, unit)) continue;
        if (u.family == family) return u.perCanonical;
        if (u.family == VarFamily::Count && family == VarFamily::Flag) return 1.0;
        if (u.family == VarFamily::Flag && family == VarFamily::Count) return 1.0;
        return std::nullopt;
    }
    return std::nullopt;
}

std::optional<DWORD> gf_datatypeBytes(SIMCONNECT_DATATYPE type) {
    switch (type) {
        case SIMCONNECT_DATATYPE_INT32:
        case SIMCONNECT_DATATYPE_FLOAT32:
            return 4;
        case SIMCONNECT_DATATYPE_INT64:
        case SIMCONNECT_DATATYPE_FLOAT64:
        case SIMCONNECT_DATATYPE_STRING8:
            return 8;
        case SIMCONNECT_DATATYPE_STRING32:
            return 32;
        case SIMCONNECT_DATATYPE_STRING64:
            return 64;
        case SIMCONNECT_DATATYPE_STRING128:
            return 128;
        case SIMCONNECT_DATATYPE_STRING256:
            return 256;
        case SIMCONNECT_DATATYPE_STRING260:
            return 260;
        case SIMCONNECT_DATATYPE_STRINGV:
            return 0;
        default:
            return std::nullopt;
    }
}

void gf_writeBlock(const DataDefinition& definition, const VarContext& context,
                   std::vector<std::byte>& out) {
    for (const DataItem& item : definition.items) {
        const SimVarInfo& info = kVars[item.var];
        if (info.family == VarFamily::Text) {
            const std::string text = info.text(context);
            const std::size_t at = out.size();
            if (item.bytes == 0) {  // STRINGV: the text and its zero
                out.resize(at + text.size() + 1, std::byte{0});
                std::memcpy(out.data() + at, text.data(), text.size());
            } else {  // cut to leave room for the zero
                out.resize(at + item.bytes, std::byte{0});
                std::memcpy(out.data() + at, text.data(),
                            std::min<std::size_t>(text.size(), item.bytes - 1));
            }
            continue;
        }
        const double value = info.get(context, item.index) * item.perCanonical;
        switch (item.type) {
            case SIMCONNECT_DATATYPE_INT32:
                lf_put(out, static_cast<std::int32_t>(value));
                break;
            case SIMCONNECT_DATATYPE_INT64:
                lf_put(out, static_cast<std::int64_t>(value));
                break;
            case SIMCONNECT_DATATYPE_FLOAT32:
                lf_put(out, static_cast<float>(value));
                break;
            default:
                lf_put(out, value);
                break;
        }
    }
}

bool gf_applyBlock(const DataDefinition& definition, const std::byte* data, SimObject& object) {
    for (const DataItem& item : definition.items) {
        if (kVars[item.var].set == nullptr) return false;
    }
    for (const DataItem& item : definition.items) {
        double value = 0;
        switch (item.type) {
            case SIMCONNECT_DATATYPE_INT32:
                value = lf_get<std::int32_t>(data);
                break;
            case SIMCONNECT_DATATYPE_INT64:
                value = static_cast<double>(lf_get<std::int64_t>(data));
                break;
            case SIMCONNECT_DATATYPE_FLOAT32:
                value = lf_get<float>(data);
                break;
            default:
                value = lf_get<double>(data);
                break;
        }
        if (std::isfinite(value))
            kVars[item.var].set(object, item.index, value / item.perCanonical);
        data += item.bytes;
    }
    return true;
}

}  // namespace tfx::bsim
