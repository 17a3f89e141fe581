// The ident window as the operator and the node see it: its load, its options
// file, its close prompt and host closing, the one-second clock's hand-offs to
// other windows, and the text editor.
#include "idents/ident_window.h"

#include <gtest/gtest.h>

#include <sndfile.h>

#include <fstream>

#include "core/errors.h"
#include "idents/fan_control.h"
#include "idents/idents_rig.h"
#include "support/read_text.h"

namespace mv {
namespace {

// Stands in for the DTMF control window: counts the delay restarts it is asked for.
class DtmfStandIn final : public Window, public DtmfControl {
public:
    explicit DtmfStandIn(Program& program) : Window(program, "dtmf") {}
    void startDelayTimer() override { ++restarts; }
    int restarts = 0;

protected:
    void build() override { setRoot(make<Container>("root", ContainerKind::Column)); }
};

class IdentWindowTest : public test::IdentsRig {
protected:
    std::string shown(const char* name) {
        Control* c = idents->control(name);
        if (auto* t = dynamic_cast<TextBox*>(c)) return t->text();
        if (auto* b = dynamic_cast<CheckBox*>(c)) return std::to_string(b->value());
        if (auto* o = dynamic_cast<OptionButton*>(c)) return o->value() ? "True" : "False";
        return c->caption();
    }
};

TEST_F(IdentWindowTest, LoadsHiddenUnkeyedWithItsCaptionAndTheHostWaitPolicy) {
    start();
    EXPECT_TRUE(idents->isLoaded());
    EXPECT_FALSE(idents->isVisible());
    EXPECT_EQ(idents->caption(), "Marrowvane    N0CALL   v1.0.0");
    std::vector<std::string> atLoad;
    for (const auto& c : suite->host().commands())
        if (c.window == "idents" && c.timeMs == 0 && c.call.rfind("Set", 0) == 0) atLoad.push_back(c.call + " " + c.args[0]);
    EXPECT_EQ(atLoad, (std::vector<std::string>{"SetPTT false", "SetDTR false", "SetRTS false"}));
    EXPECT_EQ(suite->program().hostBusyWaitMs(), 900000);
    EXPECT_EQ(shown("BeaconSeconds6") + " " + shown("BeaconSeconds7") + " " + shown("IDSeconds"), "10 15 10");
    EXPECT_EQ(shown("CWCallsign"), "");
    EXPECT_EQ(shown("Callsign"), "Your Call");
    EXPECT_EQ(shown("SayText"), "0");
    EXPECT_EQ(label("PTT").caption(), "PTT OFF");
    operate([&] { dynamic_cast<Button*>(suite->program().window("hub")->findByCaption("Indicativo"))->click(); });
    EXPECT_TRUE(idents->isVisible());
}

TEST_F(IdentWindowTest, SavedOptionsComeBackAfterARestartWhileCountdownsStartAfresh) {
    start();
    const std::vector<std::pair<const char*, const char*>> options = {
        {"Callsign", "EA4ABC repetidor"}, {"BeaconPeriod6", "5"}, {"StopClock6", "1"}, {"CWCallsign", "EA4ABC"},
        {"BeaconPeriod7", "20"},          {"StopClock7", "1"},    {"IDCheck", "1"},    {"VoicePeriod", "30"},
        {"TTSCTRL", "1"},                 {"TTSPeriod", "4"},     {"SayText", "1"},    {"ToggleText", "55"},
        {"AddTime", "1"},                 {"Option1", "True"},    {"Check2", "1"},     {"AnnounceOff", "70"},
        {"SpecialConferenceSpoken", "Prueba"}, {"TimeQuarter", "1"}, {"HourOFF2", "7"}, {"Thur3", "1"},
        {"UseRTS", "True"},               {"FanPeriod", "3"},     {"DelayCTRL", "1"},  {"TextInput3", "uno\ndos \\n\ntres"},
        {"Option5", "True"},              {"InfoQuarter", "1"},   {"InfoText", "Red"}, {"UseCT", "1"},
        {"KerchunkWait", "2500"},         {"CourtesyID", "R"},    {"FanCTRL", "1"},
    };
    for (const auto& [name, value] : options) set(name, value);
    operate([&] { button("Save  Changes").click(); });
    EXPECT_EQ(idents->statusText().rfind("Guardado ", 0), 0u) << idents->statusText();
    const std::string file = test::readText(settingsDir() / "brackwen.ini");
    EXPECT_NE(file.find("BEACONPERIOD6=5"), std::string::npos) << file;
    EXPECT_EQ(file.find("BEACONSECONDS"), std::string::npos) << "countdowns are never saved";

    start();
    for (const auto& [name, value] : options) EXPECT_EQ(shown(name), value) << name;
    EXPECT_EQ(shown("BeaconSeconds6") + " " + shown("BeaconSeconds7") + " " + shown("IDSeconds"), "10 15 10");
    EXPECT_TRUE(idents->ident().voiceTimer().running());
    EXPECT_FALSE(idents->fan().runTimer().running()) << "a start is no transmission: the fan stays off";
    EXPECT_FALSE(suite->host().rts());
}

TEST_F(IdentWindowTest, AHandEditedOptionThatMakesNoSenseFallsBackToItsDefault) {
    std::filesystem::create_directories(settingsDir());
    std::ofstream(settingsDir() / "brackwen.ini")
        << "[SETTINGS]\nSTOPCLOCK6=yes please\nBEACONPERIOD6=0\nCALLSIGN=EA1ZZ\nCOURTESYID=73 DE EA1ZZ\n";
    start();
    EXPECT_EQ(shown("StopClock6"), "0");
    // The host keys for as long as its Morse lasts: a letter stays a letter.
    EXPECT_EQ(shown("CourtesyID"), "73 D");
    EXPECT_EQ(logCount("COURTESYID is longer than 4 characters"), 1u);
    bool allTyped = true;
    operate([&] { allTyped = text("IPCourtesy").typeText("IIIIII"); });
    EXPECT_FALSE(allTyped);
    EXPECT_EQ(shown("IPCourtesy"), "IIII");
    EXPECT_EQ(shown("BeaconPeriod6"), "1") << "a zero period becomes one minute";
    EXPECT_EQ(shown("Callsign"), "EA1ZZ");
    EXPECT_EQ(logCount("STOPCLOCK6=\\\"yes please\\\" is not a check-box value"), 1u) << logText.str();
    EXPECT_TRUE(idents->ident().voiceTimer().running()) << "every countdown starts running, as on any start";
}

TEST_F(IdentWindowTest, TheClosePromptKeepsRunningOnNoAndReleasesEverythingOnYes) {
    start();
    suite->scriptedDialogs().queueAnswer("No");
    operate([&] { idents->closeBox(); });
    EXPECT_TRUE(idents->isLoaded());
    EXPECT_FALSE(suite->program().ended());
    EXPECT_EQ(logCount(R"("title":"Exit Program","text":"Quit Brackwen - Are You Sure ? Remember To Save Any Changes  ")"), 1u);

    auto other = suite->host().createObject("test", nullptr);
    other->setPTT(true);
    suite->host().setDtr(true);
    operate([&] { button("Say Call Now").click(); });
    ASSERT_TRUE(suite->speech()->speaking());
    suite->scriptedDialogs().queueAnswer("Yes");
    operate([&] { idents->closeBox(); });
    EXPECT_TRUE(suite->program().ended());
    EXPECT_FALSE(suite->speech()->speaking()) << "the end silences the voice";
    EXPECT_FALSE(suite->host().pttKeyed());
    EXPECT_FALSE(suite->host().dtr());
    EXPECT_FALSE(suite->host().rts());
}

TEST_F(IdentWindowTest, HostClosingReleasesTheTransmitterAndEndsTheProgram) {
    start();
    auto other = suite->host().createObject("test", nullptr);
    other->setPTT(true);
    suite->host().setRts(true);
    // Whichever window hears the host closing first ends the program; here
    // it is the ident window.
    operate([&] { idents->onClosing(); });
    EXPECT_TRUE(suite->program().ended());
    EXPECT_FALSE(suite->host().pttKeyed());
    EXPECT_FALSE(suite->host().rts());
}

TEST_F(IdentWindowTest, TheClockRestartsTheDtmfDelayEachSecondNothingIsReceived) {
    DtmfStandIn* dtmf = nullptr;
    start(false, [&](Suite& s) {
        dtmf = static_cast<DtmfStandIn*>(&s.program().addWindow(std::make_unique<DtmfStandIn>(s.program())));
    });
    run(3000);
    EXPECT_EQ(dtmf->restarts, 3);
    suite->host().setReceiving(true);
    run(3000);
    EXPECT_EQ(dtmf->restarts, 3);
    EXPECT_EQ(label("PTT2").caption(), "Receiving Signal");
    suite->host().setReceiving(false);
    run(2000);
    EXPECT_EQ(dtmf->restarts, 5);
    EXPECT_EQ(label("PTT2").caption(), "      ");
}

TEST_F(IdentWindowTest, TheIndicatorFollowsTheHostsTransmitterWithinATenthOfASecond) {
    start();
    auto other = suite->host().createObject("test", nullptr);
    other->setPTT(true);
    run(100);
    EXPECT_EQ(label("PTT").caption(), "PTT ON");
    other->setPTT(false);
    run(100);
    EXPECT_EQ(label("PTT").caption(), "PTT OFF");
}

TEST_F(IdentWindowTest, TheEditorSpeaksUnkeyedOrWritesAWaveFileAndReportsFailuresInADialog) {
    start();
    set("TextField", "Prueba del editor");
    operate([&] { button("Reproducir").click(); });
    ASSERT_EQ(speechLines().size(), 1u);
    EXPECT_NE(speechLines()[0].find(R"("op":"speak","text":"Prueba del editor","keyed":false)"), std::string::npos);
    EXPECT_TRUE(calls("SetPTT").size() == 1u) << "only the load's release";

    set("SaveToWave", "1");
    const std::string path = (dir.path() / "editor.wav").string();
    suite->scriptedDialogs().queueAnswer(path);
    operate([&] { button("Reproducir").click(); });
    EXPECT_EQ(logCount(R"("title":"Save to a Wave File")"), 1u);
    SF_INFO info{};
    SNDFILE* f = sf_open(path.c_str(), SFM_READ, &info);
    ASSERT_NE(f, nullptr);
    sf_close(f);
    EXPECT_EQ(info.samplerate, 22050);
    EXPECT_EQ(info.channels, 1);
    EXPECT_EQ(info.format, SF_FORMAT_WAV | SF_FORMAT_PCM_16);
    EXPECT_GT(info.frames, 22050 / 2);

    // Cancelling the file dialog ends it quietly.
    suite->scriptedDialogs().queueAnswer("Cancel");
    operate([&] { button("Reproducir").click(); });
    EXPECT_EQ(logCount("Speak Error!"), 0u);

    set("SaveToWave", "0");
    tts->controlAs<ComboBox>("VoiceName")->setText("xx-nothing");
    operate([&] { button("Reproducir").click(); });
    EXPECT_EQ(logCount(R"("kind":"dialog","window":"idents","title":"Marrowvane","text":"Speak Error!")"), 1u) << logText.str();
    EXPECT_TRUE(idents->isLoaded());
}

}  // namespace
}  // namespace mv
