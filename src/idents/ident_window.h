#pragma once
// The ident window: keeps the suite's one speech voice and offers it to the
// other windows (its speech desk), identifies the station by voice and by
// Morse code, and runs the one-second clock that hands queued speech to the
// voice. Each of these is a component the window owns; the window itself
// holds what they share (its host object, its PTT indicator, the channel-busy
// flag), its options file "brackwen.ini", its close prompt and host closing.
#include <memory>
#include <string>

#include "core/module_surfaces.h"
#include "core/settings_binder.h"
#include "core/window.h"

namespace mv {

class SpeechEngine;
class StationIdent;
class IdentClock;
class SpeechEditor;

inline constexpr const char* kIdentSettingsFile = "brackwen.ini";
// The process-wide wait for a busy host, which this window restates in its timers.
inline constexpr int64_t kHostBusyWaitMs = 900000;

class IdentWindow final : public Window, public SpeechDesk {
public:
    explicit IdentWindow(Program& program);
    ~IdentWindow() override;

    // SpeechDesk
    void setSpeechText(const std::string& text) override;
    const std::string& speechText() const override;
    void setSpeechPending(bool pending) override;
    bool speechPending() const override;
    void setSkipSpeechDelay(bool skip) override;
    void speakTheText() override;

    // SaveData: writes the operator's options to "brackwen.ini".
    void saveData();

    // What the components share.
    Label& ptt() { return *m_ptt; }
    // 1 while a station is heard (an Internet station or the local carrier).
    bool channelBusyFlag() const { return m_channelBusy; }
    void restateHostWait();
    SpeechEngine& speech() { return *m_speech; }
    StationIdent& ident() { return *m_ident; }

    // HostEvents
    void onRX(bool receiving) override;
    void onCarrierDetect(bool carrier) override;
    void onClosing() override;

protected:
    void build() override;
    void onLoad() override;
    void onUnload() override;
    CloseDecision onQueryClose() override;

private:
    void buildAnnouncements(Container& page);
    // Timer4: the indicator follows the host's transmitter.
    void followTransmitter();
    // Unkeys and drops both serial lines, whatever fails.
    void releaseEverything();

    SettingsBinder m_binder;
    std::unique_ptr<SpeechEngine> m_speech;
    std::unique_ptr<StationIdent> m_ident;
    std::unique_ptr<IdentClock> m_clock;
    std::unique_ptr<SpeechEditor> m_editor;
    Label* m_ptt = nullptr;
    bool m_channelBusy = false;
};

}  // namespace mv
