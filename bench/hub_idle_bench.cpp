// The hub alone, idle, for one simulated day in virtual time. Reports how many
// simulated seconds pass per wall-clock second (goal: at least 50,000).
#include "simulated_day.h"

namespace {

void BM_HubIdleDay(benchmark::State& state) { mv::bench::runSimulatedDays(state, "mv-bench-hub", {}); }
BENCHMARK(BM_HubIdleDay)->Unit(benchmark::kMillisecond)->Iterations(3)->UseManualTime();

}  // namespace

BENCHMARK_MAIN();
