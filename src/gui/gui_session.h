#pragma once
// The desktop front end around one running suite: the real-time pump, the Qt
// dialogs, a top-level window for every module window and the host console.
// The program's end quits the Qt event loop.
#include <memory>
#include <string>

#include "core/program.h"

class QAction;
class QIcon;

namespace mv {

class Suite;
class RealTimePump;
class QtDialogs;
class QtShell;
class WindowShell;
class HostConsole;

class GuiSession {
public:
    explicit GuiSession(Suite& suite);
    ~GuiSession();
    GuiSession(const GuiSession&) = delete;
    GuiSession& operator=(const GuiSession&) = delete;

    // Starts the program at the hub (the console opens beside it) and arms the pump.
    Program::StartResult start(InstanceGuard* guard, std::string& message);

    // Shows the host console: beside the hub the first time (on the hub's
    // screen, wholly on it), where the operator left it afterwards.
    void showConsole();
    // The hub's menu entry that reopens the console (Ctrl+Shift+H).
    QAction& showConsoleAction() { return *m_showConsole; }

    RealTimePump& pump() { return *m_pump; }
    WindowShell& shell() { return *m_shell; }
    HostConsole& console() { return *m_console; }

private:
    Suite& m_suite;
    std::unique_ptr<RealTimePump> m_pump;
    std::unique_ptr<QtDialogs> m_dialogs;
    // Opens the About box's addresses with the desktop's handlers.
    std::unique_ptr<QtShell> m_desktop;
    std::unique_ptr<WindowShell> m_shell;
    std::unique_ptr<HostConsole> m_console;
    std::unique_ptr<QAction> m_showConsole;
};

// The suite's icon, for every window it opens.
QIcon suiteIcon();

}  // namespace mv
