#include "gui/gui_session.h"

#include <QAction>
#include <QApplication>
#include <QIcon>
#include <QMenuBar>
#include <QScreen>

#include "app/suite.h"
#include "core/errors.h"
#include "gui/host_console.h"
#include "gui/qt_dialogs.h"
#include "gui/qt_shell.h"
#include "gui/realtime_pump.h"
#include "gui/screen_fit.h"
#include "gui/window_shell.h"

namespace mv {
namespace {

// Between the hub and the console beside it.
constexpr int kConsoleGap = 12;

}  // namespace

QIcon suiteIcon() {
    // The sizes window managers and task bars draw a window's icon at,
    // decoded once for the run. Launchers draw the installed 256-pixel and
    // scalable icons themselves; decoded here the large one held 256 KB for
    // the whole run, and the scalable one would bring Qt's SVG library.
    QIcon icon;
    for (int size : {16, 32, 48, 64})
        icon.addFile(QStringLiteral(":/marrowvane/marrowvane-%1.png").arg(size), QSize(size, size));
    return icon;
}

GuiSession::GuiSession(Suite& suite) : m_suite(suite) {
    Scheduler& scheduler = suite.scheduler();
    Program& program = suite.program();
    if (QApplication::windowIcon().isNull()) QApplication::setWindowIcon(suiteIcon());
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
    // In real time a clock-driven device is the null one: the log said so
    // once at start; the console says it where the operator looks.
    if (!suite.clock().isVirtual() && suite.air().device().clockDriven())
        m_console->setAirNote(QStringLiteral("No sound device: the air goes nowhere. What would be sent shows in the "
                                             "command record and under Spoken; --record FILE.wav keeps the sound."));

    // The console is the suite's own window, not a module: the hub's menu
    // (and its shortcut, from any of the suite's windows) brings it back.
    m_showConsole = std::make_unique<QAction>(QStringLiteral("Consola del host"));
    m_showConsole->setShortcut(QKeySequence(QStringLiteral("Ctrl+Shift+H")));
    m_showConsole->setShortcutContext(Qt::ApplicationShortcut);
    m_showConsole->setToolTip(QStringLiteral("Muestra el panel del nodo simulado (portadora, DTMF, estaciones, chat)"));
    QObject::connect(m_showConsole.get(), &QAction::triggered, [this] { showConsole(); });
    m_shell->setOnMade([this](ModuleWindow& made) {
        if (made.window().name() != "hub") return;
        auto* bar = new QMenuBar(&made);
        QMenu* view = bar->addMenu(QStringLiteral("&Ver"));
        view->setToolTipsVisible(true);
        view->addAction(m_showConsole.get());
        made.setMenuBar(bar);
    });
    m_shell->setOnFirstShown([this](ModuleWindow& shown) {
        if (shown.window().name() == "hub" && !m_console->isVisible()) showConsole();
    });
    program.setOnEnded([] { QCoreApplication::exit(0); });
}

GuiSession::~GuiSession() {
    m_suite.program().setOnEnded(nullptr);
    m_suite.dialogs().setTarget(m_suite.scriptedDialogs());
    m_suite.shell().setTarget(m_suite.loggingShell());
    m_console.reset();
    m_shell.reset();
    m_showConsole.reset();
    m_dialogs.reset();
    m_desktop.reset();
    m_pump.reset();
}

void GuiSession::showConsole() {
    HostConsole& console = *m_console;
    if (!console.isVisible()) {
        const ModuleWindow* hub = m_shell->windowFor("hub");
        const QMargins margins = frameMarginsOf(console);
        QRect place;
        if (hub && hub->isVisible()) {
            // Beside the hub, on the hub's screen, as near its full size as the room allows.
            const QRect available = hub->screen()->availableGeometry();
            place = besideOnScreen(console.sizeHint().grownBy(margins), console.minimumSizeHint().grownBy(margins),
                                   hub->frameGeometry(), available, kConsoleGap);
        } else {
            // Where it was last, still on a screen.
            const QRect last(console.pos(), console.size().grownBy(margins));
            place = fitInside(last, screenAtOrPrimary(last.center())->availableGeometry());
        }
        console.resize(place.size().shrunkBy(margins));
        console.move(place.topLeft());
        console.show();
    }
    console.raise();
    console.activateWindow();
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
