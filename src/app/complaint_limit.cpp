#include "app/complaint_limit.h"

#include <chrono>

#include <fmt/format.h>

#include "app/log.h"

namespace tfx {

namespace {

constexpr std::string_view OTHER_KINDS = "other complaints";

std::int64_t lf_steadySeconds() {
    return std::chrono::duration_cast<std::chrono::seconds>(
               std::chrono::steady_clock::now().time_since_epoch())
        .count();
}

void lf_writeCount(std::string_view kind, ComplaintCount& c, std::int64_t period_s) {
    if (c.suppressed > 0)
        gf_logError(fmt::format("{:5} more line{} of \"{}\" in the last {} s", c.suppressed,
                                c.suppressed == 1 ? "" : "s", kind, period_s));
    c.suppressed = 0;
}

// Closes the period when it is over: the count goes out, and a kind that
// stayed quiet for a whole period may log in full again.
void lf_roll(std::string_view kind, ComplaintCount& c, const ComplaintRule& rule,
             std::int64_t now_s) {
    if (now_s - c.periodStart_s < rule.period_s) return;
    lf_writeCount(kind, c, rule.period_s);
    if (!c.seenThisPeriod) c.logged = 0;
    c.seenThisPeriod = false;
    c.periodStart_s = now_s;
}

}  // namespace

bool gf_complain(ComplaintLimit& limit, std::string_view kind, std::string_view text,
                 std::int64_t now_s) {
    std::lock_guard guard(limit.lock);
    auto it = limit.kinds.find(std::string(kind));
    if (it == limit.kinds.end()) {
        if (limit.kinds.size() >= limit.rule.maxKinds) kind = OTHER_KINDS;
        it = limit.kinds.try_emplace(std::string(kind)).first;
        if (it->second.total == 0) it->second.periodStart_s = now_s;
    }
    ComplaintCount& c = it->second;
    lf_roll(it->first, c, limit.rule, now_s);
    ++c.total;
    c.seenThisPeriod = true;
    if (c.logged < limit.rule.fullLines) {
        ++c.logged;
        gf_logError(text);
        return true;
    }
    ++c.suppressed;
    return false;
}

bool gf_complain(ComplaintLimit& limit, std::string_view kind, std::string_view text) {
    return gf_complain(limit, kind, text, lf_steadySeconds());
}

void gf_flushComplaints(ComplaintLimit& limit, std::int64_t now_s) {
    std::lock_guard guard(limit.lock);
    for (auto& [kind, c] : limit.kinds) lf_roll(kind, c, limit.rule, now_s);
}

void gf_flushComplaints(ComplaintLimit& limit) {
    gf_flushComplaints(limit, lf_steadySeconds());
}

std::uint64_t gf_complaintTotal(ComplaintLimit& limit, std::string_view kind) {
    std::lock_guard guard(limit.lock);
    const auto it = limit.kinds.find(std::string(kind));
    return it == limit.kinds.end() ? 0 : it->second.total;
}

void gf_resetComplaints(ComplaintLimit& limit) {
    std::lock_guard guard(limit.lock);
    limit.kinds.clear();
}

}  // namespace tfx
