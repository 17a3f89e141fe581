#pragma once
// The single user-interface thread: dispatches posted messages (host events,
// operator actions) and due timer ticks one at a time, ordered by due time and
// then by the order they were queued. Timers follow window-timer semantics.
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <queue>
#include <string>
#include <vector>

#include "core/clock.h"

namespace mv {

class Timer;

class Scheduler {
public:
    explicit Scheduler(Clock& clock);
    ~Scheduler();
    Scheduler(const Scheduler&) = delete;
    Scheduler& operator=(const Scheduler&) = delete;

    Clock& clock() { return m_clock; }
    int64_t now() const { return m_clock.monotonicMs(); }
    // Local time as handlers should see it: inside a timer's handler, the
    // tick's due time (so dispatch jitter never skips or repeats a second);
    // elsewhere, the clock's current reading.
    LocalDateTime wallNow() const;
    // The clock's current local time, ignoring any tick in progress.
    LocalDateTime wallNowExact() const { return m_clock.localTimeAt(now()); }

    // Queues a message; it runs after everything already due.
    void post(std::function<void()> message);

    // Dispatches everything already due, re-entrantly, then returns. A timer
    // whose own handler is running is left for after that handler.
    void processPendingEvents();

    // Virtual time: dispatches everything due up to `untilMs`, moving the clock
    // to each due time, and leaves the clock at `untilMs`.
    void runUntil(int64_t untilMs);
    // Real time: dispatches everything due now. Returns the next due time, or -1.
    int64_t runDue();
    // Monotonic time of the earliest queued item, or -1 when nothing is queued.
    int64_t nextDueTime();

    // A blocking operation (keyed utterance, modal wait). Nothing is dispatched
    // meanwhile; virtual time jumps by the duration, real time waits it out
    // while the block hook keeps the screen painting. When the program ends
    // during a real-time wait, the wait throws ProgramEnded.
    void block(int64_t durationMs);
    // Blocks until `done` returns true or `maxMs` has passed; in real time
    // `done` is asked again at least every 5 ms.
    void blockUntil(const std::function<bool()>& done, int64_t maxMs);
    // Real time only: called repeatedly during a block with the ms left; the GUI
    // uses it to paint without handling input. Without one, the thread sleeps.
    void setBlockHook(std::function<void(int64_t msLeft)> hook) { m_blockHook = std::move(hook); }
    // Real time only: called when a message is posted or a timer is (re)started,
    // so an event loop that sleeps until nextDueTime() can wake up earlier.
    void setWakeHook(std::function<void()> hook) { m_wakeHook = std::move(hook); }

    // Real time: timers whose intervals are whole tenths (or hundredths) of a
    // second start on that grid of the monotonic clock, up to 99 (9) ms after
    // one interval, so the hub's and the clock's 100 ms timers and every
    // 1 s one wake the process together, ten times a second on an idle node,
    // instead of each on its own phase. Periods stay drift-free. Off by default,
    // so virtual time (and every test of timer semantics) stays exact.
    void setShareWakeups(bool on) { m_shareWakeups = on; }

    // Where errors that escape a handler go (they are logged; dispatch goes on).
    void setErrorSink(std::function<void(const std::string&)> sink) { m_errorSink = std::move(sink); }

    // Stops all dispatching for good (the program ended).
    void stop() { m_stopped = true; }
    bool stopped() const { return m_stopped; }
    int dispatchDepth() const { return m_depth; }

    // Counters for benchmarks and tests.
    uint64_t dispatchedTicks() const { return m_ticksDispatched; }
    uint64_t dispatchedMessages() const { return m_messagesDispatched; }

private:
    friend class Timer;
    struct TimerEntry {
        int64_t due;
        uint64_t seq;
        uint32_t slot;
        uint32_t generation;
        bool operator>(const TimerEntry& o) const { return due != o.due ? due > o.due : seq > o.seq; }
    };
    struct Message {
        int64_t due;
        uint64_t seq;
        std::function<void()> run;
    };

    uint32_t registerTimer(Timer* timer);
    void unregisterTimer(uint32_t slot);
    void scheduleTimer(Timer& timer, int64_t due);
    // `due`, or with shared wakeups the first point of the timer's grid at or after it.
    int64_t onGrid(int64_t due, int64_t interval) const;
    // Dispatches the earliest item due at or before `limit`; false if none.
    bool dispatchOne(int64_t limit, bool advanceClock);
    void dropStale();
    void runGuarded(const std::function<void()>& fn);
    void endIfStopped() const;
    void dispatchTimer(const TimerEntry& entry);

    Clock& m_clock;
    std::priority_queue<TimerEntry, std::vector<TimerEntry>, std::greater<>> m_timerQueue;
    std::deque<Message> m_messages;
    std::vector<Timer*> m_timers;
    std::vector<uint32_t> m_freeSlots;
    std::vector<TimerEntry> m_deferred;
    uint64_t m_seq = 0;
    int m_depth = 0;
    bool m_stopped = false;
    bool m_shareWakeups = false;
    int64_t m_tickDue = -1;  // due time of the timer tick being handled, or -1
    std::function<void(int64_t)> m_blockHook;
    std::function<void()> m_wakeHook;
    std::function<void(const std::string&)> m_errorSink;
    uint64_t m_ticksDispatched = 0;
    uint64_t m_messagesDispatched = 0;
};

// A window timer. Interval 0 never ticks. Enabling a stopped timer schedules
// its first tick one interval later; enabling a running one changes nothing;
// changing the interval of a running timer restarts its period from now.
// Periods are drift-free; a late timer fires once and keeps its grid.
class Timer {
public:
    Timer(Scheduler& scheduler, std::string name, int intervalMs, bool enabled, std::function<void()> onTick);
    ~Timer();
    Timer(const Timer&) = delete;
    Timer& operator=(const Timer&) = delete;

    const std::string& name() const { return m_name; }
    int interval() const { return m_interval; }
    bool enabled() const { return m_enabled; }
    bool running() const { return m_enabled && m_interval > 0; }
    bool inHandler() const { return m_inHandler; }

    void setInterval(int ms);
    void setEnabled(bool enabled);
    void setHandler(std::function<void()> onTick) {
        m_onTick = std::make_shared<std::function<void()>>(std::move(onTick));
    }

private:
    friend class Scheduler;
    void restart();

    Scheduler& m_scheduler;
    std::string m_name;
    int m_interval;
    bool m_enabled = false;
    bool m_inHandler = false;
    bool m_missedWhileRunning = false;
    // Shared so a handler that destroys its own timer keeps running safely.
    std::shared_ptr<std::function<void()>> m_onTick;
    uint32_t m_slot;
    uint32_t m_generation = 0;
};

}  // namespace mv
