#include "idents/information_texts.h"

#include <sstream>

#include "core/program.h"
#include "idents/ident_clock.h"
#include "idents/ident_window.h"
#include "idents/speech_engine.h"
#include "idents/spoken_time.h"

namespace mv {

std::vector<std::string> messageLines(const std::string& text) {
    std::vector<std::string> lines;
    std::istringstream in(text);
    for (std::string line; std::getline(in, line);) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (line.find_first_not_of(" \t") != std::string::npos) lines.push_back(line);
    }
    return lines;
}

InformationTexts::InformationTexts(IdentWindow& window) : m_window(window) {}

InformationTexts::~InformationTexts() = default;

void InformationTexts::build(WindowParts parts, Container& page, IdentClock& clock, SettingsBinder& binder) {
    auto& beaconFrame = page.add(parts.make<Container>("frameBeaconText", ContainerKind::Frame, "Texto Informativo  "));
    m_beaconText = &beaconFrame.add(parts.make<TextBox>("TextInput3", kBeaconTextDefault));
    m_beaconText->setMultiLine(true);
    m_beaconText->setToolTip("Nos permite enviar la hora via radio + 15 Segundos");
    auto& countRow = beaconFrame.add(parts.make<Container>("rowBeaconTextLength", ContainerKind::Row));
    countRow.add(parts.make<Label>("lblBeaconTextLength", "Caracteres Trannmitidos"));
    clock.showLength(*m_beaconText, countRow.add(parts.make<Label>("TextInput3Length", "0")));

    auto& modeRow = beaconFrame.add(parts.make<Container>("rowBeaconMode", ContainerKind::Row));
    OptionGroup& mode = parts.makeGroup();
    m_static = &modeRow.add(parts.make<OptionButton>("Option6", "Texto Estatico", mode));
    m_random = &modeRow.add(parts.make<OptionButton>("Option5", "Texto Aleatorio", mode));
    m_random->setToolTip("Una linea al azar en cada baliza");

    auto& periodRow = beaconFrame.add(parts.make<Container>("rowBeaconPeriod", ContainerKind::Row));
    auto& use = periodRow.add(parts.make<CheckBox>("StopClock3", "Use Baliza Cada"));
    use.setToolTip("Use TTS Beacon");
    auto& period = periodRow.add(parts.make<TextBox>("BeaconPeriod3", "15"));
    period.setMaxLength(3);
    period.setToolTip("Beacon TTS Beacon every xx Minutes");
    auto& seconds = periodRow.add(parts.make<Label>("BeaconSeconds3", "5"));
    PeriodCountdownOptions o;
    o.timerName = "Beacon3";
    o.emptiedPeriod = "1";
    o.zeroPeriodBecomesOneAtTick = true;
    o.beforeTick = [this] { m_window.restateHostWait(); };
    m_beacon = std::make_unique<PeriodCountdown>(parts, period, seconds, &use, std::move(o), [this] { beaconDue(); });

    auto& fixed = beaconFrame.add(parts.make<Container>("frameSayTheText", ContainerKind::Frame, "Diga el Texto"));
    m_onHour = &fixed.add(parts.make<CheckBox>("InfoHourly", "Hora"));
    m_onQuarter = &fixed.add(parts.make<CheckBox>("InfoQuarter", "Cuartos de Horas"));
    m_onHalf = &fixed.add(parts.make<CheckBox>("InfoHalf", "Medias Horas"));

    auto& beaconButtons = beaconFrame.add(parts.make<Container>("rowBeaconButtons", ContainerKind::Row));
    auto& keyed = beaconButtons.add(parts.make<Button>("btnPttMasElTexto", "PTT mas El Texto"));
    keyed.setToolTip("Speak the above text with PTT");
    keyed.onClick = [this] {
        filled(*m_beaconText);
        if (const auto text = beaconSpeech()) speakKeyed(*text);
    };
    auto& unkeyed = beaconButtons.add(parts.make<Button>("btnPttSinTexto", "PTT sin Texto"));
    unkeyed.setToolTip("Speak the above text no PTT. Test what you have typed in");
    unkeyed.onClick = [this] { speakUnkeyed(*m_beaconText); };
    auto& clear = beaconButtons.add(parts.make<Button>("btnClearBeaconText", "Clear"));
    clear.setToolTip("Clear the TTS Text");
    clear.onClick = [this] { m_beaconText->setText(""); };

    auto& infoFrame =
        page.add(parts.make<Container>("frameInfoText", ContainerKind::Frame, "Enter Info Text   (70 Chrs Max)"));
    auto& infoRow = infoFrame.add(parts.make<Container>("rowInfoText", ContainerKind::Row));
    m_infoText = &infoRow.add(parts.make<TextBox>("InfoText", ""));
    m_infoText->setMaxLength(70);
    m_infoText->setToolTip("Enter Info Text. See Connects and Setting to set TTS Beacon ");
    clock.showLength(*m_infoText, infoRow.add(parts.make<Label>("InfoTextLength", "0")));
    auto& infoButtons = infoFrame.add(parts.make<Container>("rowInfoButtons", ContainerKind::Row));
    auto& queued = infoButtons.add(parts.make<Button>("btnSpeakInfoText", "Speak The Info Text Plus PTT"));
    queued.setToolTip("Speak the above text with PTT");
    queued.onClick = [this] {
        SpeechEngine& speech = m_window.speech();
        speech.setText(filled(*m_infoText));
        // Spoken keyed as soon as no window transmits.
        speech.setPending(true);
    };
    auto& infoUnkeyed = infoButtons.add(parts.make<Button>("btnSayInfoText", "Say Text no PTT"));
    infoUnkeyed.setToolTip("Speak the above text no PTT. Test what you have typed in");
    infoUnkeyed.onClick = [this] { speakUnkeyed(*m_infoText); };
    auto& clearInfo = infoButtons.add(parts.make<Button>("btnClearInfoText", "Clear"));
    clearInfo.setToolTip("Clear the Info Text");
    clearInfo.onClick = [this] { m_infoText->setText(""); };

    binder.bindLines("TEXTINPUT3", *m_beaconText, kBeaconTextDefault);
    binder.bindOption("OPTION6", *m_static, "False");
    binder.bindOption("OPTION5", *m_random, "False");
    binder.bindCheck("STOPCLOCK3", use, "0");
    binder.bindText("BEACONPERIOD3", period, "15");
    binder.bindCheck("INFOHOURLY", *m_onHour, "0");
    binder.bindCheck("INFOQUARTER", *m_onQuarter, "0");
    binder.bindCheck("INFOHALF", *m_onHalf, "0");
    binder.bindText("INFOTEXT", *m_infoText, "");
}

const std::string& InformationTexts::filled(TextBox& field) {
    if (field.text().empty()) field.setText(kNoInformation);
    return field.text();
}

std::optional<std::string> InformationTexts::beaconSpeech() {
    if (m_random->value()) {
        // One message a line; each time one of them, drawn with the suite's
        // one source of chance. The field keeps every line.
        const std::vector<std::string> lines = messageLines(m_beaconText->text());
        if (lines.empty()) return std::string(kNoInformation);
        const int pick = m_window.program().randomBetween(0, static_cast<int>(lines.size()) - 1);
        return lines[static_cast<size_t>(pick)];
    }
    if (m_static->value()) return m_beaconText->text();
    return std::nullopt;
}

void InformationTexts::beaconDue() {
    filled(*m_beaconText);
    const auto text = beaconSpeech();
    if (!text) return;
    SpeechEngine& speech = m_window.speech();
    speech.setText(*text);
    // While a station is heard this beacon is skipped; the next comes a full period later.
    if (!m_window.channelBusyFlag()) speech.setPending(true);
}

void InformationTexts::followReception(bool receiving) { beaconTimer().setEnabled(!receiving); }

void InformationTexts::atSecond(const LocalDateTime& at) {
    if (!fixedTimeDue(at, m_onHour->ticked(), m_onHalf->ticked(), m_onQuarter->ticked())) return;
    // In random mode a fixed time says one line too; otherwise the whole
    // text, as it stands (an empty text is said as nothing).
    speakKeyed(m_random->value() ? beaconSpeech().value_or("") : m_beaconText->text());
}

void InformationTexts::speakKeyed(const std::string& text) {
    SpeechEngine& speech = m_window.speech();
    speech.setText(text);
    speech.speakTheText();
}

void InformationTexts::speakUnkeyed(TextBox& field) { m_window.speech().sayUnkeyedOrLog(filled(field)); }

}  // namespace mv
