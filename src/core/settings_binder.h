#pragma once
// Ties a module's settings keys to its controls: loads each key, in the
// module's order, straight into its control with the conversion its kind
// needs, and saves them back in the module's write order. A value that cannot
// be converted (a settings file edited by hand) falls back to that key's
// default and the fallback is logged, so the window still loads.
#include <functional>
#include <string>
#include <vector>

#include "core/controls.h"

namespace mv {

class SettingsStore;
class EventLog;

class SettingsBinder {
public:
    SettingsBinder(std::string fileName, size_t readBuffer, std::string window);

    void bindText(const std::string& key, TextBox& box, std::string defaultValue);
    void bindCheck(const std::string& key, CheckBox& box, std::string defaultValue);
    void bindOption(const std::string& key, OptionButton& button, std::string defaultValue);
    void bindPosition(const std::string& key, std::function<float()> get, std::function<void(float)> set,
                      std::string defaultValue);

    // Reads the keys in `order` (every bound key when empty).
    void load(SettingsStore& store, EventLog& log, const std::vector<std::string>& order = {});
    // Writes every bound key in the order they were bound. Returns the number of
    // keys written; a key that could not be written is logged.
    int save(SettingsStore& store, EventLog& log) const;

    const std::string& fileName() const { return m_fileName; }
    size_t keyCount() const { return m_entries.size(); }
    const std::string* defaultOf(const std::string& key) const;

private:
    enum class Kind { Text, Check, Option, Position };
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
