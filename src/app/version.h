// Program and data-file version numbers: "15.15" or "15.15.2".
#pragma once

#include <compare>
#include <cstdint>
#include <string>
#include <string_view>

namespace tfx {

struct VersionData {
    std::int32_t major = 0;
    std::int32_t minor = 0;
    std::int32_t patch = 0;

    auto operator<=>(const VersionData&) const = default;
    bool empty() const { return major == 0 && minor == 0 && patch == 0; }
};

// "a.b" or "a.b.c"; an empty text is 0.0.0 quietly, anything malformed is
// logged and also 0.0.0, so a bad stored version counts as none.
VersionData gf_parseVersion(std::string_view text);
// Canonical text: "a.b.c", or "a.b" when the patch is 0.
std::string gf_versionText(const VersionData& version);

// The running program's version, parsed once.
const VersionData& gf_runningVersion();

}  // namespace tfx
