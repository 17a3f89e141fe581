// The text message window as the operator and the node see it, in virtual
// time: loading on first use, the filter, the stamps, sending, the hand-off
// for reading aloud, its settings and its bound.
#include "messages/messages_window.h"

#include <gtest/gtest.h>

#include <fstream>

#include "app/suite.h"
#include "fake_idents.h"
#include "support/read_text.h"
#include "support/suite_rig.h"

namespace mv {
namespace {

using Lines = std::vector<std::string>;

class MessagesTest : public test::SuiteRig {
protected:
    // At 09:07:00, with a stand-in ident window unless told otherwise.
    void start(bool withIdents = true) {
        startSuite({2026, 11, 22, 9, 7, 0, 0}, "/usr/share/marrowvane/voice/", [&](Suite& s) {
            if (withIdents)
                idents = static_cast<test::FakeIdents*>(
                    &s.program().addWindow(std::make_unique<test::FakeIdents>(s.program())));
        });
        window = static_cast<MessagesWindow*>(suite->program().window("messages"));
    }
    void pressMonitorTexto() {
        operate([&] { static_cast<Button*>(suite->program().window("hub")->findByCaption("Monitor Texto"))->click(); });
    }
    void open(bool withIdents = true) {
        start(withIdents);
        pressMonitorTexto();
    }
    void chat(const std::string& text) {
        suite->host().receiveChat(text);
        run(0);
    }
    Lines lines() const {
        const auto& l = window->controlAs<LineLog>("MessageLog")->lines();
        return Lines(l.begin(), l.end());
    }
    TextBox& text(const std::string& name) { return *window->controlAs<TextBox>(name); }
    CheckBox& check(const char* name) { return *window->controlAs<CheckBox>(name); }
    void click(const char* caption) {
        operate([&] { static_cast<Button*>(window->findByCaption(caption))->click(); });
    }
    std::string lastSent() const {
        for (auto it = suite->host().commands().rbegin(); it != suite->host().commands().rend(); ++it)
            if (it->call == "SendChatText") return it->args.at(0);
        return "(nothing sent)";
    }
    void writeSettings(const std::string& content) {
        std::filesystem::create_directories(settingsDir());
        std::ofstream(settingsDir() / "ostrevel.ini", std::ios::binary) << content;
    }

    MessagesWindow* window = nullptr;
    test::FakeIdents* idents = nullptr;
};

TEST_F(MessagesTest, LoadsOnItsFirstButtonPressAndSeesNoChatFromBefore) {
    start(false);
    EXPECT_FALSE(window->isLoaded()) << "not among the windows the hub loads at start-up";
    chat("N0CALL>temprano /ver/");
    EXPECT_EQ(suite->host().countCommands("SendChatText"), 1u) << "only the hub answers before";

    pressMonitorTexto();
    ASSERT_TRUE(window->isLoaded());
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(window->caption(), "Marrowvane    N0CALL   v1.0.0   Text Messages");
    EXPECT_EQ(suite->host().countCommands("StationInfo", "messages"), 1u);
    EXPECT_EQ(suite->host().countCommands("SetPTT", "messages"), 0u) << "the transmitter is not touched";
    EXPECT_TRUE(lines().empty());
    EXPECT_EQ(check("CHECK1").value(), 1);
    EXPECT_EQ(check("CHECK2").value(), 1);
    EXPECT_FLOAT_EQ(window->leftTwips(), 300);
    EXPECT_FLOAT_EQ(window->topTwips(), 300);

    // Both windows answer a version request.
    chat("N0CALL>que /ver/ usas");
    EXPECT_EQ(suite->host().countCommands("SendChatText", "hub"), 2u);
    EXPECT_EQ(suite->host().countCommands("SendChatText", "messages"), 1u);
    EXPECT_EQ(lastSent(), "Marrowvane  v1.0.0");
    EXPECT_EQ(lines(), (Lines{"N0CALL> (09:07)>que /ver/ usas"}));

    // Hidden, it goes on logging; the button shows the same window again.
    click("Ocultar");
    EXPECT_FALSE(window->isVisible());
    chat("N0CALL>sigues ahi");
    pressMonitorTexto();
    EXPECT_TRUE(window->isVisible());
    EXPECT_EQ(lines().size(), 2u);
}

TEST_F(MessagesTest, FilterHidesWordsFoundAfterTheFirstCharacterWithCaseCounting) {
    open();
    operate([&] {
        check("CHECK2").setValue(0);
        text("FILTERTEXT1").typeText("tonto");
        text("FILTERTEXT8").typeText("feo");
    });
    for (const char* message : {
             "N0CALL>eres tonto",         // hidden
             "N0CALL>Tonto",              // shown: the case differs
             "N0CALL>give me the .list",  // hidden whatever the words
             "tonto>hola",                // shown: the word opens the text
             "tonto>eres tonto",          // shown: only its first place counts
             ".list>hola",                // shown
             "N0CALL>que feo",            // hidden by the eighth word
             "N0CALL>hola",               // shown: six empty words block nothing
         })
        chat(message);
    EXPECT_EQ(lines(), (Lines{"N0CALL>Tonto", "tonto>hola", "tonto>eres tonto", ".list>hola", "N0CALL>hola"}));
}

TEST_F(MessagesTest, IncomingLinesCarryTheReceiveTimeWhenItsBoxIsTicked) {
    open();
    chat("N0CALL>hola");
    EXPECT_EQ(window->stampedIncoming(), "N0CALL> (09:07)>hola");
    operate([&] { check("CHECK2").setValue(0); });
    chat("N0CALL>hola");
    operate([&] { check("CHECK2").setValue(1); });
    chat("N0CALL>a>b");
    chat("sin remitente");
    chat("N0CALL>uno\rdos");
    run(60000);
    chat("N0CALL>un minuto despues");
    EXPECT_EQ(lines(), (Lines{"N0CALL> (09:07)>hola", "N0CALL>hola", "N0CALL> (09:07)>a>b", " (09:07)>sin remitente",
                              "N0CALL> (09:07)>uno", "dos", "N0CALL> (09:08)>un minuto despues"}));
}

TEST_F(MessagesTest, SendingStampsEchoesWithTheOwnCallsignAndEmptiesTheEntry) {
    open();
    TextBox& entry = text("MessageEntry");
    operate([&] { entry.typeText("hola"); });
    click("Envia");
    EXPECT_EQ(lastSent(), "(09:07) >hola");
    EXPECT_EQ(window->stampedOutgoing(), "(09:07) >hola");
    EXPECT_EQ(suite->host().countCommands("SendChatText", "messages"), 1u);
    EXPECT_EQ(entry.text(), "");
    EXPECT_EQ(entry.focusRequests(), 1u);

    // Enter in the entry sends too; without the send-time box the text goes as typed.
    suite->host().callsign = "K1ABC";
    operate([&] {
        check("CHECK1").setValue(0);
        entry.typeText("adios");
        entry.pressEnter();
    });
    EXPECT_EQ(lastSent(), "adios");
    // An empty entry still goes: as the bare stamp with the box ticked.
    operate([&] {
        check("CHECK1").setValue(1);
        entry.pressEnter();
    });
    EXPECT_EQ(lastSent(), "(09:07) >");
    EXPECT_EQ(lines(), (Lines{"N0CALL> (09:07) >hola", "K1ABC> adios", "K1ABC> (09:07) >"}));
}

TEST_F(MessagesTest, ASendTheHostRefusesKeepsTheEntryAndTellsTheOperator) {
    open();
    suite->host().setFailing("SendChatText", true);
    operate([&] { text("MessageEntry").typeText("hola"); });
    click("Envia");
    EXPECT_EQ(text("MessageEntry").text(), "hola");
    EXPECT_TRUE(lines().empty()) << "nothing echoed that did not go out";
    EXPECT_EQ(logCount("No se pudo enviar el mensaje"), 1u);
    EXPECT_FALSE(suite->program().ended());

    suite->host().setFailing("SendChatText", false);
    click("Envia");
    EXPECT_EQ(text("MessageEntry").text(), "");
    EXPECT_EQ(lines(), (Lines{"N0CALL> (09:07) >hola"}));
}

TEST_F(MessagesTest, EveryMessageGoesToBeReadAloudWhenMensajeTextoIsTickedEvenAHiddenOne) {
    open();
    operate([&] { text("FILTERTEXT1").typeText("tonto"); });
    chat("N0CALL>no leido");
    EXPECT_FALSE(idents->speechPending());
    EXPECT_EQ(idents->speechText(), "");

    operate([&] { idents->sayText().setValue(1); });
    chat("N0CALL>eres tonto");
    EXPECT_EQ(lines(), (Lines{"N0CALL> (09:07)>no leido"})) << "hidden from the log";
    EXPECT_EQ(idents->speechText(), "Message from  N0CALL>eres tonto");
    EXPECT_TRUE(idents->speechPending());
    EXPECT_EQ(idents->spokenNow, 0) << "left pending for when the air is free, never spoken at once";

    // Spoken as plain words.
    chat("N0CALL>uno\rdos\x1b");
    EXPECT_EQ(idents->speechText(), "Message from  N0CALL>uno dos ");

    // A greyed box is not a ticked one.
    operate([&] {
        idents->setSpeechPending(false);
        idents->sayText().setValue(2);
    });
    chat("N0CALL>gris");
    EXPECT_FALSE(idents->speechPending());
}

TEST_F(MessagesTest, WithTheSuitesIdentWindowAHiddenMessageGoesOutSpokenOnceTheAirIsFree) {
    open(false);
    Window* realIdents = suite->program().window("idents");
    ASSERT_TRUE(realIdents && realIdents->isLoaded());
    operate([&] {
        realIdents->controlAs<CheckBox>("SayText")->setValue(1);
        text("FILTERTEXT1").typeText("tonto");
    });
    suite->host().setCarrier(true);
    chat("N0CALL>eres tonto");
    run(3000);
    EXPECT_EQ(logCount("\"kind\":\"speech\""), 0u) << "not while a local station is heard";
    suite->host().setCarrier(false);
    run(10000);
    EXPECT_TRUE(lines().empty());
    EXPECT_EQ(logCount(R"("text":"Message from  N0CALL>eres tonto","keyed":true)"), 1u);
    EXPECT_FALSE(suite->host().pttKeyed()) << "released after the utterance";
}

TEST_F(MessagesTest, SettingsLoadFromOstrevelAndSaveInTheirOrderThroughA265CharacterBuffer) {
    writeSettings("[SETTINGS]\nFilterText2=tonto\nLEFT=1200\nTOP=900\nCHECK1=0\nCHECK2=abc\nFILTERTEXT1=" +
                  std::string(300, 'w') + "\n");
    open();
    EXPECT_FLOAT_EQ(window->leftTwips(), 1200);
    EXPECT_FLOAT_EQ(window->topTwips(), 900);
    EXPECT_EQ(check("CHECK1").value(), 0);
    EXPECT_EQ(check("CHECK2").value(), 1) << "an unreadable box takes its default";
    EXPECT_EQ(logCount("CHECK2=\\\"abc\\\""), 1u);
    EXPECT_EQ(text("FILTERTEXT1").text(), std::string(264, 'w'));
    EXPECT_EQ(text("FILTERTEXT2").text(), "tonto");

    // A file written afresh shows the write order (an existing key is
    // rewritten where it stands).
    std::filesystem::remove(settingsDir() / "ostrevel.ini");
    operate([&] { text("FILTERTEXT8").typeText("feo"); });
    click("Salvar");
    EXPECT_EQ(window->statusText().rfind("Guardado", 0), 0u);
    const std::string file = test::readText(settingsDir() / "ostrevel.ini");
    size_t at = 0;
    for (const char* key : {"LEFT=1200", "TOP=900", "CHECK1=0", "CHECK2=1", "FILTERTEXT1=www", "FILTERTEXT2=tonto",
                            "FILTERTEXT3=", "FILTERTEXT4=", "FILTERTEXT5=", "FILTERTEXT6=", "FILTERTEXT7=",
                            "FILTERTEXT8=feo"}) {
        const size_t found = file.find(key, at);
        ASSERT_NE(found, std::string::npos) << key << " missing or out of order in\n" << file;
        at = found;
    }
}

TEST_F(MessagesTest, TheLogKeepsItsNewestLinesAndBorrarEmptiesOnlyTheLog) {
    open();
    operate([&] {
        check("CHECK2").setValue(0);
        text("FILTERTEXT1").typeText("tonto");
    });
    const size_t bound = MessagesWindow::kLogLines;
    for (size_t i = 1; i <= bound + 5; ++i) suite->host().receiveChat("N0CALL>" + std::to_string(i));
    run(0);
    const Lines shown = lines();
    ASSERT_EQ(shown.size(), bound);
    EXPECT_EQ(shown.front(), "N0CALL>6");
    EXPECT_EQ(shown.back(), "N0CALL>" + std::to_string(bound + 5));

    click("Borrar");
    EXPECT_TRUE(lines().empty());
    EXPECT_EQ(text("FILTERTEXT1").text(), "tonto");
    EXPECT_EQ(check("CHECK2").value(), 0);
    chat("N0CALL>de nuevo");
    EXPECT_EQ(lines(), (Lines{"N0CALL>de nuevo"}));
}

TEST_F(MessagesTest, TheCloseBoxAsksAndOnlyYesEndsTheProgram) {
    open();
    suite->scriptedDialogs().queueAnswer("No");
    operate([&] { window->closeBox(); });
    EXPECT_TRUE(window->isLoaded());
    EXPECT_FALSE(suite->program().ended());
    EXPECT_EQ(logCount("Quit Ostrevel - Are You Sure ? Remember To Save Any Changes  "), 1u);

    suite->scriptedDialogs().queueAnswer("Yes");
    operate([&] { window->closeBox(); });
    EXPECT_TRUE(suite->program().ended());
    EXPECT_FALSE(std::filesystem::exists(settingsDir() / "ostrevel.ini")) << "nothing saved on the way out";
}

TEST_F(MessagesTest, TheHostClosingEndsTheProgram) {
    open();
    suite->host().closing();
    run(1);
    EXPECT_TRUE(suite->program().ended());
    EXPECT_EQ(logCount("\"kind\":\"end\""), 1u);
}

}  // namespace
}  // namespace mv
