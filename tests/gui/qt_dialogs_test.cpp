// The Qt dialogs: filter strings as Qt filters, message boxes with the asked
// title, text, icon and buttons, and the engine kept running while one waits.
#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QPushButton>
#include <QFileDialog>
#include <QMessageBox>
#include <QTimer>

#include "core/errors.h"
#include "gui/qt_dialogs.h"
#include "gui/realtime_pump.h"
#include "gui_rig.h"

namespace mv::test {
namespace {

TEST(QtFileFilter, TurnsDescriptionPatternPairsIntoQtFilters) {
    const std::vector<std::pair<std::string, QString>> cases = {
        {"*.wav, *.mp2, *.mp3, *.mid|*.wav;*.mp2;*.mp3;*.mid",
         "*.wav, *.mp2, *.mp3, *.mid (*.wav *.mp2 *.mp3 *.mid)"},
        {"Wave (*.wav)|*.wav|All files|*.*", "Wave (*.wav) (*.wav);;All files (*.*)"},
        {"*.txt", "*.txt (*.txt)"},
        {"Text|", "Text (Text)"},
        {"", ""},
        {"|*.wav", "*.wav"},
    };
    for (const auto& [in, out] : cases) EXPECT_EQ(qtFileFilter(in), out) << in;
}

// Answers the next modal dialog from inside its own event loop.
template <class F>
void whenModal(F answer) {
    QTimer::singleShot(0, [answer] {
        QWidget* modal = QApplication::activeModalWidget();
        ASSERT_NE(modal, nullptr);
        answer(modal);
    });
}

struct DialogRig {
    GuiRig rig;
    RealTimePump pump{rig.scheduler};
    QtDialogs dialogs{rig.log, {nullptr, [this] { pump.wake(); }, [this] { return rig.program.ended(); }}};
    std::vector<std::string> logged;
    DialogRig() {
        rig.log.addListener([this](const LogRecord& r) {
            if (r.kind == "dialog") logged.push_back(std::get<std::string>(std::get<LogValue>(r.fields.back().value)));
        });
    }
};

TEST(QtDialogs, MessageShowsTitleTextIconAndButtonsAndReturnsTheChoice) {
    DialogRig d;
    QString title, text;
    QMessageBox::Icon icon{};
    int buttons = 0;
    whenModal([&](QWidget* modal) {
        auto* box = qobject_cast<QMessageBox*>(modal);
        ASSERT_NE(box, nullptr);
        title = box->windowTitle();
        text = box->text();
        icon = box->icon();
        buttons = static_cast<int>(box->buttons().size());
        EXPECT_NE(box->button(QMessageBox::Yes), nullptr);
        EXPECT_NE(box->button(QMessageBox::No), nullptr);
        EXPECT_EQ(static_cast<QAbstractButton*>(box->defaultButton()), box->button(QMessageBox::Yes));
        box->button(QMessageBox::No)->click();
    });
    const DialogAnswer answer = d.dialogs.message(
        {"hub", "Salir del Programa", "Salir del programa - Esta Usted Seguro ? ", DialogIcon::Question, DialogButtons::YesNo});
    EXPECT_EQ(answer, DialogAnswer::No);
    EXPECT_EQ(title, "Salir del Programa");
    EXPECT_EQ(text, "Salir del programa - Esta Usted Seguro ? ");
    EXPECT_EQ(icon, QMessageBox::Question);
    EXPECT_EQ(buttons, 2);
    EXPECT_EQ(d.logged, (std::vector<std::string>{"No"}));
}

TEST(QtDialogs, EngineKeepsRunningWhileADialogWaits) {
    DialogRig d;
    int ticks = 0;
    bool hostEventHandled = false;
    Timer timer(d.rig.scheduler, "t", 100, true, [&] { ++ticks; });
    d.rig.scheduler.post([&] { hostEventHandled = true; });
    whenModal([&](QWidget* modal) {
        // Give the pump a turn inside the dialog's loop, then move time on.
        QTimer::singleShot(0, [&, modal] {
            d.rig.clock.advanceBy(100);
            QTimer::singleShot(0, [&, modal] {
                d.pump.dispatchDue();
                static_cast<QMessageBox*>(modal)->button(QMessageBox::Ok)->click();
            });
        });
    });
    d.dialogs.message({"player", "Error", "File not found", DialogIcon::Critical, DialogButtons::OK});
    EXPECT_TRUE(hostEventHandled);
    EXPECT_EQ(ticks, 1);
}

TEST(QtDialogs, AnEndDuringTheWaitStopsTheHandlerThatOpenedIt) {
    DialogRig d;
    d.rig.scheduler.post([&] { d.rig.program.end("host closing"); });
    whenModal([&](QWidget* modal) {
        QTimer::singleShot(0, [modal] { static_cast<QMessageBox*>(modal)->button(QMessageBox::Ok)->click(); });
    });
    EXPECT_THROW(d.dialogs.message({"hub", "t", "x", DialogIcon::None, DialogButtons::OK}), ProgramEnded);
}

TEST(QtDialogs, FileDialogUsesTheFilterAndReturnsTheChosenPath) {
    DialogRig d;
    const std::string folder = d.rig.dir.path().string();
    QStringList filters;
    whenModal([&](QWidget* modal) {
        auto* dialog = qobject_cast<QFileDialog*>(modal);
        ASSERT_NE(dialog, nullptr);
        filters = dialog->nameFilters();
        dialog->selectFile(QString::fromStdString(folder + "/beacon.wav"));
        static_cast<QDialog*>(dialog)->accept();
    });
    const auto chosen = d.dialogs.saveFile({"player", "Save As", "*.wav|*.wav;*.WAV", folder});
    ASSERT_TRUE(chosen.has_value());
    EXPECT_EQ(*chosen, folder + "/beacon.wav");
    EXPECT_EQ(filters, (QStringList{"*.wav (*.wav *.WAV)"}));

    whenModal([](QWidget* modal) { static_cast<QDialog*>(modal)->reject(); });
    EXPECT_FALSE(d.dialogs.openFile({"player", "Open", "*.wav|*.wav", folder}).has_value());
}

}  // namespace
}  // namespace mv::test
