#pragma once
// The time of day in words for the speech voice: the short phrase queued after
// a connection announcement and the longer one a station asks for, in the
// 12- or 24-hour form the "Say The Time TTS" frame selects, and that frame's
// boxes, which queue the time at quarter past, half past and on the hour.
#include <string>

#include "core/local_time.h"
#include "core/settings_binder.h"
#include "core/window.h"

namespace mv {

class IdentWindow;

// `lead` followed by the time: "9 05  PM" (12-hour: hour without a leading
// zero, `amPmGap` blanks, AM or PM) or "21 05" (24-hour, two digits each).
// No blank goes between `lead` and the hour.
std::string timePhrase(const std::string& lead, const LocalDateTime& at, bool twelveHour, int amPmGap);

// Whether `at` is a fixed time for texts ticked to be said 15 seconds past
// the hour (hh:00:15), the half hour (hh:30:15) or the quarters (hh:15:15,
// hh:45:15). Minutes and seconds are compared as numbers.
bool fixedTimeDue(const LocalDateTime& at, bool hourly, bool halfHour, bool quarters);

class SpokenTime {
public:
    explicit SpokenTime(IdentWindow& window);

    // The "Say The Time TTS" frame into `parent`; binds its options.
    void build(WindowParts parts, Container& parent, SettingsBinder& binder);

    bool twelveHour() const { return m_twelve->value(); }
    // TheTimeBit: the AT phrase and the time, queued to follow an
    // announcement at once, without the TTS delay.
    void theTimeBit();
    // The THETIMEIS phrase and the time, queued like any announcement.
    void queueTimeOfDay();
    // Each second, with that second's reading: the frame's boxes queue the
    // time at hh:00:15, hh:30:15 and hh:15:15 / hh:45:15.
    void atSecond(const LocalDateTime& at);

private:
    IdentWindow& m_window;
    OptionButton* m_twelve = nullptr;
    CheckBox* m_onHour = nullptr;
    CheckBox* m_onHalf = nullptr;
    CheckBox* m_onQuarter = nullptr;
};

}  // namespace mv
