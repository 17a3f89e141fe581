// The hub alone, idle, for one simulated day in virtual time. Reports how many
// simulated seconds pass per wall-clock second (goal: at least 50,000).
#include <benchmark/benchmark.h>

#include <chrono>
#include <filesystem>

#include "app/suite.h"

namespace {

void BM_HubIdleDay(benchmark::State& state) {
    const auto dir = std::filesystem::temp_directory_path() / "mv-bench-hub";
    std::filesystem::create_directories(dir);
    double simulatedSeconds = 0;
    double wallSeconds = 0;
    for (auto _ : state) {
        mv::SuiteOptions o;
        o.settingsDir = dir;
        o.virtualStart = mv::LocalDateTime{2026, 11, 22, 0, 0, 0, 0};
        mv::Suite suite(o);
        std::string message;
        suite.program().start("hub", nullptr, message);
        const auto t0 = std::chrono::steady_clock::now();
        suite.scheduler().runUntil(86400000);
        const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
        state.SetIterationTime(wall);
        wallSeconds += wall;
        simulatedSeconds += 86400;
        state.counters["ticks_per_day"] = static_cast<double>(suite.scheduler().dispatchedTicks());
    }
    state.counters["simulated_s_per_wall_s"] = simulatedSeconds / wallSeconds;
    std::filesystem::remove_all(dir);
}
BENCHMARK(BM_HubIdleDay)->Unit(benchmark::kMillisecond)->Iterations(3)->UseManualTime();

}  // namespace

BENCHMARK_MAIN();
