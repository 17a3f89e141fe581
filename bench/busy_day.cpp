// A busy day of the whole suite in virtual time with every module at work:
// the busy node's events (RF and Internet overs, kerchunks, every window's
// DTMF codes, stations coming and going, chat) on a sound host, while the
// clock announces the quarters, the courtesy keys after every over, the
// player's beacons go out, both idents run, stations are announced, the
// beacon text is read, the fan runs, a silence slot holds the night, chat is
// read aloud and the long-over message is spoken, all through the real voice. Reports
// simulated seconds per wall second and per CPU second, and what the day held.
// Goal: at least 10,000 simulated seconds per second (a day in under 8.64 s).
// MV_BUSY_HOURS=N runs N hours instead of a day (a profiler's shorter run).
#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "busy_node.h"
#include "simulated_day.h"

namespace {

void BM_BusyDay(benchmark::State& state) {
    const auto dir = std::filesystem::temp_directory_path() / "mv-bench-busy-day";
    mv::bench::SimulatedRate rate;
    mv::test::BusyNodeReport r;
    for (auto _ : state) {
        std::filesystem::remove_all(dir);
        mv::test::BusyNodeOptions o;
        o.seed = static_cast<uint64_t>(state.range(0));
        o.failShare = o.busyShare = 0;
        o.settingsDir = dir / "settings";
        o.voiceFolder = mv::installedVoiceFolder();
        o.toneFolder = mv::installedToneFolder();
        o.sampleFolder = mv::installedSampleFolder();
        o.everyModuleAtWork = true;
        if (const char* hours = std::getenv("MV_BUSY_HOURS")) o.durationMs = static_cast<int64_t>(std::atof(hours) * 3600000);
        rate.start();
        r = mv::test::runBusyNode(o);
        state.SetIterationTime(rate.stop(static_cast<double>(r.simulatedMs) / 1000));
        for (const std::string& f : r.failures) std::fprintf(stderr, "busy_day: %s\n", f.c_str());
        if (!r.failures.empty()) state.SkipWithError("the busy day broke a rule");
    }
    std::filesystem::remove_all(dir);
    rate.report(state);
    const auto put = [&state](const char* name, uint64_t n) { state.counters[name] = static_cast<double>(n); };
    put("overs", r.rfOvers + r.internetOvers);
    put("kerchunks", r.kerchunks);
    put("dtmf_strings", r.dtmfStrings);
    put("dtmf_commands", r.dtmfCommands);
    put("connects", r.connects);
    put("chats", r.chats);
    put("utterances", r.utterances);
    put("files_played", r.filesPlayed);
    put("morse_sent", r.morseSent);
    put("fan_starts", r.fanStarts);
    put("keyings", r.keyings);
    put("timer_ticks", r.timerTicks);
    put("log_lines", r.logLines);
}
BENCHMARK(BM_BusyDay)->Arg(1)->Unit(benchmark::kMillisecond)->Iterations(2)->UseManualTime();

}  // namespace

BENCHMARK_MAIN();
