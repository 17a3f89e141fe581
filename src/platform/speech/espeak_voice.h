#pragma once
// The suite's speech voice on espeak-ng: synthesizes on the synthesizer's own
// thread, plays through the air mixer like every other source (so recordings
// and the transmitter record show it), blocks the engine for keyed speech and
// writes wave files. In virtual time every text is synthesized completely
// before the call returns, so a run replays the same way every time.
#include <memory>
#include <string>
#include <vector>

#include "core/scheduler.h"
#include "core/speech.h"
#include "platform/audio/air.h"
#include "platform/speech/espeak_synthesizer.h"
#include "platform/speech/speech_source.h"

namespace mv {

class EspeakVoice final : public SpeechVoice {
public:
    EspeakVoice(Scheduler& scheduler, Air& air);
    ~EspeakVoice() override;
    EspeakVoice(const EspeakVoice&) = delete;
    EspeakVoice& operator=(const EspeakVoice&) = delete;

    void setRate(int rate) override { m_rate = rate; }
    void setVolume(int volume) override { m_volume = volume; }
    std::vector<std::string> voiceNames() override;
    void setVoice(const std::string& name) override;

    SpokenUtterance speakAndWait(const std::string& text, int64_t maxMs) override;
    void speakAsync(const std::string& text) override;
    void speakToWave(const std::string& text, const std::string& path) override;
    void purge() override;
    bool speaking() override;

    // The library's words per minute for a rate on the operator's scale.
    static int wordsPerMinute(int rate);

private:
    // A clip for `text` with the current voice, speed and loudness, queued
    // with the synthesizer (and, when `play`, on the air).
    std::shared_ptr<SpeechClip> startClip(const std::string& text, bool play);
    // Throws SpeechError when the clip's synthesis failed.
    static void throwIfFailed(const SpeechClip& clip);
    template <class F>
    auto onAir(F&& f);

    Scheduler& m_scheduler;
    Air& m_air;
    EspeakSynthesizer& m_synth;
    SpeechSource m_source;
    std::vector<std::shared_ptr<SpeechClip>> m_unfinished;
    std::string m_voice = kDefaultSpeechVoice;
    int m_rate = 0;
    int m_volume = kSpeechVolumeMax;
};

}  // namespace mv
