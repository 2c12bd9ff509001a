#include "app/log.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <mutex>
#include <stdexcept>
#include <string>

#include <fmt/format.h>

#include "app/file_utils.h"
#include "app/version.h"
#include "platform/file_open.h"

namespace tfx {
namespace {

constexpr std::size_t FLUSH_BYTES = 4096;
constexpr const char* LOG_NAME = "Log.txt";

std::mutex logMutex;
std::FILE* logFile = nullptr;
std::size_t bytesSinceFlush = 0;
// The size guard: bytes written since the open, lines dropped past a bound.
LogLimits nextLimits;
LogLimits limits;
std::uint64_t bytesWritten = 0;
std::uint64_t complaintsDropped = 0;
std::uint64_t linesDropped = 0;
// Lines since the last flush. Buffered here rather than by the C library,
// whose buffer size and write-through rules differ between systems.
std::string pending;

// Caller holds logMutex.
void lf_write(std::string_view prefix, std::string_view text) {
    pending.append(prefix);
    pending.append(text);
    pending += '\n';
    const std::size_t n = prefix.size() + text.size() + 1;
    bytesSinceFlush += n;
    bytesWritten += n;
}

// Caller holds logMutex; the log is open.
void lf_flush() {
    std::fwrite(pending.data(), 1, pending.size(), logFile);
    std::fflush(logFile);
    pending.clear();
}

// Caller holds logMutex. False when the line must be dropped; the first drop
// of each kind says so in the log, once.
bool lf_roomFor(std::size_t n, bool complaint) {
    const std::uint64_t bound = complaint ? limits.complaint_bytes : limits.limit_bytes;
    if (bytesWritten + n <= bound) return true;
    std::uint64_t& dropped = complaint ? complaintsDropped : linesDropped;
    if (dropped++ == 0) {
        lf_write("==> ", fmt::format("Log.txt reached {} bytes: further {} are not written", bound,
                                     complaint ? "complaints" : "lines"));
        lf_flush();
        bytesSinceFlush = 0;
    }
    return false;
}

void lf_closeLocked() {
    if (logFile == nullptr) return;
    if (complaintsDropped + linesDropped > 0)
        lf_write("==> ", fmt::format("{} complaint{} and {} other line{} were not written",
                                     complaintsDropped, complaintsDropped == 1 ? "" : "s",
                                     linesDropped, linesDropped == 1 ? "" : "s"));
    lf_flush();
    std::fclose(logFile);
    logFile = nullptr;
    bytesSinceFlush = 0;
}

}  // namespace

void gf_openLog() {
    gf_openLogAt(LOG_NAME);
}

void gf_openLogAt(const std::filesystem::path& file) {
    {
        std::lock_guard lock(logMutex);
        lf_closeLocked();
    }
    gf_save1GenerationOf(file);
    // Built before the lock: the version parse may itself want to log.
    const std::string head = fmt::format("{} {} version {} for {}", gf_nowText(), PROGRAM_NAME,
                                         gf_versionText(gf_runningVersion()), "MSFS 2020/2024");
    std::lock_guard lock(logMutex);
    logFile = pf_openFile(file, "wb");
    if (logFile == nullptr)
        throw std::runtime_error(
            fmt::format("Failed to write file {}: {}", file.string(), std::strerror(errno)));
    bytesSinceFlush = 0;
    bytesWritten = 0;
    complaintsDropped = 0;
    linesDropped = 0;
    limits = nextLimits;
    lf_write("", head);
    lf_flush();
    bytesSinceFlush = 0;
}

void gf_setLogLimits(const LogLimits& newLimits) {
    std::lock_guard lock(logMutex);
    nextLimits = newLimits;
}

void gf_closeLog() {
    std::lock_guard lock(logMutex);
    lf_closeLocked();
}

bool gf_logIsOpen() {
    std::lock_guard lock(logMutex);
    return logFile != nullptr;
}

void gf_logLine(std::string_view text) {
    std::lock_guard lock(logMutex);
    if (logFile == nullptr || !lf_roomFor(text.size() + 1, false)) return;
    lf_write("", text);
    if (bytesSinceFlush >= FLUSH_BYTES) {
        lf_flush();
        bytesSinceFlush = 0;
    }
}

void gf_logError(std::string_view text) {
    std::lock_guard lock(logMutex);
    if (logFile == nullptr || !lf_roomFor(text.size() + 5, false)) return;
    lf_write("==> ", text);
    lf_flush();
    bytesSinceFlush = 0;
}

void gf_logComplaint(std::string_view text) {
    std::lock_guard lock(logMutex);
    if (logFile == nullptr || !lf_roomFor(text.size() + 5, true)) return;
    lf_write("==> ", text);
    lf_flush();
    bytesSinceFlush = 0;
}

void gf_flushLog() {
    std::lock_guard lock(logMutex);
    if (logFile == nullptr) return;
    lf_flush();
    bytesSinceFlush = 0;
}

std::string gf_nowText() {
    static constexpr const char* MONTHS[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                             "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    std::time_t now = std::time(nullptr);
    std::tm utc{};
    if (gmtime_r(&now, &utc) == nullptr) return "Invalid time";
    const char* month = (utc.tm_mon >= 0 && utc.tm_mon < 12) ? MONTHS[utc.tm_mon] : "???";
    return fmt::format("{} {} {} {:02}:{:02}Z", utc.tm_mday, month, utc.tm_year + 1900, utc.tm_hour,
                       utc.tm_min);
}

std::string gf_banner(int left, int right, bool newlineBefore, bool newlineAfter,
                      std::string_view text) {
    int n = left + right;
    if (n % 2 != 0) ++n;
    std::string out;
    if (newlineBefore) out += '\n';
    const int len = static_cast<int>(text.size());
    if (text.empty()) {
        out.append(static_cast<std::size_t>(std::max(n, 0)), '*');
    } else if (n > len + 2) {
        const auto stars = static_cast<std::size_t>(n / 2 - 1);
        out.append(stars, '*');
        out += ' ';
        out += text;
        out += ' ';
        out.append(stars, '*');
    } else {
        out += text;
    }
    if (newlineAfter) out += '\n';
    return out;
}

std::string gf_bannerOpen(int width, std::string_view title) {
    return gf_banner(width - static_cast<int>(title.size()), 0, true, false, title);
}

std::string gf_bannerClose(int width, std::string_view title) {
    const int len = static_cast<int>(title.size());
    return gf_banner(width - len, len, false, true, "");
}

}  // namespace tfx
