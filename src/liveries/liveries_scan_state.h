// What one livery scan gathers besides its records: the titles taken and the
// titles not to take, and the lines of its report files.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace tfx {

struct ScanReports {
    std::vector<std::string> invalidAirlines;     // "{:12} in {}"
    std::vector<std::string> invalidModels;       // "{:16} in {}"
    std::vector<std::string> fixes;               // in the order found
    std::vector<std::string> invalidFiles;        // whole-file faults
    std::vector<std::string> incompleteSections;  // section faults
    std::vector<std::string> noSectionFiles;      // paths, information only
    void clear();
    bool empty() const;
};

extern ScanReports scanReports;
extern std::unordered_set<std::string> scanTitles;
extern std::unordered_set<std::string> dontUseTitles;

// Sorts the report lists and writes them under outputFolder/errors and
// outputFolder/info, telling each in the log.
void gf_writeScanReport(const std::filesystem::path& outputFolder);

// Records of one aircraft.cfg go to scanList; each gives how many it added.
std::size_t lf_searchLiveriesinFile(std::uint16_t rank, const std::filesystem::path& path);
std::size_t lf_searchLiveriesinIVAOFile(std::uint16_t rank, const std::filesystem::path& path);
// The same for lines already read; pathText names the file in reports.
std::size_t lf_liveriesOfLines(std::uint16_t rank, const std::vector<std::string>& lines,
                               const std::string& pathText);
std::size_t lf_ivaoLiveriesOfLines(std::uint16_t rank, const std::vector<std::string>& lines,
                                   const std::string& pathText);

// False when the file's section numbers refuse it (reported) or it has no
// section (listed as information).
bool lf_sectionsUsable(const std::vector<std::string>& lines, const std::string& pathText);

// The model code of a file, with its fix or report lines; nothing when none.
std::optional<std::string> lf_fileModel(const std::vector<std::string>& lines,
                                        const std::string& pathText);
// A model code checked against the reference data: itself, its correction
// (with a fix line), or nothing (with an invalid-model line).
std::optional<std::string> lf_validatedModel(const std::string& code, const std::string& pathText);

// One [fltsim.x] section, its head line first; true when a record was added.
bool lf_procesFltSimSection(std::uint16_t rank, std::vector<std::string_view> lines,
                            const std::string& model, const std::string& pathText);
bool lf_procesIVAOSection(std::uint16_t rank, const std::vector<std::string_view>& lines,
                          const std::string& model, const std::string& pathText);

// The regcode's record, trying "DA-BCD" and "D-ABCD" before "DABCD".
struct RegcodeRecord;
const RegcodeRecord& lf_lookupRegcodeVariants(std::string_view regcode);

}  // namespace tfx
