#pragma once
// The hub: the window that opens first, holds the talking clock's controls and
// settings ("Quillasp2.ini"), loads every other module window at start-up,
// shows them from its buttons, answers the chat version request, and carries
// the quit prompt and the reaction to the host closing. The clock's own work
// (composing and scheduling the spoken time) lives in a subclass.
#include <map>
#include <string>
#include <vector>

#include "core/settings_binder.h"
#include "core/window.h"

namespace mv {

inline constexpr const char* kClockSettingsFile = "Quillasp2.ini";
// The conference the node keeps connected to unless the operator names another;
// the ident window also knows it by name.
inline constexpr const char* kDefaultConference = "*ECHOTEST*";

class HubWindow : public Window {
public:
    explicit HubWindow(Program& program);

    // SaveData: writes every clock key, in the clock's write order.
    void saveData();
    // The caption fields of the "Lenguaje" tab and what each relabels.
    struct CaptionField {
        std::string key;
        std::string defaultText;
        std::string spanishLabel;
    };
    static const std::vector<CaptionField>& captionFields();
    // The module windows the hub loads at start-up, in order.
    static const std::vector<std::string>& startupWindows();

    void setPtt(bool on);

    // HostEvents
    void onChatTextReceived(const std::string& text) override;
    void onClosing() override;

protected:
    void build() override;
    void onLoad() override;
    CloseDecision onQueryClose() override;

    // Hooks for the clock: after the settings are read (start-up step 6), and
    // when the hub's timers start (step 8).
    virtual void afterSettingsLoaded() {}
    virtual void startClockTimers() {}
    // The container the clock fills with its player strip.
    Container& playerStripArea() { return *m_playerStripArea; }

    // Controls the clock works with.
    Label* m_ptt = nullptr;
    Label* m_ptt2 = nullptr;
    Label* m_showTheTime = nullptr;
    TextBox* m_hh = nullptr;
    TextBox* m_mm = nullptr;
    TextBox* m_amPm = nullptr;
    Slider* m_volume = nullptr;
    TextBox* m_volSet = nullptr;
    Button* m_sayTheTime = nullptr;
    Button* m_connectButton = nullptr;
    std::vector<TextBox*> m_voiceFolders;          // TEXT4..TEXT8
    std::vector<OptionButton*> m_voiceSelectors;   // OPTION3, 4, 7, 8, 10
    std::vector<OptionButton*> m_voiceWav;         // each voice's "wav" button
    std::vector<OptionButton*> m_voiceMp3;         // each voice's "mp3" button

private:
    void buildConfigurationTab(Container& page);
    void buildFilesTab(Container& page);
    void buildLanguageTab(Container& page);
    void buildHubButtons(Container& row);
    void bindSettings();
    void refreshCaptions();
    void mirrorTransmitter();
    void showModule(const std::string& windowName);

    SettingsBinder m_binder;
    Container* m_playerStripArea = nullptr;
    // Marks `element` as relabelled by the caption field `key` (TEXT9..TEXT36).
    void relabelledBy(const std::string& key, Control& element) { m_relabelTargets[key].push_back(&element); }

    // Each caption field's key and the elements it relabels, gathered while
    // the tabs are built; paired with the fields once the "Lenguaje" tab exists.
    std::map<std::string, std::vector<Control*>> m_relabelTargets;
    std::vector<std::pair<TextBox*, std::vector<Control*>>> m_relabels;
    std::vector<std::pair<Button*, std::string>> m_moduleButtons;
    std::vector<std::pair<OptionGroup*, OptionButton*>> m_groupFallbacks;
};

}  // namespace mv
