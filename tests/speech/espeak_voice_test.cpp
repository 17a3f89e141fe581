// The espeak-ng voice on the air, in virtual time: keyed speech holds the
// engine for exactly its length and sounds only then; speed, loudness and the
// voice choice act as the operator's scale says; text is never markup; wave
// files come out in the one format; a keyed utterance drops queued speech and
// is cut at its limit.
#include "platform/speech/espeak_voice.h"

#include <gtest/gtest.h>

#include <sndfile.h>

#include <cmath>

#include "air/audio_fixtures.h"
#include "core/errors.h"

namespace mv {
namespace {

constexpr const char* kTest = "Esto es una prueba de voz";

class EspeakVoiceTest : public ::testing::Test {
protected:
    EspeakVoiceTest() : clock(LocalDateTime{2026, 11, 22, 14, 0, 0, 0}), scheduler(clock), air(clock), voice(scheduler, air) {}

    // Speaks keyed and returns what the call reported; the recording keeps it.
    SpokenUtterance keyed(const std::string& text, int64_t maxMs = 180000) {
        air.mixer().setTransmitter(true, 0);
        const SpokenUtterance said = voice.speakAndWait(text, maxMs);
        air.mixer().setTransmitter(false, 0);
        return said;
    }
    AirRecording record(const std::function<void()>& what) {
        air.startRecording(dir.file("air.wav"));
        what();
        scheduler.runUntil(scheduler.now() + 200);
        air.stopRecording();
        return AirRecording::load(dir.file("air.wav"));
    }

    test::ScratchDir dir;
    VirtualClock clock;
    Scheduler scheduler;
    Air air;
    EspeakVoice voice;
};

TEST_F(EspeakVoiceTest, KeyedSpeechHoldsTheEngineForItsLengthAndSoundsOnlyMeanwhile) {
    int64_t startedAt = 0, blockedFor = 0;
    SpokenUtterance said;
    const AirRecording rec = record([&] {
        scheduler.runUntil(300);
        startedAt = scheduler.now();
        said = keyed(kTest);
        blockedFor = scheduler.now() - startedAt;
    });
    EXPECT_GT(said.lengthMs, 900);
    EXPECT_LT(said.lengthMs, 3000);
    EXPECT_FALSE(said.cut());
    EXPECT_EQ(blockedFor, said.lengthMs) << "virtual time moves by the utterance's own length";
    EXPECT_LT(rec.peakWhileUnkeyed(), 1e-4f);
    const auto sound = rec.soundSpans();
    ASSERT_FALSE(sound.empty());
    EXPECT_GE(sound.front().startMs, 300.0);
    EXPECT_LT(sound.front().startMs, 400.0) << "the first word starts at once";
    EXPECT_LE(sound.back().endMs, 300.0 + said.lengthMs);
    EXPECT_GT(sound.back().endMs, 300.0 + said.lengthMs - 150);
}

TEST_F(EspeakVoiceTest, RateAndVolumeFollowTheOperatorsScale) {
    voice.setRate(0);
    const double normal = static_cast<double>(keyed(kTest).lengthMs);
    voice.setRate(5);
    const double fast = static_cast<double>(keyed(kTest).lengthMs);
    voice.setRate(-5);
    const double slow = static_cast<double>(keyed(kTest).lengthMs);
    EXPECT_NEAR(normal / fast, 1.7, 0.25);
    EXPECT_NEAR(normal / slow, 0.6, 0.1);

    voice.setRate(0);
    auto levelAt = [&](int volume) {
        voice.setVolume(volume);
        const AirRecording rec = record([&] { keyed(kTest); });
        return rec.rmsDb(0, 0, rec.lengthMs());
    };
    const double full = levelAt(100);
    EXPECT_NEAR(full - levelAt(50), 6.02, 0.3) << "volume is linear in amplitude";
    EXPECT_LT(levelAt(0), -90.0);
}

TEST_F(EspeakVoiceTest, MarkupAndPhonemeBracketsAreSpokenAsWrittenNeverObeyed) {
    const int64_t plain = keyed("hola").lengthMs;
    // Obeyed, the tag would only change the pitch and the brackets would say
    // "hola" once; spoken as text, both take far longer.
    EXPECT_GT(keyed("<pitch absmiddle=\"10\">hola").lengthMs, 3 * plain);
    EXPECT_GT(keyed("[[h'Ola]]").lengthMs, 2 * plain);
}

// A chat line with a '>' joining two words makes the library walk a word past
// its end, up its stack through what earlier texts left there; it once ran off
// the stack and crashed. Such a line is spoken, as long after other texts as
// first (a walk into old words would add syllables; the library's own state
// moves a text by a few milliseconds).
TEST_F(EspeakVoiceTest, AChatLineThatRunsTheLibraryPastAWordsEndIsSpokenAsWritten) {
    const std::string line = "Message from  EA4XYZ-L>hola a todos";
    const SpokenUtterance first = keyed(line);
    EXPECT_GT(first.lengthMs, 2500);
    EXPECT_LT(first.lengthMs, 4500);
    for (const char* between : {"Buenos dias a todas las estaciones de la red", "EA4ABC", "Good morning"}) {
        keyed(between);
        EXPECT_NEAR(static_cast<double>(keyed(line).lengthMs), static_cast<double>(first.lengthMs), 20.0)
            << "after \"" << between << "\"";
    }
}

TEST_F(EspeakVoiceTest, VoicesAreChosenByNameAndAnUnknownOneIsRefused) {
    const auto names = voice.voiceNames();
    EXPECT_NE(std::find(names.begin(), names.end(), "es"), names.end());
    EXPECT_NO_THROW(voice.setVoice("EN-us"));
    const int64_t english = keyed("Good morning").lengthMs;
    EXPECT_GT(english, 0);
    EXPECT_THROW(voice.setVoice("xx-nothing"), SpeechError);
    // The library's state makes the same text come out a few samples longer
    // or shorter each time; a different voice would differ by far more.
    EXPECT_NEAR(static_cast<double>(keyed("Good morning").lengthMs), static_cast<double>(english), 20.0)
        << "a refused name leaves the voice as it was";
}

TEST_F(EspeakVoiceTest, WaveFileIs22kHz16BitMonoAndNothingGoesOnTheAir) {
    const std::string path = dir.file("out.wav");
    const AirRecording rec = record([&] { voice.speakToWave(kTest, path); });
    SF_INFO info{};
    SNDFILE* f = sf_open(path.c_str(), SFM_READ, &info);
    ASSERT_NE(f, nullptr);
    sf_close(f);
    EXPECT_EQ(info.samplerate, 22050);
    EXPECT_EQ(info.channels, 1);
    EXPECT_EQ(info.format, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    EXPECT_NEAR(1000.0 * static_cast<double>(info.frames) / 22050, static_cast<double>(keyed(kTest).lengthMs), 20.0);
    EXPECT_TRUE(rec.soundSpans().empty());
    EXPECT_THROW(voice.speakToWave(kTest, dir.file("no/such/folder/out.wav")), SpeechError);
}

TEST_F(EspeakVoiceTest, UnkeyedSpeechQueuesAndAKeyedUtteranceDropsIt) {
    voice.speakAsync("uno dos tres cuatro cinco seis siete ocho");
    voice.speakAsync("nueve diez");
    EXPECT_TRUE(voice.speaking());
    EXPECT_EQ(scheduler.now(), 0) << "unkeyed speech does not hold the engine";
    scheduler.runUntil(500);
    EXPECT_TRUE(voice.speaking());
    const int64_t hola = keyed("hola").lengthMs;
    EXPECT_EQ(scheduler.now(), 500 + hola) << "only the keyed text was waited for";
    EXPECT_FALSE(voice.speaking()) << "what was queued before is gone";

    voice.speakAsync("uno");
    voice.speakAsync("dos");
    scheduler.runUntil(scheduler.now() + 5000);
    EXPECT_FALSE(voice.speaking()) << "queued texts play one after the other and end";
}

TEST_F(EspeakVoiceTest, KeyedSpeechLongerThanTheLimitIsCutThere) {
    std::string text;
    for (int i = 0; i < 6; ++i) text += "La estacion transmite su indicativo cada quince minutos. ";
    SpokenUtterance said;
    const AirRecording rec = record([&] { said = keyed(text, 2000); });
    EXPECT_TRUE(said.cut());
    EXPECT_GT(said.lengthMs, 10000);
    EXPECT_LE(said.spokenMs, 2000);
    EXPECT_GT(said.spokenMs, 1990);
    EXPECT_EQ(scheduler.now(), 200 + said.spokenMs);
    EXPECT_LT(rec.peakWhileUnkeyed(), 1e-4f) << "nothing of the rest follows after the release";
}

}  // namespace
}  // namespace mv
