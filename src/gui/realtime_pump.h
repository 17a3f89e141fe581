#pragma once
// Runs the engine's scheduler on the Qt main thread in real time: one
// single-shot timer armed for the next due item, re-armed after each dispatch
// and whenever something is queued, and idle (no wake-ups) when nothing is.
// While a handler blocks (a keyed utterance), the windows keep painting but
// no input is taken and nothing of the engine is dispatched.
#include <QTimer>
#include <cstdint>

namespace mv {

class Scheduler;

class RealTimePump {
public:
    explicit RealTimePump(Scheduler& scheduler);
    ~RealTimePump();
    RealTimePump(const RealTimePump&) = delete;
    RealTimePump& operator=(const RealTimePump&) = delete;

    // Arms the timer for the next due item if that is sooner than it is armed
    // for now. Also called before a nested event loop (a modal dialog) opens.
    void wake();
    // True while the timer waits; the delay it was last armed with.
    bool armed() const { return m_timer.isActive(); }
    int armedDelayMs() const { return m_armedDelay; }
    // Runs what is due now, then re-arms (what the timer does when it fires).
    void dispatchDue();
    bool blocking() const { return m_blocking > 0; }

private:
    void arm(bool onlyIfSooner);
    void blockStep(int64_t msLeft);

    Scheduler& m_scheduler;
    QTimer m_timer;
    int m_armedDelay = -1;
    int m_blocking = 0;
};

}  // namespace mv
