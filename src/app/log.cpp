#include "app/log.h"

#include <cerrno>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "app/deferred_output.h"
#include "app/file_utils.h"
#include "app/version.h"
#include "platform/file_open.h"

namespace tfx {
namespace {

constexpr std::size_t FLUSH_BYTES = 4096;
constexpr const char* LOG_NAME = "Log.txt";

// Two locks, so that a line never waits on the disk: logMutex is held only
// to append a line or to swap the gathered lines out; fileMutex is held by
// whoever writes them out, and is taken before logMutex when both are.
std::mutex logMutex;
std::mutex fileMutex;
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
// Console lines of threads that defer their output, with their stream.
std::vector<std::pair<std::string, bool>> pendingConsole;
std::string writing;  // under fileMutex: what goes out now

// The writer: a thread that writes what deferring threads leave (the main
// loop's, whose tick must not wait on a disk or a console).
thread_local bool deferring = false;
std::condition_variable writerWake;
bool writeWanted = false;  // under logMutex
bool writerStop = false;   // under logMutex
// Under both locks. A pointer, so that a process that ends without closing
// the log never meets a running thread's destructor.
std::thread* writer = nullptr;

// Caller holds logMutex.
void lf_write(std::string_view prefix, std::string_view text) {
    pending.append(prefix);
    pending.append(text);
    pending += '\n';
    const std::size_t n = prefix.size() + text.size() + 1;
    bytesSinceFlush += n;
    bytesWritten += n;
}

void lf_writeConsole(std::string_view line, bool error) {
    std::FILE* stream = error ? stderr : stdout;
    std::fwrite(line.data(), 1, line.size(), stream);
    std::fputc('\n', stream);
    std::fflush(stream);
}

// Caller holds fileMutex.
void lf_writeOut(const std::string& text, const std::vector<std::pair<std::string, bool>>& console,
                 std::FILE* out) {
    if (out != nullptr && !text.empty()) {
        std::fwrite(text.data(), 1, text.size(), out);
        std::fflush(out);
    }
    for (const auto& [line, error] : console) lf_writeConsole(line, error);
}

// Writes out what gathered, in order; the caller holds no lock.
void lf_flushNow() {
    std::lock_guard file(fileMutex);
    std::vector<std::pair<std::string, bool>> console;
    std::FILE* out = nullptr;
    {
        std::lock_guard lock(logMutex);
        writing.clear();
        writing.swap(pending);
        console.swap(pendingConsole);
        bytesSinceFlush = 0;
        writeWanted = false;
        out = logFile;
    }
    lf_writeOut(writing, console, out);
}

// A flush is due: at once, or by the writer for a deferring thread.
void lf_flush() {
    if (!deferring) return lf_flushNow();
    {
        std::lock_guard lock(logMutex);
        writeWanted = true;
    }
    writerWake.notify_one();
}

void lf_writerLoop() {
    std::unique_lock lock(logMutex);
    while (true) {
        writerWake.wait(lock, [] { return writeWanted || writerStop; });
        if (writerStop) return;
        lock.unlock();
        lf_flushNow();
        lock.lock();
    }
}

void lf_startWriter() {
    std::lock_guard file(fileMutex);
    std::lock_guard lock(logMutex);
    if (writer != nullptr) return;
    writerStop = false;
    writer = new std::thread(lf_writerLoop);
}

void lf_stopWriter() {
    std::thread* running = nullptr;
    {
        std::lock_guard file(fileMutex);
        std::lock_guard lock(logMutex);
        writerStop = true;
        std::swap(running, writer);
    }
    if (running == nullptr) return;
    writerWake.notify_one();
    running->join();
    delete running;
}

// Caller holds logMutex. False when the line must be dropped; the first drop
// of each kind says so in the log, once (flush set: write out now).
bool lf_roomFor(std::size_t n, bool complaint, bool& flush) {
    const std::uint64_t bound = complaint ? limits.complaint_bytes : limits.limit_bytes;
    if (bytesWritten + n <= bound) return true;
    std::uint64_t& dropped = complaint ? complaintsDropped : linesDropped;
    if (dropped++ == 0) {
        lf_write("==> ", fmt::format("Log.txt reached {} bytes: further {} are not written", bound,
                                     complaint ? "complaints" : "lines"));
        flush = true;
    }
    return false;
}

void lf_close() {
    lf_stopWriter();
    std::lock_guard file(fileMutex);
    std::lock_guard lock(logMutex);
    if (logFile != nullptr && complaintsDropped + linesDropped > 0)
        lf_write("==> ", fmt::format("{} complaint{} and {} other line{} were not written",
                                     complaintsDropped, complaintsDropped == 1 ? "" : "s",
                                     linesDropped, linesDropped == 1 ? "" : "s"));
    lf_writeOut(pending, pendingConsole, logFile);
    pending.clear();
    pendingConsole.clear();
    bytesSinceFlush = 0;
    if (logFile == nullptr) return;
    std::fclose(logFile);
    logFile = nullptr;
}

}  // namespace

void gf_openLog() {
    gf_openLogAt(LOG_NAME);
}

void gf_openLogAt(const std::filesystem::path& file) {
    lf_close();
    gf_save1GenerationOf(file);
    // Built before the lock: the version parse may itself want to log.
    const std::string head = fmt::format("{} {} version {} for {}", gf_nowText(), PROGRAM_NAME,
                                         gf_versionText(gf_runningVersion()), "MSFS 2020/2024");
    {
        std::lock_guard fileLock(fileMutex);
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
    }
    lf_flushNow();
    lf_startWriter();
}

void gf_setLogLimits(const LogLimits& newLimits) {
    std::lock_guard lock(logMutex);
    nextLimits = newLimits;
}

void gf_closeLog() {
    lf_close();
}

bool gf_logIsOpen() {
    std::lock_guard lock(logMutex);
    return logFile != nullptr;
}

void gf_logLine(std::string_view text) {
    bool flush = false;
    {
        std::lock_guard lock(logMutex);
        if (logFile == nullptr) return;
        if (lf_roomFor(text.size() + 1, false, flush)) {
            lf_write("", text);
            flush = bytesSinceFlush >= FLUSH_BYTES;
        }
    }
    if (flush) lf_flush();
}

// A warning line, flushed at once so that it survives a crash.
void lf_warning(std::string_view text, bool complaint) {
    bool flush = false;
    {
        std::lock_guard lock(logMutex);
        if (logFile == nullptr) return;
        if (lf_roomFor(text.size() + 5, complaint, flush)) {
            lf_write("==> ", text);
            flush = true;
        }
    }
    if (flush) lf_flush();
}

void gf_logError(std::string_view text) {
    lf_warning(text, false);
}

void gf_logComplaint(std::string_view text) {
    lf_warning(text, true);
}

void gf_flushLog() {
    lf_flush();
}

void gf_consoleLine(std::string_view text, bool error) {
    bool queued = false;
    if (deferring) {
        std::lock_guard lock(logMutex);
        if (writer != nullptr) {
            pendingConsole.emplace_back(std::string(text), error);
            writeWanted = true;
            queued = true;
        }
    }
    if (queued) {
        writerWake.notify_one();
        return;
    }
    lf_writeConsole(text, error);
}

void gf_deferOutput(bool on) {
    deferring = on;
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
