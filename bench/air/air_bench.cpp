// The air's three speed goals: rendering and starting a cached word file,
// mixing a second of air with four sources, and the time from starting a
// graph to its first sample reaching the device.
#include <benchmark/benchmark.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <thread>

#include <sndfile.h>
#include <unistd.h>

#include "platform/audio/air.h"

namespace mv {
namespace {

std::string wordFile(int rate) {
    const std::string path =
        (std::filesystem::temp_directory_path() / ("mv-bench-word-" + std::to_string(rate) + "-" + std::to_string(getpid()) + ".wav")).string();
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = 1;
    info.format = SF_FORMAT_WAV | SF_FORMAT_PCM_16;
    std::vector<float> s(static_cast<size_t>(rate));
    for (size_t i = 0; i < s.size(); ++i) s[i] = 0.4f * static_cast<float>(std::sin(0.06 * static_cast<double>(i)));
    SNDFILE* f = sf_open(path.c_str(), SFM_WRITE, &info);
    sf_writef_float(f, s.data(), static_cast<sf_count_t>(s.size()));
    sf_close(f);
    return path;
}

// Goal: under 1 ms to render and start a 1 s word file that is in the cache.
void BM_RenderAndRunCachedWordFile(benchmark::State& state) {
    const std::string path = wordFile(48000);
    VirtualClock clock(LocalDateTime{2026, 11, 22, 14, 0, 0, 0});
    Air air(clock);
    air.cache().load(path);
    for (auto _ : state) {
        auto graph = air.media().createGraph("bench");
        graph->render(path);
        graph->run();
        graph->setPosition(0);
        graph->setVolume(-500);
        benchmark::DoNotOptimize(graph.get());
    }
    std::filesystem::remove(path);
}
BENCHMARK(BM_RenderAndRunCachedWordFile)->Unit(benchmark::kMicrosecond);

struct DiscardTap final : AirTap {
    void air(const float* stereo, int64_t frames, bool) override { benchmark::DoNotOptimize(stereo[frames - 1]); }
};

// Goal: under 2 ms of CPU for one second of air with four sources playing.
// Argument: the files' rate (48000 plays straight, 44100 resamples).
void BM_MixOneSecondFourSources(benchmark::State& state) {
    const std::string path = wordFile(static_cast<int>(state.range(0)));
    VirtualClock clock(LocalDateTime{2026, 11, 22, 14, 0, 0, 0});
    Air air(clock);
    DiscardTap tap;
    air.mixer().setTap(&tap);
    std::vector<std::unique_ptr<MediaGraph>> graphs;
    for (int i = 0; i < 4; ++i) {
        graphs.push_back(air.media().createGraph("bench"));
        graphs.back()->render(path);
        graphs.back()->setBalance(i * 1000 - 2000);
    }
    for (auto _ : state) {
        state.PauseTiming();
        for (auto& g : graphs) {
            g->setPosition(0);
            g->run();
        }
        state.ResumeTiming();
        clock.advanceBy(1000);
        air.mixer().catchUp();
    }
    air.mixer().setTap(nullptr);
    std::filesystem::remove(path);
}
BENCHMARK(BM_MixOneSecondFourSources)->Arg(48000)->Arg(44100)->Unit(benchmark::kMillisecond);

struct FirstSoundTap final : AirTap {
    std::atomic<bool> heard{false};
    void air(const float* stereo, int64_t frames, bool) override {
        for (int64_t i = 0; i < frames * 2; ++i)
            if (stereo[i] != 0.0f) heard = true;
    }
};

// Goal: in real time, a started graph's first sample reaches the device
// within 20 ms. Measured from run() to the sample being rendered for the
// device, plus the device's own reported output latency ("device_ms"). With
// no sound card the null device renders on the clock and says so.
void BM_FirstSampleAfterRun(benchmark::State& state) {
    const std::string path = wordFile(48000);
    RealClock clock;
    Air air(clock);
    FirstSoundTap tap;
    air.mixer().setTap(&tap);
    auto graph = air.media().createGraph("bench");
    graph->render(path);
    double worst = 0;
    for (auto _ : state) {
        state.PauseTiming();
        graph->stop();
        graph->setPosition(0);
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        air.mixer().catchUp();
        tap.heard = false;
        state.ResumeTiming();
        const auto t0 = std::chrono::steady_clock::now();
        graph->run();
        while (!tap.heard) {
            air.mixer().catchUp();  // what any poll or change does on a clock-driven device
            std::this_thread::yield();
        }
        const double ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0).count();
        worst = std::max(worst, ms);
    }
    state.counters["device_ms"] = air.device().outputLatencyMs();
    state.counters["worst_render_ms"] = worst;
    state.SetLabel(air.device().description());
    air.mixer().setTap(nullptr);
    std::filesystem::remove(path);
}
BENCHMARK(BM_FirstSampleAfterRun)->Iterations(20)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
}  // namespace mv

BENCHMARK_MAIN();
