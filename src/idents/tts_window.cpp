#include "idents/tts_window.h"

#include "core/errors.h"
#include "core/event_log.h"
#include "core/module_surfaces.h"
#include "core/number_text.h"
#include "core/program.h"
#include "core/speech.h"

namespace mv {
namespace {

// Values are read with a 250-character buffer.
constexpr size_t kTtsReadBuffer = 250;

}  // namespace

const std::vector<TtsWindow::Phrase>& TtsWindow::phrases() {
    static const std::vector<Phrase> list = {
        {"THE", "The", "La", "Entrada"},
        {"AT", "At", "en", "en"},
        {"CONFERENCEHASCONNECTED", "ConferenceHasConnected", "Conectado a la Conferencia", "Coneccion Conferencia"},
        {"CONFERENCEHASDISCONNECTED", "ConferenceHasDisconnected", "Desconectado de la Conferencia",
         "Desconeccion Conferencia"},
        {"REPEATERCONNECTED", "RepeaterConnected", "Conectado al Repetidor ", "Coneccion Estacion Repetidora"},
        {"REPEATERDISCONNECTED", "RepeaterDisconnected", "Desconectado del Repetidor",
         "Desconeccion Estacion Repetidora"},
        {"LINKCONNECTED", "LinkConnected", "Conectado al Link", "Coneccion estacion Link"},
        {"LINKDISCONNECTED", "LinkDisconnected", "Desconectado del Link", "Desconeccion estacion Link"},
        {"CONNECTED", "Connected", "Conectado", "Coneccion Estacion Simple"},
        {"DISCONNECTED", "Disconnected", "Desconectado", "Desconeccion Estacion Simple"},
        {"THETIMEIS", "TheTimeIs", "La Hora es", "Informacion de la Hora"},
        {"TEXTMESSAGEENABLED", "TextMessageEnabled", "Abierto los Mensaje de Texto", "Abrir Mensaje Texto"},
        {"TEXTMESSAGEDISABLED", "TextMessageDisabled", "Cerrado los Mensaje de Texto", "Cerrar Mensaje texto"},
        {"SILENCEMODEENABLED", "SilenceModeEnabled", "Abierto modo Silencio", "Abrir Modo Silencio"},
        {"SILENCEMODEDISABLED", "SilenceModeDisabled", "Cerrado modo Silencio", "Cerrar modo Silencio"},
    };
    return list;
}

TtsWindow::TtsWindow(Program& program) : Window(program, "tts"), m_binder(kTtsSettingsFile, kTtsReadBuffer, "tts") {}

void TtsWindow::build() {
    m_binder = SettingsBinder(kTtsSettingsFile, kTtsReadBuffer, name());
    auto& root = make<Container>("ttsRoot", ContainerKind::Column);
    setRoot(root);
    buildVoice(root.add(make<Container>("frameVoice", ContainerKind::Frame, "Voz")));
    buildPhrases(root.add(make<Container>("framePhrases", ContainerKind::Grid, "", 6)));

    auto& test = root.add(make<Container>("rowTest", ContainerKind::Row));
    auto& testText = test.add(make<TextBox>("TestText", kTtsTestText));
    testText.setToolTip("Test Texto");
    auto& prueba = test.add(make<Button>("btnPrueba", "Prueba"));
    prueba.setToolTip("Prueba de Escena");
    prueba.onClick = [this, &testText] { speakTest(testText.text()); };

    auto& buttons = root.add(make<Container>("rowButtons", ContainerKind::Row));
    auto& save = buttons.add(make<Button>("btnSalvar", "Salvar"));
    save.setToolTip("Guarda los datos");
    save.onClick = [this] { saveData(); };
    auto& leave = buttons.add(make<Button>("btnSalir", "Salir"));
    leave.setToolTip("Oculta esta Pantalla");
    leave.onClick = [this] { hide(); };
}

void TtsWindow::buildVoice(Container& frame) {
    auto slider = [&](const char* name, const char* label, int min, int max, int value,
                      std::vector<std::string> ends) -> Slider& {
        auto& row = frame.add(make<Container>(std::string("row") + name, ContainerKind::Row));
        row.add(make<Label>(std::string("lbl") + name, label));
        auto& s = row.add(make<Slider>(name, min, max, value));
        s.setSteps(1, max - min >= 20 ? 10 : 1);
        s.scaleLabels = std::move(ends);
        auto& shown = row.add(make<Label>(std::string(name) + "Value", std::to_string(value)));
        s.onChange = [&s, &shown] { shown.setCaption(std::to_string(s.value())); };
        return s;
    };
    m_volume = &slider("VolLev", "Nivel de Volumen", 0, kSpeechVolumeMax, 50, {"Minimo", "Maximo"});
    m_speed = &slider("VoiceSpeed", "Velocidad de Voz", kSpeechRateMin, kSpeechRateMax, 0, {"Lento", "R\xC3\xA1pido"});

    auto& voiceRow = frame.add(make<Container>("rowVoiceName", ContainerKind::Row));
    voiceRow.add(make<Label>("lblVoiceName", "Voz (espeak-ng)"));
    m_voice = &voiceRow.add(make<ComboBox>("VoiceName"));
    m_voice->setText(kDefaultSpeechVoice);
    m_voice->setToolTip("Voz instalada que lee los anuncios");
    voiceRow.add(make<Label>("lblMaxSpeech", "M\xC3\xA1ximo por anuncio (segundos)"));
    m_maxSpeech = &voiceRow.add(make<TextBox>("MaxSpeechSeconds", std::to_string(kDefaultMaxSpeechSeconds)));
    m_maxSpeech->setDigitsOnly(true);
    m_maxSpeech->setMaxLength(5);
    m_maxSpeech->setToolTip("Tiempo maximo con PTT de un anuncio; el texto mas largo se corta");

    m_binder.bindSlider("VOLLEV", *m_volume, "50");
    m_binder.bindSlider("VOICESPEED", *m_speed, "0");
}

void TtsWindow::buildPhrases(Container& grid) {
    // Two phrases a row: label, field, test button.
    for (const Phrase& p : phrases()) {
        grid.add(make<Label>(std::string("lbl") + p.control, p.label));
        auto& field = grid.add(make<TextBox>(p.control, p.defaultText));
        auto& test = grid.add(make<Button>(std::string("Test") + p.control, "Test"));
        test.setToolTip(std::string("Prueba: ") + p.label);
        test.onClick = [this, &field] { speakTest(field.text()); };
        // A default with a trailing blank is given quoted: the settings store
        // strips blanks from an unquoted default as it does from a file's value.
        const std::string def = p.defaultText;
        const bool blanks = !def.empty() && (def.front() == ' ' || def.back() == ' ');
        m_binder.bindText(p.key, field, blanks ? "\"" + def + "\"" : def);
    }
    m_binder.bindCombo("VOICENAME", *m_voice, kDefaultSpeechVoice);
    m_binder.bindText("MAXSPEECHSECONDS", *m_maxSpeech, std::to_string(kDefaultMaxSpeechSeconds));
}

void TtsWindow::onLoad() {
    const ProductInfo& p = program().product();
    setCaption(p.name + "   v" + p.versionText() + "  TTS Setup");
    if (program().hasSpeech()) ignoreErrors([this] { m_voice->setItems(program().speech().voiceNames()); });
    m_binder.load(settings(), log());
}

int TtsWindow::rate() const { return m_speed->value(); }
int TtsWindow::volume() const { return m_volume->value(); }
std::string TtsWindow::voiceName() const { return m_voice->text(); }

int64_t TtsWindow::maxSpeechMs() const {
    const double seconds = periodValue(m_maxSpeech->text());
    return static_cast<int64_t>((seconds >= 1 ? seconds : kDefaultMaxSpeechSeconds) * 1000);
}

std::string TtsWindow::phrase(const std::string& key) const {
    for (const Phrase& p : phrases())
        if (key == p.key) return controlAs<TextBox>(p.control)->text();
    return {};
}

void TtsWindow::speakTest(const std::string& text) {
    SpeechDesk* desk = surfaceOf<SpeechDesk>(program(), "idents");
    if (!desk) {
        log().error(name(), "the ident window is not loaded; nothing was spoken");
        return;
    }
    desk->setSpeechText(text);
    desk->speakTheText();
}

}  // namespace mv
