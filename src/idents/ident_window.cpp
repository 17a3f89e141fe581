#include "idents/ident_window.h"

#include "core/dialogs.h"
#include "core/errors.h"
#include "core/program.h"
#include "idents/ident_clock.h"
#include "idents/speech_editor.h"
#include "idents/speech_engine.h"
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
    m_channelBusy = false;

    auto& root = make<Container>("identsRoot", ContainerKind::Column);
    setRoot(root);
    auto& status = root.add(make<Container>("rowStatus", ContainerKind::Row));
    m_clock->build(parts(), status);
    m_ptt = &status.add(make<Label>("PTT", kPttOff, kPttOffGreen));

    auto& tabs = root.add(make<Container>("identsTabs", ContainerKind::Tabs));
    auto& identPage = tabs.add(make<Container>("tabIdent", ContainerKind::TabPage, "Indicativo"));
    m_ident->build(parts(), identPage, m_binder);
    m_clock->showLength(m_ident->callsign(), m_ident->callsignLength());
    buildAnnouncements(identPage);
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
    // Whether received text messages are read out; the text message window
    // reads the box by name.
    auto& anuncios = row.add(make<Container>("frameAnuncios", ContainerKind::Frame, "Anuncios"));
    auto& sayText = anuncios.add(make<CheckBox>("SayText", "Mensaje Texto"));
    sayText.setToolTip("Announce Text Messages");
    anuncios.add(make<Label>("lblToggleText", "Comutador Mensaje Texto"));
    auto& toggle = anuncios.add(make<TextBox>("ToggleText", ""));
    m_binder.bindCheck("SAYTEXT", sayText, "0");
    m_binder.bindText("TOGGLETEXT", toggle, "");
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
}

void IdentWindow::onUnload() {
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
    ignoreErrors([this] { m_ptt->showPtt(host().isTransmitting()); });
}

void IdentWindow::onRX(bool receiving) {
    // In silence mode Internet reception no longer counts as a busy channel.
    if (!m_speech->announcementsDisabled()) m_channelBusy = receiving;
}

void IdentWindow::onCarrierDetect(bool carrier) { m_channelBusy = carrier; }

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
