#pragma once
// Where the settings files live: $XDG_CONFIG_HOME/marrowvane, or
// ~/.config/marrowvane (on Windows %APPDATA%\Marrowvane), unless the command
// line names another folder.
#include <filesystem>

namespace mv {
std::filesystem::path defaultSettingsFolder();
}
