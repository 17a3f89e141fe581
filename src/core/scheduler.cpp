#include "core/scheduler.h"

#include <chrono>
#include <thread>

#include "core/errors.h"

namespace mv {

Scheduler::Scheduler(Clock& clock) : m_clock(clock) {}

Scheduler::~Scheduler() {
    for (Timer* t : m_timers)
        if (t) t->m_slot = UINT32_MAX;
}

LocalDateTime Scheduler::wallNow() const {
    return m_clock.localTimeAt(m_tickDue >= 0 ? m_tickDue : now());
}

void Scheduler::post(std::function<void()> message) {
    m_messages.push_back(Message{now(), m_seq++, std::move(message)});
    if (m_wakeHook) m_wakeHook();
}

uint32_t Scheduler::registerTimer(Timer* timer) {
    if (!m_freeSlots.empty()) {
        const uint32_t slot = m_freeSlots.back();
        m_freeSlots.pop_back();
        m_timers[slot] = timer;
        return slot;
    }
    m_timers.push_back(timer);
    return static_cast<uint32_t>(m_timers.size() - 1);
}

void Scheduler::unregisterTimer(uint32_t slot) {
    if (slot >= m_timers.size()) return;
    m_timers[slot] = nullptr;
    m_freeSlots.push_back(slot);
}

void Scheduler::scheduleTimer(Timer& timer, int64_t due) {
    m_timerQueue.push(TimerEntry{due, m_seq++, timer.m_slot, timer.m_generation});
}

int64_t Scheduler::onGrid(int64_t due, int64_t interval) const {
    if (!m_shareWakeups) return due;
    const int64_t grain = interval % 100 == 0 ? 100 : interval % 10 == 0 ? 10 : 1;
    return (due + grain - 1) / grain * grain;
}

void Scheduler::dropStale() {
    while (!m_timerQueue.empty()) {
        const TimerEntry& e = m_timerQueue.top();
        const Timer* t = e.slot < m_timers.size() ? m_timers[e.slot] : nullptr;
        if (t && t->m_generation == e.generation && t->running()) return;
        m_timerQueue.pop();
    }
}

int64_t Scheduler::nextDueTime() {
    dropStale();
    int64_t due = -1;
    if (!m_timerQueue.empty()) due = m_timerQueue.top().due;
    if (!m_messages.empty() && (due < 0 || m_messages.front().due < due)) due = m_messages.front().due;
    return due;
}

void Scheduler::runGuarded(const std::function<void()>& fn) {
    ++m_depth;
    try {
        fn();
    } catch (const ProgramEnded&) {
        m_stopped = true;
        --m_depth;
        // A nested dispatch (processPendingEvents inside a handler) passes the
        // end on, so the outer handler stops too.
        if (m_depth > 0) throw;
        return;
    } catch (const HostError& e) {
        // A failed host call is in the log already, with its window and call
        // (or counted there, when the host keeps failing): not twice.
        if (!e.logged() && m_errorSink) m_errorSink(e.what());
    } catch (const std::exception& e) {
        if (m_errorSink) m_errorSink(e.what());
    } catch (...) {
        if (m_errorSink) m_errorSink("unknown error in a handler");
    }
    --m_depth;
}

void Scheduler::dispatchTimer(const TimerEntry& entry) {
    Timer* timer = m_timers[entry.slot];
    if (timer->m_inHandler) {
        // Never re-enter a timer; it fires once (late) after its handler ends.
        timer->m_missedWhileRunning = true;
        return;
    }
    const int64_t interval = timer->m_interval;
    const int64_t current = now();
    int64_t due = entry.due;
    if (current - due >= interval) due += ((current - due) / interval) * interval;
    scheduleTimer(*timer, due + interval);

    const int64_t savedTickDue = m_tickDue;
    const uint32_t slot = entry.slot;
    const uint32_t generation = timer->m_generation;
    m_tickDue = due;
    timer->m_inHandler = true;
    ++m_ticksDispatched;
    struct Restore {
        Scheduler& s;
        uint32_t slot;
        Timer* timer;
        int64_t saved;
        ~Restore() {
            s.m_tickDue = saved;
            if (slot < s.m_timers.size() && s.m_timers[slot] == timer) timer->m_inHandler = false;
        }
    } restore{*this, slot, timer, savedTickDue};
    if (const std::shared_ptr<std::function<void()>> handler = timer->m_onTick; handler && *handler)
        runGuarded(*handler);
    // The handler may have destroyed the timer (its window unloaded).
    if (slot < m_timers.size() && m_timers[slot] == timer && timer->m_missedWhileRunning) {
        timer->m_missedWhileRunning = false;
        if (timer->m_generation == generation && timer->running()) {
            timer->m_generation++;
            scheduleTimer(*timer, onGrid(now(), timer->m_interval));
        }
    }
}

bool Scheduler::dispatchOne(int64_t limit, bool advanceClock) {
    if (m_stopped) return false;
    dropStale();
    const bool haveTimer = !m_timerQueue.empty();
    const bool haveMessage = !m_messages.empty();
    if (!haveTimer && !haveMessage) return false;
    bool takeTimer = haveTimer;
    if (haveTimer && haveMessage) {
        const TimerEntry& t = m_timerQueue.top();
        const Message& m = m_messages.front();
        takeTimer = t.due != m.due ? t.due < m.due : t.seq < m.seq;
    }
    const int64_t due = takeTimer ? m_timerQueue.top().due : m_messages.front().due;
    if (due > limit) return false;
    if (advanceClock) m_clock.advanceTo(due);
    if (takeTimer) {
        const TimerEntry entry = m_timerQueue.top();
        m_timerQueue.pop();
        dispatchTimer(entry);
    } else {
        std::function<void()> run = std::move(m_messages.front().run);
        m_messages.pop_front();
        const int64_t savedTickDue = m_tickDue;
        m_tickDue = -1;
        ++m_messagesDispatched;
        runGuarded(run);
        m_tickDue = savedTickDue;
    }
    return true;
}

void Scheduler::processPendingEvents() {
    const int64_t limit = now();
    while (dispatchOne(limit, false)) {
    }
}

void Scheduler::runUntil(int64_t untilMs) {
    while (dispatchOne(untilMs, true)) {
    }
    if (!m_stopped) m_clock.advanceTo(untilMs);
}

int64_t Scheduler::runDue() {
    while (dispatchOne(now(), false)) {
    }
    return m_stopped ? -1 : nextDueTime();
}

void Scheduler::block(int64_t durationMs) {
    if (durationMs <= 0) return;
    if (m_clock.isVirtual()) {
        m_clock.advanceTo(now() + durationMs);
        return;
    }
    const int64_t deadline = now() + durationMs;
    for (int64_t left = durationMs; left > 0; left = deadline - now()) {
        if (m_blockHook)
            m_blockHook(left);
        else
            std::this_thread::sleep_for(std::chrono::milliseconds(std::min<int64_t>(left, 5)));
        endIfStopped();
    }
}

void Scheduler::endIfStopped() const {
    // The program ended during the wait (a signal, the desktop closing): the
    // handler that waits must not go on to key anything.
    if (m_stopped) throw ProgramEnded{};
}

void Scheduler::blockUntil(const std::function<bool()>& done, int64_t maxMs) {
    // Nothing tells a waiting hook that the condition now holds (an utterance
    // that has finished playing), so it is asked to wait a few ms at a time:
    // a hook that waits all it is given (the headless run's signal wait) would
    // otherwise hold a keyed utterance for its whole limit, minutes on the air.
    constexpr int64_t kConditionPollMs = 5;
    const int64_t deadline = now() + maxMs;
    while (!done() && now() < deadline) {
        if (m_clock.isVirtual())
            m_clock.advanceTo(now() + 1);
        else if (m_blockHook)
            m_blockHook(std::min(deadline - now(), kConditionPollMs));
        else
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        endIfStopped();
    }
}

Timer::Timer(Scheduler& scheduler, std::string name, int intervalMs, bool enabled, std::function<void()> onTick)
    : m_scheduler(scheduler),
      m_name(std::move(name)),
      m_interval(intervalMs < 0 ? 0 : intervalMs),
      m_onTick(std::make_shared<std::function<void()>>(std::move(onTick))),
      m_slot(scheduler.registerTimer(this)) {
    setEnabled(enabled);
}

Timer::~Timer() {
    if (m_slot != UINT32_MAX) m_scheduler.unregisterTimer(m_slot);
}

void Timer::restart() {
    ++m_generation;
    if (running() && m_slot != UINT32_MAX) {
        m_scheduler.scheduleTimer(*this, m_scheduler.onGrid(m_scheduler.now() + m_interval, m_interval));
        if (m_scheduler.m_wakeHook) m_scheduler.m_wakeHook();
    }
}

void Timer::setEnabled(bool enabled) {
    if (enabled == m_enabled) return;
    m_enabled = enabled;
    restart();
}

void Timer::setInterval(int ms) {
    if (ms < 0) ms = 0;
    const bool wasRunning = running();
    m_interval = ms;
    // A running timer restarts its period from now, even when the value is the same.
    if (wasRunning || running()) restart();
}

}  // namespace mv
