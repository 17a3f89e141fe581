#pragma once
// The desktop front end around one running suite: the real-time pump, the Qt
// dialogs, a top-level window for every module window and the host console.
// The program's end quits the Qt event loop.
#include <memory>
#include <string>

#include "core/program.h"

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
};

}  // namespace mv
