// A chat flood: 100,000 messages into the text message window, in virtual
// time. Reports the log's length (it must sit at its bound) and the resident
// memory when the window opens, when the log first fills and after the last
// message: from full to the end it must stay flat.
#include <benchmark/benchmark.h>

#include <chrono>
#include <filesystem>
#include <string>

#include "app/suite.h"
#include "messages/messages_window.h"
#include "resident_memory.h"

namespace {

using mv::bench::residentKb;

std::string message(int i) {
    static const char* const calls[] = {"EA4XYZ-L", "K1ABC", "LU7DW-R", "G4ABC", "VK2XYZ", "JA1ZZZ"};
    std::string text = std::string(calls[i % 6]) + ">mensaje numero " + std::to_string(i) +
                       ", probando el nodo con un texto de longitud normal";
    if (i % 50 == 0) text += " tonto";  // hidden by the filter
    return text;
}

void BM_ChatFlood(benchmark::State& state) {
    const auto dir = std::filesystem::temp_directory_path() / "mv-bench-messages";
    std::filesystem::create_directories(dir);
    const int total = static_cast<int>(state.range(0));
    for (auto _ : state) {
        mv::SuiteOptions o;
        o.settingsDir = dir;
        o.virtualStart = mv::LocalDateTime{2026, 11, 22, 9, 0, 0, 0};
        mv::Suite suite(o);
        std::string why;
        suite.program().start("hub", nullptr, why);
        mv::Scheduler& scheduler = suite.scheduler();
        scheduler.post([&] { suite.program().window("messages")->show(); });
        scheduler.post([&] {
            suite.program().window("messages")->controlAs<mv::TextBox>("FILTERTEXT1")->setText("tonto");
        });
        scheduler.runUntil(scheduler.now());
        auto& log = *suite.program().window("messages")->controlAs<mv::LineLog>("MessageLog");
        const double rssOpen = residentKb();
        double rssFull = 0;

        const auto t0 = std::chrono::steady_clock::now();
        constexpr int kBatch = 1000;
        for (int sent = 0; sent < total;) {
            for (int i = 0; i < kBatch && sent < total; ++i) suite.host().receiveChat(message(sent++));
            // A second of air per thousand messages: a flood, with the hub's
            // timers still running.
            scheduler.runUntil(scheduler.now() + 1000);
            // The simulated host records every command for tests; that record
            // is not part of the program.
            suite.host().clearCommands();
            if (rssFull == 0 && log.lines().size() == log.maxLines()) rssFull = residentKb();
        }
        const double wall = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
        state.SetIterationTime(wall);
        const double rssEnd = residentKb();
        state.counters["messages"] = total;
        state.counters["log_lines"] = static_cast<double>(log.lines().size());
        state.counters["log_bound"] = static_cast<double>(log.maxLines());
        state.counters["rss_open_kB"] = rssOpen;
        state.counters["rss_full_kB"] = rssFull;
        state.counters["rss_end_kB"] = rssEnd;
        state.counters["growth_after_full_kB"] = rssEnd - rssFull;
        state.counters["messages_per_s"] = total / wall;
    }
    std::filesystem::remove_all(dir);
}
BENCHMARK(BM_ChatFlood)->Arg(100000)->Arg(400000)->Unit(benchmark::kMillisecond)->Iterations(1)->UseManualTime();

}  // namespace

BENCHMARK_MAIN();
