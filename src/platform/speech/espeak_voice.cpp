#include "platform/speech/espeak_voice.h"

#include <sndfile.h>

#include <cmath>
#include <mutex>

#include "core/errors.h"

namespace mv {
namespace {

// How long the air takes to play `frames` of a clip, rounded up to whole
// milliseconds so a block of that length always sees the clip played out.
int64_t playingMs(int64_t frames) {
    const int64_t airFrames = (frames * kAirRate + kSpeechRate - 1) / kSpeechRate;
    return (airFrames + kAirFramesPerMs - 1) / kAirFramesPerMs;
}

int64_t framesIn(int64_t ms) { return ms * kSpeechRate / 1000; }

}  // namespace

EspeakVoice::EspeakVoice(Scheduler& scheduler, Air& air)
    : m_scheduler(scheduler), m_air(air), m_synth(EspeakSynthesizer::instance()) {
    m_air.mixer().addSource(m_source);
}

EspeakVoice::~EspeakVoice() {
    purge();
    m_air.mixer().removeSource(m_source);
}

template <class F>
auto EspeakVoice::onAir(F&& f) {
    std::lock_guard lock(m_air.mixer().mutex());
    m_air.mixer().catchUpLocked();
    return f();
}

int EspeakVoice::wordsPerMinute(int rate) {
    return static_cast<int>(std::lround(EspeakSynthesizer::normalWordsPerMinute() * speechSpeedFactor(rate)));
}

std::vector<std::string> EspeakVoice::voiceNames() { return m_synth.voiceNames(); }

void EspeakVoice::setVoice(const std::string& name) {
    if (const std::string why = m_synth.startError(); !why.empty()) throw SpeechError(why);
    const std::string found = m_synth.findVoice(name);
    if (found.empty()) throw SpeechError("no espeak-ng voice is called \"" + name + "\"");
    m_voice = found;
}

void EspeakVoice::throwIfFailed(const SpeechClip& clip) {
    if (auto why = clip.error()) throw SpeechError(*why);
}

std::shared_ptr<SpeechClip> EspeakVoice::startClip(const std::string& text, bool play) {
    if (const std::string why = m_synth.startError(); !why.empty()) throw SpeechError(why);
    const std::string voice = m_synth.findVoice(m_voice);
    if (voice.empty()) throw SpeechError("no espeak-ng voice is called \"" + m_voice + "\"");
    auto clip = std::make_shared<SpeechClip>(text, static_cast<float>(speechGain(m_volume)));
    std::erase_if(m_unfinished, [](const auto& c) { return c->done(); });
    m_unfinished.push_back(clip);
    m_synth.synthesize(clip, {voice, wordsPerMinute(m_rate)});
    if (m_scheduler.clock().isVirtual()) {
        // Virtual time waits for the whole text (the synthesizer is hundreds
        // of times faster than speech), so the air never runs ahead of it.
        clip->waitDone();
        throwIfFailed(*clip);
    }
    if (play) onAir([&] { m_source.enqueue(clip); });
    return clip;
}

SpokenUtterance EspeakVoice::speakAndWait(const std::string& text, int64_t maxMs) {
    purge();
    const std::shared_ptr<SpeechClip> clip = startClip(text, true);
    SpokenUtterance said;
    if (m_scheduler.clock().isVirtual()) {
        said.lengthMs = said.spokenMs = playingMs(clip->frames());
        if (said.lengthMs > maxMs) {
            clip->limitTo(framesIn(maxMs));
            said.spokenMs = playingMs(framesIn(maxMs));
        }
        m_scheduler.block(said.spokenMs);
        return said;
    }
    // Real time: the engine waits (the GUI keeps painting) while the air
    // plays the clip as it grows.
    auto playing = [&] { return onAir([&] { return m_source.holds(clip.get()); }); };
    const int64_t started = m_scheduler.now();
    m_scheduler.blockUntil([&] { return clip->error() || !playing(); }, maxMs);
    if (clip->error()) {
        purge();
        throwIfFailed(*clip);
    }
    if (playing()) {
        purge();
        said.spokenMs = m_scheduler.now() - started;
        said.lengthMs = std::max(said.spokenMs + 1, playingMs(clip->frames()));
        return said;
    }
    said.lengthMs = said.spokenMs = playingMs(clip->frames());
    // The sound card still holds the last few milliseconds.
    m_scheduler.block(static_cast<int64_t>(std::ceil(m_air.device().outputLatencyMs())));
    return said;
}

void EspeakVoice::speakAsync(const std::string& text) { startClip(text, true); }

void EspeakVoice::speakToWave(const std::string& text, const std::string& path) {
    const std::shared_ptr<SpeechClip> clip = startClip(text, false);
    if (!clip->done()) m_scheduler.blockUntil([&] { return clip->done(); }, INT64_MAX / 4);
    throwIfFailed(*clip);

    SF_INFO info{};
    info.samplerate = kSpeechRate;
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    if (!file) throw SpeechError("cannot write " + path + ": " + sf_strerror(nullptr));
    sf_command(file, SFC_SET_CLIPPING, nullptr, SF_TRUE);
    const sf_count_t wanted = clip->frames();
    const sf_count_t written = clip->withSamples([&](const float* s, int64_t n, bool) {
        std::vector<float> scaled(s, s + n);
        for (float& v : scaled) v *= clip->gain();
        return sf_writef_float(file, scaled.data(), static_cast<sf_count_t>(n));
    });
    const int closed = sf_close(file);
    if (written != wanted || closed != 0) throw SpeechError("cannot write all of " + path);
}

void EspeakVoice::purge() {
    onAir([&] { m_source.clear(); });
    for (const auto& clip : m_unfinished) clip->cancel();
    m_unfinished.clear();
}

bool EspeakVoice::speaking() {
    return onAir([&] { return !m_source.idle(); });
}

}  // namespace mv
