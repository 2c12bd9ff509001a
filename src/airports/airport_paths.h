// Where an airport's file comes from: the scan's folders, pointer files, the
// server archive, and the learned file that belongs beside each source.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "airports/airport_codes.h"

namespace tfx {

inline constexpr const char* PARK_AIRPORT_XML = "airports/park_airport.xml";

// The first of: the third parties' scan folder (pointer file, then .xml), the
// simaddon scan folder (the same), the stock archive file of a catalogue airport.
std::optional<std::filesystem::path> gf_findAirportFile(const IcaoCode& icao);
bool gf_airportFileKnown(const IcaoCode& icao);

// The path in a pointer file <ICAO>.txt: one line naming an .xml or .enc
// file. Nothing when the file can't be read or the line isn't valid.
std::optional<std::filesystem::path> gf_readPointerFile(const std::filesystem::path& txt);

// What an archive path names: archive/<stock|simaddon>/<ICAO><version>.enc or
// archive/thirdparty/<publisher, percent-encoded>/<ICAO><version>.enc.
struct ArchiveName {
    std::string publisher;
    std::string icao;
    std::string version;  // empty or decimal digits
};
std::optional<ArchiveName> gf_parseArchivePath(const std::filesystem::path& path);
std::string gf_percentDecode(std::string_view text);

// The learned file for an airport file read from path, whose publisher
// parameter is publisher; nothing when the source has no learned file.
std::optional<std::filesystem::path> gf_learnedPathOf(const std::filesystem::path& path,
                                                      std::string_view publisher);
// The learned folder of a publisher: stock, simaddon or thirdparty/<name>.
std::filesystem::path gf_learnedFolderOf(std::string_view publisher);

// An archive path made local: downloaded to airports/park_airport (forPark)
// or airports/airport, and decrypted when sealed. A local path passes
// unchanged. The local .xml path, or the error text.
std::variant<std::filesystem::path, std::string> gf_fetchAirportFile(
    const std::filesystem::path& path, bool forPark);

}  // namespace tfx
