#include "app/headless_runner.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <random>

#include "app/end_on_terminate.h"
#include "app/log_file.h"
#include "app/run_signals.h"
#include "app/scenario.h"
#include "app/suite.h"
#include "core/errors.h"
#include "core/settings_store.h"
#include "platform/instance_guard.h"
#include "platform/settings_folder.h"

namespace mv {
namespace {

// Virtual time runs in slices of this much simulated time, so a signal is
// answered between slices even when the next line is days away.
constexpr int64_t kVirtualSliceMs = 60000;

// What a control shows, as a scenario's `log` line reports it: a text (a log's
// lines, each ended by CR LF), a check box's 0/1/2, an option button's
// true/false, a slider's number.
LogValue controlValue(const Control& c) {
    if (auto* t = dynamic_cast<const TextBox*>(&c)) return t->text();
    if (auto* cb = dynamic_cast<const CheckBox*>(&c)) return static_cast<int64_t>(cb->value());
    if (auto* ob = dynamic_cast<const OptionButton*>(&c)) return ob->value();
    if (auto* s = dynamic_cast<const Slider*>(&c)) return static_cast<int64_t>(s->value());
    if (auto* combo = dynamic_cast<const ComboBox*>(&c)) return combo->text();
    if (auto* lines = dynamic_cast<const LineLog*>(&c)) return lines->text();
    return c.caption();
}

class DirectiveRunner {
public:
    DirectiveRunner(Suite& suite) : m_suite(suite) {}

    void apply(const Directive& d) {
        SimulatedHost& host = m_suite.host();
        const auto on = [&] { return d.args[0] == "on"; };
        if (d.verb == "carrier") host.setCarrier(on());
        else if (d.verb == "rx") host.setReceiving(on());
        else if (d.verb == "busy") host.setBusy(on());
        else if (d.verb == "dtmf") host.receiveDTMF(d.args[0]);
        else if (d.verb == "connect") host.stationConnects(d.args[0], d.args[1], d.args[2]);
        else if (d.verb == "disconnect") host.stationDisconnects(d.args[0]);
        else if (d.verb == "chat") host.receiveChat(d.args[0]);
        else if (d.verb == "host-closing") host.closing();
        else if (d.verb == "answer") m_suite.scriptedDialogs().queueAnswer(d.args[0]);
        else {
            // Operator actions queue like a click would, behind what is already due.
            const Directive copy = d;
            m_suite.scheduler().post([this, copy] { operate(copy); });
        }
    }

private:
    void fail(const Directive& d, const std::string& message) {
        m_suite.log().error(d.args.empty() ? "" : d.args[0], "line " + std::to_string(d.line) + ": " + message);
    }

    void setHost(const Directive& d) {
        SimulatedHost& host = m_suite.host();
        const std::string& key = d.args[1];
        const std::string& value = d.args[2];
        long long n = 0;
        if (key == "callsign") host.callsign = value;
        else if ((key == "cwwpm" || key == "cwspeed") && setting::parseWhole(value, n) && n >= 5 && n <= 60) host.cwWpm = static_cast<int>(n);
        else if (key == "cwpitch" && setting::parseWhole(value, n) && n >= 200 && n <= 3000) host.cwPitchHz = static_cast<double>(n);
        else fail(d, "host has no setting \"" + key + "\" taking \"" + value + "\"");
    }

    void operate(const Directive& d) {
        Program& program = m_suite.program();
        if (d.verb == "set" && d.args[0] == "host") return setHost(d);
        Window* w = program.window(d.args[0]);
        if (!w) return fail(d, "this build has no window \"" + d.args[0] + "\"");
        if (d.verb == "show") return w->show();
        if (d.verb == "hide") return w->hide();
        if (d.verb == "close") {
            w->closeBox();
            return;
        }
        if (!w->isLoaded()) return fail(d, "window \"" + d.args[0] + "\" is not loaded");
        Control* c = d.byCaption ? w->findByCaption(d.args[1]) : w->control(d.args[1]);
        if (!c) return fail(d, "window \"" + d.args[0] + "\" has no control " + (d.byCaption ? "captioned \"" : "\"") + d.args[1] + "\"");
        if (d.verb == "click") return click(d, *c);
        if (d.verb == "log") return m_suite.log().value(w->name(), c->name(), controlValue(*c));
        set(d, *c, d.args[2]);
    }

    void click(const Directive& d, Control& c) {
        if (!c.enabled()) return fail(d, "\"" + d.args[1] + "\" is disabled; the click did nothing");
        if (auto* b = dynamic_cast<Button*>(&c)) b->click();
        else if (auto* cb = dynamic_cast<CheckBox*>(&c)) cb->click();
        else if (auto* ob = dynamic_cast<OptionButton*>(&c)) ob->click();
        else fail(d, "\"" + d.args[1] + "\" cannot be clicked");
    }

    void set(const Directive& d, Control& c, const std::string& value) {
        if (!c.enabled()) return fail(d, "\"" + d.args[1] + "\" is disabled; nothing was set");
        long long n = 0;
        bool b = false;
        if (auto* t = dynamic_cast<TextBox*>(&c)) {
            if (!t->typeText(value)) fail(d, "\"" + d.args[1] + "\" refused some of the typed characters");
        } else if (auto* cb = dynamic_cast<CheckBox*>(&c)) {
            int v = 0;
            if (!setting::parseCheck(value, v)) return fail(d, "a check box takes 0, 1 or 2");
            cb->setValue(v);
        } else if (auto* ob = dynamic_cast<OptionButton*>(&c)) {
            if (!setting::parseOption(value, b)) return fail(d, "an option button takes True or False");
            ob->setValue(b);
        } else if (auto* s = dynamic_cast<Slider*>(&c)) {
            if (!setting::parseWhole(value, n)) return fail(d, "a slider takes a whole number");
            s->setValue(static_cast<int>(n));
        } else if (auto* combo = dynamic_cast<ComboBox*>(&c)) {
            combo->setText(value);
        } else {
            fail(d, "\"" + d.args[1] + "\" cannot be set");
        }
    }

    Suite& m_suite;
};

}  // namespace

int runHeadless(const HeadlessOptions& options) {
    Scenario scenario;
    try {
        scenario = loadScenario(options.scenarioPath);
    } catch (const ScenarioError& e) {
        std::cerr << e.what() << '\n';
        return 2;
    }

    // The scenario's end, or an earlier --until.
    int64_t stopMs = scenario.endMs;
    std::string endReason = "scenario";
    if (options.until) {
        // In real time the scenario's start line is not the clock: --until is
        // read against the wall clock now.
        const RealClock wall;
        const LocalDateTime from = options.realtime ? wall.localTimeAt(wall.monotonicMs()) : scenario.start;
        const int64_t limit = options.until->toNaiveMs() - from.toNaiveMs();
        if (limit <= 0) {
            std::cerr << "marrowvane: --until " << options.until->isoText().substr(0, 19) << " is not after the run's start "
                      << from.isoText().substr(0, 19) << '\n';
            return 2;
        }
        if (limit < stopMs) {
            stopMs = limit;
            endReason = "until";
        }
    }

    LogFile logFile;
    std::ostream* logStream = &std::cout;
    if (!options.logPath.empty()) {
        if (!logFile.open(options.logPath, true)) {
            std::cerr << "marrowvane: cannot write the log file " << options.logPath << '\n';
            return 1;
        }
        logStream = &logFile.stream();
    }

    SuiteOptions so;
    so.settingsDir = options.settingsDir.empty() ? defaultSettingsFolder() : std::filesystem::path(options.settingsDir);
    if (!options.realtime) so.virtualStart = scenario.start;
    so.logStream = logStream;
    so.logQueries = options.logQueries;
    so.defaultVoiceFolder = installedVoiceFolder();
    so.defaultToneFolder = installedToneFolder();

    // Before the suite exists, so every thread it starts inherits the mask.
    RunSignals signals;
    FileInstanceGuard guard(so.settingsDir / "marrowvane.lock");
    Suite suite(so);
    if (!options.recordPath.empty()) {
        try {
            suite.air().startRecording(options.recordPath);
        } catch (const MediaError& e) {
            std::cerr << "marrowvane: " << e.what() << '\n';
            return 1;
        }
    }
    Scheduler& scheduler = suite.scheduler();
    Program& program = suite.program();
    const EndOnTerminate lastChance(program);
    const uint64_t seed = options.seed ? *options.seed : options.realtime ? std::random_device{}() : 1;
    program.seedRandom(seed);
    std::string message;
    const Program::StartResult started = program.start("hub", &guard, message);
    if (started == Program::StartResult::AlreadyRunning) {
        std::cerr << "marrowvane: " << message << '\n';
        return 1;
    }
    if (!message.empty() && started == Program::StartResult::Started) suite.log().error("", message);
    // Only a copy that really runs says which seed it drew.
    suite.log().write({{}, "start", {{"seed", LogValue{static_cast<int64_t>(seed)}}}});

    auto stopOnSignal = [&] {
        if (signals.takeReopenRequest() && !options.logPath.empty() && !logFile.reopen())
            suite.log().error("", "cannot reopen the log file " + options.logPath + "; still writing to the old one");
        if (signals.stopSignal() != 0) program.shutdown(std::string("stopped by ") + signalName(signals.stopSignal()));
    };
    if (options.realtime) {
        // A keyed wait (an utterance) keeps answering signals; the wait then
        // unwinds because the program has ended.
        scheduler.setBlockHook([&](int64_t msLeft) {
            signals.wait(msLeft);
            stopOnSignal();
        });
    }
    DirectiveRunner runner(suite);
    const int64_t origin = scheduler.now();
    auto runTo = [&](int64_t atMs) {
        for (;;) {
            signals.wait(0);
            stopOnSignal();
            if (program.ended()) return;
            const int64_t target = origin + atMs;
            if (!options.realtime) {
                scheduler.runUntil(std::min(target, scheduler.now() + kVirtualSliceMs));
                if (program.ended() || scheduler.now() >= target) return;
                continue;
            }
            const int64_t next = scheduler.runDue();
            if (program.ended()) return;
            const int64_t now = scheduler.now();
            if (now >= target) return;
            signals.wait((next >= 0 ? std::min(next, target) : target) - now);
        }
    };

    int status = 0;
    try {
        for (const Directive& d : scenario.directives) {
            if (program.ended() || d.atMs > stopMs) break;
            runTo(d.atMs);
            if (program.ended()) break;
            try {
                runner.apply(d);
            } catch (const ProgramEnded&) {
                break;
            } catch (const std::exception& e) {
                suite.log().error("", "line " + std::to_string(d.line) + ": " + e.what());
            }
        }
        if (!program.ended()) runTo(stopMs);
        program.shutdown(endReason);
    } catch (const std::exception& e) {
        std::cerr << "marrowvane: " << e.what() << '\n';
        program.shutdown(std::string("fatal error: ") + e.what());
        status = 1;
    }
    scheduler.setBlockHook(nullptr);
    // The air up to the last millisecond of the run goes into the recording.
    suite.air().stopRecording();
    return status;
}

}  // namespace mv
