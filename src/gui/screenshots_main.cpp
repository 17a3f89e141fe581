// marrowvane-screenshots DIR: starts the suite offscreen with fresh settings,
// shows every window, lets the node do a little (stations connect, a few chat
// lines arrive, one asks for the version, the operator answers) and saves
// each window as DIR/<window>.png, the hub once per tab, and the host console
// as DIR/host-console.png.
// marrowvane-screenshots --desktop DIR: the suite as it opens on a 1366 x 768
// screen, hub and console placed by the suite itself, as DIR/desktop-1366x768.png.
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QPainter>
#include <QScreen>
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

// The screen as the operator sees it: every shown window of the suite drawn
// where the suite put it, the topmost last.
QImage desktopPicture(QScreen& screen) {
    QImage picture(screen.geometry().size(), QImage::Format_RGB32);
    picture.fill(QColor(0x3A, 0x6E, 0xA5));
    QPainter painter(&picture);
    for (QWidget* w : QApplication::topLevelWidgets())
        if (w->isVisible() && w->windowType() != Qt::Desktop)
            painter.drawPixmap(w->geometry().topLeft() - screen.geometry().topLeft(), w->grab());
    return picture;
}

// Stands in for a screen of the given size at 96 DPI (Qt's offscreen
// platform reads the screens from a file).
void offscreenScreen(const QDir& scratch, int width, int height) {
    const QString config = scratch.filePath(QStringLiteral("screens.json"));
    QFile file(config);
    if (!file.open(QIODevice::WriteOnly)) return;
    file.write(QStringLiteral("{\"screens\":[{\"name\":\"screen\",\"x\":0,\"y\":0,\"width\":%1,\"height\":%2,"
                              "\"logicalDpi\":96,\"logicalBaseDpi\":96,\"dpr\":1}]}")
                   .arg(width)
                   .arg(height)
                   .toUtf8());
    file.close();
    qputenv("QT_QPA_PLATFORM", ("offscreen:configfile=" + config).toLocal8Bit());
}

}  // namespace

int main(int argc, char** argv) {
    const bool desktop = argc == 3 && std::string(argv[1]) == "--desktop";
    if (argc != 2 && !desktop) {
        std::cerr << "usage: marrowvane-screenshots [--desktop] DIR\n";
        return 2;
    }
    QTemporaryDir scratch;
    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");
    if (platform.isEmpty() || platform == "offscreen") {
        // Room for every window at its design size; the desktop picture is a laptop's screen.
        if (desktop) offscreenScreen(QDir(scratch.path()), 1366, 768);
        else offscreenScreen(QDir(scratch.path()), 2200, 1400);
    }
    QApplication app(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    const QDir out(QString::fromLocal8Bit(argv[desktop ? 2 : 1]));
    if (!QDir().mkpath(out.absolutePath())) {
        std::cerr << "marrowvane-screenshots: cannot create " << argv[1] << '\n';
        return 1;
    }
    QTemporaryDir settings;
    mv::SuiteOptions options;
    options.settingsDir = settings.path().toStdString();
    options.defaultVoiceFolder = mv::installedVoiceFolder();
    options.defaultToneFolder = mv::installedToneFolder();
    options.sampleFolder = mv::installedSampleFolder();
    mv::Suite suite(options);
    mv::GuiSession session(suite);
    std::string message;
    if (session.start(nullptr, message) != mv::Program::StartResult::Started) {
        std::cerr << "marrowvane-screenshots: the hub did not start: " << message << '\n';
        return 1;
    }
    // The desktop picture shows what opens by itself: the hub and the console.
    for (const auto& window : suite.program().windows()) {
        if (desktop) break;
        try {
            window->show();
        } catch (const mv::ProgramEnded&) {
            std::cerr << "marrowvane-screenshots: the program ended while showing " << window->name() << '\n';
            return 1;
        }
    }
    // Three stations connect; the ident window says each on the air, so the
    // console's spoken list and the ident window's history fill.
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
    // A few seconds of the node's steady commands, folded in the console's record.
    runFor(3500);
    if (desktop) {
        QScreen* screen = QGuiApplication::primaryScreen();
        const QString path = out.filePath(QStringLiteral("desktop-%1x%2.png").arg(screen->size().width()).arg(screen->size().height()));
        if (!desktopPicture(*screen).save(path)) {
            std::cerr << "marrowvane-screenshots: cannot write " << path.toStdString() << '\n';
            return 1;
        }
        std::cout << path.toStdString() << '\n';
        return 0;
    }

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
