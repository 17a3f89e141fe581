// The Windows build's decoder: RIFF WAVE files only (PCM 8 to 32 bits, IEEE
// float, and their extensible forms), read by content like the Linux
// decoders. That covers the default voice and recorded word files, so an
// announcement has the same words of the same length on both systems;
// compressed formats and MIDI wait for a Windows media back end.
#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "core/errors.h"
#include "platform/audio/decoders.h"

namespace mv {
namespace {

[[noreturn]] void fail(const std::string& path, const std::string& why) {
    throw MediaError("cannot render \"" + path + "\": " + why);
}

uint32_t le32(const unsigned char* p) { return p[0] | (p[1] << 8) | (p[2] << 16) | (uint32_t{p[3]} << 24); }
uint16_t le16(const unsigned char* p) { return static_cast<uint16_t>(p[0] | (p[1] << 8)); }

constexpr uint16_t kFormatPcm = 1;
constexpr uint16_t kFormatFloat = 3;
constexpr uint16_t kFormatExtensible = 0xFFFE;
// A data chunk whose length was never filled in (a recording still being written).
constexpr uint32_t kUnknownLength = 0xFFFFFFFF;

struct Format {
    uint16_t tag = 0;
    int channels = 0;
    int sampleRate = 0;
    int blockAlign = 0;
    int bits = 0;
};

float sampleAt(const unsigned char* p, const Format& f) {
    if (f.tag == kFormatFloat) {
        if (f.bits == 32) {
            float v;
            std::memcpy(&v, p, 4);
            return v;
        }
        double v;
        std::memcpy(&v, p, 8);
        return static_cast<float>(v);
    }
    switch (f.bits) {
        case 8: return (static_cast<int>(p[0]) - 128) / 128.0f;
        case 16: return static_cast<int16_t>(le16(p)) / 32768.0f;
        case 24: {
            const int32_t v = static_cast<int32_t>((p[0] << 8) | (p[1] << 16) | (uint32_t{p[2]} << 24)) >> 8;
            return static_cast<float>(v / 8388608.0);
        }
        default: return static_cast<float>(static_cast<int32_t>(le32(p)) / 2147483648.0);
    }
}

Format readFormat(const std::string& path, const unsigned char* p, size_t size) {
    if (size < 16) fail(path, "the format chunk is too short");
    Format f;
    f.tag = le16(p);
    f.channels = le16(p + 2);
    f.sampleRate = static_cast<int>(le32(p + 4));
    f.blockAlign = le16(p + 12);
    f.bits = le16(p + 14);
    if (f.tag == kFormatExtensible) {
        if (size < 40) fail(path, "the extensible format chunk is too short");
        f.tag = le16(p + 24);  // the first two bytes of the sub-format GUID
    }
    if (f.tag != kFormatPcm && f.tag != kFormatFloat) fail(path, "a compressed WAV this build cannot decode");
    if (f.tag == kFormatPcm && f.bits != 8 && f.bits != 16 && f.bits != 24 && f.bits != 32)
        fail(path, "unusable sample size");
    if (f.tag == kFormatFloat && f.bits != 32 && f.bits != 64) fail(path, "unusable sample size");
    if (f.channels < 1 || f.channels > 64) fail(path, "unusable channel count");
    if (f.sampleRate < 1000 || f.sampleRate > 384000) fail(path, "unusable sample rate");
    if (f.blockAlign != f.channels * f.bits / 8) fail(path, "inconsistent block size");
    return f;
}

}  // namespace

PcmPtr decodeAudioFile(const std::string& path) {
    std::ifstream in(std::filesystem::path(std::u8string(path.begin(), path.end())), std::ios::binary);
    if (!in) fail(path, "cannot open the file");
    const std::vector<unsigned char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    if (bytes.size() < 12 || std::memcmp(bytes.data(), "RIFF", 4) != 0 || std::memcmp(bytes.data() + 8, "WAVE", 4) != 0)
        fail(path, "not a WAV file (this build plays WAV files only)");

    Format format;
    bool haveFormat = false;
    const unsigned char* data = nullptr;
    size_t dataSize = 0;
    for (size_t at = 12; at + 8 <= bytes.size();) {
        const unsigned char* chunk = bytes.data() + at;
        const uint32_t declared = le32(chunk + 4);
        const size_t available = bytes.size() - at - 8;
        if (std::memcmp(chunk, "fmt ", 4) == 0) {
            if (declared > available) fail(path, "the file is truncated");
            format = readFormat(path, chunk + 8, declared);
            haveFormat = true;
        } else if (std::memcmp(chunk, "data", 4) == 0) {
            // A header that promises more sound than the file holds means a
            // file cut short in transfer: refused rather than played as half a word.
            if (declared != kUnknownLength && declared > available) fail(path, "the file is truncated");
            data = chunk + 8;
            dataSize = declared == kUnknownLength ? available : declared;
            break;
        }
        if (declared > available) break;
        at += 8 + declared + (declared & 1);  // chunks are padded to an even length
    }
    if (!haveFormat) fail(path, "no format chunk");
    if (!data) fail(path, "no sound data");

    const int64_t frames = static_cast<int64_t>(dataSize / static_cast<size_t>(format.blockAlign));
    if (frames * format.channels > kMaxDecodedSamples) fail(path, "too long to play");
    auto pcm = std::make_shared<Pcm>();
    pcm->sampleRate = format.sampleRate;
    pcm->channels = std::min(format.channels, 2);
    pcm->samples.reserve(static_cast<size_t>(frames) * pcm->channels);
    const int bytesPerSample = format.bits / 8;
    for (int64_t f = 0; f < frames; ++f) {
        const unsigned char* frame = data + f * format.blockAlign;
        for (int c = 0; c < pcm->channels; ++c) {
            const float s = sampleAt(frame + c * bytesPerSample, format);
            if (!std::isfinite(s)) fail(path, "the file holds invalid samples");
            pcm->samples.push_back(s);
        }
    }
    return pcm;
}

// MIDI is not played on Windows yet, so no soundfont is looked for.
std::string defaultSoundFont() { return {}; }

}  // namespace mv
