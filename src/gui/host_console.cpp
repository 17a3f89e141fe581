#include "gui/host_console.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QScrollBar>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QTextBlock>
#include <QTreeWidget>
#include <QVBoxLayout>

#include "core/controls.h"
#include "core/event_log.h"
#include "core/plain_text.h"
#include "core/scheduler.h"
#include "gui/caption_colours.h"

namespace mv {
namespace {

constexpr int kRecordLines = 2000;
constexpr int kListLines = 200;
constexpr int kFlushMs = 100;

// Everything the console shows from the host and the log is shown as the log
// writes it: valid UTF-8, control characters escaped.
QString qs(const std::string& s) { return QString::fromStdString(safeText(s)); }

// Questions the suite asks over and over; the record hides them unless asked.
bool isQuery(const std::string& call) {
    return call == "IsBusy" || call == "IsReceiving" || call == "IsTransmitting" || call == "IsCarrierDetected" ||
           call == "IsConnectedTo" || call == "StationInfo";
}

QString valueText(const LogValue& v) {
    return std::visit(
        [](const auto& x) -> QString {
            using T = std::decay_t<decltype(x)>;
            if constexpr (std::is_same_v<T, bool>) return x ? QStringLiteral("true") : QStringLiteral("false");
            else if constexpr (std::is_same_v<T, std::string>) return QLatin1Char('"') + qs(x) + QLatin1Char('"');
            else return QString::number(x);
        },
        v);
}

// A lamp's colour says its state; black ("off") follows the theme's text.
void setLamp(QLabel& label, const QString& text, Rgb colour, const QPalette& theme) {
    if (label.text() == text && label.property("lamp").toString() == text) return;
    label.setText(text);
    label.setProperty("lamp", text);
    paintCaption(label, colour, std::nullopt, &theme);
}

// A folded run reads "SetPTT(false)  x37 to 14:05:09.000".
QString entryLine(const QString& firstStamp, const QString& lastStamp, const QString& what, int count) {
    QString line = firstStamp + QStringLiteral("  ") + what;
    if (count > 1) line += QStringLiteral("  \u00d7%1 to %2").arg(count).arg(lastStamp);
    return line;
}

void appendCapped(QListWidget& list, const QString& text) {
    list.addItem(text);
    while (list.count() > kListLines) delete list.takeItem(0);
    list.scrollToBottom();
}

QPushButton* button(const QString& caption, QWidget* parent, std::function<void()> onClick) {
    auto* b = new QPushButton(caption, parent);
    b->setAutoDefault(false);
    QObject::connect(b, &QPushButton::clicked, std::move(onClick));
    return b;
}

// A line to type into and a Send button (or Return) that hands the text on and clears it.
QGroupBox* sendBox(const QString& title, QWidget* parent, QLineEdit** editOut, std::function<void(const QString&)> send) {
    auto* box = new QGroupBox(title, parent);
    auto* layout = new QHBoxLayout(box);
    auto* edit = new QLineEdit(box);
    auto sendText = [edit, send = std::move(send)] {
        if (edit->text().isEmpty()) return;
        send(edit->text());
        edit->clear();
    };
    QObject::connect(edit, &QLineEdit::returnPressed, sendText);
    layout->addWidget(edit);
    layout->addWidget(button(QStringLiteral("Send"), box, sendText));
    if (editOut) *editOut = edit;
    return box;
}

}  // namespace

HostConsole::HostConsole(SimulatedHost& host, Scheduler& scheduler, EventLog& log, QWidget* parent)
    : QWidget(parent, Qt::Window), m_host(host), m_scheduler(scheduler) {
    setObjectName(QStringLiteral("hostConsole"));
    setWindowTitle(QStringLiteral("Host console - simulated EchoLink node"));
    auto* layout = new QHBoxLayout(this);
    layout->addWidget(buildInjectors());
    layout->addWidget(buildDisplays(), 1);

    m_flushTimer.setSingleShot(true);
    connect(&m_flushTimer, &QTimer::timeout, this, [this] { flushRecord(); });
    m_toneWatch.setInterval(100);
    connect(&m_toneWatch, &QTimer::timeout, this, [this] { refreshState(); });

    m_host.setCommandListener([this](const SimulatedHost::Command& c) { onCommand(c); });
    m_host.setStateListener([this] { refreshState(); });
    // The log has no way to take a listener back; this one goes quiet with the console.
    std::weak_ptr<bool> alive = m_alive;
    log.addListener([this, alive](const LogRecord& r) {
        if (!alive.expired()) onLogRecord(r);
    });
    refreshState();
}

HostConsole::~HostConsole() {
    m_alive.reset();
    m_host.setCommandListener(nullptr);
    m_host.setStateListener(nullptr);
}

QWidget* HostConsole::buildInjectors() {
    auto* panel = new QWidget(this);
    auto* column = new QVBoxLayout(panel);
    column->setContentsMargins(0, 0, 0, 0);

    auto* node = new QGroupBox(QStringLiteral("Node"), panel);
    auto* nodeLayout = new QVBoxLayout(node);
    m_carrier = new QCheckBox(QStringLiteral("Local carrier (receiver hears a signal)"), node);
    m_receiving = new QCheckBox(QStringLiteral("Internet receive (station talking)"), node);
    m_busy = new QCheckBox(QStringLiteral("Busy"), node);
    for (QCheckBox* c : {m_carrier, m_receiving, m_busy}) nodeLayout->addWidget(c);
    connect(m_carrier, &QCheckBox::clicked, this, [this](bool on) { m_host.setCarrier(on); });
    connect(m_receiving, &QCheckBox::clicked, this, [this](bool on) { m_host.setReceiving(on); });
    connect(m_busy, &QCheckBox::clicked, this, [this](bool on) { m_host.setBusy(on); });
    column->addWidget(node);

    QLineEdit* digits = nullptr;
    column->addWidget(sendBox(QStringLiteral("DTMF received over the air"), panel, &digits,
                              [this](const QString& text) { m_host.receiveDTMF(text.toUpper().toStdString()); }));
    digits->setObjectName(QStringLiteral("dtmfDigits"));
    digits->setValidator(new QRegularExpressionValidator(QRegularExpression(QStringLiteral("[0-9*#A-Da-d]*")), digits));

    auto* station = new QGroupBox(QStringLiteral("Station"), panel);
    auto* form = new QFormLayout(station);
    auto* call = new QLineEdit(station);
    auto* name = new QLineEdit(station);
    auto* address = new QLineEdit(station);
    call->setObjectName(QStringLiteral("stationCall"));
    call->setPlaceholderText(QStringLiteral("e.g. EA4XYZ-L"));
    form->addRow(QStringLiteral("Callsign"), call);
    form->addRow(QStringLiteral("Name"), name);
    form->addRow(QStringLiteral("Address"), address);
    auto* stationButtons = new QHBoxLayout;
    stationButtons->addWidget(button(QStringLiteral("Connect"), station, [this, call, name, address] {
        const std::string c = call->text().trimmed().toStdString();
        if (!c.empty()) m_host.stationConnects(c, name->text().toStdString(), address->text().toStdString());
    }));
    stationButtons->addWidget(button(QStringLiteral("Disconnect"), station, [this, call] {
        const std::string c = call->text().trimmed().toStdString();
        if (!c.empty()) m_host.stationDisconnects(c);
    }));
    form->addRow(stationButtons);
    column->addWidget(station);

    column->addWidget(sendBox(QStringLiteral("Chat received"), panel, nullptr,
                              [this](const QString& text) { m_host.receiveChat(text.toStdString()); }));

    auto* settings = new QGroupBox(QStringLiteral("Node settings"), panel);
    auto* settingsForm = new QFormLayout(settings);
    auto* ownCall = new QLineEdit(qs(m_host.callsign), settings);
    connect(ownCall, &QLineEdit::editingFinished, this, [this, ownCall] {
        const QString c = ownCall->text().trimmed().toUpper();
        if (!c.isEmpty()) m_host.callsign = c.toStdString();
    });
    auto* wpm = new QSpinBox(settings);
    wpm->setRange(5, 60);
    wpm->setValue(m_host.cwWpm);
    wpm->setSuffix(QStringLiteral(" WPM"));
    connect(wpm, &QSpinBox::valueChanged, this, [this](int v) { m_host.cwWpm = v; });
    auto* pitch = new QSpinBox(settings);
    pitch->setRange(200, 3000);
    pitch->setValue(static_cast<int>(m_host.cwPitchHz));
    pitch->setSuffix(QStringLiteral(" Hz"));
    connect(pitch, &QSpinBox::valueChanged, this, [this](int v) { m_host.cwPitchHz = v; });
    settingsForm->addRow(QStringLiteral("Own callsign"), ownCall);
    settingsForm->addRow(QStringLiteral("Morse speed"), wpm);
    settingsForm->addRow(QStringLiteral("Morse pitch"), pitch);
    column->addWidget(settings);

    column->addWidget(button(QStringLiteral("Host closing"), panel, [this] { m_host.closing(); }));
    column->addStretch();
    return panel;
}

QWidget* HostConsole::buildDisplays() {
    auto* panel = new QWidget(this);
    auto* column = new QVBoxLayout(panel);
    column->setContentsMargins(0, 0, 0, 0);

    m_airNote = new QLabel(panel);
    m_airNote->setObjectName(QStringLiteral("airNote"));
    m_airNote->setWordWrap(true);
    m_airNote->setVisible(false);
    column->addWidget(m_airNote);

    auto* lines = new QGroupBox(QStringLiteral("Transmitter and serial lines"), panel);
    auto* linesLayout = new QHBoxLayout(lines);
    m_transmitter = new QLabel(lines);
    m_dtr = new QLabel(lines);
    m_rts = new QLabel(lines);
    for (QLabel* l : {m_transmitter, m_dtr, m_rts}) {
        QFont bold = l->font();
        bold.setBold(true);
        l->setFont(bold);
        // A patch of background, where the theme needs one, does not touch the text.
        l->setContentsMargins(4, 1, 4, 1);
        linesLayout->addWidget(l);
    }
    linesLayout->addStretch();
    column->addWidget(lines);

    auto* stations = new QGroupBox(QStringLiteral("Connected stations"), panel);
    auto* stationsLayout = new QVBoxLayout(stations);
    m_stations = new QTreeWidget(stations);
    m_stations->setHeaderLabels({QStringLiteral("Callsign"), QStringLiteral("Name"), QStringLiteral("Address")});
    m_stations->setRootIsDecorated(false);
    m_stations->setMaximumHeight(110);
    stationsLayout->addWidget(m_stations);
    column->addWidget(stations);

    auto* sent = new QWidget(panel);
    auto* sentLayout = new QHBoxLayout(sent);
    sentLayout->setContentsMargins(0, 0, 0, 0);
    auto* chatBox = new QGroupBox(QStringLiteral("Chat sent"), sent);
    m_chatOut = new QListWidget(chatBox);
    (new QVBoxLayout(chatBox))->addWidget(m_chatOut);
    auto* morseBox = new QGroupBox(QStringLiteral("Morse sent"), sent);
    m_morse = new QListWidget(morseBox);
    (new QVBoxLayout(morseBox))->addWidget(m_morse);
    sentLayout->addWidget(chatBox);
    sentLayout->addWidget(morseBox);
    column->addWidget(sent);
    // What the suite speaks, as text: an operator without a sound card still
    // reads what went out (or would have).
    auto* spokenBox = new QGroupBox(QStringLiteral("Spoken"), panel);
    m_spoken = new QListWidget(spokenBox);
    m_spoken->setObjectName(QStringLiteral("spoken"));
    (new QVBoxLayout(spokenBox))->addWidget(m_spoken);
    for (QListWidget* l : {m_chatOut, m_morse, m_spoken}) l->setMaximumHeight(110);
    column->addWidget(spokenBox);

    auto* record = new QGroupBox(QStringLiteral("Commands"), panel);
    auto* recordLayout = new QVBoxLayout(record);
    m_showQueries = new QCheckBox(QStringLiteral("Show queries (IsTransmitting, IsBusy, ...)"), record);
    m_showQueries->setToolTip(QStringLiteral("Also list the questions the windows ask the node many times a second"));
    m_filter = new QLineEdit(record);
    m_filter->setObjectName(QStringLiteral("recordFilter"));
    m_filter->setPlaceholderText(QStringLiteral("Filter: show only lines with this text (SetPTT, hub, ERROR ...)"));
    m_filter->setClearButtonEnabled(true);
    connect(m_filter, &QLineEdit::textChanged, this, [this] { rebuildRecord(); });
    auto* recordBar = new QHBoxLayout;
    recordBar->addWidget(m_showQueries);
    recordBar->addWidget(m_filter, 1);
    m_record = new QPlainTextEdit(record);
    m_record->setReadOnly(true);
    m_record->setMaximumBlockCount(kRecordLines);
    m_record->setLineWrapMode(QPlainTextEdit::NoWrap);
    m_record->setFont(QFont(QStringLiteral("Monospace")));
    m_record->setMinimumSize(460, 220);
    recordLayout->addLayout(recordBar);
    recordLayout->addWidget(m_record);
    column->addWidget(record, 1);
    return panel;
}

void HostConsole::closeEvent(QCloseEvent* event) {
    // Closing the panel only puts it away; the node keeps running.
    event->accept();
    hide();
}

void HostConsole::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() != QEvent::PaletteChange || !m_transmitter) return;
    for (QLabel* lamp : {m_transmitter, m_dtr, m_rts}) lamp->setProperty("lamp", QVariant());
    refreshState();
}

QString HostConsole::stamp(int64_t monotonicMs) const {
    const LocalDateTime t = m_scheduler.clock().localTimeAt(monotonicMs);
    return qs(t.timeText()) + QLatin1Char('.') + QString::number(t.millisecond).rightJustified(3, QLatin1Char('0'));
}

void HostConsole::onCommand(const SimulatedHost::Command& c) {
    if (c.call == "SendChatText" && !c.args.empty()) appendCapped(*m_chatOut, stamp(c.timeMs) + QLatin1Char(' ') + qs(c.args[0]));
    if (c.call == "SendCW" && c.args.size() > 1) appendCapped(*m_morse, stamp(c.timeMs) + QLatin1Char(' ') + qs(c.args[1]));
    // The release check's SetPTT(false) every second while released is no news either.
    if ((isQuery(c.call) || c.repeat) && !m_showQueries->isChecked()) return;
    QStringList args;
    for (const std::string& a : c.args) args << qs(a);
    addRecordLine(stamp(c.timeMs), qs(c.window).leftJustified(9) + qs(c.call) + QLatin1Char('(') +
                                       args.join(QStringLiteral(", ")) + QLatin1Char(')'));
}

void HostConsole::onLogRecord(const LogRecord& r) {
    if (r.kind == "speech") {
        QString window, text;
        bool keyed = false;
        for (const LogField& f : r.fields) {
            const auto* one = std::get_if<LogValue>(&f.value);
            if (!one) continue;
            if (f.key == "window" && std::holds_alternative<std::string>(*one)) window = qs(std::get<std::string>(*one));
            if (f.key == "text" && std::holds_alternative<std::string>(*one)) text = qs(std::get<std::string>(*one));
            if (f.key == "keyed" && std::holds_alternative<bool>(*one)) keyed = std::get<bool>(*one);
        }
        appendCapped(*m_spoken, stamp(m_scheduler.now()) + QLatin1Char(' ') + window + QStringLiteral(": ") + text +
                                    (keyed ? QString() : QStringLiteral("  (not keyed)")));
    }
    // Commands come from the host itself; the log adds what the host cannot see.
    if (r.kind != "event" && r.kind != "error" && r.kind != "dialog" && r.kind != "end" && r.kind != "speech") return;
    QString name;
    QStringList parts;
    for (const LogField& f : r.fields) {
        if (const auto* one = std::get_if<LogValue>(&f.value)) {
            if (f.key == "event" && std::holds_alternative<std::string>(*one)) name = qs(std::get<std::string>(*one));
            else parts << (f.key == "message" || f.key == "reason" ? QString() : qs(f.key) + QLatin1Char('=')) + valueText(*one);
        } else {
            QStringList list;
            for (const LogValue& v : std::get<std::vector<LogValue>>(f.value)) list << valueText(v);
            parts << QLatin1Char('(') + list.join(QStringLiteral(", ")) + QLatin1Char(')');
        }
    }
    const QString what = name.isEmpty() ? parts.join(QLatin1Char(' ')) : name + parts.join(QLatin1Char(' '));
    addRecordLine(stamp(m_scheduler.now()), qs(r.kind).toUpper().leftJustified(9) + what);
}

void HostConsole::addRecordLine(const QString& stamp, const QString& what) {
    // The same line again (SetPTT(false) every second) only counts up.
    if (!m_entries.empty() && m_entries.back().what == what) {
        RecordEntry& last = m_entries.back();
        ++last.count;
        last.lastStamp = stamp;
        m_firstUnshown = std::min(m_firstUnshown, last.number);
    } else {
        m_entries.push_back({m_nextEntry++, stamp, stamp, what, 1});
        if (m_entries.size() > static_cast<size_t>(kRecordLines)) m_entries.pop_front();
    }
    if (!m_flushTimer.isActive()) m_flushTimer.start(kFlushMs);
}

void HostConsole::flushRecord() {
    if (m_firstUnshown >= m_nextEntry) return;
    QScrollBar& bar = *m_record->verticalScrollBar();
    // The view follows the newest line only while the operator has not scrolled back to read.
    const bool following = bar.value() >= bar.maximum();
    const int keptAt = bar.value();
    const QString filter = m_filter->text();
    QStringList appended;
    for (const RecordEntry& e : m_entries) {
        if (e.number < m_firstUnshown) continue;
        if (!filter.isEmpty() && !e.what.contains(filter, Qt::CaseInsensitive)) continue;
        const QString line = entryLine(e.firstStamp, e.lastStamp, e.what, e.count);
        if (e.number == m_lastShown && appended.isEmpty()) {
            // The view's last line counts up in place.
            QTextCursor cursor(m_record->document()->lastBlock());
            cursor.movePosition(QTextCursor::StartOfBlock);
            cursor.movePosition(QTextCursor::EndOfBlock, QTextCursor::KeepAnchor);
            cursor.insertText(line);
        } else {
            appended << line;
        }
        m_lastShown = e.number;
    }
    if (!appended.isEmpty()) m_record->appendPlainText(appended.join(QLatin1Char('\n')));
    m_firstUnshown = m_nextEntry;
    bar.setValue(following ? bar.maximum() : keptAt);
}

void HostConsole::rebuildRecord() {
    m_record->clear();
    m_lastShown = ~uint64_t{0};
    m_firstUnshown = m_entries.empty() ? m_nextEntry : m_entries.front().number;
    flushRecord();
    m_record->verticalScrollBar()->setValue(m_record->verticalScrollBar()->maximum());
}

void HostConsole::setRecordFilter(const QString& text) { m_filter->setText(text); }

void HostConsole::setAirNote(const QString& note) {
    m_airNote->setText(note);
    m_airNote->setVisible(!note.isEmpty());
    if (!note.isEmpty()) addRecordLine(stamp(m_scheduler.now()), QStringLiteral("AUDIO    ") + note);
}

QStringList HostConsole::recordLines() {
    flushRecord();
    return m_record->toPlainText().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

bool HostConsole::showingQueries() const { return m_showQueries->isChecked(); }

void HostConsole::setShowQueries(bool on) { m_showQueries->setChecked(on); }

void HostConsole::refreshState() {
    const bool on = m_host.transmitting();
    setLamp(*m_transmitter, on ? QStringLiteral("PTT ON") : QStringLiteral("PTT OFF"), on ? kPttOnRed : kPttOffGreen, palette());
    setLamp(*m_dtr, m_host.dtr() ? QStringLiteral("DTR on") : QStringLiteral("DTR off"), m_host.dtr() ? kPttOnRed : kBlack, palette());
    setLamp(*m_rts, m_host.rts() ? QStringLiteral("RTS on") : QStringLiteral("RTS off"), m_host.rts() ? kPttOnRed : kBlack, palette());
    // Keyed by its own tones, the host unkeys by itself when they end; nothing tells us.
    const bool toneKeyed = on && !m_host.pttKeyed();
    if (toneKeyed && !m_toneWatch.isActive()) m_toneWatch.start();
    if (!toneKeyed && m_toneWatch.isActive()) m_toneWatch.stop();

    for (auto [box, value] : {std::pair{m_carrier, m_host.carrier()}, std::pair{m_receiving, m_host.receiving()},
                              std::pair{m_busy, m_host.busy()}}) {
        if (box->isChecked() != value) {
            const QSignalBlocker quiet(box);
            box->setChecked(value);
        }
    }

    const auto& stations = m_host.stations();
    const bool same = m_stationsShown && stations.size() == m_shownStations.size() &&
                      std::equal(stations.begin(), stations.end(), m_shownStations.begin(), [](const auto& a, const auto& b) {
                          return a.first == b.first && a.second.name == b.second.name && a.second.address == b.second.address;
                      });
    if (same) return;
    m_shownStations = stations;
    m_stationsShown = true;
    m_stations->clear();
    for (const auto& [call, info] : stations)
        m_stations->addTopLevelItem(new QTreeWidgetItem({qs(call), qs(info.name), qs(info.address)}));
}

}  // namespace mv
