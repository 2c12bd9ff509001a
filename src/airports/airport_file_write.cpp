// Writing an airport file: a scan file with every stand's geometry, or a
// learned file with the options recorded from live traffic.
#include <ctime>
#include <numbers>
#include <system_error>

#include <fmt/format.h>

#include "airports/airport_file_io.h"
#include "airports/loaded_airport.h"
#include "app/file_utils.h"
#include "app/hours.h"
#include "app/log.h"
#include "liveries/code_interning.h"

namespace fs = std::filesystem;

namespace tfx {
namespace {

constexpr double RAD_TO_DEG = 180.0 / std::numbers::pi;
constexpr const char* COPYRIGHT =
    "Stand data of ZEPT; timetable-derived entries from public AI traffic data (GPL)";
constexpr const char* MONTHS[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                  "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};

std::string lf_dateText() {
    const std::time_t now = std::time(nullptr);
    std::tm utc{};
#ifdef _WIN32
    if (gmtime_s(&utc, &now) != 0) return "Invalid date";
#else
    if (gmtime_r(&now, &utc) == nullptr) return "Invalid date";
#endif
    return fmt::format("{} {} {}", utc.tm_mday, MONTHS[utc.tm_mon], utc.tm_year + 1900);
}

void lf_add(pugi::xml_node& list, const char* element, const char* name, const std::string& value) {
    pugi::xml_node node = list.append_child(element);
    node.append_attribute("name") = name;
    node.append_attribute("value") = value.c_str();
}

void lf_parameters(pugi::xml_node& root, const ApfRecord& r, int kind) {
    pugi::xml_node p = root.append_child("parameters");
    const auto add = [&](const char* name, const std::string& value) {
        lf_add(p, "parameter", name, value);
    };
    const auto flag = [](bool value) { return std::string(value ? "true" : "false"); };
    const bool scan = kind == APF_KIND_SCAN;
    if (!r.code.empty()) add("icao", std::string(r.code.text()));
    if (!r.iata.isNone()) add("iata", std::string(r.iata.text()));
    add("airport_name", r.airport_name);
    if (r.latitude != 0.0 || r.longitude != 0.0) {
        add("latitude", fmt::format("{:.4f}", r.latitude));
        add("longitude", fmt::format("{:.4f}", r.longitude));
    }
    add("publisher", r.publisher);
    if (r.hasPackageData && !r.version.empty() && r.publisher != "stock") add("version", r.version);
    if (r.handmade) add("handmade", flag(true));
    if (scan || r.handmade) add("altitude", fmt::format("{}", r.altitude));
    if (scan) add("num_parkpos", fmt::format("{}", r.stands.size()));
    if (r.handmade && (r.Qf_real >= 1 || r.Qf_soft >= 1)) {
        if (r.Qf_real >= 0) add("Qf_real", fmt::format("{}", r.Qf_real));
        if (!(r.Qf_soft < 1 && r.Qf_real != 0)) add("Qf_soft", fmt::format("{}", r.Qf_soft));
    }
    if (r.publisher.empty()) {
        add("BGLpath", r.BGLpath);
        if (r.hasPackageData) {
            add("manufacturer", r.manufacturer);
            add("creator", r.creator);
        }
    }
    if (kind == APF_KIND_LEARNED) {
        const ParkingSettings s = gf_currentParkingSettings();
        add("RT_PARKTRAFFIC_ONLY", flag(s.RT_PARKTRAFFIC_ONLY));
        add("AUTO_PARK", flag(s.AUTO_PARK));
        add("parking_percentage", fmt::format("{}", s.parking_percentage));
        add("MAX_FIT", fmt::format("{}", s.MAX_FIT));
        add("WEEK", flag(s.WEEK));
        add("PARK_SOFT", flag(s.PARK_SOFT));
    }
}

void lf_geometry(pugi::xml_node& pos, const Stand& s) {
    const bool known = s.type < STAND_TYPE_NAMES.size();
    pos.append_attribute("typestr") = known ? STAND_TYPE_NAMES[s.type].data() : "NONE";
    pos.append_attribute("latitude") = fmt::format("{:.6f}", s.latitude).c_str();
    pos.append_attribute("longitude") = fmt::format("{:.6f}", s.longitude).c_str();
    pos.append_attribute("heading") = fmt::format("{:.1f}", s.heading * RAD_TO_DEG).c_str();
    pos.append_attribute("radius") = fmt::format("{:.1f}", s.radius * METRES_PER_NM).c_str();
    if (!known || (s.type == 0 && !s.heli)) {
        pos.append_attribute("type") = known ? 0u : s.type;
        pos.append_attribute("cargo") = s.cargo;
        pos.append_attribute("ramp") = s.ramp;
    }
    if (s.heli) pos.append_attribute("heli") = true;
    if (s.manual) pos.append_attribute("manual") = true;
}

void lf_options(pugi::xml_node& pos, const Stand& s) {
    for (const StandOption& o : s.options) {
        if (o.number == 0 || o.reg.empty()) continue;
        const auto hours = gf_bitset2hours(HalfHours(o.hours));
        if (!hours) {
            gf_logError(fmt::format("bit set problem: {} {} {}/{}", o.reg, o.cs1,
                                    gf_airlineCode(o.key.airline), gf_modelCode(o.key.model)));
            continue;
        }
        pugi::xml_node opt = pos.append_child("opt");
        opt.append_attribute("reg") = o.reg.c_str();
        if (o.key.locked == 0) {
            opt.append_attribute("airl") = gf_airlineCode(o.key.airline).c_str();
            opt.append_attribute("type") = gf_modelCode(o.key.model).c_str();
        }
        if (o.real == 0) opt.append_attribute("soft") = true;
        opt.append_attribute("day") = o.day;
        opt.append_attribute("hh") = hours->c_str();
        const std::string cs = o.cs2.empty() ? o.cs1 : o.cs1 + ":" + o.cs2;
        if (!cs.empty()) opt.append_attribute("cs") = cs.c_str();
        if (o.cpl) opt.append_attribute("cpl") = true;
    }
}

}  // namespace

bool gf_writeApf(const ApfRecord& r, const fs::path& path, int kind, std::int32_t simNumber) {
    if (path.empty()) {
        gf_logError("gf_writeApf: empty output filename");
        return false;
    }
    std::error_code ec;
    if (path.has_parent_path()) fs::create_directories(path.parent_path(), ec);
    if (ec) {
        gf_logError(fmt::format("gf_writeApf: could not create directory '{}': {}",
                                path.parent_path().string(), ec.message()));
        return false;
    }
    pugi::xml_document document;
    pugi::xml_node root = document.append_child("root");
    pugi::xml_node meta = root.append_child("meta");
    lf_add(meta, "info", "author", std::string(PROGRAM_NAME));
    lf_add(meta, "info", "version", std::string(PROGRAM_VERSION_TEXT));
    lf_add(meta, "info", "date", lf_dateText());
    lf_add(meta, "info", "copyright", COPYRIGHT);
    lf_add(meta, "info", "sim", fmt::format("{}", simNumber));
    lf_parameters(root, r, kind);

    if (!r.stands.empty()) {
        pugi::xml_node section = root.append_child("parkpositions");
        for (const Stand& s : r.stands) {
            pugi::xml_node pos = section.append_child("parkpos");
            pos.append_attribute("id") = s.id.c_str();
            if (kind == APF_KIND_SCAN || r.handmade || s.manual) lf_geometry(pos, s);
            if (kind == APF_KIND_LEARNED) lf_options(pos, s);
        }
    }
    return gf_saveXml(document, path);
}

}  // namespace tfx
