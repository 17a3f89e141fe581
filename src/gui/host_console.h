#pragma once
// The simulated node's front panel, for trying the suite without a radio: the
// operator raises the host's events from here (carrier, Internet receive,
// busy, DTMF, stations, chat, closing) and watches what the suite asks of the
// host: transmitter, DTR and RTS, connected stations, outgoing chat and Morse,
// and a running record of every command with the window that made it.
#include <QWidget>
#include <QTimer>
#include <memory>
#include <vector>

#include "platform/simulated_host.h"

class QCheckBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;
class QTreeWidget;

namespace mv {

class Scheduler;
class EventLog;
struct LogRecord;

class HostConsole final : public QWidget {
public:
    HostConsole(SimulatedHost& host, Scheduler& scheduler, EventLog& log, QWidget* parent = nullptr);
    ~HostConsole() override;

    // Lines of the command record shown so far (pending ones are written first).
    QStringList recordLines();
    bool showingQueries() const;
    void setShowQueries(bool on);

    // The panel's parts, for tests.
    QLabel* transmitterLabel() const { return m_transmitter; }
    QTreeWidget* stationList() const { return m_stations; }
    QListWidget* chatList() const { return m_chatOut; }
    QListWidget* morseList() const { return m_morse; }

protected:
    void closeEvent(QCloseEvent* event) override;

private:
    QWidget* buildInjectors();
    QWidget* buildDisplays();
    void onCommand(const SimulatedHost::Command& command);
    void onLogRecord(const LogRecord& record);
    void addRecordLine(const QString& line);
    void flushRecord();
    void refreshState();
    QString stamp(int64_t monotonicMs) const;

    SimulatedHost& m_host;
    Scheduler& m_scheduler;
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);

    QCheckBox* m_carrier = nullptr;
    QCheckBox* m_receiving = nullptr;
    QCheckBox* m_busy = nullptr;
    QLabel* m_transmitter = nullptr;
    QLabel* m_dtr = nullptr;
    QLabel* m_rts = nullptr;
    QTreeWidget* m_stations = nullptr;
    QListWidget* m_chatOut = nullptr;
    QListWidget* m_morse = nullptr;
    QPlainTextEdit* m_record = nullptr;
    QCheckBox* m_showQueries = nullptr;

    // Record lines are written in batches, at most ten times a second.
    QStringList m_pendingLines;
    QTimer m_flushTimer;
    // Runs only while the host keys itself for Morse or DTMF tones, to see it unkey.
    QTimer m_toneWatch;
    std::map<std::string, SimulatedHost::Station> m_shownStations;
    bool m_stationsShown = false;
};

}  // namespace mv
