// The scan of installed AI aircraft packages and the stored catalogue it
// writes, as the session start uses them.
#pragma once

#include <filesystem>
#include <vector>

namespace tfx {

// Runs the whole scan of aircraft.cfg files. Throws UserRelatedException
// 48, 148, 243, 553 or 554 when there is nothing to scan or nothing found,
// and std::runtime_error when the new file could not be committed.
void gf_scanLiveries();
// output/LiveriesScanned_MSFS2020.xml or ..._MSFS2024.xml, by simulator.
std::filesystem::path gf_scannedLiveriesPath();

// The folders to scan: the packages found in Community (automatic), else
// the lfolder parameters. Throws as gf_scanLiveries tells.
std::vector<std::filesystem::path> gf_liveryFolders(bool automatic);
// Walks the folders (rank 1, 2, ... at most 10), prioritises, writes the
// reports and the scanned-liveries file: 0 done, 1 stopped, 2 nothing found,
// 3 the file could not be written.
int gf_runFolderWalk(const std::vector<std::filesystem::path>& folders, bool prioritize);
// Builds the livery index from the stored scan.
void gf_processScannedLiveries();

}  // namespace tfx
