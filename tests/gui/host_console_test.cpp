// The host console: what the operator injects reaches the host, and what the
// suite asks of the host shows live, with repeated queries kept out of the
// record unless asked for.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QTest>
#include <QTreeWidget>

#include "gui/caption_colours.h"
#include "gui/host_console.h"
#include "gui_rig.h"

namespace mv::test {
namespace {

class HostConsoleTest : public ::testing::Test {
protected:
    void SetUp() override {
        rig.panel->load();
        node = rig.program.createHostObject(*rig.panel);
    }
    QPushButton* button(const QString& caption) {
        for (QPushButton* b : console.findChildren<QPushButton*>())
            if (b->text() == caption) return b;
        ADD_FAILURE() << "no button " << caption.toStdString();
        return nullptr;
    }
    QCheckBox* toggle(const QString& start) {
        for (QCheckBox* c : console.findChildren<QCheckBox*>())
            if (c->text().startsWith(start)) return c;
        ADD_FAILURE() << "no check box " << start.toStdString();
        return nullptr;
    }
    bool recordHas(const QString& part) {
        for (const QString& line : console.recordLines())
            if (line.contains(part)) return true;
        return false;
    }

    GuiRig rig;
    HostConsole console{rig.host, rig.scheduler, rig.log};
    std::unique_ptr<HostObject> node;
    int m_sent = 0;
};

TEST_F(HostConsoleTest, TogglesRaiseTheHostsEventsAndFollowItsState) {
    QTest::mouseClick(toggle("Local carrier"), Qt::LeftButton);
    EXPECT_TRUE(rig.host.carrier());
    QTest::mouseClick(toggle("Internet receive"), Qt::LeftButton);
    EXPECT_TRUE(rig.host.receiving());
    QTest::mouseClick(toggle("Busy"), Qt::LeftButton);
    EXPECT_TRUE(rig.host.busy());
    rig.host.setCarrier(false);  // from a scenario, not from the console
    EXPECT_FALSE(toggle("Local carrier")->isChecked());
    EXPECT_TRUE(recordHas("EchoLink_CarrierDetect"));
}

TEST_F(HostConsoleTest, DtmfStationsChatAndClosingAreInjected) {
    std::vector<std::string> dtmf;
    std::vector<std::string> connected;
    bool closing = false;
    struct Listener : HostEvents {
        std::vector<std::string>* dtmf;
        std::vector<std::string>* connected;
        bool* closing;
        void onDTMFString(const std::string& d) override { dtmf->push_back(d); }
        void onConnected(const std::string& c, const std::string& n, const std::string& a) override {
            connected->push_back(c + "/" + n + "/" + a);
        }
        void onClosing() override { *closing = true; }
    } listener;
    listener.dtmf = &dtmf;
    listener.connected = &connected;
    listener.closing = &closing;
    auto subscription = rig.host.createObject("listener", &listener);

    auto* digits = console.findChild<QLineEdit*>("dtmfDigits");
    QTest::keyClicks(digits, "12x*#");
    EXPECT_EQ(digits->text(), "12*#") << "only DTMF keys are taken";
    QTest::keyClick(digits, Qt::Key_Return);

    QTest::keyClicks(console.findChild<QLineEdit*>("stationCall"), "EA4XYZ-L");
    QTest::mouseClick(button("Connect"), Qt::LeftButton);
    QTest::mouseClick(button("Host closing"), Qt::LeftButton);
    rig.dispatch();
    EXPECT_EQ(dtmf, (std::vector<std::string>{"12*#"}));
    EXPECT_EQ(connected, (std::vector<std::string>{"EA4XYZ-L//"}));
    EXPECT_TRUE(closing);
    ASSERT_EQ(console.stationList()->topLevelItemCount(), 1);
    EXPECT_EQ(console.stationList()->topLevelItem(0)->text(0), "EA4XYZ-L");

    QTest::mouseClick(button("Disconnect"), Qt::LeftButton);
    EXPECT_EQ(console.stationList()->topLevelItemCount(), 0);
}

TEST_F(HostConsoleTest, ShowsTransmitterLinesChatAndMorseLive) {
    EXPECT_EQ(console.transmitterLabel()->text(), "PTT OFF");
    node->setPTT(true);
    EXPECT_EQ(console.transmitterLabel()->text(), "PTT ON");
    EXPECT_EQ(console.transmitterLabel()->palette().color(QPalette::WindowText), QColor(255, 0, 0));
    node->setPTT(false);
    EXPECT_EQ(console.transmitterLabel()->text(), "PTT OFF");

    node->setDTR(true);
    bool dtrShown = false;
    for (QLabel* l : console.findChildren<QLabel*>()) dtrShown |= l->text() == "DTR on";
    EXPECT_TRUE(dtrShown);

    node->sendChatText("Marrowvane  v1.0.0");
    node->sendCW(0, "N0CALL");
    ASSERT_EQ(console.chatList()->count(), 1);
    EXPECT_TRUE(console.chatList()->item(0)->text().endsWith("Marrowvane  v1.0.0"));
    ASSERT_EQ(console.morseList()->count(), 1);
    EXPECT_TRUE(console.morseList()->item(0)->text().endsWith("N0CALL"));
    EXPECT_EQ(console.transmitterLabel()->text(), "PTT ON") << "the host keys itself for Morse";
}

TEST_F(HostConsoleTest, OddBytesShowAsTheLogWritesThem) {
    // Chat in, with a Windows-1252 e-acute and a bell; chat out, with bytes
    // that are no UTF-8 at all: both shown as valid text with the bell escaped.
    rig.host.receiveChat("EA4XYZ>caf\xE9\x07");
    node->sendChatText("hola\xFF\xFE\r\nadios");
    EXPECT_TRUE(recordHas(QString::fromUtf8("EchoLink_ChatTextReceived(\"EA4XYZ>caf\uFFFD\\u0007\")")))
        << console.recordLines().join('|').toStdString();
    ASSERT_EQ(console.chatList()->count(), 1);
    EXPECT_TRUE(console.chatList()->item(0)->text().endsWith(QString::fromUtf8("hola\uFFFD\uFFFD\\r\\nadios")))
        << console.chatList()->item(0)->text().toStdString();
    EXPECT_TRUE(recordHas(QString::fromUtf8("SendChatText(hola\uFFFD\uFFFD\\r\\nadios)")));
}

TEST_F(HostConsoleTest, RecordNamesTheWindowAndLeavesQueriesAndRepeatsOutUnlessAsked) {
    ASSERT_FALSE(console.showingQueries());
    // An idle node: polled, and released again every second while released.
    for (int i = 0; i < 50; ++i) {
        node->isTransmitting();
        node->setPTT(false);
        node->setDTR(false);
    }
    node->setPTT(true);
    node->setPTT(true);
    node->setDTR(true);
    node->setPTT(false);
    const QStringList lines = console.recordLines();
    ASSERT_EQ(lines.size(), 3) << lines.join('|').toStdString();
    EXPECT_TRUE(lines[0].contains("panel")) << lines[0].toStdString();
    EXPECT_TRUE(lines[0].contains("SetPTT(true)")) << lines[0].toStdString();
    EXPECT_TRUE(lines[1].contains("SetDTR(true)")) << lines[1].toStdString();
    EXPECT_TRUE(lines[2].contains("SetPTT(false)")) << lines[2].toStdString();

    console.setShowQueries(true);
    node->isTransmitting();
    EXPECT_TRUE(console.recordLines().last().contains("IsTransmitting()"));
    node->setPTT(false);
    EXPECT_TRUE(console.recordLines().last().contains("SetPTT(false)"));
}

TEST_F(HostConsoleTest, ARunOfIdenticalLinesFoldsIntoOneWithACountAndTheFilterNarrowsTheRecord) {
    // Repeats show only when asked for; asked for, a run of them folds.
    console.setShowQueries(true);
    for (int i = 0; i < 5; ++i) {
        node->setPTT(false);
        rig.clock.advanceBy(1000);
    }
    node->setPTT(true);
    node->setPTT(false);
    const QStringList lines = console.recordLines();
    ASSERT_EQ(lines.size(), 3) << lines.join('|').toStdString();
    EXPECT_TRUE(lines[0].startsWith("14:00:01.000")) << lines[0].toStdString();
    EXPECT_TRUE(lines[0].endsWith(QString::fromUtf8("SetPTT(false)  \u00d75 to 14:00:05.000"))) << lines[0].toStdString();
    EXPECT_TRUE(lines[1].endsWith("SetPTT(true)")) << "a different line ends the run";
    EXPECT_TRUE(lines[2].endsWith("SetPTT(false)")) << "and a new run starts at one";
    // Counting up rewrites the last line only.
    node->setPTT(false);
    EXPECT_TRUE(console.recordLines().last().endsWith(QString::fromUtf8("\u00d72 to 14:00:06.000")));
    EXPECT_EQ(console.recordLines().size(), 3);

    console.setRecordFilter("TRUE");
    EXPECT_EQ(console.recordLines(), QStringList{lines[1]}) << "any case";
    node->setPTT(true);
    node->sendCW(0, "CQ");
    EXPECT_EQ(console.recordLines().size(), 2) << "new lines pass the same filter";
    console.setRecordFilter("");
    EXPECT_EQ(console.recordLines().size(), 5);
}

TEST_F(HostConsoleTest, TheRecordFollowsTheNewestLineOnlyUntilTheOperatorScrollsBack) {
    console.resize(900, 600);
    console.show();
    auto more = [&](int n) {
        for (int i = 0; i < n; ++i) node->sendCW(0, "CQ" + std::to_string(m_sent++));
        console.recordLines();  // brings the view up to date
    };
    QScrollBar& bar = *console.recordView()->verticalScrollBar();
    more(200);
    ASSERT_GT(bar.maximum(), 0);
    EXPECT_EQ(bar.value(), bar.maximum());
    bar.setValue(10);
    more(50);
    EXPECT_EQ(bar.value(), 10) << "the lines being read stay put";
    node->setPTT(false);
    node->setPTT(false);
    console.recordLines();
    EXPECT_EQ(bar.value(), 10) << "nor does a count going up move them";
    bar.setValue(bar.maximum());
    more(5);
    EXPECT_EQ(bar.value(), bar.maximum()) << "back at the foot, it follows again";
}

TEST_F(HostConsoleTest, WhatTheSuiteSpeaksShowsAsTextAndANoteSaysWhenTheAirGoesNowhere) {
    rig.log.speech("idents", "speak", "Estacion EA4XYZ conectada", true);
    rig.log.speech("idents", "speak", "Sin PTT", false);
    ASSERT_EQ(console.speechList()->count(), 2);
    EXPECT_TRUE(console.speechList()->item(0)->text().endsWith("idents: Estacion EA4XYZ conectada"));
    EXPECT_TRUE(console.speechList()->item(1)->text().endsWith("(not keyed)"));
    EXPECT_TRUE(recordHas("SPEECH"));

    EXPECT_TRUE(console.airNote()->isHidden());
    console.setAirNote("No sound device: the air goes nowhere.");
    EXPECT_FALSE(console.airNote()->isHidden());
    EXPECT_TRUE(recordHas("AUDIO    No sound device"));
}

TEST_F(HostConsoleTest, LampsReadOnADarkTheme) {
    QPalette dark;
    dark.setColor(QPalette::Window, QColor(0x2B, 0x2B, 0x2B));
    dark.setColor(QPalette::WindowText, QColor(0xE6, 0xE6, 0xE6));
    HostConsole darkConsole(rig.host, rig.scheduler, rig.log);
    darkConsole.setPalette(dark);
    for (QLabel* lamp : darkConsole.findChildren<QLabel*>()) {
        const QString text = lamp->text();
        if (text != "PTT OFF" && text != "DTR off" && text != "RTS off") continue;
        const QColor fore = lamp->palette().color(QPalette::WindowText);
        const QColor back = lamp->autoFillBackground() ? lamp->palette().color(QPalette::Window) : dark.color(QPalette::Window);
        EXPECT_GE(contrastRatio(fore, back), 3.0) << text.toStdString();
        if (text == "PTT OFF") EXPECT_EQ(fore, QColor(0, 128, 0)) << "keeps its colour";
        else EXPECT_EQ(fore, dark.color(QPalette::WindowText)) << text.toStdString() << " follows the theme";
    }
}

}  // namespace
}  // namespace mv::test
