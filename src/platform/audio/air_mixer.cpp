#include "platform/audio/air_mixer.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <vector>

namespace mv {
namespace {

// Mixing happens in blocks of 10 ms: small enough to stay in cache, large
// enough that per-block work vanishes.
constexpr int64_t kBlockFrames = 480;
constexpr float kMorseLevel = 0.5f;
constexpr float kDtmfLevel = 0.25f;  // each of the pair
// Tone edges ramp over 2 ms so keying does not click.
constexpr int64_t kRampFrames = 2 * kAirFramesPerMs;

}  // namespace

void AirTap::silence(int64_t frames, bool keyed) {
    static const std::vector<float> zeros(static_cast<size_t>(kBlockFrames) * 2, 0.0f);
    while (frames > 0) {
        const int64_t n = std::min(frames, kBlockFrames);
        air(zeros.data(), n, keyed);
        frames -= n;
    }
}

AirMixer::AirMixer(Clock& clock) : m_clock(clock), m_originMs(clock.monotonicMs()) {
    m_scratch.resize(kBlockFrames * 2);
}

int64_t AirMixer::frameAtMs(int64_t ms) const {
    // Clock-driven, frame m_frame is "now" once caught up; pull-driven, the
    // device's read position stands in for now. Either way a time is placed
    // relative to the present, and nothing is placed in the past.
    const int64_t ahead = std::max<int64_t>(0, ms - m_clock.monotonicMs());
    return m_frame + ahead * kAirFramesPerMs;
}

void AirMixer::catchUpLocked() {
    if (m_pull) return;
    const int64_t target = (m_clock.monotonicMs() - m_originMs) * kAirFramesPerMs;
    if (target > m_frame) renderLocked(target - m_frame, nullptr);
}

void AirMixer::addSource(AirSource& source) {
    std::lock_guard lock(m_mutex);
    catchUpLocked();
    if (std::find(m_sources.begin(), m_sources.end(), &source) == m_sources.end()) m_sources.push_back(&source);
}

void AirMixer::removeSource(AirSource& source) {
    std::lock_guard lock(m_mutex);
    catchUpLocked();
    m_sources.erase(std::remove(m_sources.begin(), m_sources.end(), &source), m_sources.end());
}

void AirMixer::addTone(int64_t startMs, int64_t durationMs, double frequency1, double frequency2) {
    if (durationMs <= 0) return;
    std::lock_guard lock(m_mutex);
    catchUpLocked();
    const int64_t start = frameAtMs(startMs);
    m_tones.push_back({start, start + durationMs * kAirFramesPerMs, frequency1, frequency2});
}

void AirMixer::setTransmitter(bool pttKeyed, int64_t toneKeyedUntilMs) {
    std::lock_guard lock(m_mutex);
    catchUpLocked();
    m_ptt = pttKeyed;
    m_toneKeyedUntilFrame = toneKeyedUntilMs > m_clock.monotonicMs() ? frameAtMs(toneKeyedUntilMs) : m_frame;
}

bool AirMixer::transmitterKeyedNow() const { return m_ptt || m_frame < m_toneKeyedUntilFrame; }

void AirMixer::setTap(AirTap* tap) {
    std::lock_guard lock(m_mutex);
    catchUpLocked();
    m_tap = tap;
}

void AirMixer::setPullDriven(bool pull) {
    std::lock_guard lock(m_mutex);
    catchUpLocked();
    m_pull = pull;
}

void AirMixer::pull(float* out, int64_t frames) {
    std::lock_guard lock(m_mutex);
    renderLocked(frames, out);
}

void AirMixer::renderLocked(int64_t frames, float* out) {
    if (!m_tap && !out) {
        // Nobody listens: sources only move on, in one step however long the gap.
        for (AirSource* s : m_sources)
            if (s->audible()) s->render(nullptr, frames);
        m_frame += frames;
        std::erase_if(m_tones, [this](const Tone& t) { return t.endFrame <= m_frame; });
        return;
    }
    if (!out && quietFor(frames)) {
        // A long quiet stretch reaches the tap in one step (split only where
        // the host's own keying ends), so an idle day costs it nothing.
        while (frames > 0) {
            int64_t n = frames;
            if (m_toneKeyedUntilFrame > m_frame && m_toneKeyedUntilFrame < m_frame + n) n = m_toneKeyedUntilFrame - m_frame;
            m_tap->silence(n, transmitterKeyedNow());
            m_frame += n;
            frames -= n;
        }
        std::erase_if(m_tones, [this](const Tone& t) { return t.endFrame <= m_frame; });
        return;
    }
    while (frames > 0) {
        int64_t n = std::min(frames, kBlockFrames);
        // A block never straddles the end of the host's own keying.
        if (m_toneKeyedUntilFrame > m_frame && m_toneKeyedUntilFrame < m_frame + n) n = m_toneKeyedUntilFrame - m_frame;
        float* block = out ? out : m_scratch.data();
        renderBlock(n, block);
        if (m_tap) m_tap->air(block, n, transmitterKeyedNow());
        m_frame += n;
        if (out) out += n * 2;
        frames -= n;
    }
    std::erase_if(m_tones, [this](const Tone& t) { return t.endFrame <= m_frame; });
}

bool AirMixer::quietFor(int64_t frames) const {
    for (const AirSource* s : m_sources)
        if (s->audible()) return false;
    for (const Tone& t : m_tones)
        if (t.startFrame < m_frame + frames && t.endFrame > m_frame) return false;
    return true;
}

void AirMixer::renderBlock(int64_t frames, float* out) {
    std::fill(out, out + frames * 2, 0.0f);
    for (AirSource* s : m_sources)
        if (s->audible()) s->render(out, frames);
    mixTones(out, frames);
    for (int64_t i = 0; i < frames * 2; ++i) out[i] = std::clamp(out[i], -1.0f, 1.0f);
}

void AirMixer::mixTones(float* out, int64_t frames) {
    const int64_t blockEnd = m_frame + frames;
    for (const Tone& t : m_tones) {
        const int64_t from = std::max(t.startFrame, m_frame);
        const int64_t to = std::min(t.endFrame, blockEnd);
        if (from >= to) continue;
        const float level = t.frequency2 > 0 ? kDtmfLevel : kMorseLevel;
        const double w1 = 2.0 * std::numbers::pi * t.frequency1 / kAirRate;
        const double w2 = 2.0 * std::numbers::pi * t.frequency2 / kAirRate;
        const int64_t length = t.endFrame - t.startFrame;
        for (int64_t f = from; f < to; ++f) {
            const int64_t k = f - t.startFrame;
            const double edge = std::min<double>({1.0, static_cast<double>(k) / kRampFrames,
                                                  static_cast<double>(length - k) / kRampFrames});
            double v = std::sin(w1 * static_cast<double>(k));
            if (t.frequency2 > 0) v += std::sin(w2 * static_cast<double>(k));
            const float s = static_cast<float>(v * edge) * level;
            out[(f - m_frame) * 2] += s;
            out[(f - m_frame) * 2 + 1] += s;
        }
    }
}

}  // namespace mv
