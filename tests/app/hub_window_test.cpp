// The hub as the operator and the node see it, in virtual time.
#include "core/hub_window.h"

#include <gtest/gtest.h>

#include <algorithm>

#include <fstream>
#include <sstream>

#include "app/suite.h"
#include "core/errors.h"
#include "support/read_text.h"
#include "support/suite_rig.h"
#include "support/windows_profile.h"

namespace mv {
namespace {

class HubTest : public test::SuiteRig {
protected:
    void start() {
        startSuite({2026, 11, 22, 13, 59, 50, 0}, "/usr/share/marrowvane/voice/");
        hub = suite->program().window("hub");
    }
    TextBox& text(const char* name) { return *hub->controlAs<TextBox>(name); }
    CheckBox& check(const char* name) { return *hub->controlAs<CheckBox>(name); }
    OptionButton& option(const char* name) { return *hub->controlAs<OptionButton>(name); }
    void writeClockFile(const std::string& content) {
        std::filesystem::create_directories(settingsDir());
        std::ofstream(settingsDir() / "Quillasp2.ini", std::ios::binary) << content;
    }
    std::string clockFile() { return test::readText(settingsDir() / "Quillasp2.ini"); }

    Window* hub = nullptr;
};

TEST_F(HubTest, StartsWithCaptionUnkeyedAndDefaultsWhenNoFileExists) {
    start();
    EXPECT_EQ(hub->caption(), "Marrowvane    N0CALL   v1.0.0       Quillasp");
    const auto& cmds = suite->host().commands();
    ASSERT_GE(cmds.size(), 2u);
    EXPECT_EQ(cmds[0].call, "StationInfo");
    EXPECT_EQ(cmds[1].call, "SetPTT");
    EXPECT_EQ(cmds[1].args, (std::vector<std::string>{"false"}));
    EXPECT_TRUE(hub->isVisible());
    EXPECT_TRUE(option("OPTION2").value());
    EXPECT_TRUE(option("OPTION3").value());
    EXPECT_EQ(text("DTMFTIME").text(), "123");
    EXPECT_EQ(text("TEXT4").text(), "/usr/share/marrowvane/voice/");
    EXPECT_FLOAT_EQ(hub->leftTwips(), 300);
    // Buttons for windows this build does not have would be disabled; every
    // module window is in now.
    for (const char* caption : {"Balizas", "Dunmeral", "Indicativo", "Avisos TTS"})
        EXPECT_TRUE(hub->findByCaption(caption)->enabled()) << caption;
}

TEST_F(HubTest, VersionReplyOnlyForTheExactLowerCaseRequest) {
    start();
    suite->host().receiveChat("N0CALL>que /ver/ usas");
    suite->host().receiveChat("N0CALL>/VER/");
    suite->host().receiveChat("/ve r/");
    run(10);
    ASSERT_EQ(suite->host().countCommands("SendChatText"), 1u);
    const auto& cmds = suite->host().commands();
    const auto reply = std::find_if(cmds.begin(), cmds.end(), [](const auto& c) { return c.call == "SendChatText"; });
    EXPECT_EQ(reply->args.at(0), "Marrowvane  v1.0.0");
}

TEST_F(HubTest, SaveWritesAll71KeysAndTheyReadBackTheSame) {
    start();
    operate([&] {
        text("TEXT37").typeText("*MYCONF*");
        option("OPTION1").setValue(true);
        check("HALFHOUR").setValue(0);
        text("TEXT36").setText(" padded caption ");
        static_cast<Button*>(hub->findByCaption("Guardar"))->click();
    });
    const std::string file = clockFile();
    size_t keys = 0;
    std::istringstream lines(file);
    for (std::string line; std::getline(lines, line);) keys += line.find('=') != std::string::npos;
    EXPECT_EQ(keys, 71u);
    EXPECT_NE(file.find("OPTION1=True"), std::string::npos);
    EXPECT_NE(file.find("OPTION2=False"), std::string::npos);
    EXPECT_NE(file.find("HALFHOUR=0"), std::string::npos);
    EXPECT_NE(file.find("LEFT=300"), std::string::npos);
    EXPECT_EQ(hub->statusText(), "Guardado 13:59:50");

    // A second program on the same folder reads back what was saved.
    suite.reset();
    logText.str("");
    start();
    EXPECT_EQ(text("TEXT37").text(), "*MYCONF*");
    EXPECT_TRUE(option("OPTION1").value());
    EXPECT_FALSE(option("OPTION2").value());
    EXPECT_EQ(check("HALFHOUR").value(), 0);
    EXPECT_EQ(text("TEXT36").text(), " padded caption ");
}

TEST_F(HubTest, OneSaveIsOneReplaceOfTheFile) {
    start();
    const uint64_t before = suite->settings().commitCount();
    operate([&] { static_cast<Button*>(hub->findByCaption("Guardar"))->click(); });
    EXPECT_EQ(suite->settings().commitCount(), before + 1);
    operate([&] { static_cast<Button*>(hub->findByCaption(">>>>>>>>  Guardar y Salir  <<<<<<<<"))->click(); });
    EXPECT_EQ(suite->settings().commitCount(), before + 2);
}

TEST_F(HubTest, AFileFromTheOriginalProgramKeepsItsAccentsAndItsCodePage) {
    // Written on Windows: Windows-1252, CR LF, a note of the operator's and a
    // key this build does not know.
    const std::string original = test::cp1252(
        "; configuraci\xC3\xB3n de la estaci\xC3\xB3n\r\n[SETTINGS]\r\nTEXT37=*Conecci\xC3\xB3n*\r\n"
        "TEXT27=Se\xC3\xB1" "al horaria\r\nVIEJA=a\xC3\xB1o\r\nOPTION1=True\r\nOPTION2=False\r\n");
    writeClockFile(original);
    start();
    EXPECT_EQ(text("TEXT37").text(), "*Conecci\xC3\xB3n*");
    run(500);
    EXPECT_NE(hub->findByCaption("Se\xC3\xB1" "al horaria"), nullptr) << "the caption shows the right letters";

    operate([&] {
        text("TEXT38").typeText("0");
        static_cast<Button*>(hub->findByCaption("Guardar"))->click();
    });
    const std::string saved = clockFile();
    EXPECT_EQ(saved.substr(0, original.find("TEXT27")), original.substr(0, original.find("TEXT27")));
    EXPECT_NE(saved.find("TEXT37=*Conecci\xF3n*\r\n"), std::string::npos) << "still Windows-1252";
    EXPECT_NE(saved.find("VIEJA=a\xF1o\r\n"), std::string::npos);
    EXPECT_EQ(saved.find("\xC3"), std::string::npos) << "no UTF-8 crept in";
    // Windows reads every key of the saved file as the suite does.
    const test::WindowsProfile windows(saved);
    const SettingsSnapshot ours = suite->settings().load("Quillasp2.ini");
    for (const char* key : {"TEXT37", "TEXT38", "TEXT27", "OPTION1", "OPTION2", "TEXT36", "LEFT", "VIEJA"})
        EXPECT_EQ(windows.get("SETTINGS", key, "?"), ours.value(key, "?")) << key;
    EXPECT_EQ(ours.value("TEXT27", ""), "Se\xC3\xB1" "al horaria");
}

TEST_F(HubTest, ASaveThatFailsTellsTheOperatorAndKeepsTheOldFile) {
    writeClockFile("[SETTINGS]\r\nTEXT37=*MINE*\r\n");
    start();
    std::filesystem::permissions(settingsDir() / "Quillasp2.ini", std::filesystem::perms::owner_read);
    operate([&] {
        text("TEXT37").typeText("*OTHER*");
        static_cast<Button*>(hub->findByCaption("Guardar"))->click();
    });
    EXPECT_EQ(hub->statusText(), "No se pudo guardar Quillasp2.ini: the file is read-only");
    EXPECT_EQ(logCount("\"kind\":\"error\""), 1u);
    EXPECT_EQ(logCount((settingsDir() / "Quillasp2.ini").string() + ": the file is read-only"), 1u) << logText.str();
    EXPECT_EQ(clockFile(), "[SETTINGS]\r\nTEXT37=*MINE*\r\n");

    // Made writable again, the next press saves.
    std::filesystem::permissions(settingsDir() / "Quillasp2.ini", std::filesystem::perms::owner_all);
    run(1000);
    operate([&] { static_cast<Button*>(hub->findByCaption("Guardar"))->click(); });
    EXPECT_EQ(hub->statusText(), "Guardado 13:59:51");
    EXPECT_NE(clockFile().find("TEXT37=*OTHER*"), std::string::npos);
}

TEST_F(HubTest, ASettingsPathThatIsAFolderGivesTheDefaultsAndIsNeverWritten) {
    std::filesystem::create_directories(settingsDir() / "Quillasp2.ini");
    start();
    EXPECT_EQ(text("DTMFTIME").text(), "123");
    EXPECT_EQ(logCount("Quillasp2.ini: a folder, not a settings file; using the defaults"), 1u) << logText.str();
    operate([&] { static_cast<Button*>(hub->findByCaption("Guardar"))->click(); });
    EXPECT_EQ(hub->statusText(), "No se pudo guardar Quillasp2.ini: a folder, not a settings file");
    EXPECT_TRUE(std::filesystem::is_directory(settingsDir() / "Quillasp2.ini"));
    EXPECT_TRUE(std::filesystem::is_empty(settingsDir() / "Quillasp2.ini"));
}

TEST_F(HubTest, AHandEditedFileLoadsWithoutErrorAndUnconvertibleValuesFallBack) {
    writeClockFile("[SETTINGS]\nOPTION1=1\noption2=0\nondtmf=x\ndtmftime=456\nTEXT37=" + std::string(300, 'c') +
                   "\nCHECK3=abc\nCONDISC=0\nOPTION11=maybe\nOPTION12=0\nLEFT=wide\nVOLSET=-1200\n");
    start();
    EXPECT_TRUE(option("OPTION1").value());
    EXPECT_FALSE(option("OPTION2").value());
    EXPECT_EQ(text("DTMFTIME").text(), "456");
    EXPECT_EQ(text("TEXT37").text().size(), 255u);
    EXPECT_EQ(check("CHECK3").value(), 1) << "not a number: the key's default";
    EXPECT_EQ(check("CONDISC").value(), 0);
    // OPTION11 fell back to its default (True), so voice 1 still has a file type.
    EXPECT_TRUE(option("OPTION11").value());
    EXPECT_FLOAT_EQ(hub->leftTwips(), 300);
    EXPECT_EQ(hub->controlAs<Slider>("VolumeSlider")->value(), -1200);
    EXPECT_EQ(text("VOLSET").text(), "-1200");
    EXPECT_EQ(logCount("\"kind\":\"error\""), 3u) << logText.str();
    // The file itself is untouched by loading.
    EXPECT_NE(clockFile().find("ondtmf=x"), std::string::npos);
}

TEST_F(HubTest, ARadioGroupLeftEmptyByHandSelectsItsDefault) {
    writeClockFile("[SETTINGS]\nOPTION1=False\nOPTION2=False\nOPTIONWAV=0\nOPTIONMP3=1\n");
    start();
    EXPECT_TRUE(option("OPTION2").value());
    EXPECT_TRUE(option("OPTIONMP3").value());
    EXPECT_FALSE(option("OPTIONWAV").value());
}

TEST_F(HubTest, CaptionFieldsRelabelWithinHalfASecond) {
    start();
    Control* sayTime = hub->findByCaption("Say The Time");
    ASSERT_NE(sayTime, nullptr);
    run(500);
    EXPECT_EQ(hub->findByCaption("Guardar")->caption(), "Save");
    operate([&] {
        text("TEXT27").typeText("Hora!");
        text("TEXT33").typeText("Acerca");
    });
    EXPECT_EQ(sayTime->caption(), "Say The Time");
    run(500);
    EXPECT_EQ(sayTime->caption(), "Hora!");
    for (const auto& c : hub->controls()) EXPECT_NE(c->caption(), "Acerca") << c->name();
    // Both the selector and the folder group of a voice follow its field.
    operate([&] { text("TEXT17").typeText("Paul"); });
    run(500);
    EXPECT_EQ(option("OPTION4").caption(), "Paul");
    EXPECT_EQ(hub->control("frameVoice2")->caption(), "Paul");
}

TEST_F(HubTest, TransmitterMirrorFollowsTheHostWithin100ms) {
    start();
    Label& ptt2 = *hub->controlAs<Label>("PTT2");
    auto other = suite->host().createObject("test", nullptr);
    other->setPTT(true);
    run(100);
    EXPECT_EQ(ptt2.caption(), "PTT ON");
    EXPECT_EQ(ptt2.foreColor(), kPttOnRed);
    other->setPTT(false);
    run(100);
    EXPECT_EQ(ptt2.caption(), "PTT OFF");
    EXPECT_EQ(ptt2.foreColor(), kPttOffGreen);
}

TEST_F(HubTest, QuitPromptNoKeepsRunningYesUnkeysAndEnds) {
    start();
    suite->scriptedDialogs().queueAnswer("No");
    operate([&] { hub->closeBox(); });
    EXPECT_FALSE(suite->program().ended());
    EXPECT_TRUE(hub->isLoaded());
    EXPECT_EQ(logCount("\"title\":\"Salir del Programa\""), 1u);

    suite->host().clearCommands();
    suite->scriptedDialogs().queueAnswer("Yes");
    operate([&] { hub->closeBox(); });
    EXPECT_TRUE(suite->program().ended());
    // The hub's own release, then the program's, which is always the last.
    EXPECT_EQ(suite->host().countCommands("SetPTT", "hub"), 1u);
    EXPECT_EQ(suite->host().commands().back().window, "program");
    EXPECT_EQ(hub->controlAs<Label>("PTT")->caption(), "PTT OFF");
    const size_t after = suite->host().commands().size();
    run(5000);
    EXPECT_EQ(suite->host().commands().size(), after) << "nothing runs after the end";
}

TEST_F(HubTest, HostClosingUnkeysDropsDtrAndEndsEvenIfACallFails) {
    start();
    suite->host().setFailing("SetPTT", true);
    suite->host().closing();
    run(1);
    EXPECT_TRUE(suite->program().ended());
    EXPECT_EQ(suite->host().countCommands("SetDTR", "hub"), 1u);
    EXPECT_EQ(logCount("\"kind\":\"end\""), 1u);
}

TEST_F(HubTest, SaveAndExitSavesAndEndsWithoutAPrompt) {
    start();
    suite->host().clearCommands();
    operate([&] { static_cast<Button*>(hub->findByCaption(">>>>>>>>  Guardar y Salir  <<<<<<<<"))->click(); });
    EXPECT_TRUE(suite->program().ended());
    EXPECT_EQ(logCount("\"kind\":\"dialog\""), 0u);
    // The button unkeys nothing itself; only the program's end releases.
    EXPECT_EQ(suite->host().countCommands("SetPTT", "hub"), 0u);
    EXPECT_EQ(suite->host().commands().back().call, "SetPTT");
    EXPECT_EQ(suite->host().commands().back().window, "program");
    EXPECT_NE(clockFile().find("TOP=300"), std::string::npos);
}

TEST_F(HubTest, DefaultVoiceButtonsPutTheInstalledVoiceBack) {
    start();
    operate([&] {
        text("TEXT4").typeText("/elsewhere/");
        option("OPTION12").setValue(true);
        static_cast<Button*>(hub->findByCaption("Defalt Voice 1"))->click();
    });
    EXPECT_EQ(text("TEXT4").text(), "/usr/share/marrowvane/voice/");
    EXPECT_TRUE(option("OPTION11").value());
    operate([&] { static_cast<Button*>(hub->control("btnDefaultVoice3"))->click(); });
    EXPECT_EQ(text("TEXT6").text(), "/usr/share/marrowvane/voice/");
}

class HeldGuard : public InstanceGuard {
public:
    bool acquire(std::string& reason) override {
        reason = "already running";
        return false;
    }
};

TEST_F(HubTest, ASecondCopyLoadsNoWindowAndMakesNoHostCall) {
    SuiteOptions o;
    o.settingsDir = settingsDir();
    o.virtualStart = LocalDateTime{2026, 11, 22, 13, 59, 50, 0};
    Suite second(o);
    HeldGuard guard;
    std::string message;
    EXPECT_EQ(second.program().start("hub", &guard, message), Program::StartResult::AlreadyRunning);
    EXPECT_TRUE(second.host().commands().empty());
    EXPECT_FALSE(second.program().window("hub")->isLoaded());
}

}  // namespace
}  // namespace mv

namespace mv {
namespace {

TEST_F(HubTest, ABusyHostIsWaitedForUnderTheProcessWidePolicy) {
    start();
    auto& host = suite->host();
    Window& w = *hub;
    // Without a wait, a busy refusal reaches the caller at once.
    suite->program().setHostBusyWaitMs(0);
    host.refuseAsBusy(1);
    EXPECT_THROW(w.host().isBusy(), HostBusyError);
    // With the policy, refusals are retried while time passes, and the call goes through.
    suite->program().setHostBusyWaitMs(900000);
    const int64_t before = suite->scheduler().now();
    host.refuseAsBusy(3);
    EXPECT_NO_THROW(w.host().setPTT(true));
    EXPECT_TRUE(host.pttKeyed());
    EXPECT_GT(suite->scheduler().now(), before);
    // A host that stays busy past the policy fails the call.
    host.refuseAsBusy(1000000);
    EXPECT_THROW(w.host().setPTT(false), HostBusyError);
    EXPECT_GE(suite->scheduler().now() - before, 900000);
    host.refuseAsBusy(0);
}

}  // namespace
}  // namespace mv

namespace mv {
namespace {

TEST_F(HubTest, AShutdownFromOutsideReleasesTheTransmitterFirst) {
    start();
    auto other = suite->host().createObject("test", nullptr);
    other->setPTT(true);
    suite->program().shutdown("stopped by signal");
    EXPECT_TRUE(suite->program().ended());
    EXPECT_FALSE(suite->host().pttKeyed());
    EXPECT_EQ(suite->host().commands().back().window, "program");
    suite->program().shutdown("again");  // harmless once ended
    EXPECT_EQ(logCount("\"kind\":\"end\""), 1u);
}

}  // namespace
}  // namespace mv

namespace mv {
namespace {

TEST_F(HubTest, EveryCaptionFieldRelabelsItsElementsAndOnlyThose) {
    start();
    operate([&] {
        for (const auto& f : HubWindow::captionFields()) text(f.key.c_str()).setText("<" + f.key + ">");
    });
    run(500);
    for (const auto& f : HubWindow::captionFields()) {
        size_t relabelled = 0;
        for (const auto& c : hub->controls())
            if (c->kind() != ControlKind::TextBox && c->caption() == "<" + f.key + ">") ++relabelled;
        const int n = std::stoi(f.key.substr(4));
        const size_t expected = f.key == "TEXT33" ? 0 : (n >= 16 && n <= 20) ? 2 : 1;
        EXPECT_EQ(relabelled, expected) << f.key;
    }
}

}  // namespace
}  // namespace mv
