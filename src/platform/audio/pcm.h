#pragma once
// Decoded sound as the air plays it: interleaved float samples (one or two
// channels) at the rate the file was made at. Shared, immutable once decoded,
// so one decode serves every graph that plays the same file.
#include <cstdint>
#include <memory>
#include <vector>

namespace mv {

struct Pcm {
    int sampleRate = 48000;
    int channels = 1;  // 1 or 2
    std::vector<float> samples;

    int64_t frames() const { return channels > 0 ? static_cast<int64_t>(samples.size()) / channels : 0; }
    double seconds() const { return sampleRate > 0 ? static_cast<double>(frames()) / sampleRate : 0.0; }
};

using PcmPtr = std::shared_ptr<const Pcm>;

}  // namespace mv
