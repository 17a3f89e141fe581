// The mixer's taps: a quiet stretch, however long, reaches a tap in one step
// with the transmitter state it had, and only sound is rendered sample by
// sample; a tap that keeps the default hears the same stretch as zeros.
#include "platform/audio/air_mixer.h"

#include <gtest/gtest.h>

#include <cmath>

namespace mv {
namespace {

struct CountingTap : AirTap {
    int64_t soundFrames = 0, quietFrames = 0, keyedQuietFrames = 0;
    int quietCalls = 0;
    float peak = 0;
    void air(const float* stereo, int64_t frames, bool) override {
        soundFrames += frames;
        for (int64_t i = 0; i < frames * 2; ++i) peak = std::max(peak, std::fabs(stereo[i]));
    }
    void silence(int64_t frames, bool keyed) override {
        ++quietCalls;
        quietFrames += frames;
        if (keyed) keyedQuietFrames += frames;
    }
};

struct ZerosTap : AirTap {
    int64_t frames = 0, keyed = 0;
    float peak = 0;
    void air(const float* stereo, int64_t n, bool k) override {
        frames += n;
        if (k) keyed += n;
        for (int64_t i = 0; i < n * 2; ++i) peak = std::max(peak, std::fabs(stereo[i]));
    }
};

TEST(AirMixerTest, AQuietHourReachesATapInOneStepAndAToneSampleBySample) {
    VirtualClock clock({2026, 11, 22, 14, 0, 0, 0});
    AirMixer mixer(clock);
    CountingTap tap;
    mixer.setTap(&tap);
    mixer.setTransmitter(true, 0);
    clock.advanceBy(3'600'000);
    mixer.catchUp();
    EXPECT_EQ(tap.quietFrames, 3'600'000LL * kAirFramesPerMs);
    EXPECT_EQ(tap.keyedQuietFrames, tap.quietFrames);
    EXPECT_EQ(tap.quietCalls, 1);
    EXPECT_EQ(tap.soundFrames, 0);

    // A DTMF burst keyed by the host itself: its 100 ms are mixed, the rest is quiet.
    mixer.setTransmitter(false, clock.monotonicMs() + 100);
    mixer.addTone(clock.monotonicMs(), 100, 697, 1209);
    clock.advanceBy(60'000);
    mixer.catchUp();
    EXPECT_GT(tap.peak, 0.1f);
    EXPECT_EQ(tap.soundFrames + tap.quietFrames, 3'660'000LL * kAirFramesPerMs);
    EXPECT_GE(tap.soundFrames, 100LL * kAirFramesPerMs);
    EXPECT_EQ(tap.keyedQuietFrames, 3'600'000LL * kAirFramesPerMs) << "unkeyed once the tone's own keying ended";
}

TEST(AirMixerTest, ATapThatTakesNoShortcutHearsTheQuietAsZeros) {
    VirtualClock clock({2026, 11, 22, 14, 0, 0, 0});
    AirMixer mixer(clock);
    ZerosTap tap;
    mixer.setTap(&tap);
    mixer.setTransmitter(true, 0);
    clock.advanceBy(2500);
    mixer.setTransmitter(false, 0);
    clock.advanceBy(500);
    mixer.catchUp();
    EXPECT_EQ(tap.frames, 3000LL * kAirFramesPerMs);
    EXPECT_EQ(tap.keyed, 2500LL * kAirFramesPerMs);
    EXPECT_EQ(tap.peak, 0.0f);
}

}  // namespace
}  // namespace mv
