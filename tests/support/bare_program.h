#pragma once
// A program with no host, no media and a throw-away settings folder, in
// virtual time: enough for testing a core component inside a window of its
// own without the whole suite.
#include <functional>
#include <memory>
#include <stdexcept>

#include "core/clock.h"
#include "core/dialogs.h"
#include "core/event_log.h"
#include "core/host_link.h"
#include "core/program.h"
#include "core/scheduler.h"
#include "core/settings_store.h"
#include "support/temp_dir.h"

namespace mv::test {

class NoHost final : public HostLink {
public:
    std::unique_ptr<HostObject> createObject(const std::string&, HostEvents*) override {
        throw std::logic_error("this test has no host");
    }
};

// A window whose build() is whatever the test gives it.
class TestWindow final : public Window {
public:
    TestWindow(Program& program, std::function<void(TestWindow&)> builder)
        : Window(program, "test"), m_builder(std::move(builder)) {}
    using Window::createHostObject;
    using Window::make;
    using Window::makeGroup;
    using Window::parts;
    using Window::setRoot;

protected:
    void build() override { m_builder(*this); }

private:
    std::function<void(TestWindow&)> m_builder;
};

struct BareProgram {
    explicit BareProgram(LocalDateTime start = {2026, 11, 23, 10, 0, 0, 0})
        : clock(start), scheduler(clock), settings(dir.path()), dialogs(log),
          program(Services{scheduler, host, settings, dialogs, log, nullptr}) {}

    // Adds and loads a window built by `builder`.
    TestWindow& window(std::function<void(TestWindow&)> builder) {
        auto& w = static_cast<TestWindow&>(program.addWindow(std::make_unique<TestWindow>(program, std::move(builder))));
        w.load();
        return w;
    }
    void run(int64_t ms) { scheduler.runUntil(scheduler.now() + ms); }

    TempDir dir;
    VirtualClock clock;
    Scheduler scheduler;
    NoHost host;
    SettingsStore settings;
    EventLog log;
    ScriptedDialogs dialogs;
    Program program;
};

}  // namespace mv::test
