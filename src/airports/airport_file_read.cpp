// Reading an airport file: the cache of the park airport, the fetch, the
// document, the learned file beside it, numbering and overlaps.
#include <exception>
#include <system_error>

#include <fmt/format.h>

#include "airports/airport_file_io.h"
#include "airports/airport_paths.h"
#include "airports/xml_text.h"
#include "app/log.h"
#include "app/user_exception.h"

namespace fs = std::filesystem;

namespace tfx {
namespace {

constexpr std::string_view WHO = "gf_readAirportFile";

// A failure whose text is told to the caller as it stands.
struct ReadFailure : std::runtime_error {
    using std::runtime_error::runtime_error;
};

// The cached park airport file when it holds the same airport, publisher and
// version as the archive path asks for.
bool lf_cacheHolds(const fs::path& path) {
    std::error_code ec;
    if (!fs::is_regular_file(PARK_AIRPORT_XML, ec)) return false;
    const auto asked = gf_parseArchivePath(path);
    if (!asked) return false;
    const auto text = gf_readWholeFile(PARK_AIRPORT_XML);
    pugi::xml_document document;
    if (!text) return false;
    if (auto failure = gf_parseXmlText(*text, document)) {
        // It is only a copy of the server's file; the download replaces it.
        gf_logError(fmt::format("{} not loaded: {}, fetched again", PARK_AIRPORT_XML, *failure));
        return false;
    }
    const pugi::xml_node root = gf_apfRoot(document);
    const auto icao = gf_apfParameter(root, "icao");
    if (!icao) return false;
    std::string cachedIcao = icao.value();
    for (char& c : cachedIcao)
        if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
    return cachedIcao == asked->icao &&
           asked->publisher == gf_apfParameter(root, "publisher").value() &&
           asked->version == gf_apfParameter(root, "version").value();
}

AirportFile lf_read(const fs::path& path) {
    AirportFile file;
    file.sourcePath = path;
    fs::path local;
    if (lf_cacheHolds(path)) {
        gf_logLine(fmt::format("cached: '{}' is taken instead of '{}'", PARK_AIRPORT_XML,
                               path.generic_string()));
        local = PARK_AIRPORT_XML;
        file.cached = true;
    } else {
        auto fetched = gf_fetchAirportFile(path, true);
        if (auto* error = std::get_if<std::string>(&fetched)) throw ReadFailure(*error);
        local = std::get<fs::path>(fetched);
        file.fetched = local != path;
    }
    file.readPath = local;

    const auto text = gf_readWholeFile(local);
    const std::string name = local.generic_string();
    if (!text) throw ReadFailure(fmt::format("{} could not be opened", name));
    pugi::xml_document document;
    if (auto failure = gf_parseXmlText(*text, document))
        throw ReadFailure(fmt::format("{} not loaded: {}", name, *failure));
    const pugi::xml_node root = gf_apfRoot(document);
    if (!gf_metaAccepted(root, false)) throw ReadFailure(fmt::format("{}: refused to load", name));

    file.RT_traffic_week = gf_apfParameter(root, "RT_traffic_week").as_int(0);
    file.publisher = gf_apfParameter(root, "publisher").value();
    if (const auto version = gf_apfParameter(root, "version"); version && *version.value())
        file.version = version.value();
    const auto altitude = gf_apfParameter(root, "altitude");
    if (!altitude)
        throw UserRelatedException(APF_USER_ERROR,
                                   fmt::format("Parameter {} not found", "altitude"));
    file.altitude = altitude.as_int(0);
    file.airport_name = gf_apfParameter(root, "airport_name").value();

    if (const pugi::xml_node section = root.child("parkpositions")) {
        file.stands = gf_readParkpositions(section, 1);
    } else {
        gf_logLine(fmt::format("airport file has no '{}' section", "parkpositions"));
    }
    file.Qf_real = gf_apfParameter(root, "Qf_real").as_int(0);
    file.Qf_soft = gf_apfParameter(root, "Qf_soft").as_int(0);

    // The learned file belongs to the source, not to the local copy.
    if (auto learned = gf_learnedPathOf(path, file.publisher)) {
        file.learnedPath = *learned;
        std::error_code ec;
        if (fs::exists(*learned, ec) &&
            lf_readLearned(*learned, file.airport_name, file.stands, file.handmade)) {
            file.learned = true;
            const QualityFactors qf = gf_calcQualityFactors(file.stands);
            file.Qf_real = qf.Qf_real;
            file.Qf_soft = qf.Qf_soft;
        }
    }
    gf_numberStandsAndOverlaps(file.stands);
    if (file.stands.empty()) gf_logLine("no stands found in the airport file");
    return file;
}

}  // namespace

std::variant<AirportFile, std::string> gf_readAirportFile(const fs::path& path) {
    try {
        return lf_read(path);
    } catch (const UserRelatedException& e) {
        return e.message;
    } catch (const ReadFailure& e) {
        return std::string(e.what());
    } catch (const std::exception& e) {
        return fmt::format("{}: {}", WHO, e.what());
    } catch (...) {
        return fmt::format("{}: unknown exception", WHO);
    }
}

}  // namespace tfx
