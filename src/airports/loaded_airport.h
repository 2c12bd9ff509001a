// The airport whose file is loaded: from the read of its file until the
// traffic engine leaves it. Touched on the main thread only.
#pragma once

#include <cstdint>
#include <vector>

#include "airports/airport_file.h"

namespace tfx {

struct ParkingSettings {
    bool RT_PARKTRAFFIC_ONLY = false, AUTO_PARK = false, WEEK = false, PARK_SOFT = false;
    std::int32_t parking_percentage = 0, MAX_FIT = 0;
};

struct LoadedAirport {
    IcaoCode icao;
    AirportFile file;          // its stands are the stand list of the airport
    std::int32_t updates = 0;  // changes recorded since the load
    bool published = false;
    ParkingSettings globalSettings;  // restored when the airport is left
};

extern LoadedAirport loadedAirport;

// Makes a read file the loaded airport (gf_logAirportFile does this).
void gf_setLoadedAirport(const IcaoCode& icao, AirportFile file);
void gf_clearLoadedAirport();

// The parking settings of this moment, and setting them (clamped to each
// parameter's range, shown and republished to the engine).
ParkingSettings gf_currentParkingSettings();
void gf_applyParkingSettings(const ParkingSettings& settings);

// Publishes a read file: the automatic parking settings, the log lines and
// the status display; it becomes the loaded airport.
void gf_logAirportFile(const IcaoCode& icao, AirportFile file);

// Writes the learned file of the loaded airport; the engine calls it when it
// leaves the airport. False (logged) when the write failed.
bool gf_saveLearned(std::vector<Stand>& stands, bool handmade);

// Records that a live aircraft occupies the stand standNumber now. mode 0:
// arrived or towed there, 1: created there, 2 and 3: moving off.
void gf_recordStandOccupation(std::int32_t standNumber, const AircraftBase& aircraft, int mode,
                              WeekHalfHour now);

}  // namespace tfx
