// Plain-text reports of the livery index and of matching, written beside
// their place and swapped in, so that a reader never finds half a report.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tfx {

// One line each; the folder is made when missing. False (logged) on failure,
// and then an older report stays as it was.
bool gf_writeReportLines(const std::filesystem::path& path, const std::vector<std::string>& lines);

}  // namespace tfx
