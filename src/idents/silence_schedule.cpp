#include "idents/silence_schedule.h"

#include <cmath>

#include "core/number_text.h"
#include "core/program.h"
#include "idents/announcement_switches.h"

namespace mv {
namespace {

// The seconds into the minute at which a slot switches.
constexpr int kSwitchSecond = 15;

bool sameNumber(const std::string& field, int value) {
    const std::optional<double> n = numberOf(field);
    return n && *n == value;
}

}  // namespace

bool scheduleMatches(const std::string& hour, const std::string& minutes, const LocalDateTime& at) {
    return at.second == kSwitchSecond && sameNumber(hour, at.hour) && sameNumber(minutes, at.minute);
}

SilenceSchedule::SilenceSchedule(Window& window, AnnouncementSwitches& switches)
    : m_window(window), m_switches(switches) {}

void SilenceSchedule::build(WindowParts parts, Container& page, SettingsBinder& binder) {
    m_showTime = &page.add(parts.make<Label>("ShowTime2", "00:00:00"));
    static const char* const kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thur", "Fri", "Sat"};
    for (int n = 1; n <= kSlots; ++n) {
        Slot& slot = m_slots[static_cast<size_t>(n - 1)];
        // Slot 1's controls carry no digit; the others carry theirs.
        const std::string digit = n == 1 ? "" : std::to_string(n);
        const std::string num = std::to_string(n);
        auto& frame = page.add(parts.make<Container>(
            "frameSchedule" + num, ContainerKind::Frame,
            "Announcement Silence Scheduler " + num + "       ( 15 Seconds Delay )"));
        auto& times = frame.add(parts.make<Container>("rowScheduleTimes" + num, ContainerKind::Row));
        auto timeField = [&](Container& box, const std::string& name) -> TextBox& {
            TextBox& field = box.add(parts.make<TextBox>(name, "99"));
            field.setDigitsOnly(true);
            field.setMaxLength(2);
            field.onChange = [&field] { field.setDigitsOnly(true); };
            return field;
        };
        // One frame per switch: "Hour : Mins", then the two fields side by side.
        auto timeFrame = [&](const std::string& key, const char* caption) -> Container& {
            auto& box = times.add(parts.make<Container>("frame" + key + num, ContainerKind::Frame, caption));
            box.add(parts.make<Label>("lbl" + key + "HourMins" + num, "Hour : Mins"));
            return box.add(parts.make<Container>("row" + key + "Time" + num, ContainerKind::Row));
        };
        Container& off = timeFrame("AnnounceOff", "Announce OFF ");
        slot.hourOff = &timeField(off, "HourOFF" + num);
        slot.minsOff = &timeField(off, "MinsOFF" + num);
        Container& on = timeFrame("AnnounceOn", "Announce ON");
        slot.hourOn = &timeField(on, "HourON" + num + "b");
        slot.minsOn = &timeField(on, "MinsON" + num + "b");
        auto& days = frame.add(parts.make<Container>("rowScheduleDays" + num, ContainerKind::Row));
        for (size_t d = 0; d < 7; ++d) slot.days[d] = &days.add(parts.make<CheckBox>(kDays[d] + digit, kDays[d]));

        for (TextBox* t : {slot.hourOff, slot.minsOff, slot.hourOn, slot.minsOn}) binder.bindText(t->name(), *t, "99");
        for (CheckBox* c : slot.days) binder.bindCheck(c->name(), *c, "0");
    }
    parts.makeTimer("Timer5", 1000, true, [this] {
        Scheduler& scheduler = m_window.program().scheduler();
        const LocalDateTime at = scheduler.wallNow();
        m_showTime->setCaption(at.timeText());
        scheduler.processPendingEvents();
        tick(at);
    });
}

void SilenceSchedule::tick(const LocalDateTime& at) {
    for (const Slot& slot : m_slots) {
        if (!slot.days[static_cast<size_t>(at.weekday())]->ticked()) continue;
        // Off before on: a slot with both at one time switches on and at once off.
        if (scheduleMatches(slot.hourOff->text(), slot.minsOff->text(), at)) m_switches.enterSilence();
        if (scheduleMatches(slot.hourOn->text(), slot.minsOn->text(), at)) m_switches.leaveSilence();
    }
}

}  // namespace mv
