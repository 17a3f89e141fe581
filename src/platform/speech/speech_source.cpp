#include "platform/speech/speech_source.h"

#include <algorithm>

namespace mv {
void SpeechSource::clear() {
    m_queue.clear();
    m_airFrames = 0;
}

bool SpeechSource::holds(const SpeechClip* clip) const {
    return std::any_of(m_queue.begin(), m_queue.end(), [clip](const auto& c) { return c.get() == clip; });
}

void SpeechSource::render(float* out, int64_t frames) {
    while (frames > 0 && !m_queue.empty()) {
        bool finished = false;
        const int64_t filled = renderFront(out, frames, finished);
        if (out) out += filled * 2;
        frames -= filled;
        if (!finished) return;  // synthesis is behind: the rest of this block stays silent
        m_queue.pop_front();
        m_airFrames = 0;
    }
}

int64_t SpeechSource::renderFront(float* out, int64_t frames, bool& finished) {
    const SpeechClip& clip = *m_queue.front();
    return clip.withSamples([&](const float* s, int64_t available, bool done) -> int64_t {
        const float gain = clip.gain();
        // The last frame interpolates towards its neighbour, so it can only be
        // played once that neighbour exists or the clip is complete. Air frame
        // k plays clip position k * 22050 / 48000.
        const int64_t end = done ? available : available - 1;
        int64_t i = 0;
        if (!out) {
            // Nobody listens: move on in one step by as many frames as would
            // have played, the air frames whose clip position is before `end`.
            const int64_t playable = end > 0 ? (end * kAirRate + kSpeechRate - 1) / kSpeechRate : 0;
            i = std::clamp<int64_t>(playable - m_airFrames, 0, frames);
            m_airFrames += i;
        }
        for (; out && i < frames; ++i) {
            const int64_t scaled = m_airFrames * kSpeechRate;
            const int64_t a = scaled / kAirRate;
            if (a >= end) break;
            const int64_t b = std::min(a + 1, available - 1);
            const float frac = static_cast<float>(scaled % kAirRate) / kAirRate;
            const float v = (s[a] + (s[b] - s[a]) * frac) * gain;
            out[2 * i] += v;
            out[2 * i + 1] += v;
            ++m_airFrames;
        }
        finished = done && m_airFrames * kSpeechRate / kAirRate >= end;
        return i;
    });
}

}  // namespace mv
