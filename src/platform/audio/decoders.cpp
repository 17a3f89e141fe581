#include "platform/audio/decoders.h"

#include <sndfile.h>

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "core/errors.h"
#include "platform/audio/fluidsynth_library.h"

namespace mv {
namespace {

constexpr int kMidiRate = 48000;
// A MIDI file that has not ended after this long is treated as broken: ten
// minutes is far beyond any tune a node sends; a damaged file whose track
// never ends stops here instead of holding the node up.
constexpr int64_t kMaxMidiFrames = int64_t{kMidiRate} * 60 * 10;
// A damaged MIDI file can hold one event hours after the last note; rendering
// all that silence would hold the node up for minutes only to key the
// transmitter on dead air. A minute without a sound is refused instead.
constexpr int64_t kMaxMidiSilentFrames = int64_t{kMidiRate} * 60;
constexpr float kSilentLevel = 1.0f / 32768.0f;

[[noreturn]] void fail(const std::string& path, const std::string& why) {
    throw MediaError("cannot render \"" + path + "\": " + why);
}

std::string lowerExtension(const std::string& path) {
    std::string ext = std::filesystem::path(path).extension().string();
    for (char& c : ext) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return ext;
}

// libsndfile quietly shortens a WAV whose header promises more data than the
// file holds; its log says "data : 96000 (should be 47978)". A file cut short
// in transfer is refused rather than played as half a word.
bool headerClaimsMoreThanFile(SNDFILE* file) {
    char log[8192] = {};
    sf_command(file, SFC_GET_LOG_INFO, log, sizeof log);
    for (const char* p = std::strstr(log, "data :"); p; p = std::strstr(p + 1, "data :")) {
        long long claimed = 0, actual = 0;
        if (std::sscanf(p, "data : %lld (should be %lld)", &claimed, &actual) == 2 && claimed > actual &&
            claimed != 0xFFFFFFFFLL)
            return true;
    }
    return false;
}

PcmPtr decodeWithSndfile(const std::string& path) {
    SF_INFO info{};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (!file) fail(path, sf_strerror(nullptr));
    struct Closer {
        SNDFILE* f;
        ~Closer() { sf_close(f); }
    } closer{file};

    if (info.channels < 1 || info.channels > 64) fail(path, "unusable channel count");
    if (info.samplerate < 1000 || info.samplerate > 384000) fail(path, "unusable sample rate");
    if (info.frames < 0 || info.frames * info.channels > kMaxDecodedSamples) fail(path, "too long to play");
    if (headerClaimsMoreThanFile(file)) fail(path, "the file is truncated");

    auto pcm = std::make_shared<Pcm>();
    pcm->sampleRate = info.samplerate;
    pcm->channels = std::min(info.channels, 2);
    pcm->samples.reserve(static_cast<size_t>(info.frames) * pcm->channels);

    // Read in blocks rather than trusting the header's frame count for one
    // allocation; keep the first two channels of a multi-channel file.
    constexpr sf_count_t kBlock = 8192;
    std::vector<float> block(static_cast<size_t>(kBlock) * info.channels);
    int64_t read = 0;
    for (;;) {
        const sf_count_t got = sf_readf_float(file, block.data(), kBlock);
        if (got <= 0) break;
        read += got;
        if (read * info.channels > kMaxDecodedSamples) fail(path, "too long to play");
        for (sf_count_t f = 0; f < got; ++f)
            for (int c = 0; c < pcm->channels; ++c) pcm->samples.push_back(block[f * info.channels + c]);
    }
    if (sf_error(file) != SF_ERR_NO_ERROR) fail(path, sf_strerror(file));
    // Compressed streams estimate their length from the header; a stream that
    // yields clearly less than it announced was cut off.
    if (read < info.frames - std::max<int64_t>(info.frames / 50, 4608)) fail(path, "the file is truncated");
    for (float s : pcm->samples)
        if (!std::isfinite(s)) fail(path, "the file holds invalid samples");
    return pcm;
}

const FluidSynthLibrary& midiSynthesiserFor(const std::string& path) {
    try {
        return FluidSynthLibrary::get();
    } catch (const MediaError& e) {
        fail(path, e.what());
    }
}

PcmPtr decodeMidi(const std::string& path) {
    const FluidSynthLibrary& fs = midiSynthesiserFor(path);
    if (!fs.isMidiFile(path.c_str())) fail(path, "not a MIDI file");
    const std::string soundFont = defaultSoundFont();
    if (soundFont.empty()) fail(path, "no General MIDI soundfont is installed");

    fluid_settings_t* settings = fs.newSettings();
    fs.settingsSetNum(settings, "synth.sample-rate", kMidiRate);
    fs.settingsSetInt(settings, "synth.reverb.active", 0);
    fs.settingsSetInt(settings, "synth.chorus.active", 0);
    fs.settingsSetStr(settings, "player.timing-source", "sample");
    fs.settingsSetInt(settings, "synth.lock-memory", 0);
    fluid_synth_t* synth = fs.newSynth(settings);
    fluid_player_t* player = synth ? fs.newPlayer(synth) : nullptr;
    struct Owner {
        const FluidSynthLibrary& fs;
        fluid_settings_t* s;
        fluid_synth_t* y;
        fluid_player_t* p;
        ~Owner() {
            if (p) fs.deletePlayer(p);
            if (y) fs.deleteSynth(y);
            fs.deleteSettings(s);
        }
    } owner{fs, settings, synth, player};
    if (!player) fail(path, "the MIDI synthesiser could not start");
    if (fs.synthSfLoad(synth, soundFont.c_str(), 1) == FLUID_FAILED) fail(path, "cannot load " + soundFont);
    if (fs.playerAdd(player, path.c_str()) != FLUID_OK) fail(path, "not a MIDI file");
    if (fs.playerPlay(player) != FLUID_OK) fail(path, "the MIDI file cannot be played");

    auto pcm = std::make_shared<Pcm>();
    pcm->sampleRate = kMidiRate;
    pcm->channels = 2;
    constexpr int kBlock = 64;
    // The sound lasts exactly as long as the file's tracks do; the player
    // itself would go on until the last note's release has died away.
    auto tracksRunning = [&fs, player] {
        if (fs.playerStatus(player) != FLUID_PLAYER_PLAYING) return false;
        const int total = fs.playerTotalTicks(player);
        return total <= 0 || fs.playerCurrentTick(player) < total;
    };
    int64_t silentFrames = 0;
    while (tracksRunning()) {
        const size_t at = pcm->samples.size();
        pcm->samples.resize(at + 2 * kBlock);
        float* out = pcm->samples.data() + at;
        if (fs.synthWriteFloat(synth, kBlock, out, 0, 2, out, 1, 2) != FLUID_OK) fail(path, "synthesis failed");
        float loudest = 0.0f;
        for (int i = 0; i < 2 * kBlock; ++i) loudest = std::max(loudest, std::fabs(out[i]));
        silentFrames = loudest < kSilentLevel ? silentFrames + kBlock : 0;
        if (pcm->frames() > kMaxMidiFrames) fail(path, "the MIDI file plays for over ten minutes");
        if (silentFrames > kMaxMidiSilentFrames) fail(path, "the MIDI file is silent for over a minute");
    }
    // Notes still sounding at the end are faded over 10 ms instead of clicking off.
    const int64_t fade = std::min<int64_t>(pcm->frames(), kMidiRate / 100);
    for (int64_t i = 0; i < fade; ++i) {
        const float g = static_cast<float>(i) / static_cast<float>(fade);
        const size_t at = static_cast<size_t>(pcm->frames() - 1 - i) * 2;
        pcm->samples[at] *= g;
        pcm->samples[at + 1] *= g;
    }
    return pcm;
}

}  // namespace

std::string defaultSoundFont() {
    if (const char* env = std::getenv("MARROWVANE_SOUNDFONT"); env && *env) return env;
    for (const char* p : {"/usr/share/sounds/sf2/TimGM6mb.sf2", "/usr/share/sounds/sf2/default-GM.sf2",
                          "/usr/share/sounds/sf2/FluidR3_GM.sf2", "/usr/share/soundfonts/default.sf2"}) {
        std::error_code ec;
        if (std::filesystem::is_regular_file(p, ec)) return p;
    }
    return {};
}

PcmPtr decodeAudioFile(const std::string& path) {
    const std::string ext = lowerExtension(path);
    if (ext == ".mid" || ext == ".midi") return decodeMidi(path);
    return decodeWithSndfile(path);
}

}  // namespace mv
