#include "courtesy/courtesy_engine.h"

#include <algorithm>

#include "core/dialogs.h"
#include "core/dtmf_code.h"
#include "core/errors.h"
#include "core/event_log.h"
#include "core/program.h"
#include "core/settings_store.h"
#include "courtesy/indicators.h"

namespace mv {

using namespace courtesy;

namespace {
constexpr const char* kToneFilter = "*.wav, *.mp2, *.mp3, *.mid|*.wav;*.mp2;*.mp3;*.mid";
constexpr const char* kSettingsFile = "dunmeral2.ini";
}  // namespace

CourtesyEngine::CourtesyEngine(Window& window) : m_window(window), m_player(window) {}

void CourtesyEngine::build(WindowParts parts, Container& settingsArea, Container& playerArea, Label& ptt,
                           Label& ident) {
    m_ptt = &ptt;
    m_ident = &ident;
    m_toneOnAir = false;
    m_loadedFile.clear();
    m_toneSelector = 0;

    auto& frame = settingsArea.add(parts.make<Container>("frameCourtesy", ContainerKind::Frame, "Cortesia"));
    auto& switches = frame.add(parts.make<Container>("courtesySwitches", ContainerKind::Row));
    m_enabled = &switches.add(parts.make<CheckBox>("Check1", "Activado", 1));
    OptionGroup& kind = parts.makeGroup();
    m_cw = &switches.add(parts.make<OptionButton>("OPTION1", "CW", kind));
    switches.add(parts.make<OptionButton>("OPTION2", "Audio", kind));
    m_cw->setValue(true);

    auto& grid = frame.add(parts.make<Container>("courtesySignals", ContainerKind::Grid, "", 4));
    auto button = [&](const char* name, const char* caption, std::function<void()> onClick) -> Button& {
        Button& b = grid.add(parts.make<Button>(name, caption));
        b.onClick = std::move(onClick);
        return b;
    };
    auto letterRow = [&](const char* label, const char* name, const char* letter, const char* test) -> TextBox& {
        grid.add(parts.make<Label>(std::string("lbl") + name, label));
        TextBox& box = grid.add(parts.make<TextBox>(name, letter));
        box.setUpperCase(true);
        box.setMaxLength(kCourtesyLetterMaxLength);
        button(test, "Prueba", [this, &box] {
            if (enabled()) sendLetter(box);
        });
        grid.add(parts.make<Label>(std::string("gap") + name, ""));
        return box;
    };
    m_rfLetter = &letterRow("CW RF", "CourtesyID", "K", "btnTestRFCW");
    m_ipLetter = &letterRow("CW Internet", "IPCourtesy", "I", "btnTestIPCW");
    const std::string folder = m_window.program().defaultToneFolder();
    auto toneRow = [&](const char* label, const char* name, const std::string& file, const char* choose,
                       const char* test, int selector) -> TextBox& {
        grid.add(parts.make<Label>(std::string("lbl") + name, label));
        TextBox& box = grid.add(parts.make<TextBox>(name, folder + file));
        button(choose, "Fichero", [this, &box] { chooseToneFile(box); });
        button(test, "Prueba", [this, selector] {
            if (enabled()) playTone(selector, Caller::Operator);
        });
        return box;
    };
    m_rfTone = &toneRow("Tono RF", "RFTone", "RF.wav", "btnFileRF", "btnTestRFTone", 1);
    m_ipTone = &toneRow("Tono Internet", "InetTone", "IP.wav", "btnFileIP", "btnTestIPTone", 2);

    auto& codeFrame = frame.add(parts.make<Container>("frameCourtesyDtmf", ContainerKind::Frame, "DTMF"));
    auto& codes = codeFrame.add(parts.make<Container>("courtesyCodes", ContainerKind::Grid, "", 2));
    codes.add(parts.make<Label>("lblOpenCode", "Abrir"));
    codes.add(parts.make<Label>("lblCloseCode", "Cerrar"));
    m_openCode = &codes.add(parts.make<TextBox>("TEXT4", ""));
    m_closeCode = &codes.add(parts.make<TextBox>("TEXT5", ""));

    auto& group = playerArea.add(parts.make<Container>(
        "frameAudioFile", ContainerKind::Frame, "Audio File 1   -  mp3  - mp2 -  wav - avi - mid"));
    m_fileName = &group.add(parts.make<TextBox>("FileName", ""));
    m_fileName->setReadOnly(true);
    auto& buttons = group.add(parts.make<Container>("playerButtons", ContainerKind::Row));
    auto playerButton = [&](const char* name, const char* caption, std::function<void()> onClick) {
        buttons.add(parts.make<Button>(name, caption)).onClick = std::move(onClick);
    };
    playerButton("btnFile", "File", [this] {
        m_fileName->setText("");
        loadFile(true, Caller::Operator);
    });
    playerButton("btnPlay", "Play", [this] {
        m_loadedFile.clear();
        txFile(Caller::Operator);
    });
    playerButton("btnStop", "Stop", [this] { stopButton(); });
    playerButton("btnResume", "Resume", [this] { resumeButton(); });

    PlayerStripOptions o;
    o.progress = PlayerStripOptions::Progress::Clock;
    // The PTT indicator shows the host's transmitter, not this player's key.
    o.ptt = nullptr;
    // The watch releases the transmitter the moment the tone ends.
    o.releaseCheck = false;
    o.onRenderError = [this](const std::string&, const std::string&) {
        // The player has logged the error; only the operator is asked to look.
        if (m_loadCaller == Caller::Node) return;
        m_window.program().dialogs().message({m_window.name(), "Error", "Render error no rendering device found",
                                              DialogIcon::Exclamation, DialogButtons::OK});
    };
    m_player.build(parts, group, std::move(o));
    m_window.controlAs<Container>("frameVolume")->setCaption("Volumen");
    auto& speedFrame = *m_window.controlAs<Container>("frameSpeed");
    speedFrame.setCaption("Velocidad");
    m_speedSet = &speedFrame.add(parts.make<TextBox>("SpeedSet", "100"));
    Slider& speed = m_player.speedSlider();
    auto applyRate = std::move(speed.onChange);
    speed.onChange = [this, applyRate] {
        if (applyRate) applyRate();
        m_speedSet->setText(std::to_string(m_player.speedSlider().value()));
    };
    // Ident follows the displays: "Ident ON" while the position has not
    // reached the length, whatever moved either of them.
    m_player.lengthDisplay().onChange = [this] { refreshIdent(); };
    m_player.elapsedDisplay().onChange = [this] { refreshIdent(); };

    m_watch = &parts.makeTimer("PlaybackWatch", 1, false, [this] { watchTick(); });
}

void CourtesyEngine::afterSettingsLoaded() {
    auto fromField = [this](Slider& slider, TextBox& field, const char* key, int fallback) {
        long long value = fallback;
        if (!setting::parseWhole(field.text(), value)) {
            m_window.program().log().error(m_window.name(), std::string(kSettingsFile) + ": " + key + "=\"" +
                                                                field.text() + "\" is not a whole number; using " +
                                                                std::to_string(fallback));
            value = fallback;
        }
        const int wanted = static_cast<int>(std::clamp<long long>(value, slider.min(), slider.max()));
        if (slider.value() == wanted)
            field.setText(std::to_string(wanted));
        else
            slider.setValue(wanted);  // writes the field
    };
    fromField(m_player.volumeSlider(), m_player.volSet(), "VOLSET", 0);
    fromField(m_player.speedSlider(), *m_speedSet, "SPEEDSET", 100);
    m_player.lengthDisplay().setText("0");
    m_player.elapsedDisplay().setText("0");
}

void CourtesyEngine::release() {
    m_watch = nullptr;
    m_toneOnAir = false;
    m_player.release();
}

bool CourtesyEngine::enabled() const { return m_enabled->value() == 1; }

void CourtesyEngine::sendRFCourtesy() {
    if (!enabled()) return;
    if (m_cw->value())
        sendLetter(*m_rfLetter);
    else
        playTone(1, Caller::Node);
}

void CourtesyEngine::sendInternetCourtesy() {
    if (!enabled()) return;
    if (m_cw->value())
        sendLetter(*m_ipLetter);
    else
        playTone(2, Caller::Node);
}

void CourtesyEngine::sendLetter(const TextBox& letter) { m_window.host().sendCW(0, letter.text()); }

void CourtesyEngine::dtmfSwitch(const std::string& digits) {
    auto matches = [&](const TextBox& code, const char* function) {
        if (!dtmfCodeMatches(digits, code.text())) return false;
        m_window.program().log().dtmfCommand(m_window.name(), code.text(), function);
        return true;
    };
    if (matches(*m_openCode, "Cortesia Abrir")) m_enabled->setValue(1);
    if (matches(*m_closeCode, "Cortesia Cerrar")) m_enabled->setValue(0);
}

void CourtesyEngine::playTone(int selector, Caller caller) {
    // Each courtesy loads its tone from disk again, so a file replaced on disk
    // is heard at the next over.
    m_loadedFile.clear();
    m_toneSelector = selector;
    txFile(caller);
}

bool CourtesyEngine::txFile(Caller caller) {
    m_player.applySliders();
    m_loadedFile.clear();
    // A tone that does not load keys nothing.
    if (!loadFile(false, caller)) return false;
    m_player.elapsedDisplay().setText("0");
    indicate(*m_ident, kIdentOn, kOrange);
    m_player.playLoaded();  // "Time Used" reset, key, run from 0 at the volume slider's value
    m_player.applySliders();
    startWatch();
    return true;
}

TextBox* CourtesyEngine::selectedToneField() const {
    if (m_toneSelector == 1) return m_rfTone;
    if (m_toneSelector == 2) return m_ipTone;
    return nullptr;
}

bool CourtesyEngine::loadFile(bool reload, Caller caller) {
    TextBox* field = selectedToneField();
    if (!field) return false;
    if (!reload && !m_loadedFile.empty()) return true;
    std::string path = field->text();
    if (path.empty()) {
        // Nobody stands at an unattended node to answer a file dialog.
        if (caller == Caller::Node) {
            m_window.program().log().error(m_window.name(),
                                           field->name() + " names no tone file; the courtesy tone was not played");
            return false;
        }
        const auto chosen = m_window.program().dialogs().openFile({m_window.name(), "Abrir", kToneFilter, path});
        if (!chosen || chosen->empty()) {
            noFileChosen();
            return false;
        }
        path = *chosen;
    }
    field->setText(path);
    m_loadedFile = path;
    m_loadCaller = caller;
    if (!m_player.loadFile(path)) {
        m_loadedFile.clear();
        return false;
    }
    m_fileName->setText(path);
    return true;
}

void CourtesyEngine::chooseToneFile(TextBox& field) {
    field.setText("");
    const auto chosen = m_window.program().dialogs().openFile({m_window.name(), "Abrir", kToneFilter, ""});
    if (chosen && !chosen->empty())
        field.setText(*chosen);
    else
        noFileChosen();
}

void CourtesyEngine::noFileChosen() {
    m_window.program().dialogs().message({m_window.name(), "Error", " Por Favor, Seleccione un Archivo, Gracias",
                                          DialogIcon::Information, DialogButtons::OK});
}

void CourtesyEngine::stopButton() {
    m_player.stop();
    // A tone stopped halfway never reaches its end: release it here.
    if (m_toneOnAir) releaseTone();
}

void CourtesyEngine::resumeButton() {
    if (!m_player.hasGraph()) return;
    if (m_player.fileEnded()) {
        m_player.run();  // nothing left to play: nothing to key
        return;
    }
    // Sound goes out only keyed: key first, then run.
    m_player.keyOn();
    m_player.run();
    startWatch();
}

void CourtesyEngine::startWatch() {
    m_toneOnAir = true;
    m_watch->setEnabled(true);
}

void CourtesyEngine::watchTick() {
    // A failed read leaves the indicator as it was; the release below must run.
    ignoreErrors([this] { showTransmitter(*m_ptt, m_window.host()); });
    if (!m_player.hasGraph() || m_player.fileEnded()) {
        refreshIdent();
        releaseTone();
        return;
    }
    indicate(*m_ident, kIdentOn, kOrange);
    // Re-asserted on every tick while the tone plays.
    ignoreErrors([this] { m_window.host().setPTT(true); });
}

void CourtesyEngine::releaseTone() {
    m_toneOnAir = false;
    if (m_watch) m_watch->setEnabled(false);
    m_player.keyOff();
}

void CourtesyEngine::refreshIdent() {
    const bool ended = m_player.lengthDisplay().text() == m_player.elapsedDisplay().text();
    indicate(*m_ident, ended ? kIdentOff : kIdentOn, ended ? kCyan : kOrange);
}

}  // namespace mv
