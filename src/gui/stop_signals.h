#pragma once
// Turns SIGINT, SIGTERM and SIGHUP (Ctrl+C, the desktop session closing, a
// service manager stopping the node) into an orderly end on the Qt thread:
// the transmitter is released before the program ends. SIGUSR1 runs the
// reopen callback (the log file, for logrotate).
#include <QObject>
#include <functional>

class QSocketNotifier;

namespace mv {

class Program;

class StopSignals final : public QObject {
public:
    explicit StopSignals(Program& program, std::function<void()> reopen = {});
    ~StopSignals() override;

private:
    void stop();

    Program& m_program;
    std::function<void()> m_reopen;
    QSocketNotifier* m_notifier = nullptr;
};

}  // namespace mv
