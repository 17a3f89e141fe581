// The host console: what the operator injects reaches the host, and what the
// suite asks of the host shows live, with repeated queries kept out of the
// record unless asked for.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QTest>
#include <QTreeWidget>

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
    EXPECT_TRUE(console.transmitterLabel()->styleSheet().contains("rgb(255,0,0)"));
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

TEST_F(HostConsoleTest, RecordNamesTheWindowAndLeavesQueriesOutUnlessAsked) {
    ASSERT_FALSE(console.showingQueries());
    for (int i = 0; i < 50; ++i) node->isTransmitting();
    node->setPTT(true);
    const QStringList lines = console.recordLines();
    ASSERT_EQ(lines.size(), 1);
    EXPECT_TRUE(lines[0].contains("panel")) << lines[0].toStdString();
    EXPECT_TRUE(lines[0].contains("SetPTT(true)")) << lines[0].toStdString();

    console.setShowQueries(true);
    node->isTransmitting();
    EXPECT_TRUE(console.recordLines().last().contains("IsTransmitting()"));
}

}  // namespace
}  // namespace mv::test
