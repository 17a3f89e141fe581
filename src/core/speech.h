#pragma once
// The suite's one speech voice as a window sees it: a speed and a loudness on
// the operator's scale, an installed voice chosen by name, and three ways to
// speak plain text (onto the air and wait, onto the air and go on, into a wave
// file). Text is never read as markup. Failures throw SpeechError.
#include <cstdint>
#include <string>
#include <vector>

namespace mv {

// The operator's scale: rate -5 (slow) to 5 (fast) around the voice's normal
// speed, volume 0 (silent) to 100 (full). Both are mapped here and only here.
inline constexpr int kSpeechRateMin = -5;
inline constexpr int kSpeechRateMax = 5;
inline constexpr int kSpeechVolumeMax = 100;
// Speed relative to the voice's normal one: each step of rate is a tenth of
// the way to three times (or a third of) the normal speed, so 0 is x1, 5 is
// about x1.73 and -5 about x0.58. Rates beyond -10..10 count as those ends.
double speechSpeedFactor(int rate);
// Linear amplitude: 0 silent, 50 half, 100 full. Out-of-range values clamp.
double speechGain(int volume);

// The voice a fresh suite speaks with: the default phrases are Spanish.
inline constexpr const char* kDefaultSpeechVoice = "es";

struct SpokenUtterance {
    int64_t lengthMs = 0;  // how long the whole text sounds
    int64_t spokenMs = 0;  // how much of it went out (less when it was cut)
    bool cut() const { return spokenMs < lengthMs; }
};

class SpeechVoice {
public:
    virtual ~SpeechVoice() = default;

    virtual void setRate(int rate) = 0;
    virtual void setVolume(int volume) = 0;
    // The installed voices, by the names setVoice takes ("es", "en-us" ...).
    virtual std::vector<std::string> voiceNames() = 0;
    // Throws SpeechError when no installed voice has that name.
    virtual void setVoice(const std::string& name) = 0;

    // Drops whatever is still being spoken or queued, speaks `text` onto the
    // air and returns when it has been heard. The engine is blocked meanwhile
    // (nothing else is dispatched; virtual time moves by the utterance's true
    // length). Speech longer than `maxMs` is cut there.
    virtual SpokenUtterance speakAndWait(const std::string& text, int64_t maxMs) = 0;
    // Queues `text` behind whatever is still being spoken and returns at once.
    virtual void speakAsync(const std::string& text) = 0;
    // Speaks `text` into a WAV file (22050 Hz, 16-bit, mono) and returns when
    // the whole text has been written. Nothing goes onto the air.
    virtual void speakToWave(const std::string& text, const std::string& path) = 0;
    // Silences the voice at once and drops everything queued.
    virtual void purge() = 0;
    // True while anything is being spoken or waits to be.
    virtual bool speaking() = 0;
};

}  // namespace mv
