#pragma once
// The transmitter's fan: switched through the DTR or RTS line of the host's
// serial port, it runs for a set number of minutes after the node transmits,
// held at its full length while the node is on the air, and optionally only
// once a transmission has lasted longer than a start delay.
#include <memory>

#include "core/period_countdown.h"
#include "core/settings_binder.h"
#include "core/window.h"

namespace mv {

class IdentWindow;

inline constexpr const char* kFanOn = "Fan ON";
inline constexpr const char* kFanOff = "Fan OFF";
inline constexpr Rgb kFanOnGreen{0, 128, 0};
inline constexpr Rgb kFanOffDarkRed{128, 0, 0};

class FanControl {
public:
    explicit FanControl(IdentWindow& window);
    ~FanControl();

    // The "DTR / RTS Control   ( Fan )" frame into `parent`; binds its options.
    void build(WindowParts parts, Container& parent, SettingsBinder& binder);
    // After the options are read: no run, no delay counting (the window has
    // dropped both lines).
    void startIdle();

    // StartFanRun: a run at its full length, or the start delay counting on.
    void startFanRun();
    // The ident window keys for speech: the start delay begins afresh.
    void keying();
    // Every 100 ms while the host transmits.
    void whileTransmitting();
    // After every keyed utterance: the selected line drops (a run raises it
    // again at its next tick).
    void dropLine();

    bool inUse() const { return m_use->ticked(); }
    Timer& runTimer() { return m_run->tickSource(); }
    Timer& delayTimer() { return m_delay->tickSource(); }

private:
    // A run at its full length from now.
    void beginRun();
    PeriodCountdownOptions::Step runStep();
    void runEnded();
    void delayEnded();
    void raiseLine();
    void show(bool on);

    IdentWindow& m_window;
    CheckBox* m_use = nullptr;
    OptionButton* m_dtr = nullptr;
    OptionButton* m_rts = nullptr;
    TextBox* m_period = nullptr;
    Label* m_onOff = nullptr;
    CheckBox* m_useDelay = nullptr;
    TextBox* m_delayPeriod = nullptr;
    Label* m_delaySeconds = nullptr;
    std::unique_ptr<PeriodCountdown> m_run;
    std::unique_ptr<PeriodCountdown> m_delay;
    bool m_clearingPeriod = false;
};

}  // namespace mv
