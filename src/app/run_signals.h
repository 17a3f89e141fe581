#pragma once
// The signals a headless run answers: SIGINT, SIGTERM and SIGHUP end it in
// order (air silenced, transmitter released, `end` logged); SIGUSR1 asks for
// the log file to be reopened (logrotate). They are blocked
// from the moment this exists, so no thread the audio back end starts later
// can be killed by one, and they are taken only where the run waits: a nap
// until the next timer ends the moment one arrives, and costs no extra
// wake-ups while none does. On Windows the console's Ctrl+C, Ctrl+Break and
// close take their place, and a wait also lets the host program's calls in
// (its events arrive as window messages on this thread).
#include <csignal>
#include <cstdint>

namespace mv {

class RunSignals {
public:
    RunSignals();
    ~RunSignals();
    RunSignals(const RunSignals&) = delete;
    RunSignals& operator=(const RunSignals&) = delete;

    // Waits up to `ms` (0: only looks) for one of the signals and notes it.
    void wait(int64_t ms);
    // The signal that asked the run to stop, or 0.
    int stopSignal() const { return m_stop; }
    // True once after each SIGUSR1.
    bool takeReopenRequest() {
        const bool asked = m_reopen;
        m_reopen = false;
        return asked;
    }

private:
#ifdef _WIN32
    void* m_arrived = nullptr;  // set by the console's handler thread
#else
    sigset_t m_set{};
    sigset_t m_previous{};
#endif
    int m_stop = 0;
    bool m_reopen = false;
};

// "SIGHUP" for SIGHUP, and so on, for the log's `end` reason.
const char* signalName(int signal);

}  // namespace mv
