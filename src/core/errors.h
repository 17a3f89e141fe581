#pragma once
// Error kinds that cross the engine, and the helper for handlers that run
// "with errors ignored": each step runs on its own, a failing step is skipped
// and the handler goes on with the next one.
#include <functional>
#include <initializer_list>
#include <stdexcept>
#include <string>

namespace mv {

// A host call failed (the host refused it, was busy too long, or is gone).
class HostError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
    // The window's call log has written (or counted) this failure with the
    // call and the window; a handler it escapes need not write it again.
    void markLogged() { m_logged = true; }
    bool logged() const { return m_logged; }

private:
    bool m_logged = false;
};

// The host refused a call because it is busy; retried under the process-wide
// wait policy before it becomes a HostError for the caller.
class HostBusyError : public HostError {
public:
    using HostError::HostError;
};

// A media graph call failed (file missing, unreadable, no device...).
class MediaError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// A speech engine call failed.
class SpeechError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Thrown by Program::end() to unwind whatever handler is running: the program
// ends at once and no later statement or handler runs. Deliberately not a
// std::exception, so no "errors ignored" step can swallow it.
struct ProgramEnded {};

// Runs one step, swallowing any ordinary error. Returns false when it failed.
bool ignoreErrors(const std::function<void()>& step);

// Runs several steps in order, each with errors ignored.
void ignoreErrors(std::initializer_list<std::function<void()>> steps);

}  // namespace mv
