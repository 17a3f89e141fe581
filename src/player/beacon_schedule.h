#pragma once
// The player window's beacons: the periodic beacon (a countdown of so many
// minutes), the clock beacons at a chosen second past the hour, the quarters
// and the half hour, the minute beacon once an hour, and the local clock.
// Every beacon plays the window's selection. The clock and minute beacons
// hold back while the channel is in use; the periodic one does not.
#include <functional>
#include <memory>
#include <string_view>

#include "core/period_countdown.h"
#include "core/window.h"

namespace mv {

struct LocalDateTime;

class BeaconSchedule {
public:
    // Builds the beacon controls inside `area` and starts the clock tick.
    BeaconSchedule(WindowParts parts, Container& area, std::function<void()> playSelection);

    // Timer5: the seconds field's range, then, with the channel free, the
    // minute, hour, quarter and half-hour beacons.
    void clockTick();
    PeriodCountdown& periodic() { return *m_periodic; }

    // Whether a beacon field names this second or minute. The fields are
    // compared as numbers, so "05" and "5" both name 5; text that spells no
    // whole number names nothing.
    static bool namesSecond(std::string_view field, int second);
    static bool namesMinute(std::string_view field, int minute);

private:
    void buildPeriodic(WindowParts& parts, Container& area);
    void buildClockBeacons(WindowParts& parts, Container& area);
    void buildMinuteBeacon(WindowParts& parts, Container& area);
    // The seconds field pulled back into 1..59; it spells no number: "1".
    void settleSeconds();
    void fireDue(const LocalDateTime& now, std::string_view heldSeconds);

    Window& m_window;
    std::function<void()> m_play;
    std::unique_ptr<PeriodCountdown> m_periodic;
    TextBox* m_seconds = nullptr;      // TEXT5
    CheckBox* m_onHour = nullptr;      // ONHOUR "Hora"
    CheckBox* m_quarters = nullptr;    // QUARTERHOUR "Cuartos de Horas"
    CheckBox* m_halfHour = nullptr;    // HALFHOUR "Medias Horas"
    CheckBox* m_minuteBox = nullptr;   // STOPCLOCK3 "Use"
    TextBox* m_minute = nullptr;       // BEACONPERIOD3
};

}  // namespace mv
