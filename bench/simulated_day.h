#pragma once
// One simulated day of the whole suite in virtual time per iteration, timed:
// the frame the day-long benchmarks share. Reports simulated seconds per wall
// second and per CPU second and the timer ticks of the day; each benchmark
// sets its suite up before the day starts and adds counters of its own after it.
#include <benchmark/benchmark.h>
#include <sys/resource.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <string>

#include "app/suite.h"

namespace mv::bench {

// How fast simulated time went: against the wall clock and against the CPU
// time of the whole process (every thread: the speech voice makes its sound
// on one of its own). On a shared machine the wall clock also counts the time
// other programs held the cores; the CPU time does not.
class SimulatedRate {
public:
    void start() {
        m_wall0 = std::chrono::steady_clock::now();
        m_cpu0 = cpuSeconds();
    }
    // Ends a timed stretch that simulated `simulatedSeconds`; returns its wall seconds.
    double stop(double simulatedSeconds) {
        const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - m_wall0).count();
        m_wall += wall;
        m_cpu += cpuSeconds() - m_cpu0;
        m_simulated += simulatedSeconds;
        return wall;
    }
    void report(benchmark::State& state) const {
        state.counters["simulated_s_per_wall_s"] = m_simulated / m_wall;
        state.counters["simulated_s_per_cpu_s"] = m_simulated / m_cpu;
        state.counters["cpu_s_per_day"] = m_cpu * 86400 / m_simulated;
    }

private:
    static double cpuSeconds() {
        rusage u{};
        getrusage(RUSAGE_SELF, &u);
        auto seconds = [](const timeval& t) { return static_cast<double>(t.tv_sec) + t.tv_usec / 1e6; };
        return seconds(u.ru_utime) + seconds(u.ru_stime);
    }

    std::chrono::steady_clock::time_point m_wall0;
    double m_cpu0 = 0;
    double m_wall = 0;
    double m_cpu = 0;
    double m_simulated = 0;
};

struct SimulatedDay {
    std::function<void(SuiteOptions&)> configure;  // before the suite is made
    std::function<void(Suite&)> prepare;           // after start-up, before the day
    std::function<void(Suite&)> finish;            // after the day, for counters
};

inline void runSimulatedDays(benchmark::State& state, const std::string& scratchName, const SimulatedDay& day) {
    const auto dir = std::filesystem::temp_directory_path() / scratchName;
    std::filesystem::create_directories(dir);
    SimulatedRate rate;
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
        rate.start();
        scheduler.runUntil(scheduler.now() + 86400000);
        state.SetIterationTime(rate.stop(86400));
        state.counters["ticks_per_day"] = static_cast<double>(scheduler.dispatchedTicks());
        if (day.finish) day.finish(suite);
    }
    rate.report(state);
    std::filesystem::remove_all(dir);
}

}  // namespace mv::bench
