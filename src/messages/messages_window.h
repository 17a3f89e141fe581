#pragma once
// The text message window ("Monitor Texto"): shows the node's chat as it
// arrives, hides messages that hold one of the operator's filter words,
// answers a version request, hands every message to the ident window to be
// read aloud, and sends what the operator types. The hub loads it the first
// time its button is pressed; it never keys the transmitter.
#include <string>
#include <vector>

#include "core/settings_binder.h"
#include "core/window.h"

namespace mv {

inline constexpr const char* kMessagesSettingsFile = "ostrevel.ini";

class MessagesWindow final : public Window {
public:
    // Lines the message log keeps: a day of busy chat, and a flood of
    // messages cannot grow the program's memory.
    static constexpr size_t kLogLines = 2000;

    explicit MessagesWindow(Program& program);

    // TXText: sends the entry (the "Envia" button and Enter in the entry).
    void sendEntry();
    // SaveData: writes "ostrevel.ini".
    void saveData();

    // The last incoming line and outgoing text built with a time stamp.
    const std::string& stampedIncoming() const { return m_stampedIncoming; }
    const std::string& stampedOutgoing() const { return m_stampedOutgoing; }

    // HostEvents
    void onChatTextReceived(const std::string& text) override;
    void onClosing() override;

protected:
    void build() override;
    void onLoad() override;
    CloseDecision onQueryClose() override;

private:
    // Whether the filter hides `text`: ".list" or a non-empty filter word
    // first found after its first character (case counts).
    static bool filtered(const std::string& text, const std::vector<std::string>& words);
    void readAloud(const std::string& text);
    std::string hourMinute();
    std::string ownCallsign();

    SettingsBinder m_binder;
    LineLog* m_log = nullptr;
    TextBox* m_entry = nullptr;
    CheckBox* m_sendTime = nullptr;
    CheckBox* m_receiveTime = nullptr;
    std::vector<TextBox*> m_filterWords;
    std::string m_stampedIncoming;
    std::string m_stampedOutgoing;
    // The node's callsign as last read from the host, for the echo of a sent
    // line when the host cannot be asked.
    std::string m_ownCall;
};

}  // namespace mv
