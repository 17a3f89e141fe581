#include "air/audio_fixtures.h"

#include <sndfile.h>
#include <unistd.h>

#include <cmath>
#include <fstream>
#include <iterator>
#include <numbers>
#include <stdexcept>

namespace mv::test {

ScratchDir::ScratchDir() {
    std::string pattern = (std::filesystem::temp_directory_path() / "mv-air-XXXXXX").string();
    if (!mkdtemp(pattern.data())) throw std::runtime_error("cannot make a scratch folder");
    m_path = pattern;
}

ScratchDir::~ScratchDir() {
    std::error_code ec;
    std::filesystem::remove_all(m_path, ec);
}

std::vector<float> sine(double hz, double seconds, int rate, float amplitude) {
    std::vector<float> s(static_cast<size_t>(std::llround(seconds * rate)));
    for (size_t i = 0; i < s.size(); ++i)
        s[i] = amplitude * static_cast<float>(std::sin(2 * std::numbers::pi * hz * static_cast<double>(i) / rate));
    return s;
}

void writeSound(const std::string& path, const std::vector<float>& mono, int rate, int format) {
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = 1;
    info.format = format ? format : (SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    SNDFILE* f = sf_open(path.c_str(), SFM_WRITE, &info);
    if (!f) throw std::runtime_error("cannot write " + path + ": " + sf_strerror(nullptr));
    sf_writef_float(f, mono.data(), static_cast<sf_count_t>(mono.size()));
    sf_close(f);
}

void writeWav(const std::string& path, double seconds, int rate, double hz) {
    writeSound(path, sine(hz, seconds, rate), rate);
}

void writeMp3(const std::string& path, double seconds) {
    writeSound(path, sine(440, seconds, 48000), 48000, SF_FORMAT_MPEG | SF_FORMAT_MPEG_LAYER_III);
}

namespace {
struct BitWriter {
    std::vector<uint8_t> bytes;
    int bits = 0;
    void put(uint32_t value, int count) {
        for (int i = count - 1; i >= 0; --i) {
            if (bits % 8 == 0) bytes.push_back(0);
            if ((value >> i) & 1u) bytes.back() |= static_cast<uint8_t>(0x80 >> (bits % 8));
            ++bits;
        }
    }
};
}  // namespace

void writeMp2(const std::string& path, int frames) {
    std::vector<uint8_t> out;
    for (int frame = 0; frame < frames; ++frame) {
        BitWriter w;
        w.put(0xFFF, 12);  // sync
        w.put(1, 1);       // MPEG-1
        w.put(2, 2);       // Layer II
        w.put(1, 1);       // no CRC
        w.put(2, 4);       // 48 kbit/s: 144-byte frames, the 8-subband allocation table
        w.put(1, 2);       // 48 kHz
        w.put(0, 2);       // no padding, private bit
        w.put(3, 2);       // mono
        w.put(0, 8);       // mode extension, copyright, original, emphasis
        w.put(4, 4);       // subband 0: 15-level quantiser
        w.put(0, 4);       // subband 1: nothing
        for (int sb = 2; sb < 8; ++sb) w.put(0, 3);
        w.put(2, 2);  // one scale factor for the frame
        w.put(6, 6);  // scale factor 0.5
        for (int g = 0; g < 36; ++g) {
            const int n = frame * 36 + g;
            w.put(static_cast<uint32_t>(std::lround(7 + 6 * std::sin(2 * std::numbers::pi * n / 8.0))), 4);
        }
        w.bytes.resize(144, 0);
        out.insert(out.end(), w.bytes.begin(), w.bytes.end());
    }
    writeBytes(path, out);
}

namespace {
// A MIDI delta time: 480 ticks a quarter note at 120 bpm is 960 ticks a second.
std::vector<uint8_t> midiDelta(double seconds) {
    const uint32_t ticks = static_cast<uint32_t>(std::lround(seconds * 960));
    std::vector<uint8_t> delta;
    for (uint32_t v = ticks, first = 1;; first = 0) {
        delta.insert(delta.begin(), static_cast<uint8_t>((v & 0x7F) | (first ? 0 : 0x80)));
        v >>= 7;
        if (!v) break;
    }
    return delta;
}
}  // namespace

void writeMidi(const std::string& path, double seconds, double silenceAfter) {
    std::vector<uint8_t> track = {0x00, 0xFF, 0x51, 0x03, 0x07, 0xA1, 0x20,  // tempo 500000 us a quarter
                                  0x00, 0xC0, 0x00,                          // piano
                                  0x00, 0x90, 0x45, 0x64};                   // A4 on
    const auto held = midiDelta(seconds);
    track.insert(track.end(), held.begin(), held.end());
    track.insert(track.end(), {0x80, 0x45, 0x40});  // off
    const auto rest = midiDelta(silenceAfter);
    track.insert(track.end(), rest.begin(), rest.end());
    track.insert(track.end(), {0xFF, 0x2F, 0x00});  // end of track
    std::vector<uint8_t> file = {'M', 'T', 'h', 'd', 0, 0, 0, 6, 0, 0, 0, 1, 0x01, 0xE0, 'M', 'T', 'r', 'k'};
    const uint32_t n = static_cast<uint32_t>(track.size());
    file.insert(file.end(), {uint8_t(n >> 24), uint8_t(n >> 16), uint8_t(n >> 8), uint8_t(n)});
    file.insert(file.end(), track.begin(), track.end());
    writeBytes(path, file);
}

std::vector<FormatSample> writeOneOfEachFormat(const ScratchDir& dir) {
    writeWav(dir.file("a.wav"), 1.0, 44100);
    writeMp3(dir.file("a.mp3"), 1.0);
    writeMp2(dir.file("a.mp2"), 42);
    writeMidi(dir.file("a.mid"), 1.0);
    return {{"a.wav", 1.0, 1e-9}, {"a.mp3", 1.0, 0.001}, {"a.mp2", 42 * 1152 / 48000.0, 0.001}, {"a.mid", 1.0, 0.02}};
}

void writeBytes(const std::string& path, const std::vector<uint8_t>& bytes) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

std::vector<uint8_t> readBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

}  // namespace mv::test
