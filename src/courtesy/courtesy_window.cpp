#include "courtesy/courtesy_window.h"

#include "core/errors.h"
#include "core/event_log.h"
#include "core/program.h"

namespace mv {

using namespace courtesy;

namespace {

constexpr size_t kCourtesyReadBuffer = 256;

// The load asks for the check boxes as "Check1" ... "Check7" and the save
// writes them as "CHECK1" ...; keys match without regard to case, so both
// name one entry.
const std::vector<std::string>& loadOrder() {
    static const std::vector<std::string> order = {
        "COURTESYID", "IPCOURTESY", "HANGTIME", "KERCHUNKWAIT", "RFTONE",        "INETTONE",
        "VOLSET",     "SPEEDSET",   "OPTION1",  "OPTION2",      "Check1",        "TEXT4",
        "TEXT5",      "TEXT6",      "TEXT7",    "TEXT8",        "BEACONPERIOD",  "BEACONPERIOD2",
        "BEACONPERIOD3", "Check2",  "Check3",   "Check4",       "Check5",        "Check6",
        "Check7",     "LEFT",       "TOP"};
    return order;
}

}  // namespace

CourtesyWindow::CourtesyWindow(Program& program)
    : Window(program, "courtesy"),
      m_binder(kCourtesySettingsFile, kCourtesyReadBuffer, "courtesy"),
      m_engine(*this),
      m_timeOuts(*this),
      m_longTransmission(*this) {}

CourtesyWindow::~CourtesyWindow() = default;

void CourtesyWindow::build() {
    auto& root = make<Container>("courtesyRoot", ContainerKind::Column);
    setRoot(root);
    auto& indicators = root.add(make<Container>("courtesyIndicators", ContainerKind::Row));
    buildIndicators(indicators);
    m_presence = std::make_unique<ChannelPresence>(ChannelPresence{*m_rfUser, *m_internet});

    auto& tabs = root.add(make<Container>("courtesyTabs", ContainerKind::Tabs));
    auto& signalPage = tabs.add(make<Container>("tabCortesia", ContainerKind::TabPage, "Cortesia"));
    auto& playerPage = tabs.add(make<Container>("tabTonos", ContainerKind::TabPage, "Tonos"));
    auto& timingPage = tabs.add(make<Container>("tabTiempos", ContainerKind::TabPage, "Tiempos"));
    auto& messagePage = tabs.add(make<Container>("tabMensaje", ContainerKind::TabPage, "Mensaje"));
    m_engine.build(parts(), signalPage, playerPage, *m_ptt, *m_ident);
    buildKerchunkFrame(timingPage);
    m_timeOuts.build(parts(), indicators, timingPage, *m_presence, [this] { m_longTransmission.stopRfCounter(); });
    m_longTransmission.build(parts(), messagePage, *m_presence);

    auto& foot = root.add(make<Container>("courtesyButtons", ContainerKind::Row));
    Button& save = foot.add(make<Button>("btnSave", "Salvar Configuracion"));
    save.onClick = [this] { saveData(); };
    setSaveButton(save);
    foot.add(make<Button>("btnHide", "Ocultar")).onClick = [this] { hide(); };

    // The first poll, 10 ms after load, replaces RFUser's design text.
    m_statusPoll = &makeTimer("StatusPoll", 10, true, [this] { statusTick(); });
    makeTimer("Timer2", 1000, true, [this] { secondTick(); });
    bindSettings();
}

void CourtesyWindow::buildIndicators(Container& row) {
    m_rfUser = &row.add(make<Label>("RFUser", "RF No"));
    m_rfUser->setBackColor(kCyan);
    m_internet = &row.add(make<Label>("PTT1", kIpTxOff));
    m_internet->setBackColor(kLightGreen);
    m_ptt = &row.add(make<Label>("PTT", kPttOff));
    m_ptt->setBackColor(kLightGreen);
    m_ident = &row.add(make<Label>("Ident", kIdentOff));
    m_ident->setBackColor(kCyan);
    row.add(make<Label>("lblLocalTime", "Hora Local"));
    m_localTime = &row.add(make<Label>("LocalTime", "00:00:00"));
}

void CourtesyWindow::buildKerchunkFrame(Container& area) {
    auto& outer = area.add(make<Container>("frameKerchunk", ContainerKind::Frame, "Anti-Kerchunker"));
    auto& frame = outer.add(make<Container>("kerchunkGrid", ContainerKind::Grid, "", 3));
    frame.add(make<Label>("lblKerchunkWait", "Anti-Kerchunker"));
    TextBox& wait = frame.add(make<TextBox>("KerchunkWait", "5000"));
    wait.setToolTip("Anti-Kerchunker Tiempo en Milesegundos");
    frame.add(make<Label>("lblKerchunkWaitUnit", "ms"));
    frame.add(make<Label>("lblHangTime", "Cola antes de la Cortesia"));
    TextBox& hang = frame.add(make<TextBox>("HangTime", "500"));
    hang.setToolTip("Tiempo entes de ID xx Milesegundos");
    frame.add(make<Label>("lblHangTimeUnit", "ms"));
    frame.add(make<Label>("lblOK2Kerchunk", "Aceptada"));
    Label& ok = frame.add(make<Label>("OK2Kerchunk", Kerchunker::kNotAccepted));
    m_kerchunker = std::make_unique<Kerchunker>(
        parts(), wait, hang, ok, KerchunkerOptions{}, [this] { m_engine.sendRFCourtesy(); },
        [this] { m_engine.sendInternetCourtesy(); });
}

void CourtesyWindow::bindSettings() {
    m_binder = SettingsBinder(kCourtesySettingsFile, kCourtesyReadBuffer, name());
    auto text = [this](const std::string& key, const std::string& def) {
        m_binder.bindText(key, *controlAs<TextBox>(key), def);
    };
    auto check = [this](const std::string& key) { m_binder.bindCheck(key, *controlAs<CheckBox>(key), "0"); };
    const std::string tones = program().defaultToneFolder();
    text("COURTESYID", "K");
    text("IPCOURTESY", "I");
    text("HANGTIME", "500");
    text("KERCHUNKWAIT", "5000");
    text("RFTONE", tones + "RF.wav");
    text("INETTONE", tones + "IP.wav");
    text("VOLSET", "0");
    text("SPEEDSET", "100");
    m_binder.bindOption("OPTION1", *controlAs<OptionButton>("OPTION1"), "1");
    m_binder.bindOption("OPTION2", *controlAs<OptionButton>("OPTION2"), "0");
    m_binder.bindCheck("CHECK1", *controlAs<CheckBox>("CHECK1"), "1");
    text("TEXT4", "");
    text("TEXT5", "");
    text("TEXT6", "");
    text("TEXT7", "#22#");
    text("TEXT8", "3");
    text("BEACONPERIOD", "150");
    text("BEACONPERIOD2", "5");
    text("BEACONPERIOD3", "5");
    for (int i = 2; i <= 7; ++i) check("CHECK" + std::to_string(i));
    bindWindowPosition(m_binder, "300");
}

void CourtesyWindow::onLoad() {
    m_closingSaved = false;
    createHostObject();
    const ProductInfo& p = program().product();
    setCaption(p.name + "    " + host().stationInfo().callsign + "   v" + p.versionText() + "          Dunmeral");
    m_binder.load(settings(), log(), loadOrder());
    OptionButton& cw = *controlAs<OptionButton>("OPTION1");
    ensureOneSelected(cw.group(), cw);
    m_engine.afterSettingsLoaded();
    m_kerchunker->applyPeriods();
    m_longTransmission.clearPending();
}

void CourtesyWindow::onUnload() {
    m_engine.release();
    m_timeOuts.release();
    m_longTransmission.release();
    m_kerchunker.reset();
    m_statusPoll = nullptr;
}

void CourtesyWindow::saveData() { saveSettings(m_binder); }

void CourtesyWindow::wakeStatusPoll() {
    if (m_statusPoll) m_statusPoll->setEnabled(true);
}

void CourtesyWindow::statusTick() {
    // Each read on its own: a host that fails one leaves that indicator as it
    // was, and the poll still goes to rest.
    ignoreErrors([this] { showTransmitter(*m_ptt, host()); });
    ignoreErrors([this] {
        const bool carrier = host().isCarrierDetected();
        indicate(*m_rfUser, carrier ? kRxYes : kRxNo, carrier ? kOrange : kCyan);
    });
    // The carrier and the Internet audio announce their changes as host
    // events, which wake the poll; only a keyed transmitter (the host's own
    // Morse runs out by itself) and a playing tone need watching meanwhile.
    m_statusPoll->setEnabled(m_ptt->caption() == kPttOn || m_engine.toneOnAir());
}

void CourtesyWindow::secondTick() {
    m_longTransmission.arm();
    m_localTime->setCaption(scheduler().wallNow().timeText());
    // While the poll rests it still looks once a second, for a host that
    // keys itself (its own ident) without any window asking.
    if (!m_statusPoll->running()) statusTick();
}

void CourtesyWindow::onKeyingCommand(bool keys) {
    // An unkey can only change what the indicator shows while it reads "PTT ON".
    if (keys || (m_ptt && m_ptt->caption() == kPttOn)) wakeStatusPoll();
}

void CourtesyWindow::onRX(bool receiving) {
    if (receiving) {
        indicate(*m_internet, kIpTxOn, kRed);
    } else {
        // The indicator is the Internet side's presence for the time-out and
        // the message: it must turn off even if the host refuses the letter
        // (the refusal is logged by the call).
        ignoreErrors([this] { m_kerchunker->internetAudioEnded(); });
        indicate(*m_internet, kIpTxOff, kLightGreen);
    }
    wakeStatusPoll();
}

void CourtesyWindow::onCarrierDetect(bool carrier) {
    m_kerchunker->carrierDetect(carrier);
    wakeStatusPoll();
}

void CourtesyWindow::onDTMFString(const std::string& digits) { m_engine.dtmfSwitch(digits); }

void CourtesyWindow::beforeHostCloses() {
    // Done here, not in the Closing handler, because another window's handler
    // may end the program before this window hears the event.
    if (m_closingSaved) return;
    m_closingSaved = true;
    ignoreErrors([this] { host().setPTT(false); });
    saveData();
}

void CourtesyWindow::onClosing() {
    beforeHostCloses();
    program().end("host closing");
}

Window::CloseDecision CourtesyWindow::onQueryClose() {
    // The close box ends the whole program at once, unsaved. The tone stops
    // here; the program's end releases the transmitter.
    m_engine.player().stop();
    m_engine.player().cleanUp();
    program().end("courtesy window closed");
}

}  // namespace mv
