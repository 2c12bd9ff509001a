#include "parking/park_airport_list.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <vector>

#include <fmt/format.h>

#include "airports/airport_catalogue.h"
#include "app/log.h"
#include "app/text_files.h"
#include "app/text_utils.h"
#include "platform/file_replace.h"
#include "traffic/units.h"

namespace fs = std::filesystem;

namespace tfx {

std::deque<ParkAirport> parkAirportList;

namespace {

constexpr const char* MY_THIRDPARTY = "airports/my_thirdparty";
constexpr std::size_t MANY_PARK_AIRPORTS = 3000;
constexpr double FIRST_THRESHOLD_NM = 4.0;

// Where the nearest entry was last looked for, and how far the user may move
// before it is looked for again.
struct NearestSearch {
    bool hasReference = false;
    LatLon reference;
    double threshold_nm = FIRST_THRESHOLD_NM;
};
NearestSearch nearest;

bool lf_positionKnown(const ParkAirport& a) {
    return a.latitude != 0 || a.longitude != 0;
}

ParkAirport lf_entryOf(const Airport& airport, std::string stand) {
    return {std::move(stand), airport.latitude, airport.longitude, airport.icao};
}

bool lf_holds(const IcaoCode& code) {
    return std::any_of(parkAirportList.begin(), parkAirportList.end(),
                       [&](const ParkAirport& a) { return a.code == code; });
}

void lf_addThirdPartyAirports() {
    std::error_code ec;
    if (!fs::is_directory(MY_THIRDPARTY, ec)) return;
    std::vector<fs::path> files;
    for (const auto& entry : fs::directory_iterator(MY_THIRDPARTY, ec))
        if (entry.is_regular_file(ec)) files.push_back(entry.path());
    std::sort(files.begin(), files.end());
    for (const fs::path& file : files) {
        IcaoCode code;
        if (!gf_tryIcaoCode(file.stem().string(), code) || lf_holds(code)) continue;
        if (const Airport* airport = gf_airportByCode(code))
            parkAirportList.push_back(lf_entryOf(*airport, ""));
    }
}

ParkAirport* lf_find(const IcaoCode& code) {
    const auto it = std::find_if(parkAirportList.begin(), parkAirportList.end(),
                                 [&](const ParkAirport& a) { return a.code == code; });
    return it == parkAirportList.end() ? nullptr : &*it;
}

void lf_toFront(const IcaoCode& code, LatLon position, const std::string* stand) {
    auto it = std::find_if(parkAirportList.begin(), parkAirportList.end(),
                           [&](const ParkAirport& a) { return a.code == code; });
    ParkAirport entry;
    if (it != parkAirportList.end()) {
        entry = std::move(*it);
        parkAirportList.erase(it);
    }
    entry.code = code;
    entry.latitude = position.lat;
    entry.longitude = position.lon;
    if (stand != nullptr) entry.reservedStand = *stand;
    parkAirportList.push_front(std::move(entry));
}

}  // namespace

double gf_flatSquaredNm(LatLon user, LatLon airport) {
    const double dlat = (user.lat - airport.lat) * 60;
    const double dlon = (user.lon - airport.lon) * std::cos(user.lat * RAD_PER_DEG) * 60;
    return dlat * dlat + dlon * dlon;
}

void lf_removeDuplicateParkAirports() {
    if (parkAirportList.size() < 2) return;
    std::deque<ParkAirport> kept;
    for (ParkAirport& entry : parkAirportList) {
        const auto first = std::find_if(kept.begin(), kept.end(),
                                        [&](const ParkAirport& k) { return k.code == entry.code; });
        if (first == kept.end()) {
            kept.push_back(std::move(entry));
        } else if (first->reservedStand.empty() && !entry.reservedStand.empty()) {
            *first = std::move(entry);
        }
    }
    parkAirportList.swap(kept);
}

bool gf_readMyParkAirportsFile() {
    bool clean = true;
    try {
        parkAirportList.clear();
        nearest = {};
        std::string shownPath = MY_PARK_AIRPORTS_TXT;
        auto read = gf_readFileLines(MY_PARK_AIRPORTS_TXT, 64);
        if (std::holds_alternative<std::string>(read)) {
            shownPath += " not found";
        } else {
            const auto& lines = std::get<std::vector<std::string>>(read);
            for (std::size_t i = 0; i < lines.size(); ++i) {
                std::vector<std::string> fields = gf_split(lines[i], ',');
                for (std::string& f : fields) f = gf_trim(f);
                if (fields.size() == 1 && fields[0].empty()) continue;
                if (fields.size() >= 3) {
                    gf_logError(
                        fmt::format("{}:{} wrong syntax, skipped", MY_PARK_AIRPORTS_TXT, i + 1));
                    continue;
                }
                IcaoCode code;
                const Airport* airport =
                    gf_tryIcaoCode(fields[0], code) ? gf_airportByCode(code) : nullptr;
                if (airport == nullptr) {
                    gf_logError(fmt::format("airport {} is unknown", fields[0]));
                    clean = false;
                    continue;
                }
                parkAirportList.push_back(
                    lf_entryOf(*airport, fields.size() == 2 ? fields[1] : ""));
            }
        }
        lf_addThirdPartyAirports();
        lf_removeDuplicateParkAirports();
        if (!parkAirportList.empty()) {
            const std::size_t n = parkAirportList.size();
            gf_logLine(fmt::format("\n{:5} park airport{} read from '{}'", n, n == 1 ? "" : "s",
                                   shownPath));
            if (n > MANY_PARK_AIRPORTS)
                gf_logError(
                    fmt::format("Warning: There are a lot of park airports ({}), that "
                                "will cost ZEPT much cpu time and may cause stutters",
                                n));
        }
    } catch (const std::exception& e) {
        gf_logError(fmt::format("{}: {}", "gf_readMyParkAirportsFile", e.what()));
        return false;
    }
    return clean;
}

void gf_writeMyParkAirportsFile() {
    if (parkAirportList.empty()) return;
    lf_removeDuplicateParkAirports();
    std::vector<std::string> lines;
    for (const ParkAirport& a : parkAirportList) {
        std::string line(a.code.text());
        if (!a.reservedStand.empty()) line += "," + a.reservedStand;
        lines.push_back(std::move(line));
    }
    std::sort(lines.begin(), lines.end());
    const fs::path target = MY_PARK_AIRPORTS_TXT;
    const fs::path working = pf_temporaryNameFor(target);
    std::error_code ec;
    fs::create_directories(target.parent_path(), ec);
    {
        std::ofstream out(working, std::ios::binary | std::ios::trunc);
        for (const std::string& line : lines) out << line << '\n';
        out.flush();
        if (!out) {
            gf_logError(fmt::format("{} could not be written", MY_PARK_AIRPORTS_TXT));
            fs::remove(working, ec);
            return;
        }
    }
    if (!pf_replaceFile(working, target, ec)) {
        gf_logError(fmt::format("{} could not be written: {}", MY_PARK_AIRPORTS_TXT, ec.message()));
        fs::remove(working, ec);
    }
}

void gf_setReservedStand(const IcaoCode& code, LatLon position, const std::string& stand) {
    lf_toFront(code, position, &stand);
}

void gf_addParkAirport(const IcaoCode& code, LatLon position) {
    lf_toFront(code, position, nullptr);
}

std::optional<std::string> gf_reservedStand(const IcaoCode& code) {
    if (const ParkAirport* entry = lf_find(code)) return entry->reservedStand;
    return std::nullopt;
}

void gf_updateNearestParkAirport(LatLon user) {
    if (parkAirportList.empty()) return;
    if (nearest.hasReference &&
        std::sqrt(gf_flatSquaredNm(user, nearest.reference)) < nearest.threshold_nm)
        return;
    nearest.hasReference = true;
    nearest.reference = user;
    std::size_t best = parkAirportList.size();
    double bestSquared = 0;
    for (std::size_t i = 0; i < parkAirportList.size(); ++i) {
        const ParkAirport& a = parkAirportList[i];
        if (!lf_positionKnown(a)) continue;
        const double d = gf_flatSquaredNm(user, {a.latitude, a.longitude});
        if (best == parkAirportList.size() || d < bestSquared) {
            best = i;
            bestSquared = d;
        }
    }
    if (best == parkAirportList.size()) return;
    if (best != 0) std::swap(parkAirportList[0], parkAirportList[best]);
    nearest.threshold_nm = std::max(FIRST_THRESHOLD_NM, std::sqrt(bestSquared) / 2);
}

void gf_clearParkAirportList() {
    parkAirportList.clear();
    nearest = {};
}

}  // namespace tfx
