// Recording what the built-in simulator receives.
#include "sim/builtin/builtin_sim_recorder.h"

#include <fstream>

#include <fmt/format.h>

#include "app/log.h"
#include "platform/file_open.h"
#include "platform/file_replace.h"

namespace tfx {

namespace {

// Readers that know only the first eleven columns read every line as a
// position; newer ones look at "kind".
constexpr const char* CSV_HEADER =
    "time_ms,object_id,lat_deg,lon_deg,alt_ft,pitch_deg,bank_deg,heading_deg,vs_fpm,tas_kt,"
    "released,kind,tail\n";

constexpr std::string_view KIND_NAMES[] = {"set", "create", "remove", "user"};

std::string lf_csvLine(const RecordedPosition& p, RecordKind kind = RecordKind::set,
                       std::string_view tail = {}) {
    std::string cleanTail(tail);
    for (char& c : cleanTail)
        if (c == ',' || c == '\n' || c == '\r') c = ' ';
    return fmt::format("{},{},{:.7f},{:.7f},{:.2f},{:.3f},{:.3f},{:.3f},{:.1f},{:.1f},{},{},{}\n",
                       p.time_ms, p.object_id, p.lat_deg, p.lon_deg, p.alt_ft, p.pitch_deg,
                       p.bank_deg, p.heading_deg, p.vs_fpm, p.tas_kt, p.released ? 1 : 0,
                       KIND_NAMES[static_cast<std::size_t>(kind)], cleanTail);
}

}  // namespace

namespace bsim {

bool gf_openRecordingFile(PositionRecorder& recorder, const std::filesystem::path& path) {
    gf_closeRecordingFile(recorder);
    const std::filesystem::path working = pf_temporaryNameFor(path);
    recorder.csv = pf_openFile(working, "wb");
    if (recorder.csv == nullptr) {
        gf_logError(fmt::format("Cannot write the recorded positions to {}", path.string()));
        return false;
    }
    recorder.csvPath = path;
    std::fputs(CSV_HEADER, recorder.csv);
    return true;
}

bool gf_closeRecordingFile(PositionRecorder& recorder) {
    if (recorder.csv == nullptr) return true;
    const bool written = std::ferror(recorder.csv) == 0;
    const bool closed = std::fclose(recorder.csv) == 0;
    recorder.csv = nullptr;
    const std::filesystem::path working = pf_temporaryNameFor(recorder.csvPath);
    std::error_code ec;
    if (!written || !closed || !pf_replaceFile(working, recorder.csvPath, ec)) {
        gf_logError(fmt::format("Writing the recorded positions to {} failed{}",
                                recorder.csvPath.string(), ec ? ": " + ec.message() : ""));
        std::filesystem::remove(working, ec);
        return false;
    }
    gf_logLine(fmt::format("Recorded positions written to {}", recorder.csvPath.string()));
    return true;
}

void gf_recordPosition(PositionRecorder& recorder, const RecordedPosition& position) {
    if (recorder.csv != nullptr) std::fputs(lf_csvLine(position).c_str(), recorder.csv);
    if (recorder.limit == 0) return;  // keeping them in memory is off
    if (recorder.positions.size() >= recorder.limit) {
        if (!recorder.overflowLogged) {
            gf_logError(fmt::format("Built-in simulator: {} positions recorded, recording stops",
                                    recorder.limit));
            recorder.overflowLogged = true;
        }
        return;
    }
    recorder.positions.push_back(position);
}

void gf_recordFileLine(PositionRecorder& recorder, RecordKind kind,
                       const RecordedPosition& position, std::string_view tail) {
    if (recorder.csv != nullptr) std::fputs(lf_csvLine(position, kind, tail).c_str(), recorder.csv);
}

void gf_countEvent(PositionRecorder& recorder, std::uint32_t objectId, std::string_view event) {
    auto& counts = recorder.eventCounts[objectId];
    if (const auto it = counts.find(event); it != counts.end()) {
        ++it->second;
    } else {
        counts.emplace(std::string(event), 1u);
    }
}

}  // namespace bsim

std::vector<RecordedPosition> gf_positionsOf(const std::vector<RecordedPosition>& all,
                                             std::uint32_t objectId) {
    std::vector<RecordedPosition> out;
    for (const RecordedPosition& p : all) {
        if (p.object_id == objectId) out.push_back(p);
    }
    return out;
}

bool gf_writePositionsCsv(const std::vector<RecordedPosition>& positions,
                          const std::filesystem::path& path) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out) {
        gf_logError(fmt::format("Cannot write the recorded positions to {}", path.string()));
        return false;
    }
    out << CSV_HEADER;
    for (const RecordedPosition& p : positions) out << lf_csvLine(p);
    out.flush();
    if (!out) {
        gf_logError(fmt::format("Writing the recorded positions to {} failed", path.string()));
        return false;
    }
    return true;
}

}  // namespace tfx
