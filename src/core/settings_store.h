#pragma once
// Settings files: one small INI file per module, found by its bare name in one
// settings folder shared by all modules. Reads and writes follow the classic
// profile-function rules (case-insensitive section and key, defaults for what
// is missing, values cut to the read buffer) and a write replaces the file
// atomically, keeping every other line as it was.
#include <cstddef>
#include <filesystem>
#include <string>
#include <string_view>

namespace mv {

inline constexpr std::string_view kSettingsSection = "SETTINGS";

class SettingsStore {
public:
    explicit SettingsStore(std::filesystem::path folder);
    const std::filesystem::path& folder() const { return m_folder; }
    std::filesystem::path pathOf(std::string_view fileName) const;

    // At most bufferSize - 1 characters of the value; the default when the
    // file, the section or the key is missing.
    std::string read(std::string_view fileName, std::string_view key, std::string_view defaultValue,
                     size_t bufferSize = 256, std::string_view section = kSettingsSection) const;

    struct WriteResult {
        bool written = false;
        bool lineBreaksReplaced = false;  // a line break in the value became a blank
        std::string error;                // why nothing was written
    };
    // Creates folder, file and section as needed. Never throws.
    WriteResult write(std::string_view fileName, std::string_view key, std::string_view value,
                      std::string_view section = kSettingsSection);

private:
    std::filesystem::path m_folder;
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
