// The talking clock on the air, in virtual time, with the installed voice.
#include "clock/clock_window.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <sstream>

#include <sndfile.h>

#include "app/suite.h"
#include "platform/audio/air.h"
#include "platform/audio/air_recorder.h"
#include "support/suite_rig.h"

namespace mv {
namespace {

class ClockTest : public test::SuiteRig {
protected:
    void start(LocalDateTime at, bool record = false) {
        startSuite(at, std::string(MV_TEST_VOICE_DIR) + "/", [&](Suite& s) {
            if (record) s.air().startRecording((dir.path() / "air.wav").string());
        });
        clock = static_cast<ClockWindow*>(suite->program().window("hub"));
    }
    void runTo(int h, int m, int s, int ms = 0) {
        const LocalDateTime t0 = suite->clock().localTimeAt(0);
        const int64_t target = ((h * 60LL + m) * 60 + s) * 1000 + ms - ((t0.hour * 60LL + t0.minute) * 60 + t0.second) * 1000;
        suite->scheduler().runUntil(target);
    }
    // Names of the files run onto the air, consecutive repeats (the chain's
    // reloads, replaced within the same millisecond) folded.
    std::vector<std::string> spoken() {
        std::vector<std::string> out;
        std::istringstream lines(logText.str());
        for (std::string line; std::getline(lines, line);) {
            if (line.find("\"op\":\"run\"") == std::string::npos) continue;
            const size_t slash = line.rfind('/');
            const std::string name = line.substr(slash + 1, line.find('.', slash) - slash - 1);
            if (out.empty() || out.back() != name) out.push_back(name);
        }
        return out;
    }
    ClockWindow* clock = nullptr;
};

TEST_F(ClockTest, OnTheHourTheWholeAnnouncementGoesOutKeyedAndIsReleasedAfter) {
    start({2026, 11, 22, 13, 59, 50, 0}, true);
    runTo(14, 0, 30);
    EXPECT_EQ(spoken(), (std::vector<std::string>{"DingDong", "TheTimeIs", "14", "Hour", "00", "Minutes", "PM"}));
    suite->air().stopRecording();
    const AirRecording air = AirRecording::load((dir.path() / "air.wav").string());
    EXPECT_LT(air.peakWhileUnkeyed(), 1e-4f) << "nothing on the air while unkeyed";
    ASSERT_EQ(air.keyedSpans().size(), 1u) << "keyed once, for the whole announcement";
    const auto sound = air.soundSpans();
    ASSERT_FALSE(sound.empty());
    const double keyedFrom = air.keyedSpans()[0].startMs, keyedTo = air.keyedSpans()[0].endMs;
    EXPECT_LE(keyedFrom, sound.front().startMs);
    EXPECT_GE(keyedTo, sound.back().endMs);
    EXPECT_LE(keyedTo - sound.back().endMs, 1000.0) << "released within a second of the last word";
}

TEST_F(ClockTest, PlayAfterAnAnnouncementPlaysOneFileAndReleasesAfterIt) {
    // "Play" loads the file Step names without the sequence poll: after an
    // announcement that is the bell, the one file that plays. Its end must
    // release the transmitter like any other last file.
    start({2026, 11, 22, 14, 0, 5, 0}, true);
    // The conference the clock connects to at 14:01:05 would be announced by
    // the ident window, keying once more: only the clock's keying is counted.
    clock->controlAs<CheckBox>("CONDISC")->setValue(0);
    runTo(14, 0, 10);
    operate([&] { static_cast<Button*>(clock->findByCaption("Say The Time"))->click(); });
    runTo(14, 0, 25);
    logText.str("");
    operate([&] { static_cast<Button*>(clock->findByCaption("Play"))->click(); });
    EXPECT_TRUE(suite->host().pttKeyed());
    runTo(14, 1, 55);
    EXPECT_EQ(spoken(), std::vector<std::string>{"DingDong"});
    EXPECT_FALSE(suite->host().pttKeyed());
    EXPECT_EQ(clock->controlAs<Label>("PTT")->caption(), "PTT OFF");
    suite->air().stopRecording();
    const AirRecording air = AirRecording::load((dir.path() / "air.wav").string());
    EXPECT_LT(air.peakWhileUnkeyed(), 1e-4f);
    const auto keyed = air.keyedSpans();
    const auto sound = air.soundSpans();
    ASSERT_EQ(keyed.size(), 2u) << "the announcement, then the Play";
    ASSERT_FALSE(sound.empty());
    EXPECT_LE(keyed[1].startMs, sound.back().startMs);
    EXPECT_GE(keyed[1].endMs, sound.back().endMs);
    EXPECT_LE(keyed[1].endMs - sound.back().endMs, 1000.0) << "released within a second of the bell's end";
}

double fileMs(const std::string& path) {
    SF_INFO info{};
    SNDFILE* f = sf_open(path.c_str(), SFM_READ, &info);
    if (!f) return -1;
    sf_close(f);
    return 1000.0 * static_cast<double>(info.frames) / info.samplerate;
}

TEST_F(ClockTest, EachWordStartsWithinTwoMillisecondsOfTheLastOnesEnd) {
    start({2026, 11, 22, 14, 29, 55, 0});
    runTo(14, 30, 20);
    // When each distinct file was run (a reload runs and is replaced in the same millisecond).
    std::vector<std::pair<double, std::string>> runs;
    std::istringstream lines(logText.str());
    for (std::string line; std::getline(lines, line);) {
        if (line.find("\"op\":\"run\"") == std::string::npos) continue;
        const LocalDateTime t = *LocalDateTime::parse(line.substr(6, 10) + " " + line.substr(17, 8));
        const double ms = ((t.hour * 60.0 + t.minute) * 60 + t.second) * 1000 + std::stoi(line.substr(26, 3));
        const size_t p = line.find("\"path\":\"") + 8;
        const std::string path = line.substr(p, line.rfind('"') - p);
        if (runs.empty() || runs.back().second != path) runs.push_back({ms, path});
    }
    ASSERT_EQ(runs.size(), 7u);
    std::vector<double> gaps;
    for (size_t i = 0; i + 1 < runs.size(); ++i)
        gaps.push_back(runs[i + 1].first - (runs[i].first + fileMs(runs[i].second)));
    for (double g : gaps) EXPECT_GE(g, -1.0) << "a word never cuts the one before it";
    std::sort(gaps.begin(), gaps.end());
    EXPECT_LE(gaps[gaps.size() / 2], 2.0) << "median gap between words";
    EXPECT_LE(gaps.back(), 2.0);
}

TEST_F(ClockTest, ACarrierAcrossTheQuarterPreventsItAndNothingFollowsLater) {
    start({2026, 11, 22, 14, 14, 50, 0});
    runTo(14, 14, 59);
    suite->host().setCarrier(true);
    runTo(14, 15, 2);
    suite->host().setCarrier(false);
    runTo(14, 16, 0);
    EXPECT_TRUE(spoken().empty());
}

TEST_F(ClockTest, AnIdleHourLogsItsAnnouncementsAndNoneOfThePolling) {
    start({2026, 11, 22, 13, 59, 50, 0});
    // The conference the clock connects to would be announced by the ident
    // window, keying once more: only the clock's own keying is counted here.
    clock->controlAs<CheckBox>("CONDISC")->setValue(0);
    runTo(14, 59, 50);
    // Four announcements, each keyed once and released once, after the
    // load's release; not the 100 ms queries, nor the release check
    // repeating SetPTT(false) every second.
    EXPECT_EQ(logCount("\"call\":\"SetPTT\",\"args\":[true]"), 4u);
    EXPECT_EQ(logCount("\"call\":\"SetPTT\",\"args\":[false]"), 5u);
    EXPECT_EQ(logCount("\"call\":\"Is"), 0u);
    EXPECT_GT(suite->host().countCommands("IsTransmitting"), 35000u) << "the polling itself goes on";
    // About 15 KB, nearly all of it the announcements' media lines, so a
    // day stays under half a megabyte (the goal); every query logged made an
    // hour 6 MB, and the rewind after loading each word added a third.
    EXPECT_LT(logText.str().size(), 500000u / 24) << logText.str().size();
}

TEST_F(ClockTest, DtmfTimeCodeSpeaksAtOnceWhileBusyWithTheLastFreeTicksTime) {
    start({2026, 11, 22, 9, 41, 50, 0});
    runTo(9, 41, 58);
    suite->host().setReceiving(true);  // busy from here: the time fields stop at 09:41
    runTo(9, 43, 5);
    suite->host().receiveDTMF("123");
    runTo(9, 43, 15);
    EXPECT_EQ(spoken(), (std::vector<std::string>{"TheTimeIs", "09", "Hour", "41", "Minutes", "AM"}));
    // Also after a full announcement has left the bell as the next start.
    suite->host().setReceiving(false);
    runTo(9, 45, 10);
    logText.str("");
    suite->host().setReceiving(true);
    suite->host().receiveDTMF("123");
    runTo(9, 45, 20);
    EXPECT_EQ(spoken(), (std::vector<std::string>{"TheTimeIs", "09", "Hour", "45", "Minutes", "AM"}));
}

TEST_F(ClockTest, DtmfCodesToggleTheirBoxesOnlyOnAnExactMatch) {
    start({2026, 11, 22, 10, 0, 5, 0});
    suite->scheduler().post([&] {
        clock->controlAs<TextBox>("TEXT38")->typeText("#5");
        clock->controlAs<TextBox>("TEXT39")->typeText("123");
    });
    runTo(10, 0, 6);
    for (const char* code : {"#5", "#55", "123"}) suite->host().receiveDTMF(code);
    runTo(10, 0, 7);
    EXPECT_EQ(clock->controlAs<CheckBox>("CHECK3")->value(), 0);
    EXPECT_EQ(clock->controlAs<CheckBox>("CONDISC")->value(), 0);
    EXPECT_EQ(spoken().front(), "TheTimeIs") << "the same code also asked for the time";
    suite->host().receiveDTMF("#5");
    runTo(10, 0, 20);
    EXPECT_EQ(clock->controlAs<CheckBox>("CHECK3")->value(), 1);
    // A code left empty never matches, not even an empty string from the host.
    suite->scheduler().post([&] { clock->controlAs<TextBox>("TEXT38")->setText(""); });
    suite->host().receiveDTMF("");
    runTo(10, 0, 21);
    EXPECT_EQ(clock->controlAs<CheckBox>("CHECK3")->value(), 1);
}

TEST_F(ClockTest, AutomaticConnectionEveryMinuteUntilConnected) {
    start({2026, 11, 22, 10, 0, 0, 0});
    suite->host().connectDelayMs = 90000;  // a slow conference
    runTo(10, 0, 59);
    EXPECT_EQ(suite->host().countCommands("Connect"), 0u);
    runTo(10, 1, 0);
    EXPECT_EQ(suite->host().countCommands("Connect"), 1u);
    runTo(10, 3, 0);
    EXPECT_TRUE(suite->host().isConnected("*ECHOTEST*"));
    runTo(10, 5, 0);
    EXPECT_EQ(suite->host().countCommands("Connect"), 2u) << "asked again at 10:02, then connected";
}

TEST_F(ClockTest, AMissingWordFileShowsTheVoiceMessageUnkeysAndRecovers) {
    const auto voice = dir.path() / "voice";
    std::filesystem::copy(MV_TEST_VOICE_DIR, voice);
    std::filesystem::rename(voice / "TheTimeIs.wav", dir.path() / "TheTimeIs.wav");
    start({2026, 11, 22, 15, 14, 50, 0});
    suite->scheduler().post([&] {
        clock->controlAs<TextBox>("TEXT5")->setText(voice.string() + "/");
        clock->controlAs<OptionButton>("OPTION4")->setValue(true);
    });
    runTo(15, 15, 10);
    EXPECT_NE(logText.str().find("\"kind\":\"dialog\",\"window\":\"hub\",\"title\":\"Error\""), std::string::npos);
    EXPECT_NE(logText.str().find("No estan los Archivos de Voz"), std::string::npos);
    EXPECT_TRUE(clock->controlAs<OptionButton>("OPTION3")->value()) << "back on voice 1";
    EXPECT_FALSE(suite->host().pttKeyed());
    EXPECT_EQ(clock->controlAs<Label>("PTT")->caption(), "PTT OFF");

    // The file comes back and voice 2 is chosen again: the half hour speaks.
    std::filesystem::rename(dir.path() / "TheTimeIs.wav", voice / "TheTimeIs.wav");
    suite->scheduler().post([&] { clock->controlAs<OptionButton>("OPTION4")->setValue(true); });
    logText.str("");
    runTo(15, 30, 20);
    EXPECT_EQ(spoken(), (std::vector<std::string>{"DingDong", "TheTimeIs", "15", "Hour", "30", "Minutes", "PM"}));
    EXPECT_FALSE(suite->host().pttKeyed());
}

TEST_F(ClockTest, WordsOffAndTwelveHourAndGreetings) {
    start({2026, 11, 22, 0, 14, 55, 0});
    suite->scheduler().post([&] {
        clock->controlAs<CheckBox>("CHECK1")->setValue(0);
        clock->controlAs<OptionButton>("OPTION1")->setValue(true);
        clock->controlAs<OptionButton>("OPTION9")->setValue(true);
    });
    runTo(0, 15, 20);
    EXPECT_EQ(spoken(), (std::vector<std::string>{"GoodMorning", "TheTimeIs", "12", "15", "AM"}));
    EXPECT_STREQ(AnnouncementComposer::greetingFor(11), "GoodMorning");
    EXPECT_STREQ(AnnouncementComposer::greetingFor(12), "GoodAfternoon");
    EXPECT_STREQ(AnnouncementComposer::greetingFor(17), "GoodAfternoon");
    EXPECT_STREQ(AnnouncementComposer::greetingFor(18), "GoodEvening");
}

TEST_F(ClockTest, ChangingTheAnnouncementsFormWhileItIsOnTheAirStillEndsItReleased) {
    // The operator unticks "Hr / Min" while "Hour" is being said, or the bell
    // box while the bell rings: the announcement goes on in the new form and
    // the transmitter is released after its last word, not left keyed.
    struct Change {
        const char* what;
        const char* during;
        std::function<void()> act;
        std::vector<std::string> heard;
    };
    auto tick = [&](const char* box) { return [this, box] { clock->controlAs<CheckBox>(box)->click(); }; };
    const Change changes[] = {
        {"words off", "Hour", tick("CHECK1"), {"DingDong", "TheTimeIs", "14", "Hour", "00", "PM"}},
        {"bell off", "DingDong", tick("CHECK2"), {"DingDong", "TheTimeIs", "14", "Hour", "00", "Minutes", "PM"}},
        // Whatever the chain holds, a word that ends with nothing to follow
        // it ends the announcement released.
        {"no next step", "Hour", [this] { clock->composer().setNextStep(7); }, {"DingDong", "TheTimeIs", "14", "Hour"}},
    };
    for (const Change& c : changes) {
        SCOPED_TRACE(c.what);
        start({2026, 11, 22, 13, 59, 58, 0});
        for (int i = 0; i < 3000 && (spoken().empty() || spoken().back() != c.during); ++i) run(10);
        ASSERT_FALSE(spoken().empty());
        ASSERT_EQ(spoken().back(), c.during);
        operate(c.act);
        run(30000);
        EXPECT_EQ(spoken(), c.heard);
        EXPECT_FALSE(suite->host().pttKeyed());
        EXPECT_EQ(clock->controlAs<Label>("PTT")->caption(), "PTT OFF");
        // The next announcement starts from a clean chain.
        logText.str("");
        operate([&] { static_cast<Button*>(clock->findByCaption("Say The Time"))->click(); });
        run(30000);
        EXPECT_FALSE(spoken().empty());
        EXPECT_EQ(spoken().back(), "PM");
        EXPECT_FALSE(suite->host().pttKeyed());
        suite.reset();
        logText.str("");
        std::filesystem::remove_all(settingsDir());
    }
}

TEST_F(ClockTest, AVoiceWithoutAFolderCannotBeChosen) {
    start({2026, 11, 22, 10, 0, 1, 0});
    runTo(10, 0, 2);
    EXPECT_FALSE(clock->controlAs<OptionButton>("OPTION4")->enabled());
    suite->scheduler().post([&] { clock->controlAs<TextBox>("TEXT5")->setText("/x/"); });
    runTo(10, 0, 3);
    EXPECT_TRUE(clock->controlAs<OptionButton>("OPTION4")->enabled());
}

}  // namespace
}  // namespace mv
