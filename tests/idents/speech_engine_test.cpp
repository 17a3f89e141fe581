// SpeakTheText and the queued-speech hand-over, with the real voice, in
// virtual time: keying and release around the utterance, the paths that speak
// nothing, the TTS delay, failures and the keyed-time limit.
#include "idents/speech_engine.h"

#include <gtest/gtest.h>

#include "idents/idents_rig.h"

namespace mv {
namespace {

class SpeechEngineTest : public test::IdentsRig {
protected:
    void speak(const std::string& text) {
        operate([&] {
            idents->setSpeechText(text);
            idents->speakTheText();
        });
    }
    SpeechEngine& engine() { return idents->speech(); }
    TextBox& ttsField(const char* name) { return *tts->controlAs<TextBox>(name); }
};

TEST_F(SpeechEngineTest, KeysSpeaksThePlainTextAndReleasesAfterIt) {
    start(true);
    std::string pttWhenKeying;
    engine().keying = [&] { pttWhenKeying = label("PTT").caption(); };
    idents->setSpeechPending(true);
    speak("*HOLA* <pitch absmiddle=\"10\">");

    EXPECT_EQ(pttWhenKeying, "PTT ON");
    EXPECT_EQ(label("PTT").caption(), "PTT OFF");
    EXPECT_FALSE(idents->speechPending());
    EXPECT_EQ(idents->speechText(), " HOLA  <pitch absmiddle=\"10\">") << "each asterisk became one blank";
    const auto lines = speechLines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines[0].find(R"("text":" HOLA  <pitch absmiddle=\"10\">","keyed":true)"), std::string::npos) << lines[0];
    const int64_t keyedAt = lastCallMs("SetPTT", "true"), releasedAt = lastCallMs("SetPTT", "false");
    EXPECT_EQ(logMs(lines[0]), keyedAt) << "no TTS delay by default";
    EXPECT_GT(releasedAt - keyedAt, 1500) << "the tag is read out, letter by letter, not obeyed";

    const AirRecording air = stopRecording();
    EXPECT_LT(air.peakWhileUnkeyed(), 1e-4f);
    ASSERT_EQ(air.keyedSpans().size(), 1u);
    ASSERT_FALSE(air.soundSpans().empty());
    EXPECT_LT(air.soundSpans().front().startMs - air.keyedSpans()[0].startMs, 100.0);
}

TEST_F(SpeechEngineTest, ALocalCarrierDropsTheCallButQueuedSpeechWaitsForIt) {
    start();
    suite->host().setCarrier(true);
    run(1000);
    const size_t keyings = calls("SetPTT").size();
    idents->setSpeechPending(true);
    speak("hola");
    EXPECT_EQ(calls("SetPTT").size(), keyings) << "nothing keyed or unkeyed";
    EXPECT_TRUE(idents->speechPending());
    EXPECT_TRUE(speechLines().empty());
    // Queued, it is retried every second and goes out once the carrier drops.
    run(3000);
    EXPECT_TRUE(speechLines().empty());
    suite->host().setCarrier(false);
    run(1000);
    ASSERT_EQ(speechLines().size(), 1u);
    EXPECT_FALSE(idents->speechPending());
}

TEST_F(SpeechEngineTest, SilenceModeSpeaksNothingYetReleasesAndClearsThePendingFlag) {
    start();
    check("Check1").setValue(1);
    idents->setSpeechPending(true);
    const size_t releases = calls("SetPTT").size();
    speak("hola");
    EXPECT_TRUE(speechLines().empty());
    EXPECT_EQ(calls("SetPTT").size(), releases + 1);
    EXPECT_EQ(calls("SetPTT").back().args[0], "false");
    EXPECT_FALSE(idents->speechPending());
}

TEST_F(SpeechEngineTest, TheTtsDelayWaitsItsIncrementsKeyedUnlessSkippedOnce) {
    struct Case {
        int useDelay;
        const char* increments;
        bool skip;
        int64_t waitMs;
        const char* fieldAfter;
        bool skipAfter;
    };
    const Case cases[] = {
        {0, "3", false, 0, "3", false},    {1, "0", false, 0, "0", false},   {1, "3", false, 1500, "3", false},
        {1, "15", false, 4500, "9", false}, {1, "3", true, 0, "3", false},   {0, "3", true, 0, "3", true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(std::string("TTSCTRL ") + std::to_string(c.useDelay) + ", TTSPeriod " + c.increments +
                     (c.skip ? ", skip" : ""));
        start();
        check("TTSCTRL").setValue(c.useDelay);
        text("TTSPeriod").setText(c.increments);
        idents->setSkipSpeechDelay(c.skip);
        speak("hola");
        const auto lines = speechLines();
        ASSERT_EQ(lines.size(), 1u);
        EXPECT_EQ(logMs(lines[0]) - lastCallMs("SetPTT", "true"), c.waitMs);
        EXPECT_EQ(text("TTSPeriod").text(), c.fieldAfter);
        EXPECT_EQ(engine().skipDelay(), c.skipAfter);
    }
}

TEST_F(SpeechEngineTest, AVoiceThatCannotSpeakKeysNothingAndTheTransmitterIsReleased) {
    start();
    tts->controlAs<ComboBox>("VoiceName")->setText("xx-nothing");
    idents->setSpeechPending(true);
    const size_t keyed = calls("SetPTT").size();
    speak("hola");
    const auto ptt = calls("SetPTT");
    ASSERT_EQ(ptt.size(), keyed + 1);
    EXPECT_EQ(ptt.back().args[0], "false");
    EXPECT_FALSE(suite->host().pttKeyed());
    EXPECT_EQ(label("PTT").caption(), "PTT OFF");
    EXPECT_FALSE(idents->speechPending()) << "a failed request is not retried every second";
    EXPECT_EQ(logCount(R"("kind":"error","window":"idents","message":"speech failed: no espeak-ng voice is called \"xx-nothing\"")"), 1u)
        << logText.str();
    EXPECT_EQ(logCount(R"("kind":"dialog")"), 0u) << "an unattended path never opens a dialog";
}

TEST_F(SpeechEngineTest, AKeyedUtteranceIsCutAtTheTtsLimitWithAnErrorLine) {
    start(true);
    ttsField("MaxSpeechSeconds").typeText("2");
    std::string text;
    for (int i = 0; i < 4; ++i) text += "La estacion transmite su indicativo cada quince minutos. ";
    speak(text);
    EXPECT_LE(lastCallMs("SetPTT", "false") - lastCallMs("SetPTT", "true"), 2000);
    EXPECT_EQ(logCount("speech cut after 2 s, the longest a keyed utterance may last"), 1u);
    EXPECT_LT(stopRecording().peakWhileUnkeyed(), 1e-4f);
}

TEST_F(SpeechEngineTest, QueuedSpeechWaitsWhileTheTalkingClockPlaysAndTheNodeStaysKeyed) {
    start();
    operate([&] { dynamic_cast<Button*>(suite->program().window("hub")->findByCaption("Say The Time"))->click(); });
    idents->setSpeechText("despues del reloj");
    idents->setSpeechPending(true);
    run(1500);
    EXPECT_TRUE(speechLines().empty()) << "not while the clock's indicator reads PTT ON";
    EXPECT_TRUE(suite->host().pttKeyed()) << "the clock holds the air";
    run(15000);
    const auto lines = speechLines();
    ASSERT_EQ(lines.size(), 1u);
    int64_t clockReleased = -1;
    for (const auto& c : suite->host().commands())
        if (c.window == "hub" && c.call == "SetPTT" && c.args[0] == "false" && clockReleased < 0 && c.timeMs > 0)
            clockReleased = c.timeMs;
    EXPECT_GE(logMs(lines[0]), clockReleased) << "spoken once the clock has let go";
}

TEST_F(SpeechEngineTest, WhileTheTalkingClockPlaysTheHostIsToldEachSecondToStayKeyedButTheClockLetsGo) {
    start();
    operate([&] { dynamic_cast<Button*>(suite->program().window("hub")->findByCaption("Say The Time"))->click(); });
    run(3500);
    std::vector<int64_t> keepAlive;
    for (const auto& c : suite->host().commands())
        if (c.window == "idents" && c.call == "SetPTT" && c.args[0] == "true") keepAlive.push_back(c.timeMs);
    ASSERT_GE(keepAlive.size(), 3u) << "once a second while the clock's indicator reads PTT ON";
    for (size_t i = 1; i < keepAlive.size(); ++i) EXPECT_EQ(keepAlive[i] - keepAlive[i - 1], 1000);
    // The keying stays the clock's: when its announcement ends it releases,
    // and the ident window neither holds the air nor keys it again.
    run(20000);
    EXPECT_FALSE(suite->host().pttKeyed());
    EXPECT_FALSE(suite->program().transmitter().held());
    suite->host().clearCommands();
    run(5000);
    for (const auto& c : suite->host().commands()) EXPECT_FALSE(c.call == "SetPTT" && c.args[0] == "true") << c.window;
}

}  // namespace
}  // namespace mv
