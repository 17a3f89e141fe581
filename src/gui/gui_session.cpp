#include "gui/gui_session.h"

#include <QCoreApplication>

#include "app/suite.h"
#include "core/errors.h"
#include "gui/host_console.h"
#include "gui/qt_dialogs.h"
#include "gui/qt_shell.h"
#include "gui/realtime_pump.h"
#include "gui/window_shell.h"

namespace mv {

GuiSession::GuiSession(Suite& suite) : m_suite(suite) {
    Scheduler& scheduler = suite.scheduler();
    Program& program = suite.program();
    m_pump = std::make_unique<RealTimePump>(scheduler);
    // Operator actions queue behind whatever is already due, like a click would.
    m_shell = std::make_unique<WindowShell>(program, [&scheduler](std::function<void()> action) {
        scheduler.post(std::move(action));
    });
    m_dialogs = std::make_unique<QtDialogs>(
        suite.log(), QtDialogs::Hooks{[this](const std::string& window) -> QWidget* {
                                          ModuleWindow* w = m_shell->windowFor(window);
                                          return w && w->isVisible() ? w : nullptr;
                                      },
                                      [this] { m_pump->wake(); }, [&program] { return program.ended(); }});
    suite.dialogs().setTarget(*m_dialogs);
    m_desktop = std::make_unique<QtShell>(suite.log());
    suite.shell().setTarget(*m_desktop);
    m_console = std::make_unique<HostConsole>(suite.host(), scheduler, suite.log());
    m_shell->setOnFirstShown([this](ModuleWindow& shown) {
        if (shown.window().name() != "hub" || m_console->isVisible()) return;
        const QRect hub = shown.frameGeometry();
        m_console->move(hub.right() + 12, hub.top());
        m_console->show();
    });
    program.setOnEnded([] { QCoreApplication::exit(0); });
}

GuiSession::~GuiSession() {
    m_suite.program().setOnEnded(nullptr);
    m_suite.dialogs().setTarget(m_suite.scriptedDialogs());
    m_suite.shell().setTarget(m_suite.loggingShell());
    m_console.reset();
    m_shell.reset();
    m_dialogs.reset();
    m_desktop.reset();
    m_pump.reset();
}

Program::StartResult GuiSession::start(InstanceGuard* guard, std::string& message) {
    Program::StartResult result = Program::StartResult::Ended;
    try {
        result = m_suite.program().start("hub", guard, message);
    } catch (const std::exception& e) {
        // The start-up has no error handling of its own: the load stops there.
        message = e.what();
        m_suite.log().error("hub", message);
    }
    m_pump->wake();
    return result;
}

}  // namespace mv
