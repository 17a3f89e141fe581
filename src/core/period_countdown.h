#pragma once
// A period the operator types, the seconds left shown beside it, an enable
// box that pauses the count, and a one-second tick that counts down and runs
// the owner's action at zero. The beacons, the idents, the information text,
// the DTMF re-open and the long-transmission counters are all this one
// component; they differ only in the options below. The seconds label's text
// is the count's state: there is no separate counter.
#include <functional>
#include <string>

#include "core/controls.h"
#include "core/window.h"

namespace mv {

struct PeriodCountdownOptions {
    // The tick source's name (the window's timer: "Beacon1", "Beacon6" ...).
    std::string timerName;
    bool tickRunningAtStart = true;
    // Seconds in one unit of the period: 60 for minutes, 1 for seconds.
    int secondsPerUnit = 60;
    // What a period field becomes when it is emptied or spells zero ("0",
    // "00", or text that spells no number at all): "0" stops the count, "1"
    // keeps a one-unit period.
    std::string emptiedPeriod = "0";
    // Editing the period starts the tick source (a period above zero) or
    // stops it (an emptied or zero period).
    bool editStartsOrStopsTick = true;
    // What an edit does to the count.
    enum class OnEdit {
        RestartFull,     // seconds left := the whole period
        ShowPeriodText,  // seconds left := the period field's text, as typed
        Keep,            // the count is left where it is
    };
    OnEdit onEdit = OnEdit::RestartFull;
    // Each tick first puts a period of "0" back to "1".
    bool zeroPeriodBecomesOneAtTick = false;
    // Each tick first lets the window's pending messages run. Off for two
    // countdowns that pause each other by stopping each other's tick source:
    // a tick that ran the other one's due tick inside itself could leave both
    // stopped for good.
    bool letPendingEventsRunFirst = true;

    // What one tick does with the count. Without one, the count falls while
    // the enable box reads anything but 0 and holds otherwise.
    enum class Step {
        Count,  // one second less
        Hold,   // stays where it is
        Reset,  // back to the whole period
        Skip,   // the tick does nothing at all, not even the test for zero
    };
    std::function<Step()> step;
    // Run at the start of each tick, after pending events (a window that
    // restates the host's wait policy there), and at its end.
    std::function<void()> beforeTick;
    std::function<void()> afterTick;
};

class PeriodCountdown {
public:
    // `enable` may be null when the options give their own step rule.
    PeriodCountdown(WindowParts parts, TextBox& period, Label& secondsLeft, CheckBox* enable,
                    PeriodCountdownOptions options, std::function<void()> action);
    PeriodCountdown(const PeriodCountdown&) = delete;
    PeriodCountdown& operator=(const PeriodCountdown&) = delete;

    // OnPeriodChanged: wired to the period field's change handler; callable
    // directly by an owner that chains its own handler.
    void onPeriodChanged();
    // OnTick: one tick, as the tick source runs it.
    void onTick();

    // The whole period in seconds (0 for an emptied or zero period).
    long long fullSeconds() const;
    // Seconds left := the whole period.
    void restart();
    bool reachedZero() const { return m_secondsLeft.caption() == "0"; }

    Timer& tickSource() { return *m_timer; }
    TextBox& periodField() { return m_period; }
    Label& secondsLabel() { return m_secondsLeft; }

private:
    Scheduler& m_scheduler;
    TextBox& m_period;
    Label& m_secondsLeft;
    CheckBox* m_enable;
    PeriodCountdownOptions m_options;
    std::function<void()> m_action;
    Timer* m_timer = nullptr;
};

}  // namespace mv
