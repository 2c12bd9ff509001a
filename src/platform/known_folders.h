// Where the user's roaming application data lives.
#pragma once

#include <filesystem>
#include <optional>

namespace tfx {

// %APPDATA% on Windows; $XDG_CONFIG_HOME, else ~/.config, here.
// Empty when neither can be found.
std::optional<std::filesystem::path> pf_roamingAppData();

}  // namespace tfx
