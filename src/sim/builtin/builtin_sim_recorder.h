// What the built-in simulator was told: every position set on an object,
// with the simulator's time, and the client events each object received.
// Tests and plots check motion against it. The positions are kept in memory
// (up to a limit) and, for long runs, can go straight to a CSV file instead.
// The file also tells what the plots of a run need beyond that: where each
// AI object appeared (static aircraft are never moved after) and when it
// went, and where the user aircraft was, once a second.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace tfx {

struct RecordedPosition {
    std::int64_t time_ms = 0;  // simulator clock
    std::uint32_t object_id = 0;
    double lat_deg = 0, lon_deg = 0, alt_ft = 0;
    double pitch_deg = 0, bank_deg = 0, heading_deg = 0;
    double vs_fpm = 0, tas_kt = 0;
    bool released = false;  // the simulator's AI had given the object up
};

// The kind of a line of the recording file, in its column "kind".
enum class RecordKind : std::uint8_t {
    set,     // a position the client sent (the only kind kept in memory)
    create,  // an AI object appeared here; "tail" holds its tail number
    remove,  // an AI object went, last seen here
    user,    // the user aircraft, where its script has it
};

struct PositionRecorder {
    std::vector<RecordedPosition> positions;
    std::size_t limit = 1'000'000;  // further positions are dropped (logged once); 0: off
    bool overflowLogged = false;
    // While open, every position is also a line of this file; it is written
    // under a working name and takes its real name when closed.
    std::FILE* csv = nullptr;
    std::filesystem::path csvPath;
    // object -> simulator event name -> count
    std::map<std::uint32_t, std::map<std::string, std::uint32_t, std::less<>>> eventCounts;
};

namespace bsim {
void gf_recordPosition(PositionRecorder& recorder, const RecordedPosition& position);
void gf_countEvent(PositionRecorder& recorder, std::uint32_t objectId, std::string_view event);
// A line of the open file only (nothing while no file is open).
void gf_recordFileLine(PositionRecorder& recorder, RecordKind kind,
                       const RecordedPosition& position, std::string_view tail = {});
// false (logged) when the file can't be made; a file already open is closed first.
bool gf_openRecordingFile(PositionRecorder& recorder, const std::filesystem::path& path);
// Closes the file and gives it its name; false (logged) when that fails.
bool gf_closeRecordingFile(PositionRecorder& recorder);
}  // namespace bsim

// Positions of one object, oldest first.
std::vector<RecordedPosition> gf_positionsOf(const std::vector<RecordedPosition>& all,
                                             std::uint32_t objectId);
// One line per position with a header line; false (logged) when it can't write.
bool gf_writePositionsCsv(const std::vector<RecordedPosition>& positions,
                          const std::filesystem::path& path);

}  // namespace tfx
