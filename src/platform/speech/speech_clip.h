#pragma once
// One utterance as the synthesizer writes it and the air plays it: mono
// samples at the voice's own rate that grow while synthesis runs, so playing
// can start with the first words. Filled on the synthesizer's thread, read on
// the engine's and the sound card's, hence the lock.
#include <algorithm>
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace mv {

// The rate the synthesizer speaks at, and wave files are written at.
inline constexpr int kSpeechRate = 22050;

class SpeechClip {
public:
    SpeechClip(std::string text, float gain) : m_text(std::move(text)), m_gain(gain) {}

    const std::string& text() const { return m_text; }
    float gain() const { return m_gain; }

    // --- the synthesizer's side ---
    void append(const short* samples, int count);
    void finish();
    void fail(std::string why);
    // Checked between the synthesizer's buffers: a cancelled clip stops growing.
    bool cancelled() const { return m_cancelled.load(std::memory_order_relaxed); }

    // --- the player's side ---
    void cancel() { m_cancelled.store(true, std::memory_order_relaxed); }
    // Synthesis over: finished, failed or given up after a cancel.
    bool done() const;
    std::optional<std::string> error() const;
    // Blocks the calling thread (not the engine's clock) until done.
    void waitDone() const;
    int64_t frames() const;
    // Cuts the clip to its first `frames` frames (it plays no further).
    void limitTo(int64_t frames);

    // Calls f(samples, framesAvailable, done) with the lock held. Samples are
    // floats in -1..1 before the clip's gain.
    template <class F>
    auto withSamples(F&& f) const {
        std::lock_guard lock(m_mutex);
        const int64_t n = m_limit >= 0 ? std::min<int64_t>(m_limit, static_cast<int64_t>(m_samples.size()))
                                       : static_cast<int64_t>(m_samples.size());
        return f(m_samples.data(), n, m_done || (m_limit >= 0 && n >= m_limit));
    }

private:
    const std::string m_text;
    const float m_gain;
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_doneSignal;
    std::vector<float> m_samples;
    int64_t m_limit = -1;
    bool m_done = false;
    std::optional<std::string> m_error;
    std::atomic<bool> m_cancelled{false};
};

}  // namespace mv
