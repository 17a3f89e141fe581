// Decoding: every format the suite plays gives the right length, a file that
// is not playable sound ends in a MediaError (never a crash), and the cache
// decodes an unchanged file once and a replaced one again.
#include <gtest/gtest.h>

#include <filesystem>
#include <random>

#include "air/audio_fixtures.h"
#include "core/errors.h"
#include "platform/audio/decode_cache.h"
#include "platform/audio/decoders.h"
#include "platform/audio/fluidsynth_library.h"

namespace mv {
namespace {

using test::ScratchDir;

TEST(Decoders, EachFormatDecodesToItsLength) {
    ScratchDir dir;
    for (const test::FormatSample& c : test::writeOneOfEachFormat(dir)) {
        SCOPED_TRACE(c.file);
        const PcmPtr pcm = decodeAudioFile(dir.file(c.file));
        EXPECT_NEAR(pcm->seconds(), c.seconds, c.tolerance);
        float peak = 0;
        for (float s : pcm->samples) peak = std::max(peak, std::abs(s));
        EXPECT_GT(peak, 0.01f) << "decoded to silence";
    }
}

TEST(Decoders, AHeaderOnlyWavIsAZeroLengthSound) {
    ScratchDir dir;
    test::writeSound(dir.file("empty.wav"), {}, 48000);
    EXPECT_EQ(decodeAudioFile(dir.file("empty.wav"))->frames(), 0);
}

TEST(Decoders, FilesThatAreNotPlayableSoundAreRefused) {
    ScratchDir dir;
    test::writeWav(dir.file("good.wav"), 0.5);
    test::writeMp3(dir.file("good.mp3"), 0.5);
    test::writeMidi(dir.file("good.mid"), 0.5);
    const auto wav = test::readBytes(dir.file("good.wav"));
    const auto mp3 = test::readBytes(dir.file("good.mp3"));
    test::writeBytes(dir.file("zero.wav"), {});
    test::writeBytes(dir.file("text.wav"), {'h', 'e', 'l', 'l', 'o', '\n'});
    test::writeBytes(dir.file("cut.wav"), {wav.begin(), wav.begin() + static_cast<long>(wav.size() / 2)});
    test::writeBytes(dir.file("header-cut.wav"), {wav.begin(), wav.begin() + 30});
    test::writeBytes(dir.file("cut.mp3"), {mp3.begin(), mp3.begin() + static_cast<long>(mp3.size() / 2)});
    std::filesystem::copy_file(dir.file("good.mid"), dir.file("midi-named.wav"));
    std::filesystem::copy_file(dir.file("good.wav"), dir.file("wave-named.mid"));
    std::filesystem::create_directory(dir.file("folder.wav"));
    for (const char* name : {"zero.wav", "text.wav", "cut.wav", "header-cut.wav", "cut.mp3", "midi-named.wav",
                             "wave-named.mid", "folder.wav", "missing.wav", "missing.mid"}) {
        SCOPED_TRACE(name);
        DecodeCache cache;
        EXPECT_THROW(cache.load(dir.file(name)), MediaError);
    }
}

// A damaged MIDI file whose track ends hours after its last note would have
// the node render dead air for minutes; a minute of silence is refused.
TEST(Decoders, AMidiFileSilentForOverAMinuteIsRefused) {
    ScratchDir dir;
    test::writeMidi(dir.file("pause.mid"), 0.2, 20);
    EXPECT_GT(decodeAudioFile(dir.file("pause.mid"))->seconds(), 20.0) << "a short rest is part of the tune";
    test::writeMidi(dir.file("dead-air.mid"), 0.2, 3 * 3600);
    try {
        decodeAudioFile(dir.file("dead-air.mid"));
        FAIL() << "three hours of silence decoded";
    } catch (const MediaError& e) {
        EXPECT_NE(std::string(e.what()).find("silent"), std::string::npos) << e.what();
    }
}

// The MIDI synthesiser is opened with the first MIDI file: a system without
// it, or with something else under its name, gets a message that says so
// (naming the library) instead of a crash or a half-found library.
TEST(Decoders, AMidiSynthesiserThatIsMissingOrIncompleteIsNamed) {
    try {
        FluidSynthLibrary::open("libfluidsynth-not-installed.so.99");
        FAIL() << "a missing library opened";
    } catch (const MediaError& e) {
        const std::string why = e.what();
        EXPECT_NE(why.find("the MIDI synthesiser cannot be loaded"), std::string::npos) << why;
        EXPECT_NE(why.find("libfluidsynth-not-installed.so.99"), std::string::npos) << why;
    }
    try {
        FluidSynthLibrary::open("libsndfile.so.1");
        FAIL() << "a library without the synthesiser's functions was taken for it";
    } catch (const MediaError& e) {
        EXPECT_NE(std::string(e.what()).find("has no fluid_"), std::string::npos) << e.what();
    }
    ScratchDir dir;
    test::writeMidi(dir.file("tune.mid"), 0.5);
    EXPECT_NEAR(decodeAudioFile(dir.file("tune.mid"))->seconds(), 0.5, 0.1) << "the installed one renders";
}

// A few hundred broken files of every kind go through the decoders: each one
// either decodes to finite, bounded sound or is refused with a MediaError.
TEST(Decoders, GeneratedCorruptFilesNeverCrash) {
    ScratchDir dir;
    test::writeWav(dir.file("w.wav"), 0.2);
    test::writeMp3(dir.file("m.mp3"), 0.2);
    test::writeMp2(dir.file("p.mp2"), 8);
    test::writeMidi(dir.file("s.mid"), 0.2);
    std::mt19937 rng(1234);
    int refused = 0, files = 0;
    for (const char* seed : {"w.wav", "m.mp3", "p.mp2", "s.mid"}) {
        const auto good = test::readBytes(dir.file(seed));
        const std::string ext = std::filesystem::path(seed).extension().string();
        for (int i = 0; i < 80; ++i, ++files) {
            std::vector<uint8_t> bad = good;
            switch (i % 4) {
                case 0:  // cut anywhere
                    bad.resize(rng() % bad.size());
                    break;
                case 1:  // bytes flipped in the header
                    for (int k = 0; k < 4; ++k) bad[rng() % std::min<size_t>(bad.size(), 64)] ^= static_cast<uint8_t>(1 + rng() % 255);
                    break;
                case 2:  // bytes flipped anywhere
                    for (int k = 0; k < 16; ++k) bad[rng() % bad.size()] = static_cast<uint8_t>(rng());
                    break;
                default:  // noise of a random length
                    bad.resize(rng() % 4096);
                    for (auto& b : bad) b = static_cast<uint8_t>(rng());
            }
            const std::string path = dir.file("bad" + std::to_string(files) + ext);
            test::writeBytes(path, bad);
            try {
                const PcmPtr pcm = decodeAudioFile(path);
                ASSERT_TRUE(pcm->channels == 1 || pcm->channels == 2);
                ASSERT_LE(pcm->frames() * pcm->channels, kMaxDecodedSamples);
                for (float s : pcm->samples) ASSERT_TRUE(std::isfinite(s));
            } catch (const MediaError& e) {
                ++refused;
                EXPECT_NE(std::string(e.what()).find(path), std::string::npos) << "the error names the file";
            }
        }
    }
    EXPECT_EQ(files, 320);
    // Noise and files cut inside their header can never be played.
    EXPECT_GE(refused, 80);
}

TEST(DecodeCache, DecodesAnUnchangedFileOnceAndAReplacedFileAgain) {
    ScratchDir dir;
    const std::string path = dir.file("word.wav");
    test::writeWav(path, 0.5);
    DecodeCache cache;
    const PcmPtr first = cache.load(path);
    EXPECT_EQ(cache.load(path), first);
    EXPECT_EQ(cache.decodes(), 1u);

    test::writeWav(path, 0.75);
    const PcmPtr replaced = cache.load(path);
    EXPECT_EQ(cache.decodes(), 2u);
    EXPECT_NEAR(replaced->seconds(), 0.75, 1e-9);
    EXPECT_EQ(cache.entries(), 1u);
}

TEST(DecodeCache, AFailedDecodeIsNotRemembered) {
    ScratchDir dir;
    const std::string path = dir.file("late.wav");
    DecodeCache cache;
    EXPECT_THROW(cache.load(path), MediaError);
    test::writeWav(path, 0.25);
    EXPECT_NEAR(cache.load(path)->seconds(), 0.25, 1e-9);
}

TEST(DecodeCache, KeepsWithinItsBudgetDroppingTheLeastRecentlyUsed) {
    ScratchDir dir;
    int decodes = 0;
    DecodeCache cache(
        [&](const std::string&) {
            ++decodes;
            auto pcm = std::make_shared<Pcm>();
            pcm->samples.resize(1000);
            return PcmPtr(pcm);
        },
        2500 * sizeof(float));
    for (const char* n : {"a.wav", "b.wav", "c.wav"}) test::writeBytes(dir.file(n), {1});
    cache.load(dir.file("a.wav"));
    cache.load(dir.file("b.wav"));
    cache.load(dir.file("a.wav"));  // a is now the most recent
    cache.load(dir.file("c.wav"));  // over budget: b goes
    EXPECT_EQ(cache.entries(), 2u);
    cache.load(dir.file("a.wav"));
    EXPECT_EQ(decodes, 3);
    cache.load(dir.file("b.wav"));
    EXPECT_EQ(decodes, 4);
}

}  // namespace
}  // namespace mv
