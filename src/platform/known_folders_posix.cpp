#include "platform/known_folders.h"

#include <cstdlib>

namespace tfx {

std::optional<std::filesystem::path> pf_roamingAppData() {
    if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg != nullptr && *xdg != '\0')
        return std::filesystem::path(xdg);
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0')
        return std::filesystem::path(home) / ".config";
    return std::nullopt;
}

std::optional<std::filesystem::path> pf_localAppData() {
    if (const char* xdg = std::getenv("XDG_DATA_HOME"); xdg != nullptr && *xdg != '\0')
        return std::filesystem::path(xdg);
    if (const char* home = std::getenv("HOME"); home != nullptr && *home != '\0')
        return std::filesystem::path(home) / ".local" / "share";
    return std::nullopt;
}

}  // namespace tfx
