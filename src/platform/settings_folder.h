#pragma once
// Where the settings files live: $XDG_CONFIG_HOME/marrowvane, or
// ~/.config/marrowvane (on Windows %APPDATA%\Marrowvane), unless the command
// line names another folder.
#include <filesystem>
#include <memory>

#include "core/settings_store.h"

namespace mv {
std::filesystem::path defaultSettingsFolder();
// The system's own profile functions for the settings store, where the
// suite uses them (Windows); null where the store's INI code does the work.
std::shared_ptr<SystemProfiles> systemProfiles();
}
