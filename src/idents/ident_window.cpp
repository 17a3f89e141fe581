#include "idents/ident_window.h"

#include "core/dialogs.h"
#include "core/errors.h"
#include "core/program.h"
#include "idents/announcement_switches.h"
#include "idents/clock_shortcuts.h"
#include "idents/connection_announcer.h"
#include "idents/courtesy_letters.h"
#include "idents/fan_control.h"
#include "idents/ident_clock.h"
#include "idents/information_texts.h"
#include "idents/silence_schedule.h"
#include "idents/speech_editor.h"
#include "idents/speech_engine.h"
#include "idents/spoken_time.h"
#include "idents/station_ident.h"

namespace mv {
namespace {
constexpr size_t kIdentReadBuffer = 256;
const std::string kNoText;
}  // namespace

IdentWindow::IdentWindow(Program& program)
    : Window(program, "idents"), m_binder(kIdentSettingsFile, kIdentReadBuffer, "idents") {}

IdentWindow::~IdentWindow() = default;

void IdentWindow::build() {
    m_binder = SettingsBinder(kIdentSettingsFile, kIdentReadBuffer, name());
    m_speech = std::make_unique<SpeechEngine>(*this);
    m_ident = std::make_unique<StationIdent>(*this);
    m_clock = std::make_unique<IdentClock>(*this);
    m_editor = std::make_unique<SpeechEditor>(*this);
    m_time = std::make_unique<SpokenTime>(*this);
    m_connections = std::make_unique<ConnectionAnnouncer>(*this, *m_time);
    m_switches = std::make_unique<AnnouncementSwitches>(*this, *m_time);
    m_schedule = std::make_unique<SilenceSchedule>(*this, *m_switches);
    m_fan = std::make_unique<FanControl>(*this);
    m_information = std::make_unique<InformationTexts>(*this);
    m_shortcuts = std::make_unique<ClockShortcuts>(*this, *m_time);
    m_courtesy = std::make_unique<CourtesyLetters>(*this);
    m_channelBusy = false;

    auto& root = make<Container>("identsRoot", ContainerKind::Column);
    setRoot(root);
    auto& status = root.add(make<Container>("rowStatus", ContainerKind::Row));
    m_clock->build(parts(), status);

    auto& tabs = root.add(make<Container>("identsTabs", ContainerKind::Tabs));
    auto& identPage = tabs.add(make<Container>("tabIdent", ContainerKind::TabPage, "Indicativo"));
    m_ident->build(parts(), identPage, m_binder);
    m_clock->showLength(m_ident->callsign(), m_ident->callsignLength());
    buildAnnouncements(identPage);

    auto& connectsPage = tabs.add(make<Container>("tabConnects", ContainerKind::TabPage, "Conecciones"));
    auto& connectsRow = connectsPage.add(make<Container>("rowConnects", ContainerKind::Row));
    m_connections->build(parts(), connectsRow, connectsPage, m_binder);
    m_time->build(parts(), connectsRow, m_binder);

    auto& infoPage = tabs.add(make<Container>("tabInformation", ContainerKind::TabPage, "Informacion"));
    m_information->build(parts(), infoPage, *m_clock, m_binder);
    m_shortcuts->build(parts(), infoPage, status);
    m_ptt = &status.add(make<Label>("PTT", kPttOff, kPttOffGreen));

    m_schedule->build(parts(), tabs.add(make<Container>("tabSchedule", ContainerKind::TabPage, "Horario")), m_binder);

    auto& stationPage = tabs.add(make<Container>("tabFanCourtesy", ContainerKind::TabPage, "Ventilador y Cortesia"));
    auto& stationRow = stationPage.add(make<Container>("rowFanCourtesy", ContainerKind::Row));
    m_fan->build(parts(), stationRow, m_binder);
    m_courtesy->build(parts(), stationRow, m_binder);
    m_speech->keying = [this] { m_fan->keying(); };
    m_speech->released = [this] { m_fan->dropLine(); };

    m_editor->build(parts(), tabs.add(make<Container>("tabEditor", ContainerKind::TabPage, "Editor de Texto")));

    auto& buttons = root.add(make<Container>("rowIdentButtons", ContainerKind::Row));
    auto& save = buttons.add(make<Button>("btnSaveChanges", "Save  Changes"));
    save.setToolTip("Guarda las opciones en " + std::string(kIdentSettingsFile));
    save.onClick = [this] { saveData(); };
    auto& hideButton = buttons.add(make<Button>("btnOcultar", "Ocultar"));
    hideButton.onClick = [this] { hide(); };

    makeTimer("Timer4", 100, true, [this] { followTransmitter(); });
}

void IdentWindow::buildAnnouncements(Container& page) {
    auto& row = page.add(make<Container>("rowAnnouncements", ContainerKind::Row));
    m_speech->build(parts(), row.add(make<Container>("frameAnnouncements", ContainerKind::Frame, "Announcements ")),
                    m_binder);
    m_switches->build(parts(), row, m_binder);
}

void IdentWindow::onLoad() {
    createHostObject();
    const ProductInfo& p = program().product();
    setCaption(p.name + "    " + host().stationInfo().callsign + "   v" + p.versionText());
    restateHostWait();
    host().setPTT(false);
    host().setDTR(false);
    host().setRTS(false);
    // The options the operator saved; a missing file or key gives the defaults.
    m_binder.load(settings(), log());
    m_ident->startCounting();
    m_fan->startIdle();
    m_courtesy->applyPeriods();
}

void IdentWindow::onUnload() {
    m_courtesy.reset();
    m_shortcuts.reset();
    m_information.reset();
    m_fan.reset();
    m_schedule.reset();
    m_switches.reset();
    m_connections.reset();
    m_time.reset();
    m_editor.reset();
    m_clock.reset();
    m_ident.reset();
    m_speech.reset();
    m_ptt = nullptr;
}

void IdentWindow::saveData() { saveSettings(m_binder); }

void IdentWindow::restateHostWait() { program().setHostBusyWaitMs(kHostBusyWaitMs); }

void IdentWindow::setSpeechText(const std::string& text) {
    if (m_speech) m_speech->setText(text);
}
const std::string& IdentWindow::speechText() const { return m_speech ? m_speech->text() : kNoText; }
void IdentWindow::setSpeechPending(bool pending) {
    if (m_speech) m_speech->setPending(pending);
}
bool IdentWindow::speechPending() const { return m_speech && m_speech->pending(); }
void IdentWindow::setSkipSpeechDelay(bool skip) {
    if (m_speech) m_speech->setSkipDelay(skip);
}
void IdentWindow::speakTheText() {
    if (m_speech) m_speech->speakTheText();
}

void IdentWindow::followTransmitter() {
    ignoreErrors([this] {
        const bool transmitting = host().isTransmitting();
        m_ptt->showPtt(transmitting);
        if (transmitting) m_fan->whileTransmitting();
    });
}

void IdentWindow::onRX(bool receiving) {
    // In silence mode Internet reception no longer counts as a busy channel,
    // and no courtesy letter follows it.
    if (m_speech->announcementsDisabled()) return;
    m_channelBusy = receiving;
    m_courtesy->onRX(receiving);
}

void IdentWindow::onCarrierDetect(bool carrier) {
    m_channelBusy = carrier;
    m_courtesy->onCarrierDetect(carrier);
}

void IdentWindow::onConnected(const std::string& call, const std::string& name, const std::string& address) {
    m_connections->onConnected(call, name, address);
}

void IdentWindow::onDisconnected(const std::string& call) { m_connections->onDisconnected(call); }

void IdentWindow::onDTMFString(const std::string& digits) { m_switches->onDTMFString(digits); }

void IdentWindow::releaseEverything() {
    ignoreErrors({[this] { host().setPTT(false); }, [this] { host().setDTR(false); }, [this] { host().setRTS(false); }});
}

void IdentWindow::onClosing() {
    releaseEverything();
    program().end("host closing");
}

Window::CloseDecision IdentWindow::onQueryClose() {
    const DialogAnswer answer =
        dialogs().message({name(), "Exit Program", "Quit Brackwen - Are You Sure ? Remember To Save Any Changes  ",
                           DialogIcon::Question, DialogButtons::YesNo});
    if (answer == DialogAnswer::No) return CloseDecision::Cancel;
    releaseEverything();
    program().end("quit");
}

}  // namespace mv
