#pragma once
// The talking clock in the hub window: speaks the time on the hour, quarter
// and half hour, on "Say The Time", on a DTMF code and when the ident module
// asks; keeps the node connected to one conference; two DTMF codes switch
// automatic connection and station announcements on and off.
#include <memory>

#include "clock/announcement_composer.h"
#include "core/hub_window.h"
#include "core/module_surfaces.h"
#include "core/player_strip.h"

namespace mv {

class ClockWindow final : public HubWindow, public TalkingClock {
public:
    explicit ClockWindow(Program& program);
    ~ClockWindow() override;

    // Starts an announcement now, without the busy test.
    void startAnnouncement() override;
    void setReleaseCheckEnabled(bool enabled) override;

    AnnouncementComposer& composer() { return *m_composer; }
    PlayerStrip& player() { return m_player; }

    void onDTMFString(const std::string& digits) override;

protected:
    void build() override;
    void afterSettingsLoaded() override;
    void startClockTimers() override;
    void onUnload() override;

private:
    void clockTick();
    void refreshTimeFields(const LocalDateTime& now);
    void followVoice();
    void autoConnect();
    void connectButton();
    void sayTheTime();
    void playButton();
    void voiceFilesMissing(const std::string& path);
    // DTMF time code: like StartAnnouncement but always from "TheTimeIs".
    void announceFromTheTime();

    PlayerStrip m_player;
    std::unique_ptr<AnnouncementComposer> m_composer;
    Timer* m_poll = nullptr;
    Timer* m_releaseCheck = nullptr;
    // The working copy of the selected voice, written by the 100 ms follower.
    TextBox* m_fileLocation = nullptr;
    OptionButton* m_inUseWav = nullptr;
    OptionButton* m_inUseMp3 = nullptr;
};

}  // namespace mv
