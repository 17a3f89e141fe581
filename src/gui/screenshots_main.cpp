// marrowvane-screenshots DIR: starts the suite offscreen with fresh settings,
// shows every window, lets the node do a little (stations connect, a few chat
// lines arrive, one asks for the version, the operator answers) and saves
// each window as DIR/<window>.png, the hub once per tab, and the host console
// as DIR/host-console.png.
#include <QApplication>
#include <QDir>
#include <QEventLoop>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTimer>
#include <iostream>

#include "app/suite.h"
#include "core/errors.h"
#include "gui/gui_session.h"
#include "gui/host_console.h"
#include "gui/window_shell.h"

namespace {

void runFor(int ms) {
    QEventLoop loop;
    QTimer::singleShot(ms, &loop, &QEventLoop::quit);
    loop.exec();
}

bool save(QWidget& widget, const QDir& dir, const QString& name) {
    const QString path = dir.filePath(name + QStringLiteral(".png"));
    if (widget.grab().save(path)) {
        std::cout << path.toStdString() << '\n';
        return true;
    }
    std::cerr << "marrowvane-screenshots: cannot write " << path.toStdString() << '\n';
    return false;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::cerr << "usage: marrowvane-screenshots DIR\n";
        return 2;
    }
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    const QDir out(QString::fromLocal8Bit(argv[1]));
    if (!QDir().mkpath(out.absolutePath())) {
        std::cerr << "marrowvane-screenshots: cannot create " << argv[1] << '\n';
        return 1;
    }
    QTemporaryDir settings;
    mv::SuiteOptions options;
    options.settingsDir = settings.path().toStdString();
    options.defaultVoiceFolder = mv::installedVoiceFolder();
    options.defaultToneFolder = mv::installedToneFolder();
    mv::Suite suite(options);
    mv::GuiSession session(suite);
    std::string message;
    if (session.start(nullptr, message) != mv::Program::StartResult::Started) {
        std::cerr << "marrowvane-screenshots: the hub did not start: " << message << '\n';
        return 1;
    }
    for (const auto& window : suite.program().windows()) {
        try {
            window->show();
        } catch (const mv::ProgramEnded&) {
            std::cerr << "marrowvane-screenshots: the program ended while showing " << window->name() << '\n';
            return 1;
        }
    }
    suite.host().stationConnects("EA4XYZ-L", "Juan", "203.0.113.12");
    suite.host().stationConnects("K1ABC", "Ann", "192.0.2.44");
    suite.host().stationConnects("LU7DW-R", "Repetidora La Plata", "198.51.100.17");
    // A filter word, and a message it keeps out of the log.
    if (mv::Window* messages = suite.program().window("messages"); messages && messages->isLoaded())
        messages->controlAs<mv::TextBox>("FILTERTEXT1")->setText("tonto");
    suite.host().receiveChat("EA4XYZ-L>buenos dias a todos desde Madrid");
    suite.host().receiveChat("K1ABC>no seas tonto");
    suite.host().receiveChat("K1ABC>good morning Juan, 59 here in Boston");
    suite.host().receiveChat("LU7DW-R>que /ver/ usas?");
    runFor(300);
    // The operator answers from the message window, as if typed and sent.
    if (mv::Window* messages = suite.program().window("messages"); messages && messages->isLoaded()) {
        auto* entry = messages->controlAs<mv::TextBox>("MessageEntry");
        entry->setText("bienvenidos al nodo, 73");
        entry->pressEnter();
    }
    runFor(400);

    bool ok = true;
    for (const auto& window : suite.program().windows()) {
        mv::ModuleWindow* shown = session.shell().windowFor(window->name());
        if (!shown) continue;
        const QString name = QString::fromStdString(window->name());
        auto* tabs = shown->findChild<QTabWidget*>();
        if (!tabs) {
            ok &= save(*shown, out, name);
            continue;
        }
        for (int i = 0; i < tabs->count(); ++i) {
            tabs->setCurrentIndex(i);
            runFor(50);
            ok &= save(*shown, out, i == 0 ? name : name + QStringLiteral("-tab%1").arg(i + 1));
        }
        tabs->setCurrentIndex(0);
    }
    ok &= save(session.console(), out, QStringLiteral("host-console"));
    return ok ? 0 : 1;
}
