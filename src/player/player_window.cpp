#include "player/player_window.h"

#include "core/dialogs.h"
#include "core/dtmf_code.h"
#include "core/errors.h"
#include "core/event_log.h"
#include "core/module_surfaces.h"
#include "core/program.h"

namespace mv {
namespace {

constexpr size_t kPlayerReadBuffer = 256;

// The sample beacons the first rows name until the operator chooses files.
constexpr const char* kSampleFiles[] = {"Beacon.wav", "Chime.wav", "Welcome.wav"};

}  // namespace

PlayerWindow::PlayerWindow(Program& program)
    : Window(program, "player"), m_player(*this), m_binder(kPlayerSettingsFile, kPlayerReadBuffer, "player") {}

PlayerWindow::~PlayerWindow() = default;

std::string PlayerWindow::defaultFile(int row) {
    const std::string& folder = program().sampleFolder();
    if (folder.empty() || row > static_cast<int>(std::size(kSampleFiles))) return "";
    return folder + kSampleFiles[row - 1];
}

void PlayerWindow::build() {
    auto& root = make<Container>("playerRoot", ContainerKind::Column);
    setRoot(root);
    m_rows.build(parts(), root, {[this](int row) { m_player.playRow(row, PlayTrigger::Operator); },
                                 [this](int row) { m_player.browse(row); }});
    auto& selection = root.add(make<Container>("selectionRow", ContainerKind::Row));
    buildSelection(selection);
    m_ptt = &selection.add(make<Label>("PTT", kPttOff, kPttOffGreen));
    auto& beacons = root.add(make<Container>("beacons", ContainerKind::Grid, "", 2));
    m_beacons = std::make_unique<BeaconSchedule>(parts(), beacons,
                                                 [this] { m_player.playSelection(PlayTrigger::Unattended); });
    buildButtons(root);
    auto& strip = root.add(make<Container>("playerStrip", ContainerKind::Grid, "", 2));
    m_player.build(parts(), strip,
                   {m_rows, *controlAs<TextBox>("MaxRand"), *controlAs<OptionButton>("StopClock2"), *m_ptt});
    auto& windowButtons = root.add(make<Container>("windowButtons", ContainerKind::Row));
    windowButtons.add(make<Button>("btnSave", "Salvar Configuracion")).onClick = [this] { saveData(); };
    windowButtons.add(make<Button>("btnHide", "Ocultar")).onClick = [this] { hide(); };
    bindSettings();
}

void PlayerWindow::buildSelection(Container& area) {
    auto& frame = area.add(make<Container>("frameSelection", ContainerKind::Frame, "Fichero Audio Baliza"));
    frame.add(make<Label>("lblDtmfCode", "DTMF-Ultima Seleccion"));
    m_dtmfCode = &frame.add(make<TextBox>("TEXT4", ""));
    OptionGroup& mode = makeGroup();
    frame.add(make<OptionButton>("StopClock2", "Estatico", mode)).setValue(true);
    auto& random = frame.add(make<Container>("randomRange", ContainerKind::Row));
    random.add(make<OptionButton>("StopClock0", "Aleatorio        Usar del 1 al", mode));
    random.add(make<TextBox>("MaxRand", "20"));
}

void PlayerWindow::buildButtons(Container& area) {
    auto& row = area.add(make<Container>("localPlayer", ContainerKind::Row));
    row.add(make<Button>("btnFile", "File")).onClick = [this] { m_player.reloadSelected(); };
    row.add(make<Button>("btnPlay", "Play")).onClick = [this] { m_player.localPlay(); };
    row.add(make<Button>("btnStop", "Stop")).onClick = [this] { m_player.localStop(); };
    row.add(make<Button>("btnResume", "Resume")).onClick = [this] { m_player.localResume(); };
}

void PlayerWindow::bindSettings() {
    m_binder = SettingsBinder(kPlayerSettingsFile, kPlayerReadBuffer, name());
    auto bind = [this](const std::string& key, const std::string& def) { bindSetting(m_binder, key, def); };
    // Read at load and written by "Salvar Configuracion" in this one order.
    bind("TEXT5", "15");
    bind("VOLSET", "0");
    bind("ONHOUR", "0");
    bind("HALFHOUR", "0");
    bind("QUARTERHOUR", "0");
    bind("BEACONPERIOD1", "15");
    bind("BEACONPERIOD3", "15");
    bind("STOPCLOCK3", "0");
    bind("TEXT4", "");
    bind("MAXRAND", "20");
    for (int row = 1; row <= FileRows::kCount; ++row) bind(FileRows::fileKey(row), defaultFile(row));
    for (int row = 1; row <= FileRows::kCount; ++row) bind("OPTION" + std::to_string(row), row == 1 ? "1" : "0");
    bind("STOPCLOCK0", "0");
    bind("STOPCLOCK1", "0");
    bind("STOPCLOCK2", "1");
    bindWindowPosition(m_binder, "300");
}

void PlayerWindow::onLoad() {
    createHostObject();
    setModuleCaption("      Balizas");
    host().setPTT(false);
    // Reading the beacon period runs its change handler: the countdown
    // starts (or stops) at the full period.
    m_binder.load(settings(), log());
    restoreVolume(m_player.strip().volumeSlider(), m_player.strip().volSet(), log(), name(), kPlayerSettingsFile);
}

void PlayerWindow::onUnload() {
    m_player.release();
    m_beacons.reset();
    m_ptt = nullptr;
    m_dtmfCode = nullptr;
}

void PlayerWindow::saveData() { saveSettings(m_binder); }

void PlayerWindow::onDTMFString(const std::string& digits) {
    const std::string& code = m_dtmfCode->text();
    if (!dtmfCodeMatches(digits, code)) return;
    // While the clock speaks the request is dropped; the log says why.
    log().dtmfCommand(name(), code, "Fichero Audio Baliza",
                      showsPttOn(program(), "hub") ? "the talking clock is on the air" : "");
    m_player.playSelection(PlayTrigger::Unattended);
}

void PlayerWindow::onClosing() {
    // Whatever fails on the way out, the program still ends.
    ignoreErrors({[this] { host().setPTT(false); }, [this] { host().setDTR(false); }});
    program().end("host closing");
}

Window::CloseDecision PlayerWindow::onQueryClose() {
    const DialogAnswer answer =
        dialogs().message({name(), "Exit Program", "Quit - Remember to save your settings - Are You Sure ? ",
                           DialogIcon::Question, DialogButtons::YesNo});
    if (answer != DialogAnswer::Yes) return CloseDecision::Cancel;
    m_ptt->showPtt(false);
    ignoreErrors([this] { host().setPTT(false); });
    program().end("quit");
}

}  // namespace mv
