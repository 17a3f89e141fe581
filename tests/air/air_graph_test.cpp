// A media graph playing onto the air in virtual time, checked in the
// recording: sound starts at run and ends with the file, and volume, balance,
// rate and seeking do what their units say.
#include <gtest/gtest.h>

#include "air/audio_fixtures.h"
#include "core/errors.h"
#include "platform/audio/air.h"
#include "platform/audio/decoders.h"

namespace mv {
namespace {

// First and last millisecond of a decoded sound louder than `threshold`.
std::pair<double, double> audibleMs(const Pcm& pcm, float threshold) {
    double first = -1, last = -1;
    for (int64_t f = 0; f < pcm.frames(); ++f) {
        float peak = 0;
        for (int c = 0; c < pcm.channels; ++c) peak = std::max(peak, std::abs(pcm.samples[f * pcm.channels + c]));
        if (peak <= threshold) continue;
        const double ms = 1000.0 * static_cast<double>(f) / pcm.sampleRate;
        if (first < 0) first = ms;
        last = ms;
    }
    return {first, last};
}

class AirGraphTest : public ::testing::Test {
protected:
    AirGraphTest() : clock(LocalDateTime{2026, 11, 22, 14, 0, 0, 0}), air(clock) {
        air.startRecording(dir.file("air.wav"));
    }
    AirRecording finish() {
        air.stopRecording();
        return AirRecording::load(dir.file("air.wav"));
    }
    std::unique_ptr<MediaGraph> graphOf(const std::string& file) {
        auto g = air.media().createGraph("test");
        g->render(dir.file(file));
        return g;
    }

    test::ScratchDir dir;
    VirtualClock clock;
    Air air;
};

TEST_F(AirGraphTest, EachFormatSoundsFromRunUntilItsEnd) {
    const auto cases = test::writeOneOfEachFormat(dir);
    std::vector<int64_t> runAt;
    for (const test::FormatSample& c : cases) {
        auto g = graphOf(c.file);
        EXPECT_NEAR(g->duration(), c.seconds, c.tolerance) << c.file;
        clock.advanceBy(300);
        runAt.push_back(clock.monotonicMs());
        g->run();
        clock.advanceBy(1700);
        EXPECT_EQ(g->position(), g->duration()) << c.file << " has played out";
    }
    const AirRecording rec = finish();
    const auto spans = rec.soundSpans(0.003f, 60);
    ASSERT_EQ(spans.size(), 4u);
    for (size_t i = 0; i < 4; ++i) {
        SCOPED_TRACE(cases[i].file);
        // The decoded sound itself may open or close quietly (decoder delay,
        // a decaying note): it must land on the air shifted by exactly the run time.
        const auto [first, last] = audibleMs(*decodeAudioFile(dir.file(cases[i].file)), 0.003f);
        EXPECT_NEAR(spans[i].startMs, static_cast<double>(runAt[i]) + first, 1.5);
        EXPECT_NEAR(spans[i].endMs, static_cast<double>(runAt[i]) + last, 1.5);
        EXPECT_LE(spans[i].endMs, static_cast<double>(runAt[i]) + cases[i].seconds * 1000 + 1);
    }
    // Nothing keyed the transmitter, so all of that sound went out unkeyed.
    EXPECT_TRUE(rec.keyedSpans().empty());
    EXPECT_GT(rec.peakWhileUnkeyed(), 0.1f);
}

TEST_F(AirGraphTest, VolumeIsHundredthsOfADecibel) {
    test::writeWav(dir.file("t.wav"), 0.5);
    auto g = graphOf("t.wav");
    g->run();
    clock.advanceBy(500);
    g->setPosition(0);
    g->setVolume(-3000);
    clock.advanceBy(500);
    g->setPosition(0);
    g->setVolume(-1000);
    clock.advanceBy(500);
    const AirRecording rec = finish();
    const double full = rec.rmsDb(0, 50, 450);
    EXPECT_NEAR(rec.rmsDb(0, 550, 950) - full, -30.0, 0.1);
    EXPECT_NEAR(rec.rmsDb(0, 1050, 1450) - full, -10.0, 0.1);
}

TEST_F(AirGraphTest, BalanceAttenuatesTheOppositeSide) {
    test::writeWav(dir.file("t.wav"), 0.5);
    auto g = graphOf("t.wav");
    g->setBalance(-5000);
    g->run();
    clock.advanceBy(500);
    g->setPosition(0);
    g->setBalance(2000);
    clock.advanceBy(500);
    const AirRecording rec = finish();
    EXPECT_NEAR(rec.rmsDb(1, 50, 450) - rec.rmsDb(0, 50, 450), -50.0, 0.3);
    EXPECT_NEAR(rec.rmsDb(0, 550, 950) - rec.rmsDb(1, 550, 950), -20.0, 0.1);
}

TEST_F(AirGraphTest, RateChangesHowLongTheFilePlays) {
    test::writeWav(dir.file("t.wav"), 1.0);
    for (double rate : {2.0, 0.5}) {
        auto g = graphOf("t.wav");
        g->setRate(rate);
        g->run();
        clock.advanceBy(250);
        EXPECT_NEAR(g->position(), 0.25 * rate, 1e-6);
        clock.advanceBy(2750);
    }
    const AirRecording rec = finish();
    const auto spans = rec.soundSpans();
    ASSERT_EQ(spans.size(), 2u);
    EXPECT_NEAR(spans[0].lengthMs(), 500, 2);
    EXPECT_NEAR(spans[1].lengthMs(), 2000, 2);
}

TEST_F(AirGraphTest, SeekingPastTheEndEndsTheFile) {
    test::writeWav(dir.file("t.wav"), 1.0);
    auto g = graphOf("t.wav");
    g->run();
    clock.advanceBy(200);
    g->setPosition(5.0);
    EXPECT_EQ(g->position(), g->duration());
    clock.advanceBy(300);
    const auto spans = finish().soundSpans();
    ASSERT_EQ(spans.size(), 1u);
    EXPECT_NEAR(spans[0].endMs, 200, 1);
}

TEST_F(AirGraphTest, StopHoldsThePositionAndReleasingSilencesAtOnce) {
    test::writeWav(dir.file("t.wav"), 2.0);
    auto g = graphOf("t.wav");
    g->run();
    clock.advanceBy(300);
    g->stop();
    clock.advanceBy(300);
    EXPECT_NEAR(g->position(), 0.3, 1e-9);
    g->run();
    clock.advanceBy(200);
    g.reset();
    clock.advanceBy(500);
    const auto spans = finish().soundSpans();
    ASSERT_EQ(spans.size(), 2u);
    EXPECT_NEAR(spans[0].endMs, 300, 1);
    EXPECT_NEAR(spans[1].startMs, 600, 1);
    EXPECT_NEAR(spans[1].endMs, 800, 1);
}

TEST_F(AirGraphTest, CallsOutsideTheirRangeOrWithoutAFileFail) {
    auto empty = air.media().createGraph("test");
    EXPECT_THROW(empty->run(), MediaError);
    EXPECT_THROW(empty->duration(), MediaError);
    EXPECT_THROW(empty->position(), MediaError);
    EXPECT_THROW(empty->render(dir.file("missing.wav")), MediaError);
    test::writeWav(dir.file("t.wav"), 0.1);
    auto g = graphOf("t.wav");
    EXPECT_THROW(g->setRate(0.05), MediaError);
    EXPECT_THROW(g->setRate(2.5), MediaError);
    EXPECT_THROW(g->setVolume(1), MediaError);
    EXPECT_THROW(g->setBalance(-10001), MediaError);
    EXPECT_NO_THROW(g->setRate(0.1));
    EXPECT_NO_THROW(g->setRate(2.0));
    // A failed render leaves the graph empty, not playing the previous file.
    g->run();
    EXPECT_THROW(g->render(dir.file("missing.wav")), MediaError);
    EXPECT_THROW(g->position(), MediaError);
}

TEST_F(AirGraphTest, TheAirIsRenderedOnceForEveryMillisecond) {
    test::writeWav(dir.file("t.wav"), 0.3);
    auto g = graphOf("t.wav");
    g->run();
    for (int i = 0; i < 1000; ++i) {
        clock.advanceBy(1 + i % 7);
        if (i % 3 == 0) (void)g->position();
    }
    const int64_t elapsed = clock.monotonicMs();
    EXPECT_EQ(finish().frames(), elapsed * kAirFramesPerMs);
}

}  // namespace
}  // namespace mv
