// Where the user's roaming and local application data live.
#pragma once

#include <filesystem>
#include <optional>

namespace tfx {

// %APPDATA% on Windows (the variable, else the known folder); $XDG_CONFIG_HOME, else ~/.config,
// here. Empty when neither can be found.
std::optional<std::filesystem::path> pf_roamingAppData();

// The user's local application data: %LOCALAPPDATA% on Windows (as above);
// $XDG_DATA_HOME, else ~/.local/share, here. Empty when neither is found.
std::optional<std::filesystem::path> pf_localAppData();

}  // namespace tfx
