#pragma once
// The weekly schedule of silence mode: three slots, each with a time that
// starts silence, a time that ends it and the days of the week it acts on.
// A slot switches 15 seconds after its minute, once, in the second that
// matches; a second the clock does not tick in is not caught up.
#include <array>

#include "core/local_time.h"
#include "core/settings_binder.h"
#include "core/window.h"

namespace mv {

class AnnouncementSwitches;

// Whether `hour` and `minutes`, as typed in a slot's fields, name the minute
// `at` is in, with `at` 15 seconds into it. The fields are read as numbers,
// so "7" and "07" are the same hour; "99", an empty field or anything that is
// no time never matches.
bool scheduleMatches(const std::string& hour, const std::string& minutes, const LocalDateTime& at);

class SilenceSchedule {
public:
    static constexpr int kSlots = 3;

    SilenceSchedule(Window& window, AnnouncementSwitches& switches);

    // The three slot frames and the time label into `page`; binds their fields.
    void build(WindowParts parts, Container& page, SettingsBinder& binder);

    // Timer5: one second of the schedule, with that second's reading.
    void tick(const LocalDateTime& at);

private:
    struct Slot {
        TextBox* hourOff = nullptr;
        TextBox* minsOff = nullptr;
        TextBox* hourOn = nullptr;
        TextBox* minsOn = nullptr;
        // Sunday first, as LocalDateTime::weekday counts.
        std::array<CheckBox*, 7> days{};
    };

    Window& m_window;
    AnnouncementSwitches& m_switches;
    std::array<Slot, kSlots> m_slots;
    Label* m_showTime = nullptr;
};

}  // namespace mv
