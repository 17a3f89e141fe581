#include "platform/settings_folder.h"

#include <cstdlib>

namespace mv {

std::filesystem::path defaultSettingsFolder() {
    if (const char* xdg = std::getenv("XDG_CONFIG_HOME"); xdg && *xdg) return std::filesystem::path(xdg) / "marrowvane";
    if (const char* home = std::getenv("HOME"); home && *home)
        return std::filesystem::path(home) / ".config" / "marrowvane";
    return std::filesystem::current_path() / "marrowvane-settings";
}

std::shared_ptr<SystemProfiles> systemProfiles() { return nullptr; }

}  // namespace mv
