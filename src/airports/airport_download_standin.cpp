// STAND-IN for the downloader of the update server until it exists: a server
// path is served from the folder "server" in the program folder, which the
// program folder script fills with the sealed archive files. The flag is
// only ever set by tests.
#include "airports/airport_download.h"

#include <atomic>
#include <system_error>

namespace fs = std::filesystem;

namespace tfx {
namespace {
std::atomic<bool> maintenance{false};
}

bool gf_serverMaintenance() {
    return maintenance.load();
}

void gf_setServerMaintenance(bool on) {
    maintenance.store(on);
}

bool gf_downloadFile(const std::string& serverPath, const fs::path& target) {
    if (serverPath.find("..") != std::string::npos) return false;
    const fs::path source = fs::path("server") / fs::path(serverPath).relative_path();
    std::error_code ec;
    if (!fs::is_regular_file(source, ec)) return false;
    const fs::path partial = fs::path(target) += ".part";
    fs::copy_file(source, partial, fs::copy_options::overwrite_existing, ec);
    if (!ec) fs::rename(partial, target, ec);
    if (!ec) return true;
    fs::remove(partial, ec);
    return false;
}

}  // namespace tfx
