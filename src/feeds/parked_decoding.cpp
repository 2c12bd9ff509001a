// From one raw parked record to an aircraft that stands at a stand, completed
// from the reference database.
#include <array>
#include <cmath>
#include <ctime>
#include <stdexcept>

#include <fmt/format.h>

#include "feeds/decode_context.h"
#include "liveries/reference_db.h"
#include "traffic/aircraft_tables.h"

namespace tfx {

namespace {

struct GenericModel {
    std::string_view generic;
    std::string_view variant;
};
// Family codes some feeds give for a parked aircraft, and the variant that
// most often stands behind them.
constexpr std::array<GenericModel, 4> GENERIC_MODELS = {
    {{"A380", "A388"}, {"B767", "B763"}, {"B747", "B744"}, {"B757", "B752"}}};

std::int32_t lf_halfHourOfDay(double timestamp) {
    // time_t spans this range on every platform we ship for.
    if (!std::isfinite(timestamp) || timestamp < 0 || timestamp > 253402300799.0) return -1;
    const std::time_t t = static_cast<std::time_t>(timestamp);
    std::tm utc{};
#ifdef _WIN32
    if (gmtime_s(&utc, &t) != 0) return -1;
#else
    if (gmtime_r(&t, &utc) == nullptr) return -1;
#endif
    const int secondsIntoHour = utc.tm_min * 60 + utc.tm_sec;
    const int hh = secondsIntoHour < 29 * 60 + 30 ? 2 * utc.tm_hour : 2 * utc.tm_hour + 1;
    return hh % 48;
}

bool lf_categoryEnabled(std::uint16_t model, const Options& options) {
    const auto& row = CATEGORY_TABLE[static_cast<std::size_t>(gf_modelCategory(model))];
    return row.enabledBy == nullptr || options.*row.enabledBy;
}

bool lf_isCodeChar(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9');
}

}  // namespace

std::string_view gf_plainStandName(std::string_view stand) {
    const std::size_t underscore = stand.find('_');
    if (underscore != 4 || underscore + 1 >= stand.size()) return stand;
    for (std::size_t i = 0; i < underscore; ++i)
        if (!lf_isCodeChar(stand[i])) return stand;
    return stand.substr(underscore + 1);
}

std::optional<ParkedMessage> gf_decodeParked(const ParkedRecord& r, const ParkedContext& ctx) {
    if (r.hexid < 10001 || !(r.timestamp >= 1) || r.model.empty()) return std::nullopt;
    ParkedMessage p;
    p.hexid = r.hexid;
    p.hh = lf_halfHourOfDay(r.timestamp);
    p.regcode = std::string(gf_usableRegcode(r.regcode));

    std::string_view model = r.model;
    bool replaced = false;
    for (const auto& g : GENERIC_MODELS) {
        if (model == g.generic) {
            model = g.variant;
            replaced = true;
        }
    }
    if (!replaced && !gf_isValidModel(model)) return std::nullopt;
    p.aimo.model = gf_modelIndex(model);

    if (!(r.lat >= -90 && r.lat <= 90 && r.lon >= -180 && r.lon <= 180) ||
        (std::fabs(r.lat) <= 0.0001 && std::fabs(r.lon) <= 0.0001))
        throw std::runtime_error(
            fmt::format("lalo: {}", fmt::format("{:.6f},{:.6f}", r.lat, r.lon)));
    p.lat = r.lat;
    p.lon = r.lon;
    p.callsign = gf_cleanCallsign(r.callsign);

    const RegcodeRecord* found = nullptr;
    if (!p.regcode.empty()) {
        const auto& rec = gf_lookupRegcode(p.regcode);
        if (rec.valid) {
            found = &rec;
            if (p.callsign.empty()) p.callsign = p.regcode;
        }
    } else if (!p.callsign.empty()) {
        const auto& rec = gf_lookupRegcode(p.callsign);
        if (rec.valid) {
            found = &rec;
            p.regcode = p.callsign;
        }
    }
    if (found) {
        p.aimo.airline = found->airline;
        p.aimo.operator_ = found->opr;
        if (found->model != 0) p.aimo.model = found->model;
        p.aimo.cargo = found->cargo ? 1 : 0;
        p.aimo.locked = 1;
        if (found->opr != 0 && !gf_airlineCode(found->opr).empty()) p.aimo.airline = found->opr;
    }

    if (!gf_isValidModel(gf_modelCode(p.aimo.model))) return std::nullopt;
    if (ctx.options && !lf_categoryEnabled(p.aimo.model, *ctx.options)) return std::nullopt;

    // The stand as the airport files name it, so that the user's stand and
    // the planner's stands are recognised whatever the feed puts in front.
    const std::string_view stand = gf_plainStandName(r.stand);
    if (stand.empty()) return std::nullopt;
    p.stand = std::string(stand);
    // The user's own stand is never given to a parked aircraft.
    if ((!ctx.userStand.empty() && p.stand == gf_plainStandName(ctx.userStand)) ||
        (!ctx.nearestStand.empty() && p.stand == gf_plainStandName(ctx.nearestStand)))
        return std::nullopt;
    return p;
}

}  // namespace tfx
