#include "gui/realtime_pump.h"

#include <QCoreApplication>
#include <QThread>
#include <algorithm>
#include <climits>

#include "core/errors.h"
#include "core/scheduler.h"

namespace mv {

RealTimePump::RealTimePump(Scheduler& scheduler) : m_scheduler(scheduler) {
    m_timer.setSingleShot(true);
    // Window timers run down to 1 ms; a coarse timer would bunch them up.
    m_timer.setTimerType(Qt::PreciseTimer);
    QObject::connect(&m_timer, &QTimer::timeout, [this] { dispatchDue(); });
    m_scheduler.setWakeHook([this] { wake(); });
    // On the real clock, timers that start apart wake the desktop together.
    m_scheduler.setShareWakeups(!m_scheduler.clock().isVirtual());
    m_scheduler.setBlockHook([this](int64_t msLeft) { blockStep(msLeft); });
}

RealTimePump::~RealTimePump() {
    m_scheduler.setWakeHook(nullptr);
    m_scheduler.setBlockHook(nullptr);
}

void RealTimePump::wake() { arm(true); }

void RealTimePump::arm(bool onlyIfSooner) {
    const int64_t next = m_scheduler.stopped() ? -1 : m_scheduler.nextDueTime();
    if (next < 0) {
        if (!onlyIfSooner) {
            m_timer.stop();
            m_armedDelay = -1;
        }
        return;
    }
    const int delay = static_cast<int>(std::clamp<int64_t>(next - m_scheduler.now(), 0, INT_MAX));
    if (onlyIfSooner && m_timer.isActive() && m_timer.remainingTime() <= delay) return;
    m_armedDelay = delay;
    m_timer.start(delay);
}

void RealTimePump::dispatchDue() {
    // A block in progress lower on the stack: nothing runs until it ends; the
    // dispatch that holds the block re-arms afterwards.
    if (m_blocking > 0) return;
    try {
        m_scheduler.runDue();
    } catch (const ProgramEnded&) {
        // Passed up from a nested dispatch (inside a modal dialog); the program
        // has ended and the event loops are quitting.
    }
    arm(false);
}

void RealTimePump::blockStep(int64_t msLeft) {
    ++m_blocking;
    QCoreApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
    --m_blocking;
    QThread::msleep(static_cast<unsigned long>(std::clamp<int64_t>(msLeft, 0, 10)));
}

}  // namespace mv
