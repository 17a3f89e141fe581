#pragma once
// The TTS settings window: the voice's speed and loudness, which installed
// voice speaks, the longest a keyed utterance may last, and the fifteen
// phrases the announcements are built from ("ttssettings.ini"). Everything is
// read from the controls at the moment of use, so an unsaved edit counts at
// once. Its test buttons speak through the ident window's speech desk.
#include <cstdint>
#include <string>
#include <vector>

#include "core/settings_binder.h"
#include "core/window.h"

namespace mv {

inline constexpr const char* kTtsSettingsFile = "ttssettings.ini";
inline constexpr const char* kTtsTestText = "Esto es una prueba de voz";
// The longest a keyed utterance may keep the transmitter keyed, unless the
// operator sets another limit.
inline constexpr int kDefaultMaxSpeechSeconds = 180;

class TtsWindow final : public Window {
public:
    explicit TtsWindow(Program& program);

    struct Phrase {
        const char* key;
        const char* control;
        const char* defaultText;
        const char* label;
    };
    // The fifteen phrases in the file's order.
    static const std::vector<Phrase>& phrases();

    // Slider positions as they stand now, saved or not.
    int rate() const;
    int volume() const;
    std::string voiceName() const;
    // A limit that spells no positive number counts as the default.
    int64_t maxSpeechMs() const;
    // A phrase field's text by its settings key ("THETIMEIS"); empty for an unknown key.
    std::string phrase(const std::string& key) const;

    void saveData() { saveSettings(m_binder); }

protected:
    void build() override;
    void onLoad() override;

private:
    void buildVoice(Container& frame);
    void buildPhrases(Container& grid);
    // Speaks `text` through the ident window's speech desk, keyed.
    void speakTest(const std::string& text);

    SettingsBinder m_binder;
    Slider* m_volume = nullptr;
    Slider* m_speed = nullptr;
    ComboBox* m_voice = nullptr;
    TextBox* m_maxSpeech = nullptr;
};

}  // namespace mv
