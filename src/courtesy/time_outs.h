#pragma once
// The RF and Internet time-outs: two minute countdowns that run only while
// their side holds the channel, each pausing the other, and that trigger the
// host's action 7 (and, if so set, disconnect every station) when a station
// talks too long. After an RF time-out "DESCANSO" shows until the channel
// falls quiet.
#include <functional>
#include <memory>

#include "core/period_countdown.h"
#include "core/window.h"
#include "courtesy/indicators.h"

namespace mv {

class TimeOuts {
public:
    explicit TimeOuts(Window& window);
    TimeOuts(const TimeOuts&) = delete;
    TimeOuts& operator=(const TimeOuts&) = delete;

    // From the window's build(): `TimeOutLabel` into `indicatorRow`, both
    // groups into `area`. `rfTimedOut` runs after an RF time-out's host action.
    void build(WindowParts parts, Container& indicatorRow, Container& area,
               const courtesy::ChannelPresence& presence, std::function<void()> rfTimedOut);
    void release();

    PeriodCountdown& rf() { return *m_rf; }
    PeriodCountdown& internet() { return *m_internet; }
    Timer& quietWatch() { return *m_quietWatch; }

private:
    // One tick's step of a side's countdown, pausing or freeing the other's.
    PeriodCountdownOptions::Step step(bool present, const CheckBox& counts, PeriodCountdown& other);
    void rfTimeOut();
    void internetTimeOut();
    void quietTick();
    void performAction();
    void disconnectAll();

    Window& m_window;
    const courtesy::ChannelPresence* m_presence = nullptr;
    std::function<void()> m_rfTimedOut;
    std::unique_ptr<PeriodCountdown> m_rf;
    std::unique_ptr<PeriodCountdown> m_internet;
    CheckBox* m_rfCounts = nullptr;           // CHECK4
    CheckBox* m_internetCounts = nullptr;     // CHECK7
    CheckBox* m_rfDisconnects = nullptr;      // CHECK6
    CheckBox* m_internetDisconnects = nullptr;  // CHECK5
    Label* m_label = nullptr;
    Timer* m_quietWatch = nullptr;  // Timer10
};

}  // namespace mv
