#include "platform/speech/speech_clip.h"

#include <algorithm>

namespace mv {

void SpeechClip::append(const short* samples, int count) {
    if (count <= 0) return;
    std::lock_guard lock(m_mutex);
    const size_t at = m_samples.size();
    m_samples.resize(at + static_cast<size_t>(count));
    for (int i = 0; i < count; ++i) m_samples[at + static_cast<size_t>(i)] = samples[i] / 32768.0f;
}

void SpeechClip::finish() {
    {
        std::lock_guard lock(m_mutex);
        m_done = true;
    }
    m_doneSignal.notify_all();
}

void SpeechClip::fail(std::string why) {
    {
        std::lock_guard lock(m_mutex);
        m_error = std::move(why);
        m_done = true;
    }
    m_doneSignal.notify_all();
}

bool SpeechClip::done() const {
    std::lock_guard lock(m_mutex);
    return m_done;
}

std::optional<std::string> SpeechClip::error() const {
    std::lock_guard lock(m_mutex);
    return m_error;
}

void SpeechClip::waitDone() const {
    std::unique_lock lock(m_mutex);
    m_doneSignal.wait(lock, [this] { return m_done; });
}

int64_t SpeechClip::frames() const {
    return withSamples([](const float*, int64_t n, bool) { return n; });
}

void SpeechClip::limitTo(int64_t frames) {
    std::lock_guard lock(m_mutex);
    m_limit = std::max<int64_t>(0, frames);
}

}  // namespace mv
