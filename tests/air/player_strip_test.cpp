// The player strip in a window, in virtual time, playing real files onto the
// air: keying around the file, release within a second of its end, the
// sliders' units, the progress displays and what a bad file does.
#include <gtest/gtest.h>

#include "air/audio_fixtures.h"
#include "app/suite.h"
#include "core/hub_window.h"
#include "core/player_strip.h"

namespace mv {
namespace {

class StripWindow final : public Window {
public:
    StripWindow(Program& program, PlayerStripOptions options)
        : Window(program, "player"), strip(*this), m_options(std::move(options)) {}
    PlayerStrip strip;
    Label* ptt = nullptr;
    Slider* ownVolume = nullptr;
    TextBox* ownVolSet = nullptr;
    bool useOwnVolume = false;

protected:
    void build() override {
        auto& root = make<Container>("root", ContainerKind::Column);
        setRoot(root);
        ptt = &root.add(make<Label>("PTT", kPttOff, kPttOffGreen));
        PlayerStripOptions o = m_options;
        o.ptt = ptt;
        if (useOwnVolume) {
            ownVolume = &root.add(make<Slider>("HubVolume", -3000, 0, 0));
            ownVolSet = &root.add(make<TextBox>("VOLSET", "0"));
            ownVolume->onChange = [this] { ownVolSet->setText("vol " + std::to_string(ownVolume->value())); };
            o.volumeSlider = ownVolume;
            o.volSet = ownVolSet;
        }
        strip.build(parts(), root, o);
    }
    void onLoad() override { createHostObject(); }
    void onUnload() override { strip.release(); }

private:
    PlayerStripOptions m_options;
};

class PlayerStripTest : public ::testing::Test {
protected:
    PlayerStripTest() : suite(options()) {
        suite.air().startRecording(dir.file("air.wav"));
        suite.log().addListener([this](const LogRecord& r) {
            std::string line = r.kind;
            for (const LogField& f : r.fields)
                if (auto* v = std::get_if<LogValue>(&f.value); v && std::holds_alternative<std::string>(*v))
                    line += " " + std::get<std::string>(*v);
            log.push_back(line);
        });
    }
    SuiteOptions options() {
        SuiteOptions o;
        o.settingsDir = dir.path();
        o.virtualStart = LocalDateTime{2026, 11, 22, 14, 0, 0, 0};
        return o;
    }
    StripWindow& window(PlayerStripOptions o = {}, bool ownVolume = false) {
        auto w = std::make_unique<StripWindow>(suite.program(), std::move(o));
        w->useOwnVolume = ownVolume;
        auto& ref = static_cast<StripWindow&>(suite.program().addWindow(std::move(w)));
        ref.load();
        return ref;
    }
    void runFor(int64_t ms) { suite.scheduler().runUntil(suite.scheduler().now() + ms); }
    int64_t now() { return suite.scheduler().now(); }
    AirRecording finish() {
        suite.air().stopRecording();
        return AirRecording::load(dir.file("air.wav"));
    }
    // Runs until the host's transmitter drops; returns when (or -1 within `limit`).
    int64_t releasedAt(int64_t limit) {
        const int64_t end = now() + limit;
        while (now() < end) {
            runFor(1);
            if (!suite.host().pttKeyed()) return now();
        }
        return -1;
    }
    size_t count(const std::string& line) { return static_cast<size_t>(std::count(log.begin(), log.end(), line)); }

    test::ScratchDir dir;
    Suite suite;
    std::vector<std::string> log;
};

TEST_F(PlayerStripTest, TxFileKeysAroundTheFileAndReleasesWithinASecondOfItsEnd) {
    test::writeWav(dir.file("word.wav"), 1.5);
    StripWindow& w = window();
    runFor(100);
    const int64_t start = now();
    ASSERT_TRUE(w.strip.txFile(dir.file("word.wav")));
    EXPECT_EQ(w.ptt->caption(), "PTT ON");
    EXPECT_EQ(w.ptt->foreColor(), kPttOnRed);
    EXPECT_TRUE(suite.host().pttKeyed());
    const int64_t released = releasedAt(3000);
    ASSERT_GE(released, start + 1500);
    EXPECT_LE(released, start + 2500);
    EXPECT_EQ(w.ptt->caption(), "PTT OFF");
    EXPECT_EQ(w.ptt->foreColor(), kPttOffGreen);
    EXPECT_EQ(w.strip.elapsedDisplay().text(), "1.5");
    EXPECT_EQ(w.strip.lengthDisplay().text(), "1.5");
    EXPECT_TRUE(w.strip.fileEnded());

    const AirRecording rec = finish();
    EXPECT_LT(rec.peakWhileUnkeyed(), 1e-4f);
    const auto sound = rec.soundSpans();
    ASSERT_EQ(sound.size(), 1u);
    EXPECT_NEAR(sound[0].startMs, static_cast<double>(start), 1);
    EXPECT_NEAR(sound[0].lengthMs(), 1500, 2);
    EXPECT_EQ(count("media player render " + dir.file("word.wav")), 1u);
    EXPECT_EQ(count("media player run " + dir.file("word.wav")), 1u);
}

TEST_F(PlayerStripTest, ProgressDisplaysFollowTheGraphWithoutMovingIt) {
    test::writeWav(dir.file("long.wav"), 3725.0 / 1000);
    StripWindow& w = window();
    w.strip.txFile(dir.file("long.wav"));
    EXPECT_EQ(w.strip.lengthField().text(), "00:00:03");
    EXPECT_EQ(w.strip.positionSlider().max(), 4);
    runFor(600);
    // The display sets the position slider to 1 (rounded); that must not seek.
    EXPECT_EQ(w.strip.positionSlider().value(), 1);
    EXPECT_EQ(w.strip.elapsedDisplay().text(), "0.6");
    EXPECT_EQ(w.strip.timeUsedField().text(), "00:00:00");
    EXPECT_EQ(w.strip.timeLeftField().text(), "00:00:03");
    runFor(1000);
    EXPECT_EQ(w.strip.elapsedDisplay().text(), "1.6");
    EXPECT_EQ(w.strip.timeUsedField().text(), "00:00:01");
    EXPECT_EQ(w.strip.lengthDisplay().text(), "3.725");
    EXPECT_FALSE(w.strip.fileEnded());

    // Stopped, the display stands still and wakes nobody; a seek shows at once.
    w.strip.stop();
    runFor(20);
    const uint64_t ticks = suite.scheduler().dispatchedTicks();
    runFor(500);
    EXPECT_LE(suite.scheduler().dispatchedTicks() - ticks, 1u) << "only the release check may tick";
    w.strip.positionSlider().setValue(3);
    runFor(10);
    EXPECT_EQ(w.strip.elapsedDisplay().text(), "3");
    // Run to the end: the displays meet and the display goes quiet again.
    w.strip.run();
    runFor(800);
    EXPECT_TRUE(w.strip.fileEnded());
    const uint64_t after = suite.scheduler().dispatchedTicks();
    runFor(500);
    EXPECT_LE(suite.scheduler().dispatchedTicks() - after, 1u);
}

TEST_F(PlayerStripTest, ThePlainSecondsStyleShowsTheClocksFields) {
    test::writeWav(dir.file("w.wav"), 0.75);
    PlayerStripOptions o;
    o.progress = PlayerStripOptions::Progress::PlainSeconds;
    StripWindow& w = window(o);
    w.strip.txFile(dir.file("w.wav"));
    runFor(250);
    EXPECT_EQ(w.strip.lengthField().text(), "0.75");
    EXPECT_EQ(w.strip.timeLeftField().text(), "0.75");
    EXPECT_EQ(w.strip.timeUsedField().text(), "0.25");
    EXPECT_EQ(&w.strip.elapsedDisplay(), &w.strip.timeUsedField());
}

TEST_F(PlayerStripTest, SlidersHaveTheirRangesStepsAndLabels) {
    StripWindow& w = window();
    struct Row {
        Slider& s;
        int min, max, value, small, large;
    };
    for (const Row& r : {Row{w.strip.volumeSlider(), -3000, 0, 0, 50, 500}, Row{w.strip.balanceSlider(), -5000, 5000, 0, 10, 100},
                         Row{w.strip.speedSlider(), 10, 200, 100, 3, 40}}) {
        SCOPED_TRACE(r.s.name());
        EXPECT_EQ(r.s.min(), r.min);
        EXPECT_EQ(r.s.max(), r.max);
        EXPECT_EQ(r.s.value(), r.value);
        EXPECT_EQ(r.s.smallChange(), r.small);
        EXPECT_EQ(r.s.largeChange(), r.large);
    }
    EXPECT_EQ(w.strip.speedSlider().orientation(), Orientation::Vertical);
    EXPECT_EQ(w.strip.speedSlider().scaleLabels, (std::vector<std::string>{"200%", "100%", "<50%"}));
    EXPECT_EQ(w.strip.volumeSlider().scaleLabels, (std::vector<std::string>{"0%", "50%", "100%"}));
    EXPECT_EQ(w.strip.balanceSlider().scaleLabels, (std::vector<std::string>{"Left", "Center", "Right"}));
    EXPECT_EQ(w.control("VOLSET"), &w.strip.volSet());
    // With no file, moving any slider does nothing and raises nothing.
    w.strip.volumeSlider().setValue(-1500);
    w.strip.balanceSlider().setValue(100);
    w.strip.speedSlider().setValue(50);
    w.strip.positionSlider().setValue(0);
    EXPECT_EQ(w.strip.volSet().text(), "-1500");
}

TEST_F(PlayerStripTest, SlidersDriveTheGraphInItsUnits) {
    test::writeWav(dir.file("t.wav"), 2.0);
    StripWindow& w = window();
    w.strip.txFile(dir.file("t.wav"));
    runFor(400);
    w.strip.volumeSlider().setValue(-3000);
    EXPECT_EQ(w.strip.volSet().text(), "-3000");
    runFor(400);
    w.strip.volumeSlider().setValue(0);
    w.strip.balanceSlider().setValue(-5000);
    runFor(400);
    w.strip.balanceSlider().setValue(0);
    w.strip.speedSlider().setValue(200);
    const double before = w.strip.graph()->position();
    runFor(100);
    EXPECT_NEAR(w.strip.graph()->position() - before, 0.2, 1e-9);
    w.strip.speedSlider().setValue(10);
    runFor(100);
    EXPECT_NEAR(w.strip.graph()->position() - before, 0.21, 1e-9);

    const AirRecording rec = finish();
    const double full = rec.rmsDb(0, 50, 350);
    EXPECT_NEAR(rec.rmsDb(0, 450, 750) - full, -30, 0.1);
    EXPECT_NEAR(rec.rmsDb(1, 850, 1150) - rec.rmsDb(0, 850, 1150), -50, 0.3);
}

TEST_F(PlayerStripTest, AWindowsOwnVolumeSliderKeepsItsHandlerAndDrivesTheGraph) {
    test::writeWav(dir.file("t.wav"), 1.0);
    StripWindow& w = window({}, true);
    EXPECT_EQ(&w.strip.volumeSlider(), w.ownVolume);
    w.strip.txFile(dir.file("t.wav"));
    runFor(300);
    w.ownVolume->setValue(-2000);
    EXPECT_EQ(w.ownVolSet->text(), "vol -2000");
    runFor(300);
    const AirRecording rec = finish();
    EXPECT_NEAR(rec.rmsDb(0, 350, 550) - rec.rmsDb(0, 50, 250), -20, 0.1);
}

TEST_F(PlayerStripTest, SeekingPastTheEndEndsTheFileAndReleases) {
    test::writeWav(dir.file("t.wav"), 10.0);
    StripWindow& w = window();
    w.strip.txFile(dir.file("t.wav"));
    runFor(1500);
    EXPECT_FALSE(w.strip.fileEnded());
    w.strip.positionSlider().setValue(w.strip.positionSlider().max());
    w.strip.seek(60);
    EXPECT_TRUE(w.strip.fileEnded());
    const int64_t at = now();
    const int64_t released = releasedAt(2000);
    ASSERT_GT(released, 0);
    EXPECT_LE(released - at, 1000);
    // The slider's and ours; txFile's rewind of the file it had just loaded
    // moved nothing and is left out of the log.
    EXPECT_EQ(count("media player seek " + dir.file("t.wav")), 2u);
}

TEST_F(PlayerStripTest, ARewindThatMovesNothingIsLoggedOnlyWhenEveryCallIs) {
    test::writeWav(dir.file("t.wav"), 10.0);
    StripWindow& w = window();
    w.strip.txFile(dir.file("t.wav"));
    runFor(500);
    EXPECT_EQ(count("media player seek " + dir.file("t.wav")), 0u);
    w.strip.seek(0);  // half a second in: a real move back
    EXPECT_EQ(count("media player seek " + dir.file("t.wav")), 1u);
    suite.log().setRecordsQueries(true);
    w.strip.txFile(dir.file("t.wav"));
    EXPECT_EQ(count("media player seek " + dir.file("t.wav")), 2u);
}

TEST_F(PlayerStripTest, AZeroLengthFileEndsAtOnceAndIsReleasedWithinASecond) {
    test::writeSound(dir.file("empty.wav"), {}, 48000);
    StripWindow& w = window();
    ASSERT_TRUE(w.strip.txFile(dir.file("empty.wav")));
    EXPECT_TRUE(w.strip.fileEnded());
    EXPECT_EQ(w.strip.lengthDisplay().text(), "0");
    const int64_t at = now();
    const int64_t released = releasedAt(2000);
    ASSERT_GT(released, 0);
    EXPECT_LE(released - at, 1000);
}

TEST_F(PlayerStripTest, BadFilesEndInTheRenderErrorWithNothingKeyed) {
    test::writeWav(dir.file("good.wav"), 5.0);
    test::writeBytes(dir.file("zero.mp3"), {});
    test::writeBytes(dir.file("noise.wav"), {0x52, 0x49, 0x46, 0x46, 1, 2, 3});
    test::writeBytes(dir.file("text.mid"), {'n', 'o', 't', 'e', 's'});
    StripWindow& w = window();
    w.strip.txFile(dir.file("good.wav"));
    runFor(200);
    w.strip.keyOff();
    for (const char* name : {"zero.mp3", "noise.wav", "text.mid", "missing.mp2"}) {
        SCOPED_TRACE(name);
        suite.scriptedDialogs().queueAnswer("OK");
        EXPECT_FALSE(w.strip.txFile(dir.file(name)));
        EXPECT_FALSE(w.strip.hasGraph());
        EXPECT_EQ(w.ptt->caption(), "PTT OFF");
        EXPECT_FALSE(suite.host().pttKeyed());
        EXPECT_EQ(suite.scriptedDialogs().pending(), 0u) << "the render error was shown";
        runFor(1100);
        EXPECT_FALSE(suite.host().pttKeyed());
    }
    // The previously playing file went silent with the failed load.
    const auto sound = finish().soundSpans();
    ASSERT_EQ(sound.size(), 1u);
    EXPECT_NEAR(sound[0].lengthMs(), 200, 1);
}

TEST_F(PlayerStripTest, ARenderErrorHandlerReplacesTheMessage) {
    std::string reported;
    PlayerStripOptions o;
    o.onRenderError = [&](const std::string& path, const std::string&) { reported = path; };
    StripWindow& w = window(o);
    EXPECT_FALSE(w.strip.loadFile(dir.file("missing.wav")));
    EXPECT_EQ(reported, dir.file("missing.wav"));
}

TEST_F(PlayerStripTest, AtTheEndAStripLeavesTheTransmitterToAWindowStillOnTheAir) {
    test::writeWav(dir.file("t.wav"), 0.2);
    StripWindow& w = window();
    // Another window (the talking clock) keys for its own part meanwhile.
    auto clock = suite.program().createHostObject(*suite.program().window("hub"));
    clock->setPTT(true);
    w.strip.txFile(dir.file("t.wav"));
    runFor(1100);
    EXPECT_EQ(w.ptt->caption(), "PTT OFF") << "this strip's part is over";
    EXPECT_TRUE(suite.host().pttKeyed()) << "the other window's sound is not cut";
    EXPECT_EQ(suite.host().countCommands("SetPTT", "player"), 1u) << "the strip's release went no further";
    runFor(3000);
    EXPECT_TRUE(suite.host().pttKeyed());
    clock->setPTT(false);
    EXPECT_FALSE(suite.host().pttKeyed()) << "the last window to let go takes the air down";
    clock.reset();
}

TEST_F(PlayerStripTest, TheReleaseCheckUnkeysOnceAndNeverUnkeysAnotherWindowsTransmission) {
    test::writeWav(dir.file("t.wav"), 0.3);
    StripWindow& w = window();
    w.strip.txFile(dir.file("t.wav"));
    runFor(1500);
    EXPECT_FALSE(suite.host().pttKeyed());
    // Another window keys the transmitter; the ended file here must not cut it.
    suite.host().setPtt(true);
    runFor(5000);
    EXPECT_TRUE(suite.host().pttKeyed());
    EXPECT_EQ(suite.host().countCommands("SetPTT", "player"), 2u) << "one key, one release";
    // A strip that keyed nothing ends nothing either.
    w.strip.endTransmission();
    EXPECT_TRUE(suite.host().pttKeyed());
}

TEST_F(PlayerStripTest, TxrxUnkeysAnEndedFileAndKeysARunningOne) {
    test::writeWav(dir.file("t.wav"), 1.0);
    PlayerStripOptions o;
    o.releaseCheck = false;
    StripWindow& w = window(o);
    w.strip.loadFile(dir.file("t.wav"));
    w.strip.txrx();
    EXPECT_TRUE(suite.host().pttKeyed());
    runFor(500);
    EXPECT_NEAR(w.strip.graph()->position(), 0.5, 1e-9);
    runFor(1000);
    w.strip.txrx();
    EXPECT_FALSE(suite.host().pttKeyed());
    EXPECT_EQ(w.ptt->caption(), "PTT OFF");
}

TEST_F(PlayerStripTest, AnIdleStripLogsNothingAndUnloadReleasesTheGraph) {
    test::writeWav(dir.file("t.wav"), 5.0);
    StripWindow& w = window();
    runFor(10000);
    EXPECT_EQ(std::count_if(log.begin(), log.end(), [](const std::string& l) { return l.rfind("error", 0) == 0; }), 0);
    w.strip.txFile(dir.file("t.wav"));
    runFor(300);
    w.unload();
    runFor(300);
    const auto sound = finish().soundSpans();
    ASSERT_EQ(sound.size(), 1u);
    EXPECT_NEAR(sound[0].endMs, 10300, 1);
}

TEST(FormatDuration, WholeSecondsAsATimeOfDay) {
    EXPECT_EQ(formatDuration(0.99), "00:00:00");
    EXPECT_EQ(formatDuration(1.0), "00:00:01");
    EXPECT_EQ(formatDuration(59.9), "00:00:59");
    EXPECT_EQ(formatDuration(3725.4), "01:02:05");
    EXPECT_EQ(formatDuration(-5), "00:00:00");
    EXPECT_EQ(formatDuration(25 * 3600.0), "24:59:59");
}

TEST(SecondsText, PlainDecimalWithoutTrailingZeros) {
    EXPECT_EQ(secondsText(0), "0");
    EXPECT_EQ(secondsText(1.5), "1.5");
    EXPECT_EQ(secondsText(3), "3");
    EXPECT_EQ(secondsText(0.000125), "0.000125");
    EXPECT_EQ(secondsText(1.0080000000001), "1.008");
}

}  // namespace
}  // namespace mv
