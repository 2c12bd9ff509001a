// From one raw traffic record to a message for the traffic queue: range,
// type and block filters, the altitude correction and the gaps filled.
#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <stdexcept>

#include <fmt/format.h>

#include "feeds/decode_context.h"
#include "feeds/plausible_limits.h"
#include "liveries/reference_db.h"

namespace tfx {

namespace {

constexpr double TWO_POW_63 = 9223372036854775808.0;
constexpr double DEG_TO_RAD = std::numbers::pi / 180.0;
constexpr double RAD_TO_DEG = 57.29577951308232;
constexpr double GROUND_RADIUS_SQUARED_NM2 = 25.0;

// Codes of things that transmit but are no aircraft to show.
constexpr std::array<std::string_view, 21> NON_AIRCRAFT_MODELS = {
    "FOX",  "GND",  "TWR",  "RF5",  "U15",  "ARCP", "AS16", "BALL", "DIMO", "EMER", "GLID",
    "GLIM", "GRND", "JS3E", "PARA", "SERV", "SHIP", "SF25", "ULAC", "VENT", "ZZZZ"};
constexpr std::array<std::string_view, 5> NON_AIRCRAFT_CATEGORIES = {"B1", "B2", "B4", "C1", "C2"};

struct TasRow {
    double upTo_ft;
    double tas_kt;
};
// Typical true airspeed by altitude, for records that carry none.
constexpr std::array<TasRow, 4> TAS_BY_ALTITUDE = {
    {{2000, 180}, {5000, 220}, {10000, 250}, {20000, 350}}};
constexpr double TAS_ABOVE_TABLE_KT = 430;

template <std::size_t N>
bool lf_oneOf(std::string_view text, const std::array<std::string_view, N>& list) {
    return std::find(list.begin(), list.end(), text) != list.end();
}

double lf_tasByAltitude(double alt_ft) {
    for (const auto& row : TAS_BY_ALTITUDE)
        if (row.upTo_ft >= alt_ft) return row.tas_kt;
    return TAS_ABOVE_TABLE_KT;
}

void lf_checkPlausible(const PlausibleRange& range, double value) {
    if (!gf_plausible(range, value))
        throw ImplausibleValue(fmt::format("implausible {}: {:.6g}", range.field, value));
}

// Every value that moves the aircraft, before anything is built from it.
void lf_checkPlausible(const TrafficRecord& r) {
    lf_checkPlausible(ALTITUDE_LIMIT_FT, r.altitude);
    lf_checkPlausible(GROUND_SPEED_LIMIT_KT, r.gs);
    lf_checkPlausible(AIRSPEED_LIMIT_KT, r.TAS);
    lf_checkPlausible(VERTICAL_SPEED_LIMIT_FPM, r.vs);
    lf_checkPlausible(ROLL_LIMIT_DEG, r.roll);
}

bool lf_isAlnum(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
}

}  // namespace

bool gf_isAircraftMessage(std::string_view model, std::string_view category) {
    if (model.empty() || model == "null" || model == "0" || model == "ZZZZ") return false;
    if (lf_oneOf(category, NON_AIRCRAFT_CATEGORIES)) return false;
    if (model.size() < 2 || model.size() > 4) return false;
    return !lf_oneOf(model, NON_AIRCRAFT_MODELS);
}

std::string gf_cleanCallsign(std::string_view text) {
    if (text.empty() || text == "null") return {};
    if (text.find('@') != std::string_view::npos) return {};
    if (text.size() >= 5 && text.find("00000") != std::string_view::npos) return {};
    if (text.size() < 4 || text.size() > 8) return {};
    if (text.front() == '.') text.remove_prefix(1);
    if (text.size() < 4) return {};
    return std::string(text);
}

std::string_view gf_usableRegcode(std::string_view text) {
    if (text == "null" || text.size() == 1 || text.size() == 2 || text.size() > 12) return {};
    return text;
}

AirportRef gf_iataRef(std::string_view text) {
    AirportRef ref;
    if (text.empty() || text == "null") return ref;
    if (text.size() != 3 || !std::all_of(text.begin(), text.end(), lf_isAlnum))
        throw std::runtime_error(fmt::format("'{}' IataCode: invalid string", text));
    for (std::size_t i = 0; i < 3; ++i) {
        const char c = text[i];
        ref.iata[i] = (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
    }
    return ref;
}

DecodeResult gf_decodeTraffic(const TrafficRecord& r, const DecodeContext& ctx) {
    DecodeResult result;
    // 1. Time and place.
    if (!std::isfinite(r.timestamp) || r.timestamp <= 0 || r.timestamp >= TWO_POW_63)
        throw std::runtime_error(fmt::format("timestamp outside range: {:.3f}", r.timestamp));
    if (!(r.lat >= -90 && r.lat <= 90 && r.lon >= -180 && r.lon <= 180) ||
        (std::fabs(r.lat) <= 0.0001 && std::fabs(r.lon) <= 0.0001))
        throw std::runtime_error(
            fmt::format("invalid lalo: {}", fmt::format("{:.6f},{:.6f}", r.lat, r.lon)));

    // 2. Range.
    const double dlat = (ctx.lat - r.lat) * 60;
    const double dlon = (ctx.lon - r.lon) * ctx.cosLat * 60;
    result.roundedTimestamp = static_cast<std::int64_t>(std::round(r.timestamp));
    if (ctx.options && dlat * dlat + dlon * dlon > ctx.options->rangeSquared_nm2) return result;
    lf_checkPlausible(r);

    // 3, 4, 5. Registration and type.
    const std::string_view regcode = gf_usableRegcode(r.regcode);
    if (!gf_isAircraftMessage(r.model, r.category)) return result;
    TrafficMessage m;
    m.aimo.model = gf_modelIndex(r.model);

    // 6. True heading.
    if (r.source == "adsb_icao") {
        if (r.trueheading > 360)
            throw std::runtime_error(fmt::format("true heading: {:.2f}", r.trueheading));
        if (r.trueheading == 0) {
            m.point.heading = 2 * std::numbers::pi;
            m.point.headingValid = 1;
        } else if (r.trueheading > 0) {
            m.point.heading = r.trueheading * DEG_TO_RAD;
            m.point.headingValid = 1;
        }
        if (m.point.headingValid) m.point.hasAttitude = 1;
    }

    // 7. Static aircraft own the low numbers.
    if (r.hexid < 10001) return result;

    // 8. Place, speed and altitude.
    m.point.lat = r.lat;
    m.point.lon = r.lon;
    m.point.speed = r.gs;
    m.point.alt = r.altitude;
    gf_correctAltitude(m.point, ctx.fieldAltitude, ctx.qnh, ctx.rtDirect, ctx.userAltOffset_ft);
    m.point.inAir = m.point.alt > 0 ? 1 : 0;

    // 9 .. 13. Names and the seen sets.
    m.callsign = gf_cleanCallsign(r.callsign);
    if (ctx.collectSeen && ctx.collectEarly) result.seen = SeenEntry{m.callsign, r.hexid};
    if (m.callsign.empty() && regcode.empty()) return result;
    if (ctx.dropSquawk0000 && !m.point.inAir && r.squawk == "0000") return result;
    if (ctx.collectSeen && !ctx.collectEarly) result.seen = SeenEntry{m.callsign, r.hexid};
    m.regcode = std::string(regcode);
    m.hexid = r.hexid;

    // 14. Ground records only near the park airport.
    if (!m.point.inAir) {
        if (!ctx.parkAirport) return result;
        const double glat = (ctx.parkAirport->lat - r.lat) * 60;
        const double glon = (ctx.parkAirport->lon - r.lon) * ctx.parkCosLat * 60;
        if (glat * glat + glon * glon > GROUND_RADIUS_SQUARED_NM2) return result;
    }

    // 15. The blocked aircraft.
    if (ctx.options && gf_isBlocked(m, *ctx.options)) return result;

    // 16 .. 20. Motion.
    m.point.track = r.track;
    if (r.track == 0 && m.point.headingValid) m.point.track = m.point.heading * RAD_TO_DEG;
    m.point.vs = r.vs;
    m.orig = gf_iataRef(r.from);
    m.dest = gf_iataRef(r.to);
    if (m.point.inAir && r.roll != 0 && r.roll != -1) {
        m.point.bank = -r.roll * DEG_TO_RAD;
        m.point.bankValid = 1;
    }
    m.point.tas = r.TAS == -1 ? lf_tasByAltitude(m.point.alt) : r.TAS;

    // 21, 22.
    m.point.same = 0;
    // Airline codes are a few letters; longer texts would only fill the table.
    if (!r.airline.empty() && r.airline.size() <= 4) m.aimo.airline = gf_airlineIndex(r.airline);
    m.time = r.timestamp;
    result.message = std::move(m);
    return result;
}

void gf_correctAltitude(StreamPoint& point, std::optional<double> fieldAltitude_ft,
                        std::int32_t qnh_hPa, bool rtDirect, double userAltOffset_ft) {
    const double altitude = point.alt;
    if (!(altitude > 0)) {
        point.alt = 0;
        return;
    }
    const double d = (qnh_hPa - 1013.25) * 30;
    const double low = rtDirect ? d : 0;
    const double high = rtDirect ? 0 : -d;
    const double t = std::clamp((altitude - 17000) / 2000, 0.0, 1.0);
    const double s = (3 - 2 * t) * t * t;
    const double lowPart = (altitude + low) * (1 - s);
    double result = ((altitude + high + userAltOffset_ft) * s + lowPart) * s + lowPart;
    if (result < 0) result = 0;
    if (fieldAltitude_ft && result > 0 && result < 14000) {
        const double h = result - *fieldAltitude_ft;
        const double speed = point.speed;
        const double allowance = speed > 120 ? 0 : speed <= 43 ? 90 : (120 - speed) / 77 * 45 + 45;
        if (h <= 0 || h <= allowance) result = 0;
    }
    point.alt = result;
}

}  // namespace tfx
