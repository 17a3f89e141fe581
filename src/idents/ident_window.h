#pragma once
// The ident window: keeps the suite's one speech voice and offers it to the
// other windows (its speech desk), identifies the station by voice and by
// Morse code, announces connections, keeps silence mode and its weekly
// schedule, speaks information texts, runs the fan and sends its own courtesy
// letters, all driven by a one-second clock. Each of these is a component the
// window owns; the window itself holds what they share (its host object, its
// PTT indicator, the channel-busy flag), its options file "brackwen.ini", its
// close prompt and host closing.
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
class SpokenTime;
class ConnectionAnnouncer;
class AnnouncementSwitches;
class SilenceSchedule;
class FanControl;
class InformationTexts;
class ClockShortcuts;
class CourtesyLetters;

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
    SpokenTime& spokenTime() { return *m_time; }
    ConnectionAnnouncer& connections() { return *m_connections; }
    AnnouncementSwitches& switches() { return *m_switches; }
    FanControl& fan() { return *m_fan; }
    InformationTexts& information() { return *m_information; }
    CourtesyLetters& courtesy() { return *m_courtesy; }

    // HostEvents
    void onRX(bool receiving) override;
    void onCarrierDetect(bool carrier) override;
    void onConnected(const std::string& call, const std::string& name, const std::string& address) override;
    void onDisconnected(const std::string& call) override;
    void onDTMFString(const std::string& digits) override;
    void onClosing() override;

protected:
    void build() override;
    void onLoad() override;
    void onUnload() override;
    CloseDecision onQueryClose() override;

private:
    void buildAnnouncements(Container& page);
    // Timer4: the indicator follows the host's transmitter, and a
    // transmission keeps the fan's run at its full length.
    void followTransmitter();
    // Unkeys and drops both serial lines, whatever fails.
    void releaseEverything();

    SettingsBinder m_binder;
    std::unique_ptr<SpeechEngine> m_speech;
    std::unique_ptr<StationIdent> m_ident;
    std::unique_ptr<IdentClock> m_clock;
    std::unique_ptr<SpeechEditor> m_editor;
    std::unique_ptr<SpokenTime> m_time;
    std::unique_ptr<ConnectionAnnouncer> m_connections;
    std::unique_ptr<AnnouncementSwitches> m_switches;
    std::unique_ptr<SilenceSchedule> m_schedule;
    std::unique_ptr<FanControl> m_fan;
    std::unique_ptr<InformationTexts> m_information;
    std::unique_ptr<ClockShortcuts> m_shortcuts;
    std::unique_ptr<CourtesyLetters> m_courtesy;
    Label* m_ptt = nullptr;
    bool m_channelBusy = false;
};

}  // namespace mv
