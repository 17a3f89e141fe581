#pragma once
// One simulated day of the whole suite in virtual time per iteration, timed:
// the frame the day-long benchmarks share. Reports simulated seconds per wall
// second and the timer ticks of the day; each benchmark sets its suite up
// before the day starts and adds counters of its own after it.
#include <benchmark/benchmark.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>

#include "app/suite.h"

namespace mv::bench {

struct SimulatedDay {
    std::function<void(SuiteOptions&)> configure;  // before the suite is made
    std::function<void(Suite&)> prepare;           // after start-up, before the day
    std::function<void(Suite&)> finish;            // after the day, for counters
};

inline void runSimulatedDays(benchmark::State& state, const std::string& scratchName, const SimulatedDay& day) {
    const auto dir = std::filesystem::temp_directory_path() / scratchName;
    std::filesystem::create_directories(dir);
    double simulatedSeconds = 0;
    double wallSeconds = 0;
    for (auto _ : state) {
        SuiteOptions o;
        o.settingsDir = dir;
        o.virtualStart = LocalDateTime{2026, 11, 22, 0, 0, 0, 0};
        if (day.configure) day.configure(o);
        Suite suite(o);
        std::string why;
        suite.program().start("hub", nullptr, why);
        Scheduler& scheduler = suite.scheduler();
        if (day.prepare) {
            day.prepare(suite);
            scheduler.runUntil(scheduler.now());
        }
        const auto t0 = std::chrono::steady_clock::now();
        scheduler.runUntil(scheduler.now() + 86400000);
        const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
        state.SetIterationTime(wall);
        wallSeconds += wall;
        simulatedSeconds += 86400;
        state.counters["ticks_per_day"] = static_cast<double>(scheduler.dispatchedTicks());
        if (day.finish) day.finish(suite);
    }
    state.counters["simulated_s_per_wall_s"] = simulatedSeconds / wallSeconds;
    std::filesystem::remove_all(dir);
}

}  // namespace mv::bench
