#pragma once
// The ident window's speech: the request other windows make (the text, the
// pending flag, the skip-delay flag), keyed speech with its TTS delay and the
// release of the transmitter after it, and unkeyed speech. The voice's speed,
// loudness and name come from the TTS settings window at the moment of use.
#include <cstdint>
#include <functional>
#include <string>

#include "core/controls.h"
#include "core/settings_binder.h"
#include "core/window.h"

namespace mv {

class IdentWindow;
class SpeechVoice;
class TtsWindow;

// One TTS delay increment: a fixed time, the same on every machine.
inline constexpr int64_t kSleepTtsMs = 500;

class SpeechEngine {
public:
    explicit SpeechEngine(IdentWindow& window);

    // The "Announcements " frame: "Disable Announcements", "Use TTS Delay" and
    // its increments. Binds their keys.
    void build(WindowParts parts, Container& frame, SettingsBinder& binder);

    // What other windows set, then either speak now or leave pending.
    void setText(const std::string& text) { m_text = text; }
    const std::string& text() const { return m_text; }
    void setPending(bool pending) { m_pending = pending; }
    bool pending() const { return m_pending; }
    void setSkipDelay(bool skip) { m_skipDelay = skip; }
    bool skipDelay() const { return m_skipDelay; }

    // SpeakTheText: speaks the text with the transmitter keyed and returns
    // when it has been heard; the transmitter is released in every case that
    // got past the carrier test, whatever failed on the way.
    void speakTheText();
    // SleepTTS: one delay increment; the engine waits and nothing else runs.
    void sleepTts();
    // Speaks `text` without keying and returns at once. Throws SpeechError.
    void sayUnkeyed(const std::string& text);
    // The same for a button the operator pressed to hear a text through the
    // speaker: a voice that cannot speak is logged, not shown in a dialog.
    void sayUnkeyedOrLog(const std::string& text);
    // Speaks `text` into a wave file. Throws SpeechError.
    void sayToWave(const std::string& text, const std::string& path);

    // A phrase of the TTS settings window by its key ("THETIMEIS"), as its
    // field reads now, saved or not; the design text in a build without it.
    std::string phrase(const std::string& key);

    bool announcementsDisabled() const { return m_disable->ticked(); }
    CheckBox& disableAnnouncements() { return *m_disable; }

    // Hooks for the fan: `keying` runs just before SetPTT(True), `released`
    // after SetPTT(False) (where the fan drops its serial line).
    std::function<void()> keying;
    std::function<void()> released;

private:
    // The TTS settings window, loaded on first use; null in a build without it.
    TtsWindow* ttsSettings();
    // Applies the TTS window's voice, speed and loudness to the voice.
    SpeechVoice& preparedVoice();
    void speakKeyed(const std::string& text);
    void waitTtsDelay();

    IdentWindow& m_window;
    CheckBox* m_disable = nullptr;
    CheckBox* m_useDelay = nullptr;
    TextBox* m_delayIncrements = nullptr;
    std::string m_text;
    bool m_pending = false;
    bool m_skipDelay = false;
};

}  // namespace mv
