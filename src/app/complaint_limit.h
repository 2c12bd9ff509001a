// Rate limit for complaints about outside data that may repeat without end:
// the first few lines of a kind go to the log in full, later ones are only
// counted, and the count goes out once a minute. A flood of bad datagrams
// then costs the log a line a minute instead of a line a datagram.
#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tfx {

struct ComplaintRule {
    std::uint32_t fullLines = 3;  // logged in full per period
    std::int64_t period_s = 60;   // counts go out once per period
    std::size_t maxKinds = 64;    // kinds beyond this share one counter
};

struct ComplaintCount {
    std::uint32_t logged = 0;      // full lines in this stretch
    std::uint64_t suppressed = 0;  // since the last count line
    std::uint64_t total = 0;
    std::int64_t periodStart_s = 0;
    bool seenThisPeriod = false;
};

// One limiter per reader (or shared); safe to use from several threads.
struct ComplaintLimit {
    ComplaintRule rule;
    std::mutex lock;
    std::unordered_map<std::string, ComplaintCount> kinds;
};

// Logs text (through gf_logError) unless the kind has had its full lines
// in this period; returns true when the line was written. now_s is any
// steady count of seconds; the overload without it uses the steady clock.
bool gf_complain(ComplaintLimit& limit, std::string_view kind, std::string_view text,
                 std::int64_t now_s);
bool gf_complain(ComplaintLimit& limit, std::string_view kind, std::string_view text);

// Writes the counts of kinds whose period is over; readers call it while
// idle so that the last count of a flood is not held back.
void gf_flushComplaints(ComplaintLimit& limit, std::int64_t now_s);
void gf_flushComplaints(ComplaintLimit& limit);

// How often a kind was complained about since the last reset (0 if never).
std::uint64_t gf_complaintTotal(ComplaintLimit& limit, std::string_view kind);
void gf_resetComplaints(ComplaintLimit& limit);

}  // namespace tfx
