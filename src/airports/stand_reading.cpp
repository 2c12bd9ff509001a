// The parts of an airport file's document: meta check, parameters, stands
// with their options, and the overlaps between stands.
#include <cmath>
#include <cstring>
#include <numbers>
#include <unordered_set>

#include <fmt/format.h>

#include "airports/airport_file_io.h"
#include "app/hours.h"
#include "app/log.h"
#include "app/text_utils.h"
#include "app/user_exception.h"
#include "liveries/reference_db.h"

namespace tfx {
namespace {

constexpr double DEG_TO_RAD = std::numbers::pi / 180.0;

std::uint32_t lf_typeOf(const pugi::xml_node& parkpos) {
    const char* name = parkpos.attribute("typestr").value();
    if (*name != '\0') {
        for (std::uint32_t i = 0; i < STAND_TYPE_NAMES.size(); ++i)
            if (STAND_TYPE_NAMES[i] == name) return i;
        return 0;
    }
    const auto number = parkpos.attribute("type");
    if (!number) return 0;
    const int value = number.as_int(-1);
    return value >= 0 && value < static_cast<int>(STAND_TYPE_NAMES.size())
               ? static_cast<std::uint32_t>(value)
               : 0;
}

// Derives a type from cargo, ramp and the radius in metres.
std::uint32_t lf_derivedType(bool cargo, bool ramp, double radius_m) {
    if (cargo) return 5;
    const int size = radius_m >= 30.0 ? 2 : radius_m >= 16.0 ? 1 : 0;
    return ramp ? 2u + static_cast<std::uint32_t>(size) : 8u + static_cast<std::uint32_t>(size);
}

Aimo lf_keyOf(const std::string& reg, const pugi::xml_node& opt) {
    if (!reg.empty()) {
        const RegcodeRecord& record = gf_lookupRegcode(reg);
        if (record.valid)
            return Aimo{record.airline, record.opr, record.model,
                        static_cast<std::uint8_t>(record.cargo ? 1 : 0), 1};
    }
    Aimo key;
    key.airline = gf_airlineIndex(opt.attribute("airl").value());
    key.model = gf_modelIndex(opt.attribute("type").value());
    return key;
}

// One stand's geometry and type; false (logged) when it is to be skipped.
bool lf_readGeometry(const pugi::xml_node& parkpos, Stand& stand) {
    stand.latitude = parkpos.attribute("latitude").as_double(0.0);
    stand.longitude = parkpos.attribute("longitude").as_double(0.0);
    if (stand.latitude == 0.0 && stand.longitude == 0.0) {
        gf_logError(fmt::format("stand {} has no valid lat/lon", stand.id));
        return false;
    }
    stand.heading = parkpos.attribute("heading").as_double(0.0) * DEG_TO_RAD;
    const double radius_m = parkpos.attribute("radius").as_double(0.0);
    stand.radius = radius_m / METRES_PER_NM;
    stand.type = lf_typeOf(parkpos);
    stand.heli = parkpos.attribute("heli").as_bool(false);
    stand.manual = parkpos.attribute("manual").as_bool(false);
    if (stand.type != 0) {
        stand.cargo = gf_standTypeIsCargo(stand.type);
        stand.ramp = gf_standTypeIsRamp(stand.type);
        return true;
    }
    const auto cargo = parkpos.attribute("cargo"), ramp = parkpos.attribute("ramp");
    stand.cargo = cargo.as_bool(false);
    stand.ramp = ramp.as_bool(false);
    if (stand.heli) return true;
    if (!cargo || !ramp) {
        gf_logError(fmt::format("stand {} has no valid type, and no valid cargo/ramp fallback info",
                                stand.id));
        return false;
    }
    if (!(radius_m > 0.0)) {
        gf_logError(fmt::format("stand {} has no valid type and no usable radius", stand.id));
        return false;
    }
    stand.type = lf_derivedType(stand.cargo, stand.ramp, radius_m);
    return true;
}

}  // namespace

std::optional<StandOption> gf_readOption(const pugi::xml_node& opt, std::int32_t source) {
    const char* hh = opt.attribute("hh").value();
    const int day = opt.attribute("day").as_int(0);
    if (*hh == '\0' || day < 1 || day > 7) return std::nullopt;
    StandOption option;
    option.reg = opt.attribute("reg").value();
    option.key = lf_keyOf(option.reg, opt);
    const std::string_view cs = opt.attribute("cs").value();
    const auto colon = cs.find(':');
    option.cs1 = std::string(cs.substr(0, colon));
    if (colon != std::string_view::npos) option.cs2 = std::string(cs.substr(colon + 1));
    option.hours = gf_hours2bitset(hh).to_ullong();
    option.day = static_cast<std::uint32_t>(day);
    option.source = source;
    option.real = opt.attribute("soft").as_bool(false) ? 0 : 1;
    option.cpl = opt.attribute("cpl").as_bool(false);
    return option;
}

std::optional<Stand> gf_readStand(const pugi::xml_node& parkpos, std::int32_t source) {
    Stand stand;
    stand.id = parkpos.attribute("id").value();
    if (!lf_readGeometry(parkpos, stand)) return std::nullopt;
    std::uint32_t number = 0;
    for (const pugi::xml_node opt : parkpos.children("opt")) {
        if (auto option = gf_readOption(opt, source)) {
            option->number = ++number;
            stand.options.push_back(std::move(*option));
        }
    }
    return stand;
}

pugi::xml_node gf_apfRoot(const pugi::xml_document& document) {
    const pugi::xml_node root = document.child("root");
    return root ? root : static_cast<pugi::xml_node>(document);
}

pugi::xml_attribute gf_apfParameter(const pugi::xml_node& root, std::string_view name) {
    for (const pugi::xml_node p : root.child("parameters").children("parameter"))
        if (name == p.attribute("name").value()) return p.attribute("value");
    return {};
}

bool gf_metaAccepted(const pugi::xml_node& root, bool learned) {
    const pugi::xml_node meta = root.child("meta");
    if (!meta) return false;
    bool copyright = false, simulator = false;
    for (const pugi::xml_node info : meta.children("info")) {
        const std::string_view name = info.attribute("name").value();
        if (name == "copyright") {
            if (*info.attribute("value").value() == '\0') {
                gf_logError("no copyright info in the file?");
            } else {
                copyright = true;
            }
        }
        if (name == "P3D" || name == "MSFS" || name == "sim") simulator = true;
    }
    return copyright && (simulator || learned);
}

std::vector<Stand> gf_readParkpositions(const pugi::xml_node& section, std::int32_t source) {
    std::vector<Stand> stands;
    std::unordered_set<std::string> seen;
    int count = 0;
    for (const pugi::xml_node parkpos : section.children("parkpos")) {
        ++count;
        const auto id = parkpos.attribute("id");
        if (!id)
            throw UserRelatedException(
                APF_USER_ERROR,
                fmt::format("Parking position #{} has no '{}' attribute.", count, "id"));
        if (gf_trim(id.value()).empty())
            throw UserRelatedException(
                APF_USER_ERROR, fmt::format("Stand #{} has empty '{}' attribute.", count, "id"));
        if (!seen.insert(id.value()).second) {
            gf_logError(
                fmt::format("Stand '{}' appears more than once, last one skipped!", id.value()));
            continue;
        }
        if (auto stand = gf_readStand(parkpos, source)) stands.push_back(std::move(*stand));
    }
    return stands;
}

void gf_numberStandsAndOverlaps(std::vector<Stand>& stands) {
    for (std::size_t i = 0; i < stands.size(); ++i) {
        stands[i].number = static_cast<std::uint32_t>(i + 1);
        stands[i].overlaps.clear();
    }
    for (std::size_t i = 0; i < stands.size(); ++i) {
        for (std::size_t j = i + 1; j < stands.size(); ++j) {
            const Stand &a = stands[i], &b = stands[j];
            const double dlat = (a.latitude - b.latitude) * 60.0;
            const double dlon = (a.longitude - b.longitude) *
                                std::cos((a.latitude + b.latitude) / 2.0 * DEG_TO_RAD) * 60.0;
            const double r = a.radius + b.radius;
            if (r * r > 1.21 * (dlat * dlat + dlon * dlon)) {
                stands[i].overlaps.push_back(b.number);
                stands[j].overlaps.push_back(a.number);
            }
        }
    }
}

}  // namespace tfx
