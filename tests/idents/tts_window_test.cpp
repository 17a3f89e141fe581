// The TTS settings window: its file and defaults, the test buttons speaking
// through the ident window, and the values read at the moment of use.
#include "idents/tts_window.h"

#include <gtest/gtest.h>

#include <fstream>

#include "idents/idents_rig.h"
#include "support/read_text.h"

namespace mv {
namespace {

class TtsWindowTest : public test::IdentsRig {
protected:
    TextBox& field(const char* name) { return *tts->controlAs<TextBox>(name); }
    Slider& slider(const char* name) { return *tts->controlAs<Slider>(name); }
    void click(const char* caption) {
        operate([&] { dynamic_cast<Button*>(tts->findByCaption(caption))->click(); });
    }
    void writeFile(const std::string& content) {
        std::filesystem::create_directories(settingsDir());
        std::ofstream(settingsDir() / kTtsSettingsFile) << content;
    }
};

TEST_F(TtsWindowTest, AFreshStartHasTheDefaultsTheSpanishVoiceAndItsCaption) {
    start();
    EXPECT_TRUE(tts->isLoaded());
    EXPECT_FALSE(tts->isVisible());
    EXPECT_EQ(tts->caption(), "Marrowvane   v1.0.0  TTS Setup");
    EXPECT_EQ(tts->volume(), 50);
    EXPECT_EQ(tts->rate(), 0);
    EXPECT_EQ(tts->voiceName(), "es");
    EXPECT_EQ(tts->maxSpeechMs(), 180000);
    ASSERT_EQ(TtsWindow::phrases().size(), 15u);
    for (const auto& p : TtsWindow::phrases()) EXPECT_EQ(tts->phrase(p.key), p.defaultText) << p.key;
    EXPECT_EQ(tts->phrase("REPEATERCONNECTED"), "Conectado al Repetidor ");
    const auto& voices = tts->controlAs<ComboBox>("VoiceName")->items();
    EXPECT_NE(std::find(voices.begin(), voices.end(), "es-419"), voices.end()) << "every installed voice is offered";
}

TEST_F(TtsWindowTest, MissingKeysGiveDefaultsAndSavedValuesComeBack) {
    writeFile("[SETTINGS]\nVOICESPEED=-3\nTHE=El\nMAXSPEECHSECONDS=abc\n");
    start();
    EXPECT_EQ(tts->volume(), 50) << "no VOLLEV key";
    EXPECT_EQ(tts->rate(), -3);
    EXPECT_EQ(tts->phrase("THE"), "El");
    EXPECT_EQ(tts->phrase("AT"), "en");
    EXPECT_EQ(tts->maxSpeechMs(), 180000) << "a limit that spells no number counts as the default";
    EXPECT_EQ(tts->controlAs<Label>("VoiceSpeedValue")->caption(), "-3");

    operate([&] {
        slider("VolLev").setValue(80);
        slider("VoiceSpeed").setValue(-5);
        field("TheTimeIs").setText("Son las");
        tts->controlAs<ComboBox>("VoiceName")->setText("es-419");
        field("MaxSpeechSeconds").setText("60");
    });
    EXPECT_EQ(tts->controlAs<Label>("VolLevValue")->caption(), "80");
    click("Salvar");
    const std::string file = test::readText(settingsDir() / kTtsSettingsFile);
    EXPECT_NE(file.find("VOICESPEED=-5"), std::string::npos) << file;
    EXPECT_NE(file.find("REPEATERCONNECTED=\"Conectado al Repetidor \""), std::string::npos) << "the trailing blank survives";

    start();
    EXPECT_EQ(tts->volume(), 80);
    EXPECT_EQ(tts->rate(), -5);
    EXPECT_EQ(tts->phrase("THETIMEIS"), "Son las");
    EXPECT_EQ(tts->phrase("REPEATERCONNECTED"), "Conectado al Repetidor ");
    EXPECT_EQ(tts->voiceName(), "es-419");
    EXPECT_EQ(tts->maxSpeechMs(), 60000);
}

TEST_F(TtsWindowTest, PruebaSpeaksTheTestTextKeyedThroughTheIdentWindow) {
    start();
    click("Prueba");
    const auto lines = speechLines();
    ASSERT_EQ(lines.size(), 1u);
    EXPECT_NE(lines[0].find(R"("window":"idents","op":"speak","text":"Esto es una prueba de voz","keyed":true)"),
              std::string::npos)
        << lines[0];
    EXPECT_EQ(calls("SetPTT").back().args[0], "false");
}

TEST_F(TtsWindowTest, APhrasesTestButtonSpeaksItAsEditedAndTheSlidersCountAtOnce) {
    start();
    auto spokenMs = [&] { return lastCallMs("SetPTT", "false") - lastCallMs("SetPTT", "true"); };
    operate([&] { field("Connected").setText("Conectado al nodo de prueba"); });
    click("Salir");
    EXPECT_FALSE(tts->isVisible());
    operate([&] { tts->controlAs<Button>("TestConnected")->click(); });
    ASSERT_EQ(speechLines().size(), 1u);
    EXPECT_NE(speechLines()[0].find(R"("text":"Conectado al nodo de prueba")"), std::string::npos);
    const int64_t normal = spokenMs();

    operate([&] { slider("VoiceSpeed").setValue(5); });
    operate([&] { tts->controlAs<Button>("TestConnected")->click(); });
    EXPECT_LT(static_cast<double>(spokenMs()), 0.7 * static_cast<double>(normal)) << "the unsaved speed is used";
}

}  // namespace
}  // namespace mv
