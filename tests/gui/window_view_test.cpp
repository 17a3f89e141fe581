// The renderer: every control kind as its Qt widget, engine changes shown
// without operator action, operator changes run the engine's handlers once,
// and nothing is repainted or re-posted when nothing changed.
#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QTextBlock>
#include <QSlider>
#include <QTabWidget>
#include <QTest>

#include "gui/caption_colours.h"
#include "gui/window_view.h"
#include "gui_rig.h"

namespace mv::test {
namespace {

template <class W>
W* as(QWidget* w) {
    return qobject_cast<W*>(w);
}

// Check and option buttons take clicks on their indicator, wherever the layout put it.
void clickIndicator(QWidget* button) { QTest::mouseClick(button, Qt::LeftButton, {}, QPoint(6, button->height() / 2)); }

class WindowViewTest : public ::testing::Test {
protected:
    void SetUp() override {
        rig.panel->load();
        view = std::make_unique<WindowView>(*rig.panel, host, [this](std::function<void()> f) { rig.scheduler.post(std::move(f)); });
        p = rig.panel;
        host.show();
        QCoreApplication::processEvents();
    }
    QWidget* w(Control* c) { return view->widgetFor(*c); }
    QSlider* slider() { return w(p->level)->findChild<QSlider*>(); }

    GuiRig rig;
    QWidget host;
    std::unique_ptr<WindowView> view;
    Panel* p = nullptr;
};

TEST_F(WindowViewTest, EachControlKindIsRenderedWithItsDesignState) {
    ASSERT_NE(as<QLineEdit>(w(p->text)), nullptr);
    EXPECT_EQ(as<QLineEdit>(w(p->text))->text(), "design");
    EXPECT_EQ(as<QLineEdit>(w(p->upper))->maxLength(), 4);
    ASSERT_NE(as<QPlainTextEdit>(w(p->notes)), nullptr);
    EXPECT_EQ(as<QPlainTextEdit>(w(p->notes))->toPlainText(), "line one");

    auto* check = as<QCheckBox>(w(p->check));
    ASSERT_NE(check, nullptr);
    EXPECT_TRUE(check->isTristate());
    EXPECT_EQ(check->text(), "Enabled");
    EXPECT_EQ(check->toolTip(), "Switches it on");

    ASSERT_NE(as<QRadioButton>(w(p->optionA)), nullptr);
    EXPECT_FALSE(as<QRadioButton>(w(p->optionA))->autoExclusive());

    auto* lamp = as<QLabel>(w(p->lamp));
    ASSERT_NE(lamp, nullptr);
    EXPECT_EQ(lamp->text(), "PTT OFF");
    EXPECT_EQ(lamp->palette().color(QPalette::WindowText), QColor(0, 128, 0));

    ASSERT_NE(slider(), nullptr);
    EXPECT_EQ(slider()->orientation(), Qt::Vertical);
    EXPECT_EQ(slider()->minimum(), 0);
    EXPECT_EQ(slider()->maximum(), 100);
    EXPECT_EQ(slider()->value(), 40);
    EXPECT_EQ(slider()->singleStep(), 5);
    EXPECT_EQ(slider()->pageStep(), 20);
    QStringList scale;
    for (QLabel* l : w(p->level)->findChildren<QLabel*>()) scale << l->text();
    EXPECT_EQ(scale, (QStringList{"100", "0"}));  // top to bottom, in the order listed

    ASSERT_NE(as<QPushButton>(w(p->key)), nullptr);
    auto* combo = as<QComboBox>(w(p->combo));
    ASSERT_NE(combo, nullptr);
    EXPECT_EQ(combo->count(), 3);
    EXPECT_EQ(combo->currentText(), "green");

    auto* frame = as<QGroupBox>(w(p->frame));
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(frame->title(), "Settings && more");  // '&' shown as typed, not as a shortcut
    auto* tabs = as<QTabWidget>(w(p->tabs));
    ASSERT_NE(tabs, nullptr);
    ASSERT_EQ(tabs->count(), 2);
    EXPECT_EQ(tabs->tabText(0), "First");
    EXPECT_EQ(tabs->tabText(1), "Second");
}

TEST_F(WindowViewTest, ProgramChangesShowWithoutOperatorAction) {
    p->text->setText("changed");
    EXPECT_EQ(as<QLineEdit>(w(p->text))->text(), "changed");
    p->notes->setText("a\r\nb");
    EXPECT_EQ(as<QPlainTextEdit>(w(p->notes))->toPlainText(), "a\nb");

    p->check->setValue(2);
    EXPECT_EQ(as<QCheckBox>(w(p->check))->checkState(), Qt::PartiallyChecked);
    p->check->setValue(1);
    EXPECT_EQ(as<QCheckBox>(w(p->check))->checkState(), Qt::Checked);

    p->optionA->setValue(true);
    p->optionB->setValue(true);
    EXPECT_FALSE(as<QRadioButton>(w(p->optionA))->isChecked());
    EXPECT_TRUE(as<QRadioButton>(w(p->optionB))->isChecked());

    p->lamp->set("PTT ON", kPttOnRed);
    EXPECT_EQ(as<QLabel>(w(p->lamp))->text(), "PTT ON");
    EXPECT_EQ(as<QLabel>(w(p->lamp))->palette().color(QPalette::WindowText), QColor(255, 0, 0));
    p->lamp->setBackColor({0, 0, 255});
    EXPECT_EQ(as<QLabel>(w(p->lamp))->palette().color(QPalette::Window), QColor(0, 0, 255));

    p->level->setRange(10, 50);
    p->level->setValue(45);
    EXPECT_EQ(slider()->minimum(), 10);
    EXPECT_EQ(slider()->maximum(), 50);
    EXPECT_EQ(slider()->value(), 45);

    p->combo->setItems({"one", "two"});
    p->combo->setText("two");
    EXPECT_EQ(as<QComboBox>(w(p->combo))->count(), 2);
    EXPECT_EQ(as<QComboBox>(w(p->combo))->currentText(), "two");
    p->combo->setText("free text");
    EXPECT_EQ(as<QComboBox>(w(p->combo))->currentText(), "free text");

    p->frame->setCaption("Renamed");
    EXPECT_EQ(as<QGroupBox>(w(p->frame))->title(), "Renamed");
    p->pageOne->setCaption("Uno");
    EXPECT_EQ(as<QTabWidget>(w(p->tabs))->tabText(0), "Uno");
    p->key->setCaption("Save & Exit");
    EXPECT_EQ(as<QPushButton>(w(p->key))->text(), "Save && Exit");

    p->other->setEnabled(false);
    EXPECT_FALSE(w(p->other)->isEnabled());
    p->other->setVisible(false);
    EXPECT_TRUE(w(p->other)->isHidden());
    p->other->setVisible(true);
    EXPECT_FALSE(w(p->other)->isHidden());
}

TEST(CaptionColoursTest, ColouredCaptionsStayReadableOnAnyThemeAndPlainOnesFollowIt) {
    qtApp();
    EXPECT_NEAR(contrastRatio(Qt::white, Qt::black), 21.0, 0.01);
    EXPECT_NEAR(contrastRatio(QColor(0, 128, 0), QColor(0, 128, 0)), 1.0, 1e-9);
    QPalette light;
    light.setColor(QPalette::Window, QColor(0xEF, 0xEF, 0xEF));
    light.setColor(QPalette::WindowText, Qt::black);
    QPalette dark;
    dark.setColor(QPalette::Window, QColor(0x2B, 0x2B, 0x2B));
    dark.setColor(QPalette::WindowText, QColor(0xE6, 0xE6, 0xE6));
    for (const bool isDark : {false, true}) {
        const QPalette& theme = isDark ? dark : light;
        GuiRig rig;
        rig.panel->load();
        QWidget host;
        host.setPalette(theme);
        WindowView view(*rig.panel, host, [](std::function<void()>) {});
        auto* lamp = qobject_cast<QLabel*>(view.widgetFor(*rig.panel->lamp));
        ASSERT_NE(lamp, nullptr);
        auto shownOn = [&](QLabel& l) {
            return l.autoFillBackground() ? l.palette().color(QPalette::Window) : theme.color(QPalette::Window);
        };
        for (Rgb colour : {kPttOffGreen, kPttOnRed}) {
            rig.panel->lamp->set("PTT", colour);
            EXPECT_EQ(lamp->palette().color(QPalette::WindowText), QColor(colour.r, colour.g, colour.b)) << isDark;
            EXPECT_GE(contrastRatio(lamp->palette().color(QPalette::WindowText), shownOn(*lamp)), 3.0) << isDark;
        }
        // Green reads on the light theme as it is; on the dark one it gets a light patch.
        rig.panel->lamp->set("PTT OFF", kPttOffGreen);
        EXPECT_EQ(lamp->autoFillBackground(), isDark);
        // A caption with a background of its own shows exactly that.
        rig.panel->lamp->setBackColor({255, 255, 0});
        EXPECT_EQ(lamp->palette().color(QPalette::Window), QColor(255, 255, 0));
        EXPECT_TRUE(lamp->autoFillBackground());

        QLabel plain(&host);
        paintCaption(plain, kBlack, std::nullopt);
        EXPECT_EQ(plain.palette().color(QPalette::WindowText), theme.color(QPalette::WindowText)) << "follows the theme";
        EXPECT_FALSE(plain.autoFillBackground());
    }
}

TEST_F(WindowViewTest, ProgramChangesPostNothingBack) {
    const uint64_t before = rig.scheduler.dispatchedMessages();
    p->text->setText("x");
    p->check->setValue(1);
    p->optionB->setValue(true);
    p->level->setValue(70);
    p->combo->setText("blue");
    p->notes->setText("y");
    EXPECT_EQ(rig.scheduler.nextDueTime(), -1) << "a program change came back as an operator action";
    rig.dispatch();
    EXPECT_EQ(rig.scheduler.dispatchedMessages(), before);
    EXPECT_EQ(p->ran, (std::vector<std::string>{"text:x", "check:1", "optB", "level:70", "combo:blue", "notes:y"}));
}

TEST_F(WindowViewTest, OperatorChangesRunTheEngineHandlersOnce) {
    auto* edit = as<QLineEdit>(w(p->text));
    edit->clear();
    QTest::keyClicks(edit, "ab");
    EXPECT_EQ(edit->text(), "ab");
    EXPECT_EQ(p->text->text(), "design") << "handled before its turn on the engine thread";
    rig.dispatch();
    EXPECT_EQ(p->text->text(), "ab");
    EXPECT_EQ(p->ran, (std::vector<std::string>{"text:a", "text:ab"}));
    p->ran.clear();

    clickIndicator(w(p->check));
    rig.dispatch();
    EXPECT_EQ(p->check->value(), 1);
    EXPECT_EQ(as<QCheckBox>(w(p->check))->checkState(), Qt::Checked);
    p->check->setValue(2);
    p->ran.clear();
    clickIndicator(w(p->check));  // greyed: a click clears it
    rig.dispatch();
    EXPECT_EQ(p->check->value(), 0);
    EXPECT_EQ(as<QCheckBox>(w(p->check))->checkState(), Qt::Unchecked);

    p->optionA->setValue(true);
    p->ran.clear();
    clickIndicator(w(p->optionB));
    rig.dispatch();
    EXPECT_TRUE(p->optionB->value());
    EXPECT_FALSE(p->optionA->value());
    EXPECT_FALSE(as<QRadioButton>(w(p->optionA))->isChecked());
    EXPECT_TRUE(as<QRadioButton>(w(p->optionB))->isChecked());

    slider()->triggerAction(QAbstractSlider::SliderPageStepAdd);
    rig.dispatch();
    EXPECT_EQ(p->level->value(), 60);

    auto* combo = as<QComboBox>(w(p->combo));
    QTest::keyClick(combo, Qt::Key_Down);
    rig.dispatch();
    EXPECT_EQ(p->combo->text(), "blue");

    QTest::mouseClick(w(p->other), Qt::LeftButton);
    rig.dispatch();
    EXPECT_EQ(p->ran, (std::vector<std::string>{"optB", "level:60", "combo:blue", "other"}));
}

TEST_F(WindowViewTest, DigitsOnlyFieldRefusesATypedLetter) {
    auto* edit = as<QLineEdit>(w(p->digits));
    edit->setCursorPosition(1);
    QTest::keyClicks(edit, "a");
    EXPECT_EQ(edit->text(), "5");
    rig.dispatch();
    EXPECT_EQ(p->digits->text(), "5");
    EXPECT_TRUE(p->ran.empty());
    QTest::keyClicks(edit, "7x");
    rig.dispatch();
    EXPECT_EQ(edit->text(), "57");
    EXPECT_EQ(p->ran, (std::vector<std::string>{"digits:57"}));

    // The style changes at run time, as numeric fields get it at every change.
    p->digits->setDigitsOnly(false);
    QTest::keyClicks(edit, "k");
    rig.dispatch();
    EXPECT_EQ(p->digits->text(), "57k");
}

TEST_F(WindowViewTest, UpperCaseFieldShowsAndStoresCapitals) {
    auto* edit = as<QLineEdit>(w(p->upper));
    QTest::keyClicks(edit, "k1abz");
    EXPECT_EQ(edit->text(), "K1AB");  // and the maximum length holds
    rig.dispatch();
    EXPECT_EQ(p->upper->text(), "K1AB");
}

TEST_F(WindowViewTest, UnchangedValuesCostNoRepaint) {
    struct PaintCounter : QObject {
        int paints = 0;
        bool eventFilter(QObject*, QEvent* e) override {
            if (e->type() == QEvent::Paint) ++paints;
            return false;
        }
    } counter;
    QWidget* lamp = w(p->lamp);
    QWidget* edit = w(p->text);
    lamp->installEventFilter(&counter);
    edit->installEventFilter(&counter);
    for (int i = 0; i < 50; ++i) {
        view->sync(*p->lamp);  // what a 10 ms timer rewriting the same caption amounts to
        view->sync(*p->text);
        p->lamp->set("PTT OFF", kPttOffGreen);
        QCoreApplication::processEvents();
    }
    EXPECT_EQ(counter.paints, 0);
    p->lamp->set("PTT ON", kPttOnRed);
    QCoreApplication::processEvents();
    EXPECT_GT(counter.paints, 0) << "the counter sees real repaints";
}

TEST_F(WindowViewTest, AClockTickingInATabRepaintsItselfNotItsPage) {
    struct Counter : QObject {
        int paints = 0;
        int layouts = 0;
        bool eventFilter(QObject*, QEvent* e) override {
            paints += e->type() == QEvent::Paint;
            layouts += e->type() == QEvent::LayoutRequest;
            return false;
        }
    } clock, page, tabs;
    // A layout request climbs one parent per turn of the event loop.
    auto settle = [] {
        for (int i = 0; i < 10; ++i) QCoreApplication::processEvents();
    };
    as<QTabWidget>(w(p->tabs))->setCurrentIndex(1);  // the page with the clock
    QWidget* label = w(p->clock);
    p->clock->setCaption("14:00:01");
    settle();
    label->installEventFilter(&clock);
    w(p->combo)->installEventFilter(&page);
    w(p->tabs)->installEventFilter(&tabs);
    // A second's worth of digits of every width, as an idle node's clock shows them.
    for (const char* t : {"14:00:02", "14:00:11", "14:01:18", "14:11:11", "14:59:59", "15:00:00"}) {
        p->clock->setCaption(t);
        settle();
        EXPECT_EQ(as<QLabel>(label)->text(), t);
    }
    EXPECT_EQ(clock.paints, 6);
    EXPECT_EQ(page.paints, 0) << "the list beside the clock was repainted";
    EXPECT_EQ(tabs.layouts, 0) << "the tab control laid its pages out again";

    // A text too long for the place it had still shows whole.
    p->clock->setCaption("Hora local: 15:00:01, lunes 23 de noviembre, en la estación del club");
    settle();
    EXPECT_GE(label->width(), as<QLabel>(label)->sizeHint().width());
}

TEST_F(WindowViewTest, ActionsPostedBeforeTheWindowGoesAreDropped) {
    QTest::mouseClick(w(p->other), Qt::LeftButton);
    view.reset();
    rig.panel->unload();
    rig.dispatch();  // would touch a destroyed control if it ran
    EXPECT_FALSE(rig.panel->isLoaded());
    EXPECT_TRUE(rig.panel->ran.empty());
}

TEST_F(WindowViewTest, AnOptionGroupIsOneTabStopAndTheArrowsChooseWithinIt) {
    auto* a = w(p->optionA);
    auto* b = w(p->optionB);
    // Nothing chosen yet: the group is reached at its first button.
    EXPECT_EQ(a->focusPolicy() & Qt::TabFocus, Qt::TabFocus);
    EXPECT_EQ(b->focusPolicy() & Qt::TabFocus, 0);
    host.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&host));
    a->setFocus();
    QTest::keyClick(a, Qt::Key_Down);
    rig.dispatch();
    EXPECT_TRUE(p->optionB->value()) << "the arrow chooses, as on the operator's other programs";
    EXPECT_EQ(p->ran, (std::vector<std::string>{"optB"}));
    EXPECT_TRUE(b->hasFocus());
    EXPECT_EQ(b->focusPolicy() & Qt::TabFocus, Qt::TabFocus) << "the Tab stop follows the choice";
    EXPECT_EQ(a->focusPolicy() & Qt::TabFocus, 0);
    QTest::keyClick(b, Qt::Key_Down);  // round the group
    rig.dispatch();
    EXPECT_TRUE(p->optionA->value());
    // A button that cannot be chosen is stepped over, and is never the Tab stop.
    p->optionB->setEnabled(false);
    QTest::keyClick(a, Qt::Key_Up);
    rig.dispatch();
    EXPECT_TRUE(p->optionA->value());
    p->optionB->setValue(true);
    EXPECT_EQ(a->focusPolicy() & Qt::TabFocus, Qt::TabFocus);
    EXPECT_EQ(b->focusPolicy() & Qt::TabFocus, 0);
}

// A chat panel: a log of a few lines and an entry that sends on Enter.
class ChatPanel final : public Window {
public:
    explicit ChatPanel(Program& program) : Window(program, "chat") {}
    static constexpr size_t kBound = 50;
    LineLog* log = nullptr;
    TextBox* entry = nullptr;
    Button* send = nullptr;
    std::vector<std::string> sent;

protected:
    void build() override {
        auto& root = make<Container>("root", ContainerKind::Column);
        setRoot(root);
        log = &root.add(make<LineLog>("LOG", kBound));
        entry = &root.add(make<TextBox>("ENTRY"));
        send = &root.add(make<Button>("SEND", "Send"));
        entry->onEnter = [this] {
            sent.push_back(entry->text());
            entry->setText("");
        };
    }
};

class LineLogViewTest : public ::testing::Test {
protected:
    void SetUp() override {
        panel = static_cast<ChatPanel*>(&rig.program.addWindow(std::make_unique<ChatPanel>(rig.program)));
        panel->load();
        view = std::make_unique<WindowView>(*panel, host, [this](std::function<void()> f) { rig.scheduler.post(std::move(f)); });
        host.resize(400, 200);
        host.show();
        QCoreApplication::processEvents();
        edit = as<QPlainTextEdit>(view->widgetFor(*panel->log));
    }
    QStringList shown() const { return edit->toPlainText().split(QLatin1Char('\n')); }
    bool atNewest() const { return edit->verticalScrollBar()->value() == edit->verticalScrollBar()->maximum(); }

    GuiRig rig;
    QWidget host;
    std::unique_ptr<WindowView> view;
    ChatPanel* panel = nullptr;
    QPlainTextEdit* edit = nullptr;
};

TEST_F(LineLogViewTest, ShowsLinesAsPlainTextAppendingWithoutRedrawingWhatIsThere) {
    ASSERT_NE(edit, nullptr);
    EXPECT_TRUE(edit->isReadOnly());
    EXPECT_EQ(edit->maximumBlockCount(), static_cast<int>(ChatPanel::kBound));

    panel->log->append("");
    panel->log->append("<b>N0CALL</b>&amp;>hola");
    EXPECT_EQ(shown(), (QStringList{"", "<b>N0CALL</b>&amp;>hola"})) << "an empty first line and markup, both as typed";

    // Mark the first line: a redraw of the whole text would lose the mark.
    edit->document()->firstBlock().setUserState(7);
    panel->log->append("uno\rdos");
    EXPECT_EQ(shown(), (QStringList{"", "<b>N0CALL</b>&amp;>hola", "uno", "dos"}));
    EXPECT_EQ(edit->document()->firstBlock().userState(), 7);

    // At the bound the editor drops its oldest line as the log does.
    for (size_t i = 0; i < ChatPanel::kBound; ++i) panel->log->append("line " + std::to_string(i));
    const auto& kept = panel->log->lines();
    EXPECT_EQ(edit->blockCount(), static_cast<int>(kept.size()));
    EXPECT_EQ(shown().front(), QString::fromStdString(kept.front()));
    EXPECT_EQ(shown().back(), QString::fromStdString(kept.back()));

    // A clear starts the view afresh; a view built later shows what the log holds.
    panel->log->clear();
    EXPECT_EQ(edit->toPlainText(), "");
    panel->log->append("again");
    EXPECT_EQ(shown(), (QStringList{"again"}));
    view.reset();
    panel->log->append("while no view");
    QWidget later;
    view = std::make_unique<WindowView>(*panel, later, [this](std::function<void()> f) { rig.scheduler.post(std::move(f)); });
    EXPECT_EQ(as<QPlainTextEdit>(view->widgetFor(*panel->log))->toPlainText(), "again\nwhile no view");
    view.reset();
}

TEST_F(LineLogViewTest, FollowsTheNewestLineUnlessTheOperatorScrolledBackToRead) {
    for (int i = 0; i < 30; ++i) panel->log->append("line " + std::to_string(i));
    QCoreApplication::processEvents();
    ASSERT_GT(edit->verticalScrollBar()->maximum(), 0) << "the test needs more lines than fit";
    EXPECT_TRUE(atNewest());

    edit->verticalScrollBar()->setValue(0);
    panel->log->append("while reading");
    EXPECT_EQ(edit->verticalScrollBar()->value(), 0) << "the operator's place is kept";

    edit->verticalScrollBar()->setValue(edit->verticalScrollBar()->maximum());
    panel->log->append("following again");
    EXPECT_TRUE(atNewest());
    EXPECT_EQ(edit->textCursor().position(), edit->document()->characterCount() - 1) << "caret after the newest line";

    // A window that logged while hidden opens at its newest line.
    view.reset();
    QWidget hidden;
    hidden.resize(400, 200);
    view = std::make_unique<WindowView>(*panel, hidden, [this](std::function<void()> f) { rig.scheduler.post(std::move(f)); });
    edit = as<QPlainTextEdit>(view->widgetFor(*panel->log));
    for (int i = 0; i < 30; ++i) panel->log->append("while hidden " + std::to_string(i));
    hidden.show();
    QCoreApplication::processEvents();
    ASSERT_GT(edit->verticalScrollBar()->maximum(), 0);
    EXPECT_TRUE(atNewest());
    view.reset();
}

TEST_F(LineLogViewTest, EnterInAnEntryRunsAfterItsTypingAndAFocusRequestTakesTheFocus) {
    auto* line = as<QLineEdit>(view->widgetFor(*panel->entry));
    ASSERT_NE(line, nullptr);
    line->setFocus();
    QTest::keyClicks(line, "hola");
    QTest::keyClick(line, Qt::Key_Return);
    EXPECT_TRUE(panel->sent.empty()) << "handled in its turn on the engine thread";
    rig.dispatch();
    EXPECT_EQ(panel->sent, (std::vector<std::string>{"hola"}));
    EXPECT_EQ(line->text(), "");

    auto* button = as<QPushButton>(view->widgetFor(*panel->send));
    button->setFocus();
    QCoreApplication::processEvents();
    ASSERT_FALSE(line->hasFocus());
    panel->entry->requestFocus();
    QCoreApplication::processEvents();
    EXPECT_TRUE(line->hasFocus());
}

}  // namespace
}  // namespace mv::test
