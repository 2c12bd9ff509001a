// The stored scan: output/LiveriesScanned_MSFS2020.xml or ..._MSFS2024.xml.
// A writer that replaces the old file only with a complete, checked new one,
// and its reader.
#pragma once

#include <filesystem>
#include <functional>
#include <system_error>
#include <vector>

#include "liveries/livery.h"

namespace tfx {

// The file of the simulator in use.
std::filesystem::path gf_scannedLiveriesPath();

// True when the file stands with exactly these records. Any failure leaves an
// older file untouched and no temporary file behind.
bool gf_writeScannedLiveries(const std::vector<Livery>& list, const std::filesystem::path& path);
bool gf_writeScannedLiveries();  // scanList to gf_scannedLiveriesPath()

// Fills list (sorted, rank 0); false (logged) when the file can't be read whole.
bool gf_readScannedLiveries(std::vector<Livery>& list, const std::filesystem::path& path);
bool gf_readScannedLiveries();  // gf_scannedLiveriesPath() into scanList

// The final swap of the writer; tests replace it to make it fail.
using ScanFileReplacer = std::function<bool(const std::filesystem::path& from,
                                            const std::filesystem::path& to, std::error_code&)>;
extern ScanFileReplacer scanFileReplacer;

}  // namespace tfx
