#include "app/run_signals.h"

#include <cerrno>
#include <initializer_list>
#include <pthread.h>

namespace mv {

RunSignals::RunSignals() {
    sigemptyset(&m_set);
    for (int s : {SIGINT, SIGTERM, SIGHUP, SIGUSR1}) sigaddset(&m_set, s);
    pthread_sigmask(SIG_BLOCK, &m_set, &m_previous);
}

RunSignals::~RunSignals() {
    // The run has ended in order; a signal that came too late to matter is
    // taken here, so unblocking it cannot kill the process on its way out.
    wait(0);
    pthread_sigmask(SIG_SETMASK, &m_previous, nullptr);
}

void RunSignals::wait(int64_t ms) {
    timespec timeout{static_cast<time_t>(ms / 1000), static_cast<long>((ms % 1000) * 1000000)};
    for (;;) {
        siginfo_t info{};
        const int s = sigtimedwait(&m_set, &info, &timeout);
        if (s < 0) {
            if (errno == EINTR) continue;  // another signal's handler ran; wait on
            return;                        // EAGAIN: the time is up
        }
        if (s == SIGUSR1)
            m_reopen = true;
        else if (m_stop == 0)
            m_stop = s;
        // Whatever else is pending is looked at now, without waiting again.
        timeout = {0, 0};
    }
}

const char* signalName(int signal) {
    switch (signal) {
        case SIGINT: return "SIGINT";
        case SIGTERM: return "SIGTERM";
        case SIGHUP: return "SIGHUP";
        default: return "a signal";
    }
}

}  // namespace mv
