// The courtesy signal after each over: Morse letters, tones played keyed, the
// switch, and how the transmitter is released, in virtual time on the air.
#include "courtesy/courtesy_engine.h"

#include <gtest/gtest.h>

#include "core/dialogs.h"
#include "courtesy_rig.h"
#include "platform/audio/air_recorder.h"

namespace mv {
namespace {

class CourtesyEngineTest : public test::CourtesyRig {
protected:
    std::vector<std::string> cwLetters() const {
        std::vector<std::string> out;
        for (const auto& c : suite->host().commands())
            if (c.call == "SendCW" && c.window == "courtesy") out.push_back(c.args.at(1));
        return out;
    }
    void internetOver(int64_t fromMs, int64_t toMs) {
        at(fromMs);
        suite->host().setReceiving(true);
        at(toMs);
        suite->host().setReceiving(false);
    }
    std::vector<std::string> pttArgs() const {
        std::vector<std::string> out;
        for (const auto& c : suite->host().commands())
            if (c.call == "SetPTT" && c.window == "courtesy") out.push_back(c.args.at(0));
        return out;
    }
    // SetPTT calls of the courtesy window with `false`.
    size_t unkeys() const {
        const auto all = pttArgs();
        return static_cast<size_t>(std::count(all.begin(), all.end(), "false"));
    }
    void chooseAudio() {
        operate([&] { courtesy->controlAs<OptionButton>("OPTION2")->setValue(true); });
    }
};

TEST_F(CourtesyEngineTest, AnInternetOverEndsWithOneIAndTheIndicatorOffWhetherOrNotTheCourtesyIsOn) {
    start();
    internetOver(1000, 4000);
    at(4000);
    EXPECT_EQ(cwLetters(), (std::vector<std::string>{"I"}));
    EXPECT_EQ(times("SendCW"), (std::vector<int64_t>{4000}));
    EXPECT_EQ(label("PTT1").caption(), "IP TX OFF");
    EXPECT_EQ(label("PTT1").backColor(), (Rgb{128, 255, 128}));

    operate([&] { check("CHECK1").setValue(0); });
    internetOver(6000, 6500);
    at(6600);
    EXPECT_EQ(label("PTT1").caption(), "IP TX OFF");
    EXPECT_EQ(cwLetters().size(), 1u) << "no courtesy while disabled";
}

TEST_F(CourtesyEngineTest, TheIndicatorsFollowTheChannelWithTheirOwnTextsAndColours) {
    start();
    EXPECT_EQ(label("RFUser").caption(), "RF No") << "design text until the first poll";
    at(10);
    EXPECT_EQ(label("RFUser").caption(), "RX NO");
    EXPECT_EQ(label("RFUser").backColor(), (Rgb{128, 255, 255}));
    at(1000);
    suite->host().setCarrier(true);
    suite->host().setReceiving(true);
    at(1020);
    EXPECT_EQ(label("RFUser").caption(), "RX YES");
    EXPECT_EQ(label("RFUser").backColor(), (Rgb{255, 192, 128}));
    EXPECT_EQ(label("PTT1").caption(), "IP TX ON");
    EXPECT_EQ(label("PTT1").backColor(), (Rgb{255, 0, 0}));
    // Another window keys: the indicator shows the host's transmitter.
    operate([&] { suite->program().window("hub")->host().setPTT(true); });
    at(1040);
    EXPECT_EQ(label("PTT").caption(), "PTT ON");
    EXPECT_EQ(label("PTT").backColor(), (Rgb{255, 0, 0}));
    EXPECT_TRUE(showsPttOn(suite->program(), "courtesy"));
    operate([&] { suite->program().window("hub")->host().setPTT(false); });
    suite->host().setCarrier(false);
    at(1060);
    EXPECT_EQ(label("PTT").caption(), "PTT OFF");
    EXPECT_EQ(label("RFUser").caption(), "RX NO");
    at(2000);
    EXPECT_EQ(label("LocalTime").caption(), "10:01:02");
}

TEST_F(CourtesyEngineTest, MorseLettersComeFromTheirFieldsInUpperCaseAndTheTestButtonsHonourTheSwitch) {
    start();
    operate([&] {
        text("CourtesyID").typeText("ok");
        text("IPCourtesy").typeText("");
    });
    click("btnTestRFCW");
    click("btnTestIPCW");
    EXPECT_EQ(cwLetters(), (std::vector<std::string>{"OK", ""})) << "an empty letter is still sent, as the host gets it";
    operate([&] { check("CHECK1").setValue(0); });
    for (const char* b : {"btnTestRFCW", "btnTestIPCW", "btnTestRFTone", "btnTestIPTone"}) click(b);
    at(3000);
    EXPECT_EQ(cwLetters().size(), 2u);
    EXPECT_EQ(count("SetPTT"), 0u);
}

TEST_F(CourtesyEngineTest, ALetterStaysShortSoTheHostsOwnKeyingEndsSoonWhateverWasTypedOrStored) {
    // The host keys the transmitter itself for as long as the Morse lasts and
    // cannot be told to stop: a letter of hundreds of characters would hold
    // the node on the air for minutes, past the end of the run.
    start("[SETTINGS]\nIPCOURTESY=" + std::string(300, 'I') + "\n");
    EXPECT_EQ(text("IPCourtesy").text(), "IIII");
    EXPECT_EQ(logCount("IPCOURTESY is longer than 4 characters; using \\\"IIII\\\""), 1u);
    bool allTyped = true;
    operate([&] { allTyped = text("CourtesyID").typeText(std::string(300, 'w')); });
    EXPECT_FALSE(allTyped) << "the field refuses what does not fit";
    EXPECT_EQ(text("CourtesyID").text(), "WWWW");
    click("btnTestRFCW");
    internetOver(1000, 2000);
    at(2100);
    EXPECT_EQ(cwLetters(), (std::vector<std::string>{"WWWW", "IIII"}));
    at(2000 + 8000);
    EXPECT_FALSE(suite->host().transmitting()) << "both letters sent and the host unkeyed within seconds";
}

TEST_F(CourtesyEngineTest, TheDtmfCodesSwitchTheCourtesyAndAnEmptyCodeMatchesNothing) {
    start();
    operate([&] {
        text("TEXT4").setText("*71");
        text("TEXT5").setText("#71");
    });
    struct Step {
        const char* digits;
        int expected;
    };
    for (const Step& s : {Step{"#71", 0}, Step{"*7", 0}, Step{"*71", 1}, Step{"", 1}, Step{"#711", 1}}) {
        suite->host().receiveDTMF(s.digits);
        run(1);
        EXPECT_EQ(check("CHECK1").value(), s.expected) << '"' << s.digits << '"';
    }
    operate([&] { text("TEXT5").setText("*71"); });
    suite->host().receiveDTMF("*71");
    run(1);
    EXPECT_EQ(check("CHECK1").value(), 0) << "a string that is both codes enables, then disables";
    operate([&] {
        text("TEXT4").setText("");
        text("TEXT5").setText("");
    });
    suite->host().receiveDTMF("");
    run(1);
    EXPECT_EQ(check("CHECK1").value(), 0);
}

TEST_F(CourtesyEngineTest, AToneCourtesyPlaysKeyedAndReleasesOnceTheMomentItEnds) {
    recordPath = (dir.path() / "air.wav").string();
    start();
    chooseAudio();
    internetOver(1000, 3000);
    at(6000);
    ASSERT_EQ(count("SetPTT"), pttArgs().size());
    EXPECT_EQ(unkeys(), 1u) << "one release after the tone";
    EXPECT_EQ(pttArgs().back(), "false");
    EXPECT_EQ(label("Ident").caption(), "Ident OFF");
    EXPECT_FALSE(suite->host().pttKeyed());
    EXPECT_FALSE(courtesy->engine().toneOnAir());
    EXPECT_NE(logText.str().find("tones/IP.wav"), std::string::npos) << "the Internet tone";

    suite->air().stopRecording();
    const AirRecording air = AirRecording::load(recordPath);
    ASSERT_EQ(air.keyedSpans().size(), 1u);
    const auto sound = air.soundSpans();
    ASSERT_FALSE(sound.empty());
    EXPECT_LT(air.peakWhileUnkeyed(), 1e-4f) << "nothing on the air unkeyed";
    EXPECT_NEAR(air.keyedSpans()[0].startMs, 3000, 1);
    EXPECT_GE(air.keyedSpans()[0].endMs, sound.back().endMs);
    EXPECT_LE(air.keyedSpans()[0].endMs - sound.back().endMs, 20.0) << "released as the tone ends";
    EXPECT_GT(sound.back().endMs - sound.front().startMs, 150.0) << "the tone was heard";
}

TEST_F(CourtesyEngineTest, WhileAToneSoundsTheIdentIndicatorIsOnAndTheKeyIsAssertedEveryMillisecond) {
    start();
    chooseAudio();
    const size_t before = count("SetPTT");
    internetOver(1000, 2000);
    at(2100);
    EXPECT_EQ(label("Ident").caption(), "Ident ON");
    EXPECT_EQ(label("Ident").backColor(), (Rgb{255, 192, 128}));
    EXPECT_EQ(label("PTT").caption(), "PTT ON");
    EXPECT_GE(count("SetPTT") - before, 100u);
    EXPECT_EQ(unkeys(), 0u);
}

TEST_F(CourtesyEngineTest, EachToneIsReadFromDiskAgainSoAReplacedFileIsHeardAtTheNextOver) {
    const auto tone = dir.path() / "mine.wav";
    std::filesystem::copy_file(std::string(MV_TEST_TONES_DIR) + "/RF.wav", tone);
    start("[SETTINGS]\nOPTION1=False\nOPTION2=True\nINETTONE=" + tone.string() + "\n");
    internetOver(1000, 2000);
    at(3000);
    const size_t renders = logCount("\"op\":\"render\"");
    EXPECT_EQ(renders, 1u);
    std::filesystem::copy_file(std::string(MV_TEST_TONES_DIR) + "/IP.wav", tone,
                               std::filesystem::copy_options::overwrite_existing);
    internetOver(4000, 5000);
    at(6000);
    EXPECT_EQ(logCount("\"op\":\"render\""), 2u);
    EXPECT_EQ(unkeys(), 2u);
}

TEST_F(CourtesyEngineTest, UnattendedAToneThatCannotPlayKeysNothingAndLogsInsteadOfAsking) {
    start("[SETTINGS]\nOPTION2=True\nOPTION1=False\nINETTONE=/nowhere/IP.wav\nRFTONE=\n");
    internetOver(1000, 2000);
    at(2500);
    suite->host().setCarrier(true);
    at(9000);
    suite->host().setCarrier(false);
    at(10000);
    EXPECT_EQ(count("SetPTT"), 0u) << "nothing keyed";
    EXPECT_EQ(logCount("\"kind\":\"dialog\""), 0u) << "no dialog on an unattended node";
    EXPECT_GE(logCount("/nowhere/IP.wav"), 1u);
    EXPECT_EQ(logCount("RFTone names no tone file"), 1u);
    EXPECT_FALSE(courtesy->engine().toneOnAir());
}

TEST_F(CourtesyEngineTest, TheOperatorIsAskedForAMissingToneAndToldWhenNoneIsChosen) {
    start("[SETTINGS]\nRFTONE=\n");
    suite->scriptedDialogs().queueAnswer("Cancel");
    click("btnTestRFTone");
    EXPECT_EQ(logCount("Por Favor, Seleccione un Archivo, Gracias"), 1u);
    EXPECT_EQ(count("SetPTT"), 0u);
    // Choosing one plays it, keyed, and it stays in the field.
    const std::string chosen = std::string(MV_TEST_TONES_DIR) + "/RF.wav";
    suite->scriptedDialogs().queueAnswer(chosen);
    click("btnTestRFTone");
    EXPECT_EQ(text("RFTone").text(), chosen);
    EXPECT_EQ(pttArgs().front(), "true");
    at(2000);
    EXPECT_EQ(pttArgs().back(), "false");
    // A file that does not render: the operator's message box, no key.
    suite->host().clearCommands();
    operate([&] { text("RFTone").setText("/nowhere/RF.wav"); });
    click("btnTestRFTone");
    EXPECT_EQ(logCount("Render error no rendering device found"), 1u);
    at(3000);
    EXPECT_EQ(count("SetPTT"), 0u);
}

TEST_F(CourtesyEngineTest, FicheroEmptiesTheFieldAndFillsItWithTheChoice) {
    start();
    suite->scriptedDialogs().queueAnswer("/tones/bell.wav");
    click("btnFileIP");
    EXPECT_EQ(text("InetTone").text(), "/tones/bell.wav");
    suite->scriptedDialogs().queueAnswer("Cancel");
    click("btnFileIP");
    EXPECT_EQ(text("InetTone").text(), "");
    EXPECT_EQ(logCount(" Por Favor, Seleccione un Archivo, Gracias"), 1u);
}

TEST_F(CourtesyEngineTest, StopReleasesAToneHalfwayAndResumeKeysItAgainUntilItsEnd) {
    start();
    operate([&] { courtesy->controlAs<OptionButton>("OPTION2")->setValue(true); });
    at(1000);
    click("btnTestRFTone");
    at(1100);
    click("btnStop");
    EXPECT_EQ(unkeys(), 1u);
    EXPECT_FALSE(suite->host().pttKeyed());
    at(3000);
    EXPECT_EQ(unkeys(), 1u) << "released once, and not keyed again while stopped";
    EXPECT_EQ(pttArgs().back(), "false");
    click("btnResume");
    EXPECT_TRUE(suite->host().pttKeyed());
    at(4000);
    EXPECT_EQ(unkeys(), 2u);
    EXPECT_FALSE(suite->host().pttKeyed());
    // Resume on a tone that has ended keys nothing.
    const size_t calls = count("SetPTT");
    click("btnResume");
    at(5000);
    EXPECT_EQ(count("SetPTT"), calls);
}

TEST_F(CourtesyEngineTest, BeforeAnyToneNothingIsKeyedAndTheFileButtonLoadsWithoutKeying) {
    start();
    at(5000);
    EXPECT_EQ(count("SetPTT"), 0u);
    EXPECT_EQ(text("LengthDisplay").text(), "0");
    EXPECT_EQ(text("ElapsedDisplay").text(), "0");
    EXPECT_EQ(label("Ident").caption(), "Ident OFF");
    // "File" reloads the tone last chosen; nothing was chosen yet: nothing loads.
    click("btnFile");
    EXPECT_EQ(logCount("\"op\":\"render\""), 0u);
    click("btnTestIPTone");
    at(6000);
    const size_t keyed = count("SetPTT");
    click("btnFile");
    EXPECT_EQ(logCount("\"op\":\"render\""), 2u);
    at(8000);
    EXPECT_EQ(count("SetPTT"), keyed) << "loading keys nothing";
    EXPECT_EQ(label("Ident").caption(), "Ident ON") << "a loaded tone not yet played";
    EXPECT_EQ(text("ProgressLength").text(), "00:00:00");
}

TEST_F(CourtesyEngineTest, TheSlidersWriteTheirFieldsAndTheStoredValuesMoveThem) {
    start("[SETTINGS]\nVOLSET=-1500\nSPEEDSET=150\n");
    EXPECT_EQ(courtesy->engine().player().volumeSlider().value(), -1500);
    EXPECT_EQ(courtesy->engine().player().speedSlider().value(), 150);
    operate([&] { courtesy->engine().player().speedSlider().setValue(40); });
    EXPECT_EQ(text("SPEEDSET").text(), "40");
    operate([&] { courtesy->engine().player().volumeSlider().setValue(-200); });
    EXPECT_EQ(text("VOLSET").text(), "-200");
}

TEST_F(CourtesyEngineTest, AHandEditedSliderValueFallsBackAndSaysSo) {
    start("[SETTINGS]\nVOLSET=loud\nSPEEDSET=900\n");
    EXPECT_EQ(courtesy->engine().player().volumeSlider().value(), 0);
    EXPECT_EQ(text("VOLSET").text(), "0");
    EXPECT_EQ(logCount("VOLSET=\\\"loud\\\" is not a whole number"), 1u);
    EXPECT_EQ(courtesy->engine().player().speedSlider().value(), 200) << "kept within the slider's range";
}

}  // namespace
}  // namespace mv
