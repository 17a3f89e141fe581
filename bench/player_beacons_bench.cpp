// A day of beacons in virtual time: the DTMF player with every beacon on (the
// periodic one each minute, the hour, quarters, half hour and the minute
// beacon) playing the sample beacon on the air, with the hub's clock speaking
// beside it. Reports simulated seconds per wall second and how many files went
// on the air, so a busy player is seen not to slow a simulated day down.
#include <string>
#include <vector>

#include "core/window.h"
#include "simulated_day.h"

namespace {

void BM_BeaconDay(benchmark::State& state) {
    size_t plays = 0;
    mv::bench::SimulatedDay day;
    day.configure = [](mv::SuiteOptions& o) { o.sampleFolder = mv::installedSampleFolder(); };
    day.prepare = [&](mv::Suite& suite) {
        mv::Window& player = *suite.program().window("player");
        suite.scheduler().post([&player] {
            for (const char* box : {"ONHOUR", "QUARTERHOUR", "HALFHOUR", "STOPCLOCK3", "StopClock1"})
                player.controlAs<mv::CheckBox>(box)->setValue(1);
            player.controlAs<mv::TextBox>("BEACONPERIOD3")->setText("07");
            player.controlAs<mv::TextBox>("TEXT5")->setText("30");
            player.controlAs<mv::TextBox>("BeaconPeriod1")->setText("1");
        });
        // The host's command record is bounded; a day's queries would push the
        // early plays out of it, so the plays are counted as they are made.
        plays = 0;
        suite.host().setCommandListener([&plays](const mv::SimulatedHost::Command& c) {
            plays += c.window == "player" && c.call == "SetPTT" && c.args == std::vector<std::string>{"true"};
        });
    };
    day.finish = [&](mv::Suite&) { state.counters["plays_per_day"] = static_cast<double>(plays); };
    mv::bench::runSimulatedDays(state, "mv-bench-beacons", day);
}
BENCHMARK(BM_BeaconDay)->Unit(benchmark::kMillisecond)->Iterations(3)->UseManualTime();

}  // namespace

BENCHMARK_MAIN();
