#include "app/version.h"

#include <charconv>
#include <stdexcept>
#include <vector>

#include <fmt/format.h>

#include "app/log.h"

namespace tfx {
namespace {

// Splits "a.b" or "a.b.c" into its digit groups; anything else is invalid.
std::vector<std::string_view> lf_groups(std::string_view text) {
    std::vector<std::string_view> groups;
    std::size_t start = 0;
    while (true) {
        std::size_t end = start;
        while (end < text.size() && text[end] >= '0' && text[end] <= '9') ++end;
        if (end == start) throw std::runtime_error("invalid version format");
        groups.push_back(text.substr(start, end - start));
        if (end == text.size()) break;
        if (text[end] != '.' || groups.size() == 3)
            throw std::runtime_error("invalid version format");
        start = end + 1;
    }
    if (groups.size() < 2) throw std::runtime_error("invalid version format");
    return groups;
}

std::int32_t lf_group(std::string_view digits) {
    std::int32_t value = 0;
    const char* end = digits.data() + digits.size();
    const auto [ptr, ec] = std::from_chars(digits.data(), end, value);
    if (ec != std::errc() || ptr != end) throw std::runtime_error("parse error in version string");
    return value;
}

}  // namespace

VersionData gf_parseVersion(std::string_view text) {
    if (text.empty()) return {};
    try {
        const auto groups = lf_groups(text);
        VersionData v;
        v.major = lf_group(groups[0]);
        v.minor = lf_group(groups[1]);
        if (groups.size() == 3) v.patch = lf_group(groups[2]);
        return v;
    } catch (const std::exception& e) {
        gf_logLine(fmt::format("{} exception: {}", "VersionData", e.what()));
        return {};
    }
}

std::string gf_versionText(const VersionData& v) {
    if (v.patch != 0) return fmt::format("{}.{}.{}", v.major, v.minor, v.patch);
    return fmt::format("{}.{}", v.major, v.minor);
}

const VersionData& gf_runningVersion() {
    static const VersionData running = gf_parseVersion(PROGRAM_VERSION_TEXT);
    return running;
}

}  // namespace tfx
