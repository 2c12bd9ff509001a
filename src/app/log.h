// Log.txt: the program's one log, in the program folder, kept for one
// generation as Log0.txt. No levels and no per-line time stamps.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

namespace tfx {

// Starts Log.txt in the working folder; the previous log becomes Log0.txt.
// Throws std::runtime_error "Failed to write file <path>: <why>" when it can't.
// The program opens it once per process: a restart only writes a separator.
void gf_openLog();
// The same for another file: tools keep their logs out of the folder they run in.
void gf_openLogAt(const std::filesystem::path& file);
// Flushes and closes the log; both channels do nothing afterwards.
void gf_closeLog();
bool gf_logIsOpen();

// Plain line; flushed only once 4096 bytes have gathered since the last flush.
void gf_logLine(std::string_view text);
// Warning line with "==> " in front; flushed at once so it survives a crash.
void gf_logError(std::string_view text);
// A complaint about outside input (a bad line, a bad value): a warning line
// that the size guard drops first, so a flood of them can't push out the
// program's own lines.
void gf_logComplaint(std::string_view text);
void gf_flushLog();

// The size guard. Complaints stop at complaint_bytes; every other line stops
// at limit_bytes; what was dropped is counted in one line when the log closes.
struct LogLimits {
    std::uint64_t complaint_bytes = 32ull << 20;  // 32 MiB
    std::uint64_t limit_bytes = 64ull << 20;      // 64 MiB
};
// Takes effect for the log opened next.
void gf_setLogLimits(const LogLimits& limits);

// "23 Nov 2026 14:05Z" in UTC, or "Invalid time".
std::string gf_nowText();

// A line of stars with an optional text in its middle.
std::string gf_banner(int left, int right, bool newlineBefore, bool newlineAfter,
                      std::string_view text);

// Pair of banners of width W around a title, for log sections.
std::string gf_bannerOpen(int width, std::string_view title);
std::string gf_bannerClose(int width, std::string_view title);

// The program's name and running version as shown in the log.
inline constexpr std::string_view PROGRAM_NAME = "ZEPT";
inline constexpr std::string_view PROGRAM_VERSION_TEXT = ZEPT_VERSION_TEXT;

}  // namespace tfx
