#pragma once
// What stations switch over the air with DTMF codes: silence mode on and off
// (with an optional spoken and chat notice), the reading of text messages,
// and the spoken time on request. Silence mode is "Disable Announcements";
// the weekly schedule switches it through here too.
#include <string>

#include "core/settings_binder.h"
#include "core/window.h"

namespace mv {

class IdentWindow;
class SpokenTime;

// The chat notices that follow the date and time when silence mode starts and ends.
inline constexpr const char* kSilenceStartNotice = "  <Abierto modo Silencio>";
inline constexpr const char* kSilenceEndNotice = "  <Cerrado modo Silencio>";

class AnnouncementSwitches {
public:
    AnnouncementSwitches(IdentWindow& window, SpokenTime& time);

    // The "Anuncios" frame (reading of text messages) and the "DTMF
    // Announcements" frame (silence codes and the warning box) into `row`.
    void build(WindowParts parts, Container& row, SettingsBinder& binder);

    void onDTMFString(const std::string& digits);
    // Silence mode on. With "Warn About Silence Mode" the start notice is
    // queued and sent as chat, and silence begins once the notice has been
    // spoken, so the stations hear it; without, silence begins at once.
    void enterSilence();
    // Silence mode off at once, then the end notice when warned.
    void leaveSilence();
    // Each second, after queued speech had its chance: a silence waiting for
    // its notice begins once the notice is no longer pending.
    void secondTick();

    bool silenceAwaitsNotice() const { return m_silenceAfterNotice; }

private:
    void warn(const char* phraseKey, const char* chatNotice);
    // The DTMF control window's time-request code, when its "Usar" box is ticked.
    bool isTimeRequest(const std::string& digits) const;

    IdentWindow& m_window;
    SpokenTime& m_time;
    CheckBox* m_sayText = nullptr;
    TextBox* m_toggleText = nullptr;
    CheckBox* m_warn = nullptr;
    TextBox* m_announceOff = nullptr;
    TextBox* m_announceOn = nullptr;
    bool m_silenceAfterNotice = false;
};

}  // namespace mv
