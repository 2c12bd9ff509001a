// The web server's side of the airport files: the maintenance flag and the
// download of one file from the server's airport folders.
#pragma once

#include <filesystem>
#include <optional>
#include <string>

namespace tfx {

// Set when the server announces maintenance; airport fetches refuse then.
bool gf_serverMaintenance();
void gf_setServerMaintenance(bool on);

// Downloads the server path (forward slashes, beginning "/downloads/") to
// target. True when the whole file stands there.
bool gf_downloadFile(const std::string& serverPath, const std::filesystem::path& target);

}  // namespace tfx
