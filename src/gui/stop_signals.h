#pragma once
// Turns SIGINT, SIGTERM and SIGHUP (Ctrl+C, the desktop session closing, a
// service manager stopping the node) into an orderly end on the Qt thread:
// the transmitter is released before the program ends.
#include <QObject>

class QSocketNotifier;

namespace mv {

class Program;

class StopSignals final : public QObject {
public:
    explicit StopSignals(Program& program);
    ~StopSignals() override;

private:
    void stop();

    Program& m_program;
    QSocketNotifier* m_notifier = nullptr;
};

}  // namespace mv
