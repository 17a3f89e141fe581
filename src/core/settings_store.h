#pragma once
// Settings files: one small INI file per module, found by its bare name in one
// settings folder shared by all modules. A load reads a file once, as the
// Windows profile functions would; a save changes any number of keys and
// commits them as one atomic replace of the file (a temporary file in the same
// folder, flushed to disk, renamed over the old one), through a symbolic link
// to the file it points at. Anything but a plain file is left alone.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "core/settings_text.h"

namespace mv {

inline constexpr std::string_view kSettingsSection = "SETTINGS";

// One settings file as it was read.
class SettingsSnapshot {
public:
    // A snapshot whose values come from `lookup` (the system's profile
    // functions), called as value() is: key, default, buffer size.
    using Lookup = std::function<std::string(std::string_view key, std::string_view defaultValue, size_t bufferSize)>;
    static SettingsSnapshot through(Lookup lookup, bool exists, std::string problem);

    // At most bufferSize - 1 characters of the key's value; the default when
    // the file, the section or the key is missing.
    std::string value(std::string_view key, std::string_view defaultValue, size_t bufferSize = 256) const;
    bool exists() const { return m_exists; }
    // Why the file could not be read (it is a folder, a FIFO, unreadable ...),
    // naming it; empty when it was read or does not exist.
    const std::string& problem() const { return m_problem; }
    TextEncoding encoding() const { return m_text.encoding(); }

private:
    friend class SettingsStore;
    SettingsText m_text;
    Lookup m_lookup;
    std::string m_section;
    bool m_exists = false;
    std::string m_problem;
};

// The keys one save changes in one file, committed together.
class SettingsEdit {
public:
    explicit SettingsEdit(std::string fileName, std::string section = std::string(kSettingsSection));
    void set(std::string key, std::string value);

    struct Change {
        std::string key;
        std::string value;
    };
    const std::string& fileName() const { return m_fileName; }
    const std::string& section() const { return m_section; }
    const std::vector<Change>& changes() const { return m_changes; }

private:
    std::string m_fileName;
    std::string m_section;
    std::vector<Change> m_changes;
};

struct SettingsCommit {
    bool written = false;
    std::string error;   // why nothing was written, naming the file
    std::string reason;  // the cause alone, short enough for a status line
    std::vector<std::string> keysWithLineBreaks;     // a line break became a blank
    std::vector<std::string> keysWithLostCharacters;  // what Windows-1252 cannot hold became '?'
};

// Reads and writes settings files with the system's own profile functions
// instead of the store's INI code: the Windows build's way (see
// platform/windows/profile_settings.h). A commit must keep the store's
// promise, all of an edit's keys or none.
class SystemProfiles {
public:
    virtual ~SystemProfiles() = default;
    virtual SettingsSnapshot load(const std::filesystem::path& path, std::string_view section) = 0;
    virtual SettingsCommit commit(const std::filesystem::path& path, const SettingsEdit& edit) = 0;
};

class SettingsStore {
public:
    // Files are read and written by the store's own INI code, or by
    // `profiles` when given. A build without the INI code's file calls
    // (Windows) must give them.
    explicit SettingsStore(std::filesystem::path folder, std::shared_ptr<SystemProfiles> profiles = nullptr);
    const std::filesystem::path& folder() const { return m_folder; }
    std::filesystem::path pathOf(std::string_view fileName) const;

    // Reads a file. Never blocks on a FIFO or a device and never throws.
    SettingsSnapshot load(std::string_view fileName, std::string_view section = kSettingsSection) const;
    // One key, straight from its file.
    std::string read(std::string_view fileName, std::string_view key, std::string_view defaultValue,
                     size_t bufferSize = 256, std::string_view section = kSettingsSection) const;

    // Writes every change of `edit` into its file as one replace: after a
    // crash at any moment the file holds either all of them or none. Creates
    // the folder, the file and the section as needed; the old file stays as
    // it was when anything fails. Never throws.
    SettingsCommit commit(const SettingsEdit& edit);
    // How many files were replaced so far.
    uint64_t commitCount() const { return m_commits; }

    // Removes every temporary file ("<name>.ini.tmp") a crash during a save
    // left in the settings folder. A running copy calls it once it holds the
    // folder's lock, so the files of windows it never opens are cleared too.
    void sweepFolderLeftovers() const;

private:
    // Removes the temporary file a crash during an earlier save left beside
    // `target`; once per file and program run.
    void sweepLeftovers(const std::filesystem::path& target) const;

    std::filesystem::path m_folder;
    std::shared_ptr<SystemProfiles> m_profiles;
    uint64_t m_commits = 0;
    mutable std::set<std::string> m_swept;
};

// Text conversions used when a setting goes into or comes out of a control.
namespace setting {
// Check box: "0", "1" or "2"; anything else cannot be converted.
bool parseCheck(std::string_view text, int& value);
// Radio button: "True"/"False" in any case, or a number (non-zero is True).
bool parseOption(std::string_view text, bool& value);
// Window position in twips: a number.
bool parsePosition(std::string_view text, float& value);
// A whole number in decimal (surrounding blanks allowed).
bool parseWhole(std::string_view text, long long& value);
std::string optionText(bool value);
// Shortest plain decimal form of a position ("300", "1234.5").
std::string positionText(float value);
}  // namespace setting

}  // namespace mv
