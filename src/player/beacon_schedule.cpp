#include "player/beacon_schedule.h"

#include <cmath>
#include <optional>

#include "core/host_link.h"
#include "core/local_time_label.h"
#include "core/number_text.h"
#include "core/program.h"

namespace mv {
namespace {

// The whole number a field spells, or nothing ("", "abc", "7.5").
std::optional<int> wholeNumber(std::string_view text) {
    const std::optional<double> n = numberOf(text);
    if (!n || *n != std::floor(*n) || std::fabs(*n) > 1e6) return std::nullopt;
    return static_cast<int>(*n);
}

}  // namespace

bool BeaconSchedule::namesSecond(std::string_view field, int second) {
    const std::optional<int> n = wholeNumber(field);
    return n && *n >= 1 && *n <= 59 && *n == second;
}

bool BeaconSchedule::namesMinute(std::string_view field, int minute) {
    const std::optional<int> n = wholeNumber(field);
    return n && *n >= 0 && *n <= 59 && *n == minute;
}

BeaconSchedule::BeaconSchedule(WindowParts parts, Container& area, std::function<void()> playSelection)
    : m_window(parts.window()), m_play(std::move(playSelection)) {
    buildPeriodic(parts, area);
    addLocalTimeLabel(parts, area.add(parts.make<Container>("localClock", ContainerKind::Row)), "LocalTime",
                      "Hora Local");
    buildClockBeacons(parts, area);
    buildMinuteBeacon(parts, area);
    parts.makeTimer("Timer5", 1000, true, [this] { clockTick(); });
}

void BeaconSchedule::buildPeriodic(WindowParts& parts, Container& area) {
    auto& row = area.add(parts.make<Container>("periodicBeacon", ContainerKind::Row));
    auto& enable = row.add(parts.make<CheckBox>("StopClock1", "Usar Cada (Minutos)", 0));
    // Design values; the settings replace both as the window loads.
    auto& period = row.add(parts.make<TextBox>("BeaconPeriod1", ".1"));
    auto& left = row.add(parts.make<Label>("BeaconSeconds1", "15"));
    PeriodCountdownOptions o;
    o.timerName = "Beacon1";
    m_periodic = std::make_unique<PeriodCountdown>(parts, period, left, &enable, std::move(o), [this] { m_play(); });
}

void BeaconSchedule::buildClockBeacons(WindowParts& parts, Container& area) {
    auto& frame = area.add(parts.make<Container>("frameClockBeacons", ContainerKind::Frame, "Baliza Horas +         Sec"));
    m_seconds = &frame.add(parts.make<TextBox>("TEXT5", "15"));
    m_onHour = &frame.add(parts.make<CheckBox>("ONHOUR", "Hora", 0));
    m_quarters = &frame.add(parts.make<CheckBox>("QUARTERHOUR", "Cuartos de Horas", 0));
    m_halfHour = &frame.add(parts.make<CheckBox>("HALFHOUR", "Medias Horas", 0));
}

void BeaconSchedule::buildMinuteBeacon(WindowParts& parts, Container& area) {
    auto& frame = area.add(
        parts.make<Container>("frameMinuteBeacon", ContainerKind::Frame, "Minutos m\xC3\xA1s all\xC3\xA1 de la hora"));
    m_minuteBox = &frame.add(parts.make<CheckBox>("STOPCLOCK3", "Use", 0));
    m_minute = &frame.add(parts.make<TextBox>("BeaconPeriod3", "15"));
    m_minute->setDigitsOnly(true);
    m_minute->setToolTip("Ejemplo 07 o 01");
    frame.add(parts.make<Label>("lblMinuteExample", "Ejemplo 07 o 01"));
}

void BeaconSchedule::settleSeconds() {
    const std::optional<double> n = numberOf(m_seconds->text());
    if (n && *n > 59)
        m_seconds->setText("59");
    else if (!n || *n < 1)  // also an emptied field, or letters
        m_seconds->setText("1");
}

void BeaconSchedule::clockTick() {
    Scheduler& scheduler = m_window.program().scheduler();
    scheduler.processPendingEvents();
    // This tick compares with the text it found, even when that is pulled
    // back into range now; the corrected value counts from the next tick.
    const std::string held = m_seconds->text();
    settleSeconds();
    // Inside a timer's handler the wall clock reads this tick's own second,
    // so every beacon below sees the same time.
    fireDue(scheduler.wallNow(), held);
}

void BeaconSchedule::fireDue(const LocalDateTime& now, std::string_view heldSeconds) {
    // Only boxes that are ticked (1) fire; a greyed box (2) does not.
    const bool minuteBeacon = m_minuteBox->value() == 1 && now.second == 0 && namesMinute(m_minute->text(), now.minute);
    const bool atSecond = namesSecond(heldSeconds, now.second);
    const bool hour = atSecond && now.minute == 0 && m_onHour->value() == 1;
    const bool quarter = atSecond && (now.minute == 15 || now.minute == 45) && m_quarters->value() == 1;
    const bool half = atSecond && now.minute == 30 && m_halfHour->value() == 1;
    if (!minuteBeacon && !hour && !quarter && !half) return;
    // The channel is asked about only when a beacon is due: a beacon held
    // back by a carrier, a station or the busy flag is lost, not made up later.
    if (channelBusy(m_window.host())) return;
    for (bool due : {minuteBeacon, hour, quarter, half})
        if (due) m_play();
}

}  // namespace mv
