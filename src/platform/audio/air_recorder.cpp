#include "platform/audio/air_recorder.h"

#include <sndfile.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <sstream>

#include "core/errors.h"

namespace mv {
namespace {

std::string msText(int64_t frames) {
    char buf[32];
    if (frames % kAirFramesPerMs == 0)
        std::snprintf(buf, sizeof buf, "%lld", static_cast<long long>(frames / kAirFramesPerMs));
    else
        std::snprintf(buf, sizeof buf, "%.3f", static_cast<double>(frames) / kAirFramesPerMs);
    return buf;
}

}  // namespace

AirRecorder::AirRecorder(const std::string& wavPath) : m_wavPath(wavPath) {
    SF_INFO info{};
    info.samplerate = kAirRate;
    info.channels = 2;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    m_wav = sf_open(wavPath.c_str(), SFM_WRITE, &info);
    if (!m_wav) throw MediaError("cannot record to \"" + wavPath + "\": " + sf_strerror(nullptr));
    sf_command(m_wav, SFC_SET_CLIPPING, nullptr, SF_TRUE);
    m_tx = std::fopen(transmitterPath(wavPath).c_str(), "w");
    if (!m_tx) {
        sf_close(m_wav);
        m_wav = nullptr;
        throw MediaError("cannot record to \"" + transmitterPath(wavPath) + "\"");
    }
    std::fprintf(m_tx,
                 "# Marrowvane air recording: spans with the transmitter keyed,\n"
                 "# in milliseconds from the first sample of %s (48000 Hz)\n",
                 wavPath.c_str());
    std::fflush(m_tx);
}

AirRecorder::~AirRecorder() { close(); }

void AirRecorder::air(const float* stereo, int64_t frames, bool keyed) {
    if (!m_wav) return;
    if (keyed != m_keyed) {
        if (m_keyed) writeSpan(m_keyedSince, m_frames);
        m_keyed = keyed;
        m_keyedSince = m_frames;
    }
    sf_writef_float(m_wav, stereo, frames);
    m_frames += frames;
}

void AirRecorder::writeSpan(int64_t fromFrame, int64_t toFrame) {
    // Written as each span closes, so a recording cut short still says what it can.
    std::fprintf(m_tx, "keyed %s %s\n", msText(fromFrame).c_str(), msText(toFrame).c_str());
    std::fflush(m_tx);
}

void AirRecorder::close() {
    if (!m_wav) return;
    if (m_keyed) writeSpan(m_keyedSince, m_frames);
    m_keyed = false;
    sf_close(m_wav);
    m_wav = nullptr;
    std::fclose(m_tx);
    m_tx = nullptr;
}

AirRecording AirRecording::load(const std::string& wavPath) {
    SF_INFO info{};
    SNDFILE* file = sf_open(wavPath.c_str(), SFM_READ, &info);
    if (!file) throw MediaError("cannot read the recording \"" + wavPath + "\": " + sf_strerror(nullptr));
    if (info.channels != 2 || info.samplerate != kAirRate) {
        sf_close(file);
        throw MediaError("\"" + wavPath + "\" is not an air recording");
    }
    std::vector<float> frames(static_cast<size_t>(info.frames) * 2);
    const sf_count_t got = sf_readf_float(file, frames.data(), info.frames);
    sf_close(file);
    AirRecording r;
    r.m_left.resize(static_cast<size_t>(got));
    r.m_right.resize(static_cast<size_t>(got));
    for (sf_count_t i = 0; i < got; ++i) {
        r.m_left[i] = frames[2 * i];
        r.m_right[i] = frames[2 * i + 1];
    }
    std::ifstream tx(AirRecorder::transmitterPath(wavPath));
    if (!tx) throw MediaError("cannot read \"" + AirRecorder::transmitterPath(wavPath) + "\"");
    std::string line;
    while (std::getline(tx, line)) {
        std::istringstream in(line);
        std::string word;
        Span span{};
        if (in >> word && word == "keyed" && in >> span.startMs >> span.endMs) r.m_keyed.push_back(span);
    }
    return r;
}

bool AirRecording::keyedAtMs(double ms) const {
    return std::any_of(m_keyed.begin(), m_keyed.end(), [ms](const Span& s) { return ms >= s.startMs && ms < s.endMs; });
}

float AirRecording::peakWhileUnkeyed() const {
    float peak = 0;
    for (int64_t i = 0; i < frames(); ++i) {
        if (keyedAtMs(static_cast<double>(i) / kAirFramesPerMs)) continue;
        peak = std::max({peak, std::abs(m_left[i]), std::abs(m_right[i])});
    }
    return peak;
}

std::vector<AirRecording::Span> AirRecording::soundSpans(float threshold, double bridgeMs) const {
    std::vector<Span> spans;
    const int64_t ms = frames() / kAirFramesPerMs;
    for (int64_t m = 0; m < ms; ++m) {
        float peak = 0;
        for (int64_t i = m * kAirFramesPerMs; i < (m + 1) * kAirFramesPerMs; ++i)
            peak = std::max({peak, std::abs(m_left[i]), std::abs(m_right[i])});
        if (peak <= threshold) continue;
        const double at = static_cast<double>(m);
        if (!spans.empty() && at - spans.back().endMs <= bridgeMs)
            spans.back().endMs = at + 1;
        else
            spans.push_back({at, at + 1});
    }
    return spans;
}

double AirRecording::rmsDb(int channel, double fromMs, double toMs) const {
    const std::vector<float>& s = channel == 0 ? m_left : m_right;
    const int64_t from = std::clamp<int64_t>(static_cast<int64_t>(fromMs * kAirFramesPerMs), 0, frames());
    const int64_t to = std::clamp<int64_t>(static_cast<int64_t>(toMs * kAirFramesPerMs), from, frames());
    double sum = 0;
    for (int64_t i = from; i < to; ++i) sum += static_cast<double>(s[i]) * s[i];
    const double mean = to > from ? sum / static_cast<double>(to - from) : 0.0;
    return mean > 0 ? 10.0 * std::log10(mean) : -200.0;
}

}  // namespace mv
