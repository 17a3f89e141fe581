// The speech voice's two speed goals: how many seconds of speech espeak-ng
// makes per second of CPU (goal: at least 20), and how long after the ident
// window keys the transmitter the first sample of speech is on the air, with
// no TTS delay (goal: under 50 ms), for a short ident and for a long text;
// and what the first text of a run adds to that (the voice's data loading).
#include <benchmark/benchmark.h>

#include <time.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>
#include <memory>
#include <mutex>
#include <thread>

#include <unistd.h>

#include "app/suite.h"
#include "core/module_surfaces.h"
#include "idents/tts_window.h"
#include "platform/speech/espeak_synthesizer.h"
#include "platform/speech/espeak_voice.h"

namespace mv {
namespace {

const std::string kParagraph =
    "La estacion de radioaficionado transmite su indicativo cada quince minutos. Los mensajes de texto se "
    "leen cuando el canal esta libre, y la hora se anuncia en punto, a los cuartos y a la media. ";

double processCpuSeconds() {
    timespec t{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &t);
    return static_cast<double>(t.tv_sec) + static_cast<double>(t.tv_nsec) / 1e9;
}

// The first text of a run also loads the library's phoneme data, which the
// synthesizer leaves until something is to be said: the time from queuing it
// to its first samples. Registered first, so it is the process's first text.
void BM_FirstTextLoadsTheVoice(benchmark::State& state) {
    EspeakSynthesizer& synth = EspeakSynthesizer::instance();
    const std::string voice = synth.findVoice("es");
    for (auto _ : state) {
        auto clip = std::make_shared<SpeechClip>("EA4ABC", 1.0f);
        const auto queued = std::chrono::steady_clock::now();
        synth.synthesize(clip, {voice, EspeakVoice::wordsPerMinute(0)});
        while (clip->frames() == 0 && !clip->done()) std::this_thread::yield();
        state.counters["first_samples_ms"] =
            std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - queued).count();
        clip->waitDone();
        if (clip->error()) state.SkipWithError(clip->error()->c_str());
    }
}
BENCHMARK(BM_FirstTextLoadsTheVoice)->Unit(benchmark::kMillisecond)->Iterations(1)->UseRealTime();

// Seconds of speech made per second of the whole process's CPU time (the
// synthesis runs on the synthesizer's own thread).
void BM_SynthesisSpeed(benchmark::State& state) {
    EspeakSynthesizer& synth = EspeakSynthesizer::instance();
    const std::string voice = synth.findVoice("es");
    double speech = 0, cpu = 0;
    for (auto _ : state) {
        auto clip = std::make_shared<SpeechClip>(kParagraph + kParagraph, 1.0f);
        const double before = processCpuSeconds();
        synth.synthesize(clip, {voice, EspeakVoice::wordsPerMinute(0)});
        clip->waitDone();
        cpu += processCpuSeconds() - before;
        speech += static_cast<double>(clip->frames()) / kSpeechRate;
    }
    state.counters["speech_s"] = speech / static_cast<double>(state.iterations());
    state.counters["speech_s_per_cpu_s"] = cpu > 0 ? speech / cpu : 0;
}
BENCHMARK(BM_SynthesisSpeed)->Unit(benchmark::kMillisecond)->Iterations(20);

// Listens to the air: the frame at which the transmitter was first keyed and
// the first frame with sound after it.
struct FirstSoundTap final : AirTap {
    void air(const float* stereo, int64_t frames, bool keyed) override {
        for (int64_t i = 0; i < frames; ++i, ++frame) {
            if (keyed && keyedAt < 0) keyedAt = frame;
            if (keyedAt >= 0 && soundAt < 0 && std::fabs(stereo[2 * i]) > 1e-4f) soundAt = frame;
        }
    }
    int64_t frame = 0, keyedAt = -1, soundAt = -1;
};

// A whole suite in real time (no sound card here: the air follows the clock,
// rendered each millisecond the engine waits): the ident window speaks keyed,
// and the air tells how long after the keying the speech began. The limit on
// keyed speech is set to one second, so a long text costs no more wall time.
void keyedToFirstSample(benchmark::State& state, const std::string& text) {
    const auto settings = std::filesystem::temp_directory_path() / ("mv-speech-bench-" + std::to_string(getpid()));
    SuiteOptions options;
    options.settingsDir = settings;
    Suite suite(options);
    std::string message;
    if (suite.program().start("hub", nullptr, message) != Program::StartResult::Started) {
        state.SkipWithError("the suite did not start");
        return;
    }
    dynamic_cast<TtsWindow*>(suite.program().window("tts"))->controlAs<TextBox>("MaxSpeechSeconds")->setText("1");
    SpeechDesk* desk = surfaceOf<SpeechDesk>(suite.program(), "idents");
    std::vector<double> latencies;
    for (auto _ : state) {
        FirstSoundTap tap;
        suite.air().mixer().setTap(&tap);
        desk->setSpeechText(text);
        desk->speakTheText();
        suite.air().mixer().setTap(nullptr);
        if (tap.keyedAt >= 0 && tap.soundAt >= 0)
            latencies.push_back(static_cast<double>(tap.soundAt - tap.keyedAt) / kAirFramesPerMs);
    }
    std::sort(latencies.begin(), latencies.end());
    if (!latencies.empty()) {
        state.counters["first_sample_ms_median"] = latencies[latencies.size() / 2];
        state.counters["first_sample_ms_worst"] = latencies.back();
    }
    std::filesystem::remove_all(settings);
}

void BM_KeyedToFirstSampleShortIdent(benchmark::State& state) { keyedToFirstSample(state, "EA4ABC"); }
BENCHMARK(BM_KeyedToFirstSampleShortIdent)->Unit(benchmark::kMillisecond)->Iterations(10)->UseRealTime();

void BM_KeyedToFirstSampleLongText(benchmark::State& state) {
    std::string text;
    for (int i = 0; i < 8; ++i) text += kParagraph;
    keyedToFirstSample(state, text);
}
BENCHMARK(BM_KeyedToFirstSampleLongText)->Unit(benchmark::kMillisecond)->Iterations(10)->UseRealTime();

}  // namespace
}  // namespace mv

BENCHMARK_MAIN();
