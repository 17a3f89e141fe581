#pragma once
// The speech voice's place on the air: plays its clips one after another at
// the air's rate, starting each as soon as its first samples exist. When
// synthesis falls behind, the air gets silence until more arrives; nothing is
// skipped. Every method expects the mixer's lock held.
#include <cstdint>
#include <deque>
#include <memory>

#include "platform/audio/air_mixer.h"
#include "platform/speech/speech_clip.h"

namespace mv {

class SpeechSource final : public AirSource {
public:
    void enqueue(std::shared_ptr<SpeechClip> clip) { m_queue.push_back(std::move(clip)); }
    // Silences everything at once.
    void clear();
    bool idle() const { return m_queue.empty(); }
    // Whether `clip` is still queued or playing.
    bool holds(const SpeechClip* clip) const;
    // Frames of the playing clip already played (in the clip's own rate).
    int64_t playedFrames() const { return m_airFrames * kSpeechRate / kAirRate; }

    bool audible() const override { return !m_queue.empty(); }
    void render(float* out, int64_t frames) override;

private:
    // Plays up to `frames` of the front clip; returns the frames it filled,
    // and sets `finished` when the clip has played out.
    int64_t renderFront(float* out, int64_t frames, bool& finished);

    std::deque<std::shared_ptr<SpeechClip>> m_queue;
    // Air frames the front clip has played. Its position in its own frames is
    // kept as this exact ratio, so no rounding builds up over a long text.
    int64_t m_airFrames = 0;
};

}  // namespace mv
