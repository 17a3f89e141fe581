#pragma once
// Writes the air as it went out: FILE.wav holds the mix (48 kHz, 16-bit,
// stereo) and FILE.wav.tx beside it lists the spans during which the
// transmitter was keyed, so a recording answers "was anything on the air while
// the transmitter was unkeyed" and "how long was the gap between two words".
// AirRecording reads such a pair back for tests and tools.
#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "platform/audio/air_mixer.h"

struct sf_private_tag;

namespace mv {

class AirRecorder final : public AirTap {
public:
    // Throws MediaError when either file cannot be created.
    explicit AirRecorder(const std::string& wavPath);
    ~AirRecorder() override;
    AirRecorder(const AirRecorder&) = delete;
    AirRecorder& operator=(const AirRecorder&) = delete;

    void air(const float* stereo, int64_t frames, bool keyed) override;
    // Finishes both files; the recorder takes no more frames afterwards.
    void close();

    const std::string& wavPath() const { return m_wavPath; }
    static std::string transmitterPath(const std::string& wavPath) { return wavPath + ".tx"; }
    int64_t frames() const { return m_frames; }

private:
    void writeSpan(int64_t fromFrame, int64_t toFrame);

    std::string m_wavPath;
    sf_private_tag* m_wav = nullptr;
    std::FILE* m_tx = nullptr;
    int64_t m_frames = 0;
    bool m_keyed = false;
    int64_t m_keyedSince = 0;
};

// A recording read back: both channels and the keyed spans.
class AirRecording {
public:
    struct Span {
        double startMs;
        double endMs;
        double lengthMs() const { return endMs - startMs; }
    };
    // Throws MediaError when the files cannot be read.
    static AirRecording load(const std::string& wavPath);

    int64_t frames() const { return static_cast<int64_t>(m_left.size()); }
    double lengthMs() const { return static_cast<double>(frames()) / kAirFramesPerMs; }
    const std::vector<Span>& keyedSpans() const { return m_keyed; }
    const std::vector<float>& left() const { return m_left; }
    const std::vector<float>& right() const { return m_right; }
    bool keyedAtMs(double ms) const;

    // Loudest sample, either channel, while the transmitter was not keyed.
    float peakWhileUnkeyed() const;
    // The stretches with sound louder than `threshold` (peak per millisecond),
    // silences shorter than `bridgeMs` counted as part of the sound.
    std::vector<Span> soundSpans(float threshold = 0.003f, double bridgeMs = 3) const;
    // Level of one channel (0 left, 1 right) between two times, in dB full scale.
    double rmsDb(int channel, double fromMs, double toMs) const;

private:
    std::vector<float> m_left, m_right;
    std::vector<Span> m_keyed;
};

}  // namespace mv
