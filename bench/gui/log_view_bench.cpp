// What one more chat line costs the desktop view of a log that already holds
// N lines, offscreen: the line log view (appends the line, drops the oldest
// at the bound) against a multi-line text box rewritten whole for every line.
// The first must not grow with N; the second shows why the log is not a text box.
#include <benchmark/benchmark.h>

#include <QApplication>
#include <QWidget>
#include <deque>
#include <filesystem>

#include "app/suite.h"
#include "gui/window_view.h"

namespace {

QApplication& app() {
    static int argc = 1;
    static char name[] = "log_view_bench";
    static char* argv[] = {name, nullptr};
    static QApplication* instance = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        return new QApplication(argc, argv);
    }();
    return *instance;
}

class LogPanel final : public mv::Window {
public:
    LogPanel(mv::Program& program, size_t lines) : Window(program, "bench"), m_lines(lines) {}
    mv::LineLog* log = nullptr;
    mv::TextBox* box = nullptr;

protected:
    void build() override {
        auto& root = make<mv::Container>("root", mv::ContainerKind::Column);
        setRoot(root);
        log = &root.add(make<mv::LineLog>("LOG", m_lines));
        box = &root.add(make<mv::TextBox>("BOX"));
        box->setMultiLine(true);
    }

private:
    size_t m_lines;
};

std::string line(uint64_t n) {
    return "EA4XYZ-L> (09:07)>buenos dias a todos desde Madrid, mensaje " + std::to_string(n);
}

struct Rig {
    explicit Rig(size_t lines) {
        mv::SuiteOptions o;
        o.settingsDir = std::filesystem::temp_directory_path() / "mv-bench-log-view";
        o.virtualStart = mv::LocalDateTime{2026, 11, 22, 9, 0, 0, 0};
        suite = std::make_unique<mv::Suite>(o);
        panel = static_cast<LogPanel*>(&suite->program().addWindow(std::make_unique<LogPanel>(suite->program(), lines)));
        panel->load();
        view = std::make_unique<mv::WindowView>(*panel, host, [](std::function<void()>) {});
        host.resize(600, 400);
        host.show();
        QCoreApplication::processEvents();
    }
    QApplication& qt = app();
    std::unique_ptr<mv::Suite> suite;
    QWidget host;
    LogPanel* panel = nullptr;
    std::unique_ptr<mv::WindowView> view;
};

void BM_LineLogAppendAtBound(benchmark::State& state) {
    const auto held = static_cast<size_t>(state.range(0));
    Rig rig(held);
    uint64_t n = 0;
    for (size_t i = 0; i < held; ++i) rig.panel->log->append(line(n++));
    QCoreApplication::processEvents();
    for (auto _ : state) {
        rig.panel->log->append(line(n++));
        QCoreApplication::processEvents();  // paint what changed
    }
    state.counters["lines_held"] = static_cast<double>(rig.panel->log->lines().size());
}
BENCHMARK(BM_LineLogAppendAtBound)->Arg(100)->Arg(2000)->Arg(20000)->Unit(benchmark::kMicrosecond);

void BM_TextBoxRewrittenPerLine(benchmark::State& state) {
    const auto held = static_cast<size_t>(state.range(0));
    Rig rig(1);
    std::deque<std::string> lines;
    uint64_t n = 0;
    for (size_t i = 0; i < held; ++i) lines.push_back(line(n++));
    for (auto _ : state) {
        // Old text plus the new line, the oldest dropped to stay at N lines.
        lines.pop_front();
        lines.push_back(line(n++));
        std::string text;
        for (const std::string& l : lines) text += l + "\r\n";
        rig.panel->box->setText(text);
        QCoreApplication::processEvents();
    }
}
BENCHMARK(BM_TextBoxRewrittenPerLine)->Arg(100)->Arg(2000)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
