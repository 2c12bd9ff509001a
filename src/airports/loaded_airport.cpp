// Publishing a read airport file and saving what was learned at it.
#include <system_error>

#include <fmt/format.h>

#include "airports/airport_catalogue.h"
#include "airports/airport_file_io.h"
#include "airports/airport_paths.h"
#include "airports/loaded_airport.h"
#include "app/log.h"
#include "app/parameters.h"
#include "app/run_state.h"
#include "gui/gui.h"

namespace fs = std::filesystem;

namespace tfx {

LoadedAirport loadedAirport;

namespace {

// The automatic settings of an airport without a learned file.
void lf_automaticSettings(const AirportFile& file) {
    gf_logLine("learned airport file not available");
    ParkingSettings s = gf_currentParkingSettings();
    if (file.Qf_real <= 15) {
        s.RT_PARKTRAFFIC_ONLY = false;
        if (!s.AUTO_PARK) {
            s.AUTO_PARK = true;
            gf_logLine(fmt::format("auto park set because Qf is very low: {}", file.Qf_real));
        }
    }
    const std::size_t count = file.stands.size();
    if (count <= 2 && s.parking_percentage != 100 && s.parking_percentage != 65) {
        s.parking_percentage = count == 1 ? 100 : 65;
        gf_logError(
            fmt::format("target parking % set at {}, because this airport has just {} stand{}",
                        s.parking_percentage, count, count == 1 ? "" : "s"));
        s.RT_PARKTRAFFIC_ONLY = false;
        if (!s.AUTO_PARK) {
            s.AUTO_PARK = true;
            gf_logLine("auto park set");
        }
    }
    gf_applyParkingSettings(s);
}

std::string lf_qualityText(const AirportFile& file) {
    if (file.Qf_real < 1 && file.Qf_soft < 1) return "";
    if (file.Qf_real < 40) return fmt::format("{:2}/{:2}", file.Qf_real, file.Qf_soft);
    return fmt::format("{:2}", file.Qf_real);
}

}  // namespace

void gf_setLoadedAirport(const IcaoCode& icao, AirportFile file) {
    loadedAirport.icao = icao;
    loadedAirport.file = std::move(file);
    loadedAirport.updates = 0;
    loadedAirport.published = true;
}

void gf_clearLoadedAirport() {
    loadedAirport = LoadedAirport{};
}

void gf_logAirportFile(const IcaoCode& icao, AirportFile file) {
    // What the user had before this airport's own settings came in.
    const ParkingSettings global =
        loadedAirport.published ? loadedAirport.globalSettings : gf_currentParkingSettings();
    if (!file.learned) lf_automaticSettings(file);
    gf_logLine(fmt::format("{:24}: {}%", "parking_percentage", params.parking_percentage.current));
    if (file.learned && file.handmade)
        gf_logLine("A handmade airport file overruled the archived file!");
    const fs::path shown = file.cached ? fs::path(PARK_AIRPORT_XML) : file.sourcePath;
    gf_logLine(fmt::format("Airport file read from '{}'", shown.generic_string()));
    gf_logLine(file.version ? fmt::format("{} ({})", file.airport_name, *file.version)
                            : file.airport_name);
    gf_logLine(fmt::format("{:24}: {}", "publisher", file.publisher));
    gf_logLine(fmt::format("{:24}: {}", "version", file.version.value_or("")));
    gf_logLine(fmt::format("{:24}: {} ft", "altitude", file.altitude));
    gf_logLine(fmt::format("{:24}: {}", "num_parkpos", file.stands.size()));
    gf_logLine(fmt::format("{:24}: {}", "quality factor", lf_qualityText(file)));
    gf_logLine(fmt::format("{:24}: {}", "RT traffic week", file.RT_traffic_week));
    Gui::enqueueUpdate({GuiKind::ParkAirport, file.airport_name});
    Gui::enqueueUpdate({GuiKind::Publisher, file.publisher});
    Gui::enqueueUpdate({GuiKind::StandCount, static_cast<std::int64_t>(file.stands.size())});
    Gui::enqueueUpdate({GuiKind::QualityText, lf_qualityText(file)});
    gf_setLoadedAirport(icao, std::move(file));
    loadedAirport.globalSettings = global;
}

bool gf_saveLearned(std::vector<Stand>& stands, bool handmade) {
    const AirportFile& file = loadedAirport.file;
    ApfRecord record;
    record.code = loadedAirport.icao;
    if (const Airport* airport = gf_airportByCode(loadedAirport.icao)) {
        record.iata = airport->iata;
        record.latitude = airport->latitude;
        record.longitude = airport->longitude;
    }
    record.airport_name = file.airport_name;
    record.altitude = file.altitude;
    record.publisher = file.publisher;
    record.handmade = handmade;
    if (handmade) {
        record.stands = stands;
        const QualityFactors qf = gf_calcQualityFactors(record.stands);
        record.Qf_real = qf.Qf_real;
        record.Qf_soft = qf.Qf_soft;
    } else {
        for (const Stand& stand : stands) {
            Stand kept = stand;
            std::erase_if(kept.options,
                          [](const StandOption& o) { return o.source == 1 || o.number == 0; });
            if (kept.manual || !kept.options.empty()) record.stands.push_back(std::move(kept));
        }
    }
    // Written where the next read looks for it.
    const fs::path path = !file.learnedPath.empty()
                              ? file.learnedPath
                              : gf_learnedFolderOf(file.publisher) /
                                    (std::string(loadedAirport.icao.text()) + ".xml");
    const bool ok = gf_writeApf(record, path, APF_KIND_LEARNED, gf_isMSFS2020() ? 2020 : 2024);
    if (ok) {
        gf_logLine(fmt::format("{} '{}' saved with {} update{}", handmade ? " handmade" : "",
                               path.generic_string(), loadedAirport.updates,
                               loadedAirport.updates == 1 ? "" : "s"));
    } else {
        gf_logError(fmt::format("saving '{}' did not succeed", path.generic_string()));
    }
    loadedAirport.updates = 0;
    if (loadedAirport.published) gf_applyParkingSettings(loadedAirport.globalSettings);
    return ok;
}

}  // namespace tfx
