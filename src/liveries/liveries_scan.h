// The scan of installed AI aircraft packages and the stored catalogue it
// writes, as the session start uses them.
#pragma once

#include <filesystem>

namespace tfx {

// Runs the whole scan of aircraft.cfg files.
void gf_scanLiveries();
// LiveriesScanned_MSFS2020.xml or LiveriesScanned_MSFS2024.xml, by simulator.
std::filesystem::path gf_scannedLiveriesPath();
// Builds the livery index from the stored scan.
void gf_processScannedLiveries();

}  // namespace tfx
