#include "idents/speech_engine.h"

#include <algorithm>

#include "core/errors.h"
#include "core/event_log.h"
#include "core/number_text.h"
#include "core/program.h"
#include "core/speech.h"
#include "idents/ident_window.h"
#include "idents/tts_window.h"

namespace mv {
namespace {
// The most TTS delay increments one utterance waits.
constexpr int kMaxDelayIncrements = 9;
// What the voice uses when the suite has no TTS settings window.
constexpr int kFallbackVolume = 50;
}  // namespace

SpeechEngine::SpeechEngine(IdentWindow& window) : m_window(window) {}

void SpeechEngine::build(WindowParts parts, Container& frame, SettingsBinder& binder) {
    m_disable = &frame.add(parts.make<CheckBox>("Check1", "Disable Announcements"));
    m_useDelay = &frame.add(parts.make<CheckBox>("TTSCTRL", "Use TTS Delay"));
    auto& row = frame.add(parts.make<Container>("rowTTSPeriod", ContainerKind::Row));
    row.add(parts.make<Label>("lblTTSPeriod", "Delay Increments 0 to 9"));
    m_delayIncrements = &row.add(parts.make<TextBox>("TTSPeriod", "0"));
    m_delayIncrements->setDigitsOnly(true);
    m_delayIncrements->setMaxLength(2);
    m_delayIncrements->onChange = [this] {
        m_delayIncrements->setDigitsOnly(true);
        if (m_delayIncrements->text().empty()) m_delayIncrements->setText("0");
    };
    binder.bindCheck("CHECK1", *m_disable, "0");
    binder.bindCheck("TTSCTRL", *m_useDelay, "0");
    binder.bindText("TTSPERIOD", *m_delayIncrements, "0");
}

TtsWindow* SpeechEngine::ttsSettings() {
    auto* tts = dynamic_cast<TtsWindow*>(m_window.program().window("tts"));
    // Reading a slider of a window that is not loaded yet loads it.
    if (tts) tts->load();
    return tts;
}

std::string SpeechEngine::phrase(const std::string& key) {
    if (const TtsWindow* tts = ttsSettings()) return tts->phrase(key);
    for (const TtsWindow::Phrase& p : TtsWindow::phrases())
        if (key == p.key) return p.defaultText;
    return {};
}

SpeechVoice& SpeechEngine::preparedVoice() {
    SpeechVoice& voice = m_window.program().speech();
    const TtsWindow* tts = ttsSettings();
    voice.setVoice(tts ? tts->voiceName() : kDefaultSpeechVoice);
    voice.setRate(tts ? tts->rate() : 0);
    voice.setVolume(tts ? tts->volume() : kFallbackVolume);
    return voice;
}

void SpeechEngine::sleepTts() { m_window.program().scheduler().block(kSleepTtsMs); }

void SpeechEngine::waitTtsDelay() {
    if (!m_useDelay->ticked()) return;
    if (numberOf(m_delayIncrements->text()).value_or(0) > kMaxDelayIncrements)
        m_delayIncrements->setText(std::to_string(kMaxDelayIncrements));
    if (m_skipDelay) {
        m_skipDelay = false;
        return;
    }
    const int increments = static_cast<int>(std::max(0.0, numberOf(m_delayIncrements->text()).value_or(0)));
    for (int i = 1; i <= increments; ++i) sleepTts();
}

void SpeechEngine::speakKeyed(const std::string& text) {
    HostObject& host = m_window.host();
    // A local station that started talking between the two carrier tests is
    // not keyed over; nothing is said either, since it would go out unkeyed.
    if (host.isCarrierDetected()) return;
    // Nothing can change the settings while the engine waits out the delay,
    // so the voice is made ready first: a voice that cannot speak keys nothing.
    SpeechVoice& voice = preparedVoice();
    TtsWindow* tts = ttsSettings();
    const int64_t limitMs = tts ? tts->maxSpeechMs() : kDefaultMaxSpeechSeconds * 1000LL;
    m_window.ptt().showPtt(true);
    if (keying) keying();
    host.setPTT(true);
    waitTtsDelay();
    EventLog& log = m_window.program().log();
    log.speech(m_window.name(), "speak", text, true);
    const SpokenUtterance said = voice.speakAndWait(text, limitMs);
    if (said.cut())
        log.error(m_window.name(), "speech cut after " + decimalText(static_cast<double>(said.spokenMs) / 1000) +
                                       " s, the longest a keyed utterance may last; the text needs " +
                                       decimalText(static_cast<double>(said.lengthMs) / 1000) + " s");
}

void SpeechEngine::speakTheText() {
    HostObject& host = m_window.host();
    if (host.isCarrierDetected()) return;
    if (!announcementsDisabled()) {
        std::replace(m_text.begin(), m_text.end(), '*', ' ');
        // Whatever fails here (no voice, a host call), the release below runs.
        try {
            speakKeyed(m_text);
        } catch (const HostError&) {
            // The host call log has said what failed.
        } catch (const std::exception& e) {
            m_window.program().log().error(m_window.name(), std::string("speech failed: ") + e.what());
        }
    }
    m_window.program().scheduler().processPendingEvents();
    m_pending = false;
    // An announcement spoken at once (a connect) may have gone out over the
    // talking clock or the audio player: releasing the voice's keying leaves
    // the transmitter up for them until each releases its own.
    ignoreErrors({
        [&] { host.setPTT(false); },
        [&] { m_window.ptt().showPtt(false); },
        [&] {
            if (released) released();
        },
    });
}

void SpeechEngine::sayUnkeyed(const std::string& text) {
    SpeechVoice& voice = preparedVoice();
    m_window.program().log().speech(m_window.name(), "speak", text, false);
    voice.speakAsync(text);
}

void SpeechEngine::sayUnkeyedOrLog(const std::string& text) {
    try {
        sayUnkeyed(text);
    } catch (const SpeechError& e) {
        m_window.program().log().error(m_window.name(), std::string("speech failed: ") + e.what());
    }
}

void SpeechEngine::sayToWave(const std::string& text, const std::string& path) {
    SpeechVoice& voice = preparedVoice();
    m_window.program().log().speech(m_window.name(), "wave", text, false);
    voice.speakToWave(text, path);
}

}  // namespace mv
