#include "airports/airport_catalogue.h"

#include <algorithm>
#include <exception>

#include <fmt/format.h>
#include <pugixml.hpp>

#include "airports/sealed_xml.h"
#include "app/log.h"

namespace tfx {

std::vector<Airport> airportTable;
std::vector<IcaoCode> weeklyTrafficAirports;

namespace {

constexpr const char* AIRPORTS_ENC = "input/airports.enc";
constexpr const char* WEEKLY_ENC = "input/wktraffic.enc";
bool airportsRead = false;

// One ap element; false when it is to be passed over.
bool lf_readAirport(const pugi::xml_node& ap, const char* code, Airport& airport) {
    const auto la = ap.attribute("la"), lo = ap.attribute("lo"), a = ap.attribute("a");
    if (!la || !lo) {
        gf_logError(fmt::format("Missing latLons for airport '{}'", code));
        return false;
    }
    if (!a) {
        gf_logError(fmt::format("Missing alt for airport '{}'", code));
        return false;
    }
    airport.icao = IcaoCode(code);
    const auto i = ap.attribute("i");
    airport.iata = i ? IataCode(i.value()) : NO_IATA_CODE;
    airport.latitude = la.as_double();
    airport.longitude = lo.as_double();
    airport.altitude = a.as_int();
    return true;
}

std::variant<std::size_t, std::string> lf_readAirports() {
    pugi::xml_document document;
    if (auto error = gf_readSealedXml(AIRPORTS_ENC, document)) return error->text;
    const pugi::xml_node root = document.child("root");
    if (!root) return fmt::format("{} has no <{}> root", AIRPORTS_ENC, "root");
    const pugi::xml_node section = root.child("airports");
    if (!section) return fmt::format("{} has no <{}> section", AIRPORTS_ENC, "airports");

    airportTable.clear();
    airportTable.reserve(AIRPORTS_RESERVED);
    for (const pugi::xml_node ap : section.children("ap")) {
        const auto c = ap.attribute("c");
        if (!c) {
            gf_logError("Skipped airport entry with missing ICAO code attribute");
            break;
        }
        try {
            Airport airport;
            if (lf_readAirport(ap, c.value(), airport)) airportTable.push_back(airport);
        } catch (const std::exception& e) {
            gf_logError(fmt::format("Error storing airport '{}' '{}': {}", c.value(),
                                    ap.attribute("i").value(), e.what()));
        }
    }
    std::sort(airportTable.begin(), airportTable.end(),
              [](const Airport& x, const Airport& y) { return x.icao < y.icao; });
    airportTable.shrink_to_fit();
    airportsRead = true;
    gf_logLine(fmt::format("{:5} airports read", airportTable.size()));
    return airportTable.size();
}

}  // namespace

std::variant<std::size_t, std::string> gf_readAirportsXml() {
    if (airportsRead) return airportTable.size();
    try {
        return lf_readAirports();
    } catch (const std::exception& e) {
        return fmt::format("{} exception: {}", "gf_readAirportsXml", e.what());
    }
}

void gf_clearAirportTable() {
    airportTable.clear();
    weeklyTrafficAirports.clear();
    airportsRead = false;
}

const Airport* gf_airportByCode(const IcaoCode& code) {
    const auto it = std::lower_bound(
        airportTable.begin(), airportTable.end(), code.key,
        [](const Airport& airport, std::uint32_t key) { return airport.icao.key < key; });
    if (it == airportTable.end() || !(it->icao == code)) return nullptr;
    return &*it;
}

bool gf_airportKnown(const IcaoCode& code) {
    return gf_airportByCode(code) != nullptr;
}

bool gf_airportKnown(const std::string& code) {
    IcaoCode parsed;
    return gf_tryIcaoCode(code, parsed) && gf_airportKnown(parsed);
}

std::variant<std::vector<IcaoCode>, std::string> gf_readWeeklyTrafficAirports() {
    pugi::xml_document document;
    const SealedXmlTexts texts{"'{}' could not be opened", "'{}' not read because of {}"};
    if (auto error = gf_readSealedXml(WEEKLY_ENC, document, texts)) return error->text;
    const std::string invalid =
        fmt::format("'{}' has invalid weekly traffic XML structure", WEEKLY_ENC);
    const pugi::xml_node section = document.child("root").child("traffic_airports");
    if (!section) return invalid;

    std::vector<IcaoCode> codes;
    codes.reserve(WEEKLY_RESERVED);
    for (const pugi::xml_node arp : section.children("arp")) {
        std::string_view list = arp.attribute("c").value();
        while (true) {
            const auto comma = list.find(',');
            const std::string_view field = list.substr(0, comma);
            if (!field.empty()) {
                IcaoCode code;
                if (!gf_tryIcaoCode(field, code)) return invalid;
                codes.push_back(code);
            }
            if (comma == std::string_view::npos) break;
            list.remove_prefix(comma + 1);
        }
    }
    std::sort(codes.begin(), codes.end());
    gf_logLine(fmt::format("{} ICAO airports that are support by RealTrafic read from {}",
                           codes.size(), WEEKLY_ENC));
    return codes;
}

bool gf_hasTrafficThisWeek(const IcaoCode& code) {
    if (weeklyTrafficAirports.empty()) {
        gf_logError("weekly traffic airports empty? ");
        return true;
    }
    return std::binary_search(weeklyTrafficAirports.begin(), weeklyTrafficAirports.end(), code);
}

std::variant<std::monostate, IcaoCode> gf_findAirportCode(std::string_view text,
                                                          std::vector<std::string>& scanLog) {
    const auto codeChar = [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9');
    };
    std::size_t i = 0;
    while (i < text.size()) {
        if (!codeChar(text[i])) {
            ++i;
            continue;
        }
        std::size_t end = i;
        while (end < text.size() && codeChar(text[end])) ++end;
        if (end - i == 4) {
            const IcaoCode code(text.substr(i, 4));
            if (gf_hasTrafficThisWeek(code)) return code;
            scanLog.push_back(fmt::format("For {} there is no traffic this week", code.text()));
        }
        i = end;
    }
    return std::monostate{};
}

}  // namespace tfx
