#include "gui/gui_main.h"

#include <QApplication>
#include <QMessageBox>
#include <fstream>
#include <iostream>

#include "app/end_on_terminate.h"
#include "app/log_file.h"
#include "app/suite.h"
#include "platform/audio/air.h"
#include "gui/gui_session.h"
#include "gui/stop_signals.h"
#include "platform/instance_guard.h"
#include "platform/settings_folder.h"

namespace mv {

int runGui(const std::vector<std::string>& qtArguments, const HeadlessOptions& options) {
    // Qt keeps argc and argv for the application's lifetime.
    std::vector<std::string> storage = qtArguments;
    std::vector<char*> argv;
    for (std::string& a : storage) argv.push_back(a.data());
    argv.push_back(nullptr);
    int argc = static_cast<int>(storage.size());
    QApplication app(argc, argv.data());
    // Only the engine ends the program (quit prompts, host closing).
    QApplication::setQuitOnLastWindowClosed(false);

    LogFile logFile;
    SuiteOptions so;
    so.settingsDir = options.settingsDir.empty() ? defaultSettingsFolder() : std::filesystem::path(options.settingsDir);
    so.defaultVoiceFolder = installedVoiceFolder();
    so.logQueries = options.logQueries;
    so.defaultToneFolder = installedToneFolder();
    so.sampleFolder = installedSampleFolder();
    if (!options.logPath.empty()) {
        if (logFile.open(options.logPath, false)) so.logStream = &logFile.stream();
        else std::cerr << "marrowvane: cannot write the log file " << options.logPath << '\n';
    }
    std::error_code ignored;
    std::filesystem::create_directories(so.settingsDir, ignored);

    FileInstanceGuard guard(so.settingsDir / "marrowvane.lock");
    Suite suite(so);
    if (!options.recordPath.empty()) {
        try {
            suite.air().startRecording(options.recordPath);
        } catch (const std::exception& e) {
            std::cerr << "marrowvane: cannot record the air: " << e.what() << '\n';
            return 1;
        }
    }
    // Taken before the start-up, so a stop asked for while the windows load
    // still ends the run in order once the event loop runs.
    StopSignals stopSignals(suite.program(), [&logFile, &suite] {
        if (!logFile.path().empty() && !logFile.reopen())
            suite.log().error("", "cannot reopen the log file " + logFile.path() + "; still writing to the old one");
    });
    if (options.seed) suite.program().seedRandom(*options.seed);
    GuiSession session(suite);
    std::string message;
    const Program::StartResult started = session.start(&guard, message);
    if (started == Program::StartResult::AlreadyRunning) {
        std::cerr << "marrowvane: " << message << '\n';
        QMessageBox::warning(nullptr, QString::fromStdString(suite.program().product().name),
                             QString::fromStdString(message));
        return 1;
    }
    if (suite.program().ended()) return 0;
    if (started != Program::StartResult::Started) {
        std::cerr << "marrowvane: the hub could not start: " << message << '\n';
        suite.program().shutdown("the hub could not start: " + message);
        return 1;
    }
    for (const std::string& name : showWindows(suite.program(), options.showWindows))
        std::cerr << "marrowvane: --show: there is no window called '" << name << "'\n";
    const EndOnTerminate lastChance(suite.program());
    // However the event loop comes to quit (the desktop session ending it,
    // say), the program ends its own way first; once ended, this is a no-op.
    QObject::connect(&app, &QCoreApplication::aboutToQuit, [&suite] { suite.program().shutdown("desktop closing"); });
    const int status = app.exec();
    suite.program().shutdown("desktop closing");
    if (!options.recordPath.empty()) suite.air().stopRecording();
    return status;
}

}  // namespace mv
