#include "dtmf/dtmf_control_window.h"

#include "core/dialogs.h"
#include "core/dtmf_code.h"
#include "core/errors.h"
#include "core/event_log.h"
#include "core/program.h"

namespace mv {
namespace {

constexpr size_t kReadBuffer = 256;
// Rows 1 to 8 hold EchoLink node numbers; rows 9 to 12 any station or conference name.
constexpr int kLastNodeNumberRow = 8;
// The host wait this window sets for the whole process: a busy host is
// waited for this long before a call fails.
constexpr int64_t kHostBusyWaitMs = 900000;

// Row 1's "Auto" box is stored as CHECK13: CHECK1 is "Usar DTMF Abierto".
std::string autoKey(int row) { return "CHECK" + std::to_string(row == 1 ? 13 : row); }

}  // namespace

DtmfControlWindow::DtmfControlWindow(Program& program)
    : Window(program, "dtmf"), m_binder(kDtmfControlSettingsFile, kReadBuffer, "dtmf") {}

DtmfControlWindow::~DtmfControlWindow() = default;

void DtmfControlWindow::build() {
    m_rows.clear();
    m_groups.clear();
    auto& root = make<Container>("dtmfRoot", ContainerKind::Column);
    setRoot(root);
    auto& top = root.add(make<Container>("dtmfTop", ContainerKind::Row));
    buildStations(top);
    buildCodes(top.add(make<Container>("dtmfCodes", ContainerKind::Column)));
    auto& lower = root.add(make<Container>("dtmfLower", ContainerKind::Row));
    m_groups.push_back(std::make_unique<GroupCall>(parts(), lower, 1, std::vector<int>{1, 2, 3, 9, 10}));
    m_groups.push_back(std::make_unique<GroupCall>(parts(), lower, 2, std::vector<int>{4, 5, 6, 7, 8}));
    buildDelay(lower);
    auto& buttons = root.add(make<Container>("dtmfButtons", ContainerKind::Row));
    Button& save = buttons.add(make<Button>("Save", "Salvar"));
    save.onClick = [this] { saveData(); };
    setSaveButton(save);
    buttons.add(make<Button>("Hide", "Ocultar")).onClick = [this] { hide(); };
    // Rows marked "Auto" that have dropped are connected again within a minute.
    makeTimer("Timer2", 60000, true, [this] { keepAlive(); });
    bindSettings();
}

void DtmfControlWindow::buildStations(Container& parent) {
    auto& frame = parent.add(make<Container>("frameStations", ContainerKind::Frame, "Estaciones Preferidas"));
    auto& grid = frame.add(make<Container>("stationGrid", ContainerKind::Grid, "", 5));
    for (const char* header : {"", "Indicativo", "DTMF", "Auto", ""})
        grid.add(make<Label>("", header));
    for (int row = 1; row <= kPreferredStations; ++row) {
        const std::string n = std::to_string(row);
        grid.add(make<Label>("lblRow" + n, n));
        TextBox& station = grid.add(make<TextBox>("CALL" + n));
        station.setDigitsOnly(row <= kLastNodeNumberRow);
        TextBox& code = grid.add(make<TextBox>("DTMF" + n));
        CheckBox& autoConnect = grid.add(make<CheckBox>(autoKey(row), "", 0));
        grid.add(make<Button>("RowTest" + n, "Con/Disc Pruebe")).onClick = [this, row] { rowTest(row); };
        m_rows.push_back({&station, &code, &autoConnect});
    }
}

void DtmfControlWindow::buildCodes(Container& parent) {
    auto& all = parent.add(make<Container>(
        "frameDisconnect", ContainerKind::Frame,
        " DTMF    Desconectar Todas Las Funciones     DTMF Desconecta Ultima Coneccion"));
    auto& grid = all.add(make<Container>("disconnectGrid", ContainerKind::Grid, "", 2));
    grid.add(make<Label>("lblTEXT111", "Desconectar Todo"));
    grid.add(make<TextBox>("TEXT111", "Text111"));
    grid.add(make<Label>("lblTEXT555", "Ultimo"));
    grid.add(make<TextBox>("TEXT555", "Text555"));
    grid.add(make<Label>("lblLastConnection", "Ultima Coneccion"));
    m_lastConnection = &grid.add(make<TextBox>("LastConnection"));
    m_lastConnection->setReadOnly(true);

    auto& open = parent.add(make<Container>("frameOpen", ContainerKind::Frame, "DTMF Abierto / Cerrado"));
    auto& codes = open.add(make<Container>("openGrid", ContainerKind::Grid, "", 2));
    codes.add(make<Label>("lblTEXT222", "DTMF - Todo Abierto"));
    codes.add(make<TextBox>("TEXT222", "Text222"));
    codes.add(make<Label>("lblTEXT333", "DTMF - Todo Cerrado"));
    codes.add(make<TextBox>("TEXT333", "Text333"));
    m_open = &open.add(make<CheckBox>("CHECK1", "Usar DTMF Abierto", 0));
    auto& period = open.add(make<Container>("reopenRow", ContainerKind::Row));
    period.add(make<Label>("lblAfter", "Despues de"));
    TextBox& minutes = period.add(make<TextBox>("BEACONPERIOD", "5"));
    minutes.setToolTip("Re-Abierta en Minutos");
    period.add(make<Label>("lblMinutes", "Minutos"));
    Label& seconds = period.add(make<Label>("ReopenCountdown", "15"));

    // Closed DTMF control opens again by itself after the period: the count
    // falls only while "Usar DTMF Abierto" is clear and holds while it is
    // ticked, so closing again resumes from where it stood.
    PeriodCountdownOptions o;
    o.timerName = "Timer1";
    o.editStartsOrStopsTick = false;
    o.onEdit = PeriodCountdownOptions::OnEdit::ShowPeriodText;
    o.zeroPeriodBecomesOneAtTick = true;
    o.step = [this] {
        return m_open->value() == 0 ? PeriodCountdownOptions::Step::Count : PeriodCountdownOptions::Step::Hold;
    };
    m_reopen = std::make_unique<PeriodCountdown>(parts(), minutes, seconds, nullptr, std::move(o),
                                                 [this] { m_open->setValue(1); });

    // Read by the ident window: it speaks the time when a received string
    // equals DTMF while USEDTMF is ticked.
    auto& frame = parent.add(make<Container>("frameTimeRequest", ContainerKind::Frame, "DTMF Por Hora"));
    auto& time = frame.add(make<Container>("timeRequestRow", ContainerKind::Row));
    time.add(make<TextBox>("DTMF", "DTMF"));
    time.add(make<CheckBox>("USEDTMF", "Usar", 0));
}

void DtmfControlWindow::buildDelay(Container& parent) {
    auto& frame = parent.add(
        make<Container>("frameDelay", ContainerKind::Frame, "DTMF - Tiempo en Segundos Permitido TX Con/Des"));
    auto& grid = frame.add(make<Container>("delayGrid", ContainerKind::Grid, "", 2));
    grid.add(make<Label>("lblTEXT1111", "DTMF - Todo Abierto"));
    grid.add(make<TextBox>("TEXT1111", "Text1"));
    grid.add(make<Label>("lblTEXT2222", "DTMF - Todo Cerrado"));
    grid.add(make<TextBox>("TEXT2222", "Text2"));
    auto& seconds = frame.add(make<Container>("delaySecondsRow", ContainerKind::Row));
    seconds.add(make<Label>("lblDelayFor", "Retardo para - DTMF"));
    TextBox& allowance = seconds.add(make<TextBox>("DTMFDELAYSECONDS"));
    seconds.add(make<Label>("lblSeconds", "Segundos"));
    auto& state = frame.add(make<Container>("delayStateRow", ContainerKind::Row));
    m_useDelay = &state.add(make<CheckBox>("USEDTMFDELAY", "Usar Retardo", 0));
    Label& countdown = state.add(make<Label>("DelayCountdown", "5"));
    Label& indicator = state.add(make<Label>("ReceptionIndicator", kNoSignal));
    m_delay = std::make_unique<DtmfDelay>(parts(), allowance, *m_useDelay, countdown, indicator);

}

void DtmfControlWindow::bindSettings() {
    m_binder = SettingsBinder(kDtmfControlSettingsFile, kReadBuffer, name());
    auto text = [this](const std::string& key, const std::string& def) {
        m_binder.bindText(key, *controlAs<TextBox>(key), def);
    };
    auto check = [this](const std::string& key) { m_binder.bindCheck(key, *controlAs<CheckBox>(key), "0"); };
    for (int row = 1; row <= kPreferredStations; ++row) text("CALL" + std::to_string(row), "");
    for (int row = 1; row <= kPreferredStations; ++row) text("DTMF" + std::to_string(row), "");
    for (int row = 1; row <= kPreferredStations; ++row) check(autoKey(row));
    for (const char* key : {"DTMFGROUP1CONNECT", "DTMFGROUP1DISC", "DTMFGROUP2CONNECT", "DTMFGROUP2DISC"}) text(key, "");
    for (int member = 1; member <= 10; ++member) text("GROUPCALL" + std::to_string(member), "");
    text("TEXT222", "Text222");
    text("TEXT333", "Text333");
    text("TEXT555", "Text555");
    check("CHECK1");
    text("BEACONPERIOD", "5");
    text("TEXT1111", "Text1");
    text("TEXT2222", "Text2");
    text("DTMFDELAYSECONDS", "");
    check("USEDTMFDELAY");
    text("DTMF", "DTMF");
    check("USEDTMF");
    // Saved and read back like every other code, so "Desconectar Todo"
    // survives a restart too.
    text("TEXT111", "Text111");
    bindWindowPosition(m_binder, "300");
}

void DtmfControlWindow::onLoad() {
    createHostObject();
    setModuleCaption("   Control DTMF");
    host().setPTT(false);
    program().setHostBusyWaitMs(kHostBusyWaitMs);
    // An operator who pressed "Salvar" expects the values back after a
    // restart. The fields' own change handlers run as values arrive, so a
    // stored period or allowance shows in its countdown at once.
    m_binder.load(settings(), log());
}

void DtmfControlWindow::onUnload() {
    m_reopen.reset();
    m_delay.reset();
    m_groups.clear();
    m_rows.clear();
}

void DtmfControlWindow::startDelayTimer() {
    if (m_delay) m_delay->start();
}

void DtmfControlWindow::saveData() { saveSettings(m_binder); }

void DtmfControlWindow::rowTest(int row) {
    const std::string station = m_rows.at(static_cast<size_t>(row - 1)).station->text();
    if (station.empty()) return;
    ignoreErrors([&] { toggleConnection(host(), station); });
}

void DtmfControlWindow::keepAlive() {
    for (const Row& row : m_rows) {
        if (row.autoConnect->value() != 1) continue;
        const std::string station = upperStation(row.station->text());
        // A failing query or connect is in the log; the other rows still get theirs.
        ignoreErrors([&] {
            if (host().isConnectedTo(station)) return;
            if (station.empty()) return;
            host().connect(station, true);
        });
    }
}

void DtmfControlWindow::disconnectLast() {
    const std::string station = m_lastConnection->text();
    if (station.empty()) return;
    ignoreErrors([&] {
        if (host().isConnectedTo(station)) host().disconnect(station);
    });
}

void DtmfControlWindow::command(const std::string& code, const std::string& function,
                                const std::function<void()>& action) {
    if (!m_open->ticked()) {
        log().dtmfCommand(name(), code, function, "DTMF control closed (Usar DTMF Abierto)");
        return;
    }
    if (m_useDelay->value() == 1 && m_delay->ranOut()) {
        log().dtmfCommand(name(), code, function, "DTMF delay ran out (Usar Retardo)");
        return;
    }
    log().dtmfCommand(name(), code, function);
    action();
}

void DtmfControlWindow::onDTMFString(const std::string& digits) {
    auto matches = [&](const char* field) { return dtmfCodeMatches(digits, controlAs<TextBox>(field)->text()); };
    // The switches act first, so a command that follows them sees the new state.
    struct Switch {
        const char* code;
        const char* function;
        CheckBox* box;
        int value;
    };
    const Switch switches[] = {
        {"TEXT1111", "Usar Retardo on", m_useDelay, 1},
        {"TEXT2222", "Usar Retardo off", m_useDelay, 0},
        {"TEXT222", "Todo Abierto", m_open, 1},
        {"TEXT333", "Todo Cerrado", m_open, 0},
    };
    for (const Switch& s : switches) {
        if (!matches(s.code)) continue;
        log().dtmfCommand(name(), digits, s.function);
        s.box->setValue(s.value);
    }
    for (int row = 1; row <= kPreferredStations; ++row) {
        if (!dtmfCodeMatches(digits, m_rows[static_cast<size_t>(row - 1)].code->text())) continue;
        command(digits, "Con/Disc fila " + std::to_string(row), [this, row] { rowTest(row); });
    }
    for (auto& group : m_groups) {
        GroupCall& g = *group;
        if (dtmfCodeMatches(digits, g.connectCode()))
            command(digits, g.caption() + " Conecte", [&g] { g.connectGroup(); });
        if (dtmfCodeMatches(digits, g.disconnectCode()))
            command(digits, g.caption() + " Desconecte", [&g] { g.disconnectGroup(); });
    }
    if (matches("TEXT111"))
        command(digits, "Desconectar Todo", [this] { ignoreErrors([this] { host().disconnectAll(); }); });
    if (matches("TEXT555")) command(digits, "Ultimo", [this] { disconnectLast(); });
}

void DtmfControlWindow::onConnected(const std::string& call, const std::string&, const std::string&) {
    m_lastConnection->setText(call);
}

void DtmfControlWindow::onClosing() {
    // Whatever fails on the way out, the transmitter is released and the program ends.
    ignoreErrors([this] { host().setPTT(false); });
    program().end("host closing");
}

Window::CloseDecision DtmfControlWindow::onQueryClose() {
    const DialogAnswer answer =
        dialogs().message({name(), "Exit Program", "Quit Solvane - Are You Sure ? Remember To Save Any Changes  ",
                           DialogIcon::Question, DialogButtons::YesNo});
    if (answer != DialogAnswer::Yes) return CloseDecision::Cancel;
    ignoreErrors([this] { host().setPTT(false); });
    program().end("quit");
}

}  // namespace mv
