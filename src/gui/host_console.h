#pragma once
// The simulated node's front panel, for trying the suite without a radio: the
// operator raises the host's events from here (carrier, Internet receive,
// busy, DTMF, stations, chat, closing) and watches what the suite asks of the
// host: transmitter, DTR and RTS, connected stations, outgoing chat, Morse and
// speech, and a running record of every command with the window that made it
// (a run of identical lines folded into one with a count, filtered on request).
#include <QWidget>
#include <QTimer>
#include <deque>
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
    // Shows only the record's lines that hold `text` (any case); empty: all.
    void setRecordFilter(const QString& text);
    // Says, above everything, that the air goes nowhere (no sound device).
    void setAirNote(const QString& note);

    // The panel's parts, for tests.
    QLabel* transmitterLabel() const { return m_transmitter; }
    QTreeWidget* stationList() const { return m_stations; }
    QListWidget* chatList() const { return m_chatOut; }
    QListWidget* morseList() const { return m_morse; }
    QListWidget* speechList() const { return m_spoken; }
    QPlainTextEdit* recordView() const { return m_record; }
    QLabel* airNote() const { return m_airNote; }

protected:
    void closeEvent(QCloseEvent* event) override;
    // A new theme repaints the lamps on it.
    void changeEvent(QEvent* event) override;

private:
    QWidget* buildInjectors();
    QWidget* buildDisplays();
    void onCommand(const SimulatedHost::Command& command);
    void onLogRecord(const LogRecord& record);
    void addRecordLine(const QString& stamp, const QString& what);
    void flushRecord();
    void rebuildRecord();
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
    QListWidget* m_spoken = nullptr;
    QPlainTextEdit* m_record = nullptr;
    QCheckBox* m_showQueries = nullptr;
    QLineEdit* m_filter = nullptr;
    QLabel* m_airNote = nullptr;

    // The record: one entry per run of identical lines, newest last, each
    // numbered so the view knows which it shows last. The view is brought up
    // to date in batches, at most ten times a second.
    struct RecordEntry {
        uint64_t number;
        QString firstStamp;
        QString lastStamp;
        QString what;
        int count;
    };
    std::deque<RecordEntry> m_entries;
    uint64_t m_nextEntry = 0;
    // Entries from this number on are new or changed since the view was written.
    uint64_t m_firstUnshown = 0;
    // The entry the view's last line shows (none: ~0).
    uint64_t m_lastShown = ~uint64_t{0};
    QTimer m_flushTimer;
    // Runs only while the host keys itself for Morse or DTMF tones, to see it unkey.
    QTimer m_toneWatch;
    std::map<std::string, SimulatedHost::Station> m_shownStations;
    bool m_stationsShown = false;
};

}  // namespace mv
