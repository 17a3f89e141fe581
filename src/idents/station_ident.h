#pragma once
// Station identification: a voice ident queued for the speech voice and a
// Morse ident handed to the host, each on its own countdown, and the idle
// stop that halts both when the node has been quiet for a while (the
// one-second clock starts them again on the first activity). Morse idents due
// while a local station talks wait for the node's next transmission.
#include <memory>
#include <string>

#include "core/period_countdown.h"
#include "core/settings_binder.h"
#include "core/window.h"

namespace mv {

class IdentWindow;

// Spells a callsign for speech: every character followed by one blank
// ("EA4" becomes "E A 4 "). Characters, not bytes: an accented letter stays whole.
std::string splitCall(const std::string& call);
// How many characters (not bytes) a UTF-8 text holds, as the length labels show it.
size_t characterCount(const std::string& text);

class StationIdent {
public:
    explicit StationIdent(IdentWindow& window);
    ~StationIdent();

    // The voice ident, CW ident and idle stop frames on `page`; binds their options.
    void build(WindowParts parts, Container& page, SettingsBinder& binder);
    // After the options are loaded the countdowns start as on a fresh start.
    void startCounting();

    // Each second, from the one-second clock: Beacon7 stops while an Internet
    // station is heard and otherwise runs when Beacon6 does.
    void followReception(bool receiving);
    // Each second: any activity starts both idents and the idle stop again
    // (the Morse ident only once no Internet station is heard).
    void restartOnActivity(bool receiving);

    bool cwPending() const { return m_cwPending; }
    TextBox& callsign() { return *m_callsign; }
    Label& callsignLength() { return *m_callsignLength; }
    Timer& voiceTimer() { return m_voice->tickSource(); }
    Timer& cwTimer() { return m_cw->tickSource(); }
    Timer& idleTimer() { return m_idle->tickSource(); }

private:
    void buildVoice(WindowParts parts, Container& frame, SettingsBinder& binder);
    void buildCw(WindowParts parts, Container& frame, SettingsBinder& binder);
    void buildIdle(WindowParts parts, Container& frame, SettingsBinder& binder);

    void voiceIdentDue();
    void cwIdentDue();
    void sendDeferredCw();
    void idleTimeUp();
    void afterIdleTick();
    void pttCallNow();
    void sayCallNow();
    void sendId();

    IdentWindow& m_window;
    TextBox* m_callsign = nullptr;
    Label* m_callsignLength = nullptr;
    TextBox* m_cwCallsign = nullptr;
    CheckBox* m_idleCheck = nullptr;
    std::unique_ptr<PeriodCountdown> m_voice;
    std::unique_ptr<PeriodCountdown> m_cw;
    std::unique_ptr<PeriodCountdown> m_idle;
    // A Morse ident fell due while the local receiver was busy.
    bool m_cwPending = false;
    bool m_idleRanOut = false;
};

}  // namespace mv
