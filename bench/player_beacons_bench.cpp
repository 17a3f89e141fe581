// A day of beacons in virtual time: the DTMF player with every beacon on (the
// periodic one each minute, the hour, quarters, half hour and the minute
// beacon) playing the sample beacon on the air, with the hub's clock speaking
// beside it. Reports simulated seconds per wall second and how many files went
// on the air, so a busy player is seen not to slow a simulated day down.
#include <benchmark/benchmark.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <vector>

#include "app/suite.h"
#include "core/window.h"

namespace {

void BM_BeaconDay(benchmark::State& state) {
    const auto dir = std::filesystem::temp_directory_path() / "mv-bench-beacons";
    std::filesystem::create_directories(dir);
    double simulatedSeconds = 0;
    double wallSeconds = 0;
    for (auto _ : state) {
        mv::SuiteOptions o;
        o.settingsDir = dir;
        o.virtualStart = mv::LocalDateTime{2026, 11, 22, 0, 0, 0, 0};
        o.sampleFolder = mv::installedSampleFolder();
        mv::Suite suite(o);
        std::string why;
        suite.program().start("hub", nullptr, why);
        mv::Scheduler& scheduler = suite.scheduler();
        scheduler.post([&] {
            mv::Window& player = *suite.program().window("player");
            for (const char* box : {"ONHOUR", "QUARTERHOUR", "HALFHOUR", "STOPCLOCK3", "StopClock1"})
                player.controlAs<mv::CheckBox>(box)->setValue(1);
            player.controlAs<mv::TextBox>("BEACONPERIOD3")->setText("07");
            player.controlAs<mv::TextBox>("TEXT5")->setText("30");
            player.controlAs<mv::TextBox>("BeaconPeriod1")->setText("1");
        });
        scheduler.runUntil(scheduler.now());
        // The host's command record is bounded; a day's queries would push the
        // early plays out of it, so the plays are counted as they are made.
        size_t plays = 0;
        suite.host().setCommandListener([&](const mv::SimulatedHost::Command& c) {
            plays += c.window == "player" && c.call == "SetPTT" && c.args == std::vector<std::string>{"true"};
        });
        const auto t0 = std::chrono::steady_clock::now();
        scheduler.runUntil(scheduler.now() + 86400000);
        const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
        state.SetIterationTime(wall);
        wallSeconds += wall;
        simulatedSeconds += 86400;
        state.counters["plays_per_day"] = static_cast<double>(plays);
        state.counters["ticks_per_day"] = static_cast<double>(scheduler.dispatchedTicks());
    }
    state.counters["simulated_s_per_wall_s"] = simulatedSeconds / wallSeconds;
    std::filesystem::remove_all(dir);
}
BENCHMARK(BM_BeaconDay)->Unit(benchmark::kMillisecond)->Iterations(3)->UseManualTime();

}  // namespace

BENCHMARK_MAIN();
