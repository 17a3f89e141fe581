#pragma once
// Where the settings files live: $XDG_CONFIG_HOME/marrowvane, or
// ~/.config/marrowvane, unless the command line names another folder.
#include <filesystem>

namespace mv {
std::filesystem::path defaultSettingsFolder();
}
