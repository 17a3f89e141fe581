#pragma once
// The message and file dialogs the operator answers. Each is modal to its
// window, but the engine's timers and host events keep running while it waits
// (only the handler that opened it waits). Every answer goes to the event log.
#include <QString>
#include <functional>

#include "core/dialogs.h"

class QWidget;

namespace mv {

class EventLog;

// "Description|pattern;pattern|Description|pattern" as the file fields give
// it, as a Qt name filter list: "Description (pattern pattern);;...".
QString qtFileFilter(const std::string& filter);

class QtDialogs final : public Dialogs {
public:
    struct Hooks {
        // The window a dialog belongs to (by the engine's window name), or null.
        std::function<QWidget*(const std::string&)> parentFor;
        // Called just before a dialog's own event loop starts (arms the pump).
        std::function<void()> beforeWait;
        // True once the program has ended (a handler ended it while we waited).
        std::function<bool()> ended;
    };
    QtDialogs(EventLog& log, Hooks hooks) : m_log(log), m_hooks(std::move(hooks)) {}

    DialogAnswer message(const MessageRequest& request) override;
    std::optional<std::string> openFile(const FileRequest& request) override;
    std::optional<std::string> saveFile(const FileRequest& request) override;

private:
    std::optional<std::string> fileDialog(const FileRequest& request, bool save);
    QWidget* parentFor(const std::string& window) const;
    void beforeWait() const;
    // A dialog that returns after the program ended must not let its handler go on.
    void stopIfEnded() const;

    EventLog& m_log;
    Hooks m_hooks;
};

}  // namespace mv
