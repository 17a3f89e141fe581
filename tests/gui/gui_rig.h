#pragma once
// A program with a panel of every control kind, on a clock the test moves by
// hand. The clock reports itself as real, so blocks go through the GUI's block
// hook, yet no test waits on the wall clock.
#include <QApplication>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include <unistd.h>

#include "core/dialogs.h"
#include "core/event_log.h"
#include "core/program.h"
#include "core/scheduler.h"
#include "core/settings_store.h"
#include "platform/simulated_host.h"
#include "support/temp_dir.h"

namespace mv::test {

// The screen every GUI test runs on: 1366 x 768 at 96 DPI, the smallest
// laptop screen an operator is likely to bring.
inline constexpr int kScreenWidth = 1366;
inline constexpr int kScreenHeight = 768;

inline QApplication& qtApp() {
    static int argc = 1;
    static char name[] = "gui_tests";
    static char* argv[] = {name, nullptr};
    static QApplication* app = [] {
        // Under a real X server (xvfb-run -s "-screen 0 1366x768x24", with
        // QT_QPA_PLATFORM=xcb) the tests use its screen as it is.
        if (qgetenv("QT_QPA_PLATFORM") == "xcb") return new QApplication(argc, argv);
        const std::filesystem::path config =
            std::filesystem::temp_directory_path() / ("mv-gui-screen-" + std::to_string(::getpid()) + ".json");
        std::ofstream(config) << "{\"screens\":[{\"name\":\"laptop\",\"x\":0,\"y\":0,\"width\":" << kScreenWidth
                              << ",\"height\":" << kScreenHeight << ",\"logicalDpi\":96,\"logicalBaseDpi\":96,\"dpr\":1}]}";
        qputenv("QT_QPA_PLATFORM", ("offscreen:configfile=" + config.string()).c_str());
        auto* made = new QApplication(argc, argv);
        std::filesystem::remove(config);
        return made;
    }();
    return *app;
}

class ManualClock final : public Clock {
public:
    int64_t monotonicMs() const override { return m_now; }
    LocalDateTime localTimeAt(int64_t mono) const override { return LocalDateTime::fromNaiveMs(m_origin + mono); }
    bool isVirtual() const override { return false; }
    void advanceTo(int64_t) override {}
    void advanceBy(int64_t ms) { m_now += ms; }

private:
    int64_t m_now = 1000;
    int64_t m_origin = LocalDateTime{2026, 11, 22, 14, 0, 0, 0}.toNaiveMs();
};

// One of every control, with handlers that count and record what ran.
class Panel final : public Window {
public:
    explicit Panel(Program& program, bool askBeforeClosing = false)
        : Window(program, "panel"), m_ask(askBeforeClosing) {}

    TextBox* text = nullptr;
    TextBox* digits = nullptr;
    TextBox* upper = nullptr;
    TextBox* notes = nullptr;
    CheckBox* check = nullptr;
    OptionButton* optionA = nullptr;
    OptionButton* optionB = nullptr;
    Label* lamp = nullptr;
    Label* clock = nullptr;
    Slider* level = nullptr;
    Button* key = nullptr;
    Button* other = nullptr;
    ComboBox* combo = nullptr;
    Container* frame = nullptr;
    Container* tabs = nullptr;
    Container* pageOne = nullptr;
    std::vector<std::string> ran;
    int64_t blockMs = 0;

protected:
    void build() override {
        ran.clear();
        auto& root = make<Container>("root", ContainerKind::Column);
        setRoot(root);
        frame = &root.add(make<Container>("frame", ContainerKind::Frame, "Settings & more"));
        text = &frame->add(make<TextBox>("TEXT1", "design"));
        digits = &frame->add(make<TextBox>("DIGITS", "5"));
        digits->setDigitsOnly(true);
        upper = &frame->add(make<TextBox>("UPPER"));
        upper->setUpperCase(true);
        upper->setMaxLength(4);
        notes = &frame->add(make<TextBox>("NOTES", "line one"));
        notes->setMultiLine(true);
        auto& grid = root.add(make<Container>("grid", ContainerKind::Grid, "", 2));
        check = &grid.add(make<CheckBox>("CHECK1", "Enabled", 0));
        check->setToolTip("Switches it on");
        OptionGroup& group = makeGroup();
        optionA = &grid.add(make<OptionButton>("OPTA", "A", group));
        optionB = &grid.add(make<OptionButton>("OPTB", "B", group));
        lamp = &grid.add(make<Label>("PTT", "PTT OFF", kPttOffGreen));
        tabs = &root.add(make<Container>("tabs", ContainerKind::Tabs));
        pageOne = &tabs->add(make<Container>("page1", ContainerKind::TabPage, "First"));
        auto& pageTwo = tabs->add(make<Container>("page2", ContainerKind::TabPage, "Second"));
        level = &pageOne->add(make<Slider>("LEVEL", 0, 100, 40, Orientation::Vertical));
        level->setSteps(5, 20);
        level->scaleLabels = {"100", "0"};
        combo = &pageTwo.add(make<ComboBox>("COMBO"));
        clock = &pageTwo.add(make<Label>("CLOCK", "14:00:00"));
        combo->setItems({"red", "green", "blue"});
        combo->setText("green");
        auto& row = root.add(make<Container>("row", ContainerKind::Row));
        key = &row.add(make<Button>("KEY", "Key"));
        other = &row.add(make<Button>("OTHER", "Other"));

        text->onChange = [this] { ran.push_back("text:" + text->text()); };
        digits->onChange = [this] { ran.push_back("digits:" + digits->text()); };
        upper->onChange = [this] { ran.push_back("upper:" + upper->text()); };
        notes->onChange = [this] { ran.push_back("notes:" + notes->text()); };
        check->onClick = [this] { ran.push_back("check:" + std::to_string(check->value())); };
        optionA->onClick = [this] { ran.push_back("optA"); };
        optionB->onClick = [this] { ran.push_back("optB"); };
        level->onChange = [this] { ran.push_back("level:" + std::to_string(level->value())); };
        combo->onChange = [this] { ran.push_back("combo:" + combo->text()); };
        key->onClick = [this] {
            ran.push_back("key");
            scheduler().block(blockMs);
            ran.push_back("key done");
        };
        other->onClick = [this] { ran.push_back("other"); };
    }
    CloseDecision onQueryClose() override {
        if (!m_ask) return CloseDecision::Unload;
        const DialogAnswer a = dialogs().message({name(), "Exit Program", "Close?", DialogIcon::Question, DialogButtons::YesNo});
        return a == DialogAnswer::Yes ? CloseDecision::Unload : CloseDecision::Cancel;
    }

private:
    bool m_ask;
};

struct GuiRig {
    explicit GuiRig(bool askBeforeClosing = false)
        : settings(dir.path()),
          scheduler(clock),
          host(scheduler, log),
          dialogs(log),
          program(Services{scheduler, host, settings, dialogs, log, nullptr}) {
        qtApp();
        panel = static_cast<Panel*>(&program.addWindow(std::make_unique<Panel>(program, askBeforeClosing)));
    }
    // Runs every engine message and timer that is due now.
    void dispatch() { scheduler.runDue(); }

    TempDir dir;
    ManualClock clock;
    EventLog log;
    SettingsStore settings;
    Scheduler scheduler;
    SimulatedHost host;
    ScriptedDialogs dialogs;
    Program program;
    Panel* panel = nullptr;
};

}  // namespace mv::test
