#pragma once
// Stations connecting and disconnecting, said on the air: the callsign spelled
// (or a conference named) and the phrase for its kind (single station, link,
// repeater, conference), optionally followed by the time; every connect is
// also added to the window's own connection history.
#include <functional>
#include <optional>
#include <string>

#include "core/connection_history.h"
#include "core/settings_binder.h"
#include "core/window.h"

namespace mv {

class IdentWindow;
class SpokenTime;

// The conference the node knows by name, and how the voice says it.
inline constexpr const char* kSpecialConferenceSpoken = "Echo Test";

// What the voice says when `call` connects (or disconnects): nothing for a
// callsign with a suffix other than "-L" or "-R". `phrase` gives a TTS phrase
// by its key.
std::optional<std::string> stationAnnouncement(const std::string& call, bool connected,
                                                const std::string& specialName, const std::string& specialSpoken,
                                                const std::function<std::string(const char*)>& phrase);

class ConnectionAnnouncer {
public:
    ConnectionAnnouncer(IdentWindow& window, SpokenTime& time);

    // The options frame into `options` and the history frame into `history`.
    void build(WindowParts parts, Container& options, Container& history, SettingsBinder& binder);

    void onConnected(const std::string& call, const std::string& name, const std::string& address);
    void onDisconnected(const std::string& call);

    const LineLog& history() const { return m_history.list(); }

private:
    void announce(const std::string& call, bool connected);

    IdentWindow& m_window;
    SpokenTime& m_time;
    ConnectionHistory m_history;
    CheckBox* m_addTime = nullptr;
    TextBox* m_specialName = nullptr;
    TextBox* m_specialSpoken = nullptr;
};

}  // namespace mv
