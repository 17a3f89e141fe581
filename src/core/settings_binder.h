#pragma once
// Ties a module's settings keys to its controls: loads each key, in the
// module's order, straight into its control with the conversion its kind
// needs, and saves them all back as one change of the file. A value that
// cannot be converted (a settings file edited by hand) falls back to that
// key's default and the fallback is logged, so the window still loads.
#include <functional>
#include <string>
#include <vector>

#include "core/controls.h"
#include "core/settings_store.h"

namespace mv {

class EventLog;

class SettingsBinder {
public:
    SettingsBinder(std::string fileName, size_t readBuffer, std::string window);

    void bindText(const std::string& key, TextBox& box, std::string defaultValue);
    // A multi-line field: a settings value holds no line breaks, so each is
    // written as the two characters \n (and a backslash as \\) and read back.
    void bindLines(const std::string& key, TextBox& box, const std::string& defaultValue);
    void bindCheck(const std::string& key, CheckBox& box, std::string defaultValue);
    void bindOption(const std::string& key, OptionButton& button, std::string defaultValue);
    // A slider's position as a decimal whole number ("-5", "50").
    void bindSlider(const std::string& key, Slider& slider, std::string defaultValue);
    void bindCombo(const std::string& key, ComboBox& combo, std::string defaultValue);
    void bindPosition(const std::string& key, std::function<float()> get, std::function<void(float)> set,
                      std::string defaultValue);

    // Reads the keys in `order` (every bound key when empty). A file that
    // cannot be read is logged and every key takes its default.
    void load(SettingsStore& store, EventLog& log, const std::vector<std::string>& order = {});
    // Writes every bound key, in the order they were bound, as one commit of
    // the file: all of them or, when the save fails, none. A failure and any
    // value that could not be stored exactly are logged.
    SettingsCommit save(SettingsStore& store, EventLog& log) const;

    const std::string& fileName() const { return m_fileName; }
    size_t keyCount() const { return m_entries.size(); }
    const std::string* defaultOf(const std::string& key) const;

private:
    enum class Kind { Text, Lines, Check, Option, Slider, Combo, Position };
    struct Entry {
        std::string key;
        Kind kind;
        Control* control;
        std::string defaultValue;
        std::function<float()> getPosition;
        std::function<void(float)> setPosition;
    };
    const Entry* find(const std::string& key) const;
    void apply(const Entry& e, const std::string& text, EventLog& log) const;
    std::string textOf(const Entry& e) const;

    std::string m_fileName;
    size_t m_readBuffer;
    std::string m_window;
    std::vector<Entry> m_entries;
};

// After a load, a radio group left with nothing selected (both "False" in a
// hand-edited file) selects the given button, so the window never shows an
// impossible choice.
void ensureOneSelected(OptionGroup& group, OptionButton& fallback);

}  // namespace mv
