// The simulated host's own sounds on the air: Morse at the node's pitch and
// speed, DTMF as the standard pairs, each keying the transmitter for exactly
// its length; and the headless runner's --record output.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <numbers>

#include "air/audio_fixtures.h"
#include "app/headless_runner.h"
#include "app/suite.h"

namespace mv {
namespace {

// Power of one frequency in a stretch of the left channel, relative to the stretch's total.
double toneShare(const AirRecording& rec, double hz, double fromMs, double toMs) {
    const auto& s = rec.left();
    const size_t from = static_cast<size_t>(fromMs * kAirFramesPerMs), to = static_cast<size_t>(toMs * kAirFramesPerMs);
    const double w = 2 * std::numbers::pi * hz / kAirRate;
    double re = 0, im = 0, total = 0;
    for (size_t i = from; i < to; ++i) {
        re += s[i] * std::cos(w * static_cast<double>(i));
        im += s[i] * std::sin(w * static_cast<double>(i));
        total += static_cast<double>(s[i]) * s[i];
    }
    const double n = static_cast<double>(to - from);
    return total > 0 ? 2 * (re * re + im * im) / n / total : 0;
}

class HostTonesTest : public ::testing::Test {
protected:
    HostTonesTest() : suite(options()) { suite.air().startRecording(dir.file("air.wav")); }
    SuiteOptions options() {
        SuiteOptions o;
        o.settingsDir = dir.path();
        o.virtualStart = LocalDateTime{2026, 11, 22, 14, 0, 0, 0};
        return o;
    }
    AirRecording finish() {
        suite.air().stopRecording();
        return AirRecording::load(dir.file("air.wav"));
    }

    test::ScratchDir dir;
    Suite suite;
    std::unique_ptr<HostObject> host = suite.host().createObject("test", nullptr);
};

TEST_F(HostTonesTest, MorseKIsKeyedForItsLengthAndHeardOnlyThen) {
    suite.scheduler().runUntil(1000);
    host->sendCW(0, "K");
    EXPECT_TRUE(suite.host().transmitting());
    suite.scheduler().runUntil(1539);
    EXPECT_TRUE(suite.host().transmitting());
    suite.scheduler().runUntil(1540);
    EXPECT_FALSE(suite.host().transmitting());
    suite.scheduler().runUntil(2500);

    const AirRecording rec = finish();
    // -.- at 20 WPM: a 60 ms dot, so dash, gap, dot, gap, dash = 540 ms keyed.
    ASSERT_EQ(rec.keyedSpans().size(), 1u);
    EXPECT_EQ(rec.keyedSpans()[0].startMs, 1000);
    EXPECT_EQ(rec.keyedSpans()[0].endMs, 1540);
    EXPECT_LT(rec.peakWhileUnkeyed(), 1e-4f);
    const auto sound = rec.soundSpans(0.01f, 1);
    ASSERT_EQ(sound.size(), 3u);
    const double expected[3][2] = {{1000, 1180}, {1240, 1300}, {1360, 1540}};
    for (int i = 0; i < 3; ++i) {
        EXPECT_NEAR(sound[i].startMs, expected[i][0], 1);
        EXPECT_NEAR(sound[i].endMs, expected[i][1], 1);
    }
    EXPECT_GT(toneShare(rec, 800, 1010, 1170), 0.95);
}

TEST_F(HostTonesTest, MorseFollowsTheNodesPitchAndSpeed) {
    suite.host().cwPitchHz = 600;
    suite.host().cwWpm = 10;  // 120 ms dots
    host->sendCW(0, "E");
    suite.scheduler().runUntil(500);
    const AirRecording rec = finish();
    ASSERT_EQ(rec.keyedSpans().size(), 1u);
    EXPECT_EQ(rec.keyedSpans()[0].lengthMs(), 120);
    EXPECT_GT(toneShare(rec, 600, 5, 115), 0.95);
    EXPECT_LT(toneShare(rec, 800, 5, 115), 0.05);
}

TEST_F(HostTonesTest, DtmfDigitsAreTheirStandardPairs) {
    host->transmitDTMF("5");
    host->transmitDTMF("#");
    suite.scheduler().runUntil(1000);
    const AirRecording rec = finish();
    // 100 ms tone, 50 ms gap, 100 ms tone: one keyed stretch.
    ASSERT_EQ(rec.keyedSpans().size(), 1u);
    EXPECT_EQ(rec.keyedSpans()[0].lengthMs(), 250);
    EXPECT_LT(rec.peakWhileUnkeyed(), 1e-4f);
    const auto sound = rec.soundSpans(0.01f, 1);
    ASSERT_EQ(sound.size(), 2u);
    EXPECT_NEAR(sound[1].startMs - sound[0].endMs, 50, 1);
    EXPECT_NEAR(toneShare(rec, 770, 5, 95) + toneShare(rec, 1336, 5, 95), 1.0, 0.05);
    EXPECT_NEAR(toneShare(rec, 941, 155, 245) + toneShare(rec, 1477, 155, 245), 1.0, 0.05);
    EXPECT_LT(toneShare(rec, 697, 5, 95), 0.02);
}

TEST_F(HostTonesTest, PttKeyingIsRecordedAlongsideTheAir) {
    suite.scheduler().runUntil(200);
    host->setPTT(true);
    suite.scheduler().runUntil(700);
    host->sendCW(0, "E");  // while already keyed by PTT
    host->setPTT(false);
    suite.scheduler().runUntil(1200);
    const AirRecording rec = finish();
    ASSERT_EQ(rec.keyedSpans().size(), 1u);
    EXPECT_EQ(rec.keyedSpans()[0].startMs, 200);
    EXPECT_EQ(rec.keyedSpans()[0].endMs, 760);
    EXPECT_TRUE(rec.keyedAtMs(500));
    EXPECT_FALSE(rec.keyedAtMs(760));
}

// A headless run of `scenario` recording to `recordPath`.
HeadlessOptions recordedRun(const test::ScratchDir& dir, const std::string& scenario, const std::string& recordPath) {
    std::ofstream(dir.file("run.scn")) << scenario;
    HeadlessOptions o;
    o.scenarioPath = dir.file("run.scn");
    o.logPath = dir.file("log.jsonl");
    o.recordPath = recordPath;
    o.settingsDir = dir.path().string();
    return o;
}

TEST(HeadlessRecord, RecordsTheWholeRunUnkeyedWhenNothingPlays) {
    test::ScratchDir dir;
    const HeadlessOptions o =
        recordedRun(dir, "start 2026-11-22 14:00:00\n+2s carrier on\n+500ms carrier off\n+1s end\n", dir.file("air.wav"));
    ASSERT_EQ(runHeadless(o), 0);
    const AirRecording rec = AirRecording::load(o.recordPath);
    EXPECT_EQ(rec.lengthMs(), 3500);
    EXPECT_TRUE(rec.keyedSpans().empty());
    EXPECT_EQ(rec.peakWhileUnkeyed(), 0.0f);
}

TEST(HeadlessRecord, AnUnwritableRecordingStopsTheRunBeforeItStarts) {
    test::ScratchDir dir;
    EXPECT_EQ(runHeadless(recordedRun(dir, "start 2026-11-22 14:00:00\n+1s end\n", dir.file("no/such/folder/air.wav"))), 1);
}

}  // namespace
}  // namespace mv
