#include "platform/audio/pcm_voice.h"

#include <algorithm>
#include <cmath>

namespace mv {

double gainFromHundredthsDb(int hundredthsDb) { return std::pow(10.0, hundredthsDb / 2000.0); }

void PcmVoice::load(PcmPtr pcm) {
    m_pcm = std::move(pcm);
    m_cursor = 0;
    m_running = false;
    updateStep();
}

void PcmVoice::unload() {
    m_pcm.reset();
    m_cursor = 0;
    m_running = false;
}

double PcmVoice::positionSeconds() const {
    if (!m_pcm) return 0.0;
    if (ended()) return m_pcm->seconds();
    return m_cursor / m_pcm->sampleRate;
}

void PcmVoice::setPositionSeconds(double seconds) {
    if (!m_pcm) return;
    const double frames = static_cast<double>(m_pcm->frames());
    m_cursor = std::clamp(seconds * m_pcm->sampleRate, 0.0, frames);
}

void PcmVoice::setRate(double rate) {
    m_rate = rate;
    updateStep();
}

void PcmVoice::setVolume(int hundredthsDb) {
    m_volume = hundredthsDb;
    updateGains();
}

void PcmVoice::setBalance(int hundredthsDb) {
    m_balance = hundredthsDb;
    updateGains();
}

void PcmVoice::updateStep() {
    const int rate = m_pcm ? m_pcm->sampleRate : kAirRate;
    m_step = m_rate * rate / kAirRate;
}

void PcmVoice::updateGains() {
    const double gain = gainFromHundredthsDb(m_volume);
    // Balance attenuates the side away from which it points, by its magnitude.
    m_gainLeft = static_cast<float>(gain * (m_balance > 0 ? gainFromHundredthsDb(-m_balance) : 1.0));
    m_gainRight = static_cast<float>(gain * (m_balance < 0 ? gainFromHundredthsDb(m_balance) : 1.0));
}

void PcmVoice::render(float* out, int64_t frames) {
    if (!audible()) return;
    const int64_t total = m_pcm->frames();
    const double end = static_cast<double>(total);
    if (!out) {
        m_cursor = std::min(end, m_cursor + m_step * static_cast<double>(frames));
        return;
    }
    const float* s = m_pcm->samples.data();
    const int ch = m_pcm->channels;
    const float gl = m_gainLeft, gr = m_gainRight;
    int64_t i = 0;
    if (m_step == 1.0 && m_cursor == std::floor(m_cursor)) {
        // Same rate as the air: straight copy, the common case for word files.
        int64_t at = static_cast<int64_t>(m_cursor);
        const int64_t n = std::min(frames, total - at);
        if (ch == 1) {
            for (; i < n; ++i) {
                out[2 * i] += s[at + i] * gl;
                out[2 * i + 1] += s[at + i] * gr;
            }
        } else {
            for (; i < n; ++i) {
                out[2 * i] += s[2 * (at + i)] * gl;
                out[2 * i + 1] += s[2 * (at + i) + 1] * gr;
            }
        }
        m_cursor += static_cast<double>(n);
        return;
    }
    // Any other rate: linear interpolation between neighbouring frames.
    double cursor = m_cursor;
    for (; i < frames && cursor < end; ++i) {
        const int64_t a = static_cast<int64_t>(cursor);
        const int64_t b = std::min(a + 1, total - 1);
        const float frac = static_cast<float>(cursor - static_cast<double>(a));
        float l, r;
        if (ch == 1) {
            l = r = s[a] + (s[b] - s[a]) * frac;
        } else {
            l = s[2 * a] + (s[2 * b] - s[2 * a]) * frac;
            r = s[2 * a + 1] + (s[2 * b + 1] - s[2 * a + 1]) * frac;
        }
        out[2 * i] += l * gl;
        out[2 * i + 1] += r * gr;
        cursor += m_step;
    }
    m_cursor = std::min(cursor, end);
}

}  // namespace mv
