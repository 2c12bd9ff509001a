// Making an archive path local: download from the server folder of the
// simulator in use, and decryption of a sealed file.
#include <algorithm>
#include <system_error>
#include <vector>

#include <fmt/format.h>

#include "airports/airport_download.h"
#include "airports/airport_paths.h"
#include "app/decrypt.h"
#include "app/run_state.h"

namespace fs = std::filesystem;

namespace tfx {

std::variant<fs::path, std::string> gf_fetchAirportFile(const fs::path& path, bool forPark) {
    if (gf_serverMaintenance())
        return std::string("Web server temporarily unavailable due to maintenance.");
    bool archive = false;
    for (const auto& part : path) archive = archive || part == "archive";
    if (!archive) return path;

    const fs::path base = fs::path("airports") / (forPark ? "park_airport" : "airport");
    const fs::path enc = fs::path(base) += ".enc";
    const fs::path xml = fs::path(base) += ".xml";
    std::string ext = path.extension().string();
    std::transform(ext.begin(), ext.end(), ext.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    const bool sealed = ext == ".enc";
    const fs::path target = sealed ? enc : xml;

    std::error_code ec;
    fs::create_directories(base.parent_path(), ec);
    const std::string serverPath =
        std::string(gf_isMSFS2020() ? "/downloads/MSFS/" : "/downloads/MSFS2024/") +
        path.relative_path().generic_string();
    if (!gf_downloadFile(serverPath, target)) {
        fs::remove(target, ec);
        return fmt::format("failed to download: '{}'", serverPath);
    }
    if (sealed) {
        const bool ok = gf_streamDecrypt(enc, xml);
        fs::remove(enc, ec);
        if (!ok) return fmt::format("decryption failed for {}", path.generic_string());
    }
    return xml;
}

}  // namespace tfx
