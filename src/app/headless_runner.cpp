#include "app/headless_runner.h"

#include <algorithm>
#include <fstream>
#include <iostream>
#include <random>

#include "app/end_on_terminate.h"
#include "app/log_file.h"
#include "app/directive_runner.h"
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
    so.host = options.automationHost ? HostBinding::Automation : HostBinding::Simulated;
    so.settingsDir = options.settingsDir.empty() ? defaultSettingsFolder() : std::filesystem::path(options.settingsDir);
    if (!options.realtime) so.virtualStart = scenario.start;
    so.logStream = logStream;
    so.logQueries = options.logQueries;
    so.defaultVoiceFolder = installedVoiceFolder();
    so.defaultToneFolder = installedToneFolder();
    so.sampleFolder = installedSampleFolder();

    // Before the suite exists, so every thread it starts inherits the mask.
    RunSignals signals;
    FileInstanceGuard guard(so.settingsDir / "marrowvane.lock");
    std::unique_ptr<Suite> built;
    try {
        built = std::make_unique<Suite>(so);
    } catch (const std::runtime_error& e) {
        std::cerr << "marrowvane: " << e.what() << '\n';
        return 1;
    }
    Suite& suite = *built;
    if (!options.recordPath.empty()) {
        try {
            suite.air().startRecording(options.recordPath);
        } catch (const MediaError& e) {
            std::cerr << "marrowvane: " << e.what() << '\n';
            return 1;
        }
    }
    Scheduler& scheduler = suite.scheduler();
    // In real time an idle node wakes ten times a second, not once per timer
    // phase; before the windows load and start their timers.
    scheduler.setShareWakeups(options.realtime);
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
