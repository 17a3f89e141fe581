#include "core/settings_binder.h"

#include <algorithm>
#include <cctype>
#include <cstdint>

#include "core/event_log.h"
#include "core/settings_store.h"

namespace mv {
namespace {
bool sameKey(const std::string& a, const std::string& b) {
    if (a.size() != b.size()) return false;
    for (size_t i = 0; i < a.size(); ++i)
        if (std::toupper(static_cast<unsigned char>(a[i])) != std::toupper(static_cast<unsigned char>(b[i])))
            return false;
    return true;
}
}  // namespace

SettingsBinder::SettingsBinder(std::string fileName, size_t readBuffer, std::string window)
    : m_fileName(std::move(fileName)), m_readBuffer(readBuffer), m_window(std::move(window)) {}

void SettingsBinder::bindText(const std::string& key, TextBox& box, std::string defaultValue) {
    m_entries.push_back({key, Kind::Text, &box, std::move(defaultValue), {}, {}});
}
namespace {

std::string escapeLines(const std::string& text) {
    std::string out;
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\') {
            out += "\\\\";
        } else if (text[i] == '\r' || text[i] == '\n') {
            if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
            out += "\\n";
        } else {
            out += text[i];
        }
    }
    return out;
}

std::string unescapeLines(const std::string& stored) {
    std::string out;
    for (size_t i = 0; i < stored.size(); ++i) {
        if (stored[i] == '\\' && i + 1 < stored.size() && (stored[i + 1] == 'n' || stored[i + 1] == '\\')) {
            out += stored[++i] == 'n' ? '\n' : '\\';
        } else {
            out += stored[i];
        }
    }
    return out;
}

}  // namespace

void SettingsBinder::bindLines(const std::string& key, TextBox& box, const std::string& defaultValue) {
    m_entries.push_back({key, Kind::Lines, &box, escapeLines(defaultValue), {}, {}});
}

void SettingsBinder::bindCheck(const std::string& key, CheckBox& box, std::string defaultValue) {
    m_entries.push_back({key, Kind::Check, &box, std::move(defaultValue), {}, {}});
}
void SettingsBinder::bindOption(const std::string& key, OptionButton& button, std::string defaultValue) {
    m_entries.push_back({key, Kind::Option, &button, std::move(defaultValue), {}, {}});
}
void SettingsBinder::bindSlider(const std::string& key, Slider& slider, std::string defaultValue) {
    m_entries.push_back({key, Kind::Slider, &slider, std::move(defaultValue), {}, {}});
}
void SettingsBinder::bindCombo(const std::string& key, ComboBox& combo, std::string defaultValue) {
    m_entries.push_back({key, Kind::Combo, &combo, std::move(defaultValue), {}, {}});
}
void SettingsBinder::bindPosition(const std::string& key, std::function<float()> get, std::function<void(float)> set,
                                  std::string defaultValue) {
    m_entries.push_back({key, Kind::Position, nullptr, std::move(defaultValue), std::move(get), std::move(set)});
}

const SettingsBinder::Entry* SettingsBinder::find(const std::string& key) const {
    for (const Entry& e : m_entries)
        if (sameKey(e.key, key)) return &e;
    return nullptr;
}

const std::string* SettingsBinder::defaultOf(const std::string& key) const {
    const Entry* e = find(key);
    return e ? &e->defaultValue : nullptr;
}

void SettingsBinder::apply(const Entry& e, const std::string& text, EventLog& log) const {
    auto fallback = [&](const char* kindName) {
        log.error(m_window, m_fileName + ": " + e.key + "=\"" + text + "\" is not a " + kindName +
                                " value; using the default \"" + e.defaultValue + "\"");
        return e.defaultValue;
    };
    switch (e.kind) {
        case Kind::Text: {
            TextBox& box = *static_cast<TextBox*>(e.control);
            box.setText(text);
            // A field with a length limit keeps the start of a longer stored
            // text; say so, since the file no longer matches what is used.
            if (box.maxLength() > 0 && box.text().size() < text.size() && text.starts_with(box.text()))
                log.error(m_window, m_fileName + ": " + e.key + " is longer than " + std::to_string(box.maxLength()) +
                                        " characters; using \"" + box.text() + "\"");
            return;
        }
        case Kind::Lines: static_cast<TextBox*>(e.control)->setText(unescapeLines(text)); return;
        case Kind::Check: {
            int v = 0;
            if (!setting::parseCheck(text, v)) setting::parseCheck(fallback("check-box"), v);
            static_cast<CheckBox*>(e.control)->setValue(v);
            return;
        }
        case Kind::Option: {
            bool v = false;
            if (!setting::parseOption(text, v)) setting::parseOption(fallback("true/false"), v);
            static_cast<OptionButton*>(e.control)->setValue(v);
            return;
        }
        case Kind::Slider: {
            long long v = 0;
            if (!setting::parseWhole(text, v)) setting::parseWhole(fallback("whole-number"), v);
            static_cast<Slider*>(e.control)->setValue(static_cast<int>(std::clamp<long long>(v, INT32_MIN, INT32_MAX)));
            return;
        }
        case Kind::Combo: static_cast<ComboBox*>(e.control)->setText(text); return;
        case Kind::Position: {
            float v = 0;
            if (!setting::parsePosition(text, v)) setting::parsePosition(fallback("position"), v);
            e.setPosition(v);
            return;
        }
    }
}

void SettingsBinder::load(SettingsStore& store, EventLog& log, const std::vector<std::string>& order) {
    const SettingsSnapshot file = store.load(m_fileName);
    if (!file.problem().empty()) log.error(m_window, file.problem());
    auto loadOne = [&](const Entry& e) { apply(e, file.value(e.key, e.defaultValue, m_readBuffer), log); };
    if (order.empty()) {
        for (const Entry& e : m_entries) loadOne(e);
        return;
    }
    for (const std::string& key : order)
        if (const Entry* e = find(key)) loadOne(*e);
}

std::string SettingsBinder::textOf(const Entry& e) const {
    switch (e.kind) {
        case Kind::Text: return static_cast<TextBox*>(e.control)->text();
        case Kind::Lines: return escapeLines(static_cast<TextBox*>(e.control)->text());
        case Kind::Check: return std::to_string(static_cast<CheckBox*>(e.control)->value());
        case Kind::Option: return setting::optionText(static_cast<OptionButton*>(e.control)->value());
        case Kind::Slider: return std::to_string(static_cast<Slider*>(e.control)->value());
        case Kind::Combo: return static_cast<ComboBox*>(e.control)->text();
        case Kind::Position: return setting::positionText(e.getPosition());
    }
    return {};
}

SettingsCommit SettingsBinder::save(SettingsStore& store, EventLog& log) const {
    SettingsEdit edit(m_fileName);
    for (const Entry& e : m_entries) edit.set(e.key, textOf(e));
    SettingsCommit result = store.commit(edit);
    if (!result.written) {
        log.error(m_window, "settings not saved: " + result.error);
        return result;
    }
    for (const std::string& key : result.keysWithLineBreaks)
        log.error(m_window, m_fileName + ": " + key + " held line breaks; saved with blanks in their place");
    for (const std::string& key : result.keysWithLostCharacters)
        log.error(m_window, m_fileName + ": " + key + " has characters Windows-1252 cannot hold; saved with '?' in their place");
    return result;
}

void ensureOneSelected(OptionGroup& group, OptionButton& fallback) {
    if (!group.selected()) fallback.setValue(true);
}

}  // namespace mv
