// The DTMF keypad: keys, "TX DTMF" on the air, and strings handed to the host.
#include "dtmf/keypad_window.h"

#include <gtest/gtest.h>

#include "dtmf_rig.h"
#include "platform/audio/air.h"
#include "platform/audio/air_recorder.h"

namespace mv {
namespace {

class KeypadTest : public test::DtmfRig {
protected:
    void startKeypad(bool record = false) {
        startSuite({2026, 11, 22, 10, 0, 0, 0}, "/usr/share/marrowvane/voice/", [&](Suite& s) {
            if (record) s.air().startRecording((dir.path() / "air.wav").string());
        });
        dtmf = static_cast<DtmfControlWindow*>(suite->program().window("dtmf"));
        keypad = suite->program().window("keypad");
    }
    void press(const std::string& caption) {
        operate([&] { static_cast<Button*>(keypad->findByCaption(caption))->click(); });
    }
    std::vector<std::vector<std::string>> keypadCalls(const std::string& call) const {
        std::vector<std::vector<std::string>> out;
        for (const auto& c : suite->host().commands())
            if (c.window == "keypad" && c.call == call) out.push_back(c.args);
        return out;
    }
    TextBox& field() { return *keypad->controlAs<TextBox>("DTMFText"); }
    Window* keypad = nullptr;
};

TEST_F(KeypadTest, KeysAddTheirCharacterAndTransmitOnlyWithTxDtmf) {
    startKeypad();
    EXPECT_EQ(keypad->caption(), "Marrowvane    N0CALL   v1.0.0");
    EXPECT_EQ(keypadCalls("SetPTT"), (Args{{"false"}}));
    for (const char* key : {"1", "2", "#"}) press(key);
    EXPECT_EQ(field().text(), "12#");
    EXPECT_TRUE(keypadCalls("TransmitDTMF").empty());
    press("Borrar");
    operate([&] { keypad->controlAs<CheckBox>("TXDTMF")->click(); });
    for (const char* key : {"1", "2", "#"}) press(key);
    EXPECT_EQ(field().text(), "12#");
    EXPECT_EQ(keypadCalls("TransmitDTMF"), (Args{{"1"}, {"2"}, {"#"}}));
    // A tone the node refuses is logged once; the key still counts.
    suite->host().setFailing("TransmitDTMF", true);
    press("A");
    EXPECT_EQ(field().text(), "12#A");
    EXPECT_EQ(logCount("\"kind\":\"error\""), 1u);
}

TEST_F(KeypadTest, EverySixteenKeysToneGoesOutKeyed) {
    startKeypad(true);
    operate([&] { keypad->controlAs<CheckBox>("TXDTMF")->click(); });
    for (const char* key : KeypadWindow::kKeys) {
        press(key);
        run(400);
    }
    EXPECT_EQ(field().text(), "123A456B789C*0#D");
    run(1000);
    suite->air().stopRecording();
    const AirRecording air = AirRecording::load((dir.path() / "air.wav").string());
    EXPECT_EQ(air.soundSpans().size(), 16u);
    EXPECT_EQ(air.keyedSpans().size(), 16u);
    EXPECT_LT(air.peakWhileUnkeyed(), 1e-4f) << "no tone while the transmitter is released";
    EXPECT_FALSE(suite->host().transmitting());
}

TEST_F(KeypadTest, AceptarHandsTheStringToTheHostEachTimeAndKeepsIt) {
    startKeypad();
    press("Aceptar");
    EXPECT_EQ(keypadCalls("ExecuteDTMF"), (Args{{""}}));
    for (const char* key : {"5", "5"}) press(key);
    press("Aceptar");
    press("Aceptar");
    EXPECT_EQ(keypadCalls("ExecuteDTMF"), (Args{{""}, {"55"}, {"55"}}));
    EXPECT_EQ(field().text(), "55");
}

TEST_F(KeypadTest, AceptarOperatesTheNodeLikeAStringHeardOverTheAir) {
    startKeypad();
    operate([&] {
        dtmf->controlAs<TextBox>("TEXT222")->typeText("55");
        dtmf->controlAs<TextBox>("CALL5")->typeText("12345");
        dtmf->controlAs<TextBox>("DTMF5")->typeText("*5");
    });
    for (const char* key : {"5", "5"}) press(key);
    press("Aceptar");
    EXPECT_EQ(dtmf->controlAs<CheckBox>("CHECK1")->value(), 1);
    press("Borrar");
    for (const char* key : {"*", "5"}) press(key);
    press("Aceptar");
    EXPECT_EQ(calls("Connect"), (Args{{"12345", "true"}}));
}

TEST_F(KeypadTest, SalirHidesAndTheStringSurvivesUntilBorrar) {
    startKeypad();
    operate([&] { static_cast<Button*>(suite->program().window("hub")->findByCaption("DTMF"))->click(); });
    EXPECT_TRUE(keypad->isVisible());
    press("7");
    press("Salir");
    EXPECT_FALSE(keypad->isVisible());
    EXPECT_TRUE(keypad->isLoaded());
    operate([&] { keypad->show(); });
    EXPECT_EQ(field().text(), "7");
    press("Borrar");
    EXPECT_EQ(field().text(), "");
}

}  // namespace
}  // namespace mv
