#pragma once
// Sound files made on the spot for the air's tests: tones in wav, mp3, mp2 and
// MIDI, written into a scratch folder that goes when the fixture does.
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

namespace mv::test {

class ScratchDir {
public:
    ScratchDir();
    ~ScratchDir();
    std::string file(const std::string& name) const { return (m_path / name).string(); }
    const std::filesystem::path& path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

// A sine at `amplitude` (full scale 1), `seconds` long.
std::vector<float> sine(double hz, double seconds, int rate, float amplitude = 0.5f);

// Writes with libsndfile; `format` is an SF_FORMAT_* combination (wav 16-bit by default).
void writeSound(const std::string& path, const std::vector<float>& mono, int rate, int format = 0);
void writeWav(const std::string& path, double seconds, int rate = 48000, double hz = 440);
void writeMp3(const std::string& path, double seconds);
// MPEG-1 Layer II, 48 kHz mono, a low tone; libsndfile cannot encode this
// layer, so the frames are assembled by hand. Length: frames * 1152 samples.
void writeMp2(const std::string& path, int frames);
// One note held `seconds`, then the end of the track.
// One note held for `seconds`, then `silenceAfter` seconds before the track ends.
void writeMidi(const std::string& path, double seconds, double silenceAfter = 0);
// One short file of each format the suite plays, with its expected length
// and how closely its decoder keeps to it.
struct FormatSample {
    std::string file;
    double seconds;
    double tolerance;
};
std::vector<FormatSample> writeOneOfEachFormat(const ScratchDir& dir);

void writeBytes(const std::string& path, const std::vector<uint8_t>& bytes);
std::vector<uint8_t> readBytes(const std::string& path);

}  // namespace mv::test
