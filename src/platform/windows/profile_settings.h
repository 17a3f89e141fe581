#pragma once
// The Windows build's settings files, read and written by the system's own
// profile functions (GetPrivateProfileStringA, WritePrivateProfileStringA),
// so a file means on Windows exactly what Windows makes of it. A save still
// changes all of a window's keys or none: the keys are written into a copy of
// the file, which then replaces it in one move.
#include <filesystem>
#include <set>
#include <string>

#include "core/settings_store.h"

namespace mv {

class ProfileSettings final : public SystemProfiles {
public:
    SettingsSnapshot load(const std::filesystem::path& path, std::string_view section) override;
    SettingsCommit commit(const std::filesystem::path& path, const SettingsEdit& edit) override;

private:
    // Removes the copy a save that never ended left beside `path`; once per
    // file and program run.
    void sweepLeftovers(const std::filesystem::path& path);

    std::set<std::filesystem::path> m_swept;
};

}  // namespace mv
