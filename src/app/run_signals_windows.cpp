// Windows: the console's Ctrl+C (SIGINT), Ctrl+Break (SIGBREAK) and its
// closing, log-off or shut-down (SIGTERM) stop a headless run in order. The
// console calls its handler on a thread of its own; the handler only notes
// the request and wakes the run's wait, and for a closing console it holds
// the process open until the run has ended (Windows gives it five seconds).
// While the run waits, the thread's window messages are dispatched: that is
// how the calls of a host program in another process reach this one.
#include <windows.h>

#include <atomic>

#include "app/run_signals.h"

namespace mv {
namespace {

std::atomic<int> g_requested{0};
HANDLE g_arrived = nullptr;
HANDLE g_finished = nullptr;
constexpr DWORD kClosingGraceMs = 4500;

BOOL WINAPI onConsoleEvent(DWORD event) {
    int signal = SIGTERM;
    if (event == CTRL_C_EVENT) signal = SIGINT;
    else if (event == CTRL_BREAK_EVENT) signal = SIGBREAK;
    int none = 0;
    g_requested.compare_exchange_strong(none, signal);
    SetEvent(g_arrived);
    // Returning from a closing console's handler ends the process at once.
    if (signal == SIGTERM) WaitForSingleObject(g_finished, kClosingGraceMs);
    return TRUE;
}

void dispatchMessages() {
    MSG message;
    while (PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) {
        TranslateMessage(&message);
        DispatchMessageW(&message);
    }
}

}  // namespace

RunSignals::RunSignals() {
    g_arrived = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    g_finished = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    m_arrived = g_arrived;
    SetConsoleCtrlHandler(onConsoleEvent, TRUE);
}

RunSignals::~RunSignals() {
    SetEvent(g_finished);
    SetConsoleCtrlHandler(onConsoleEvent, FALSE);
}

void RunSignals::wait(int64_t ms) {
    const ULONGLONG until = GetTickCount64() + static_cast<ULONGLONG>(ms > 0 ? ms : 0);
    for (;;) {
        dispatchMessages();
        if (const int s = g_requested.load(); s != 0 && m_stop == 0) m_stop = s;
        const ULONGLONG now = GetTickCount64();
        if (m_stop != 0 || now >= until) return;
        MsgWaitForMultipleObjectsEx(1, &g_arrived, static_cast<DWORD>(until - now), QS_ALLINPUT, MWMO_INPUTAVAILABLE);
    }
}

const char* signalName(int signal) {
    switch (signal) {
        case SIGINT: return "Ctrl+C";
        case SIGBREAK: return "Ctrl+Break";
        case SIGTERM: return "the console closing";
        default: return "a signal";
    }
}

}  // namespace mv
