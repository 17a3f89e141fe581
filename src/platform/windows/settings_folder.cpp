// Windows: the settings files live in the user's application-data folder,
// %APPDATA%\Marrowvane. The Windows folder, where the classic profile
// functions put a bare file name, is not writable for a normal user on
// current Windows, and roaming application data follows the operator from
// machine to machine as the rest of their settings do.
#include "platform/settings_folder.h"

#include <windows.h>

#include <shlobj.h>

#include "platform/windows/profile_settings.h"

namespace mv {

std::filesystem::path defaultSettingsFolder() {
    PWSTR appData = nullptr;
    std::filesystem::path folder;
    if (SUCCEEDED(SHGetKnownFolderPath(FOLDERID_RoamingAppData, KF_FLAG_CREATE, nullptr, &appData)))
        folder = std::filesystem::path(appData) / L"Marrowvane";
    CoTaskMemFree(appData);
    if (folder.empty()) folder = std::filesystem::current_path() / L"marrowvane-settings";
    return folder;
}

std::shared_ptr<SystemProfiles> systemProfiles() { return std::make_shared<ProfileSettings>(); }

}  // namespace mv
