#include "platform/speech/espeak_synthesizer.h"

#include <espeak-ng/espeak_ng.h>
#include <espeak-ng/speak_lib.h>

#include <algorithm>
#include <cctype>
#include <cstring>

namespace mv {
namespace {

// The library hands over audio in buffers of this many milliseconds; small
// ones let the air start playing soon after the first words are made.
constexpr int kBufferMs = 40;

bool sameName(const std::string& a, const std::string& b) {
    return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(), [](char x, char y) {
               return std::tolower(static_cast<unsigned char>(x)) == std::tolower(static_cast<unsigned char>(y));
           });
}

// Called by the library on the synthesizer's thread with each buffer.
int receiveAudio(short* samples, int count, espeak_EVENT* events) {
    auto* clip = events ? static_cast<SpeechClip*>(events->user_data) : nullptr;
    if (!clip) return 0;
    if (samples && count > 0) clip->append(samples, count);
    return clip->cancelled() ? 1 : 0;
}

// espeak-ng 1.51 can read a word past its end: a loop that walks a word on
// its stack until the next blank finds none for some texts (a chat line such
// as "EA4XYZ-L>hola a todos") and runs on up the stack through whatever
// earlier calls left there (valgrind: "uninitialised value was created by a
// stack allocation", under espeak_Synth). It stops at the first blank byte it
// meets; with none left above it, it ran off the thread's stack and crashed
// the program. Filling the stack it is about to use with blanks (a long text
// takes under 50 KB of it) ends every such walk inside the library's own part.
[[gnu::noinline]] void blankStackForTheLibrary() {
    char area[128 * 1024];
    std::memset(area, ' ', sizeof area);
    asm volatile("" : : "r"(area) : "memory");
}

}  // namespace

EspeakSynthesizer& EspeakSynthesizer::instance() {
    static EspeakSynthesizer synthesizer;
    return synthesizer;
}

int EspeakSynthesizer::normalWordsPerMinute() { return espeakRATE_NORMAL; }

EspeakSynthesizer::~EspeakSynthesizer() {
    {
        std::lock_guard lock(m_mutex);
        m_stopping = true;
        for (Job& job : m_jobs) job.clip->cancel();
    }
    m_wake.notify_all();
    if (m_thread.joinable()) m_thread.join();
}

void EspeakSynthesizer::listVoicesLocked() {
    if (m_listed) return;
    m_listed = true;
    // The voice files alone: the library lists them without its phoneme data.
    // No text is queued before this has run, so the synthesizer's thread is
    // not yet using the library.
    espeak_ng_InitializePath(nullptr);
    if (const espeak_VOICE** voices = espeak_ListVoices(nullptr)) {
        for (; *voices; ++voices) {
            const std::string id = (*voices)->identifier ? (*voices)->identifier : "";
            const std::string name = id.substr(id.rfind('/') + 1);
            if (!name.empty()) m_voices.push_back(name);
        }
    }
    if (m_voices.empty()) m_startError = "espeak-ng has no voices installed (is espeak-ng-data installed?)";
}

std::string EspeakSynthesizer::startError() {
    std::lock_guard lock(m_mutex);
    listVoicesLocked();
    return m_startError;
}

std::vector<std::string> EspeakSynthesizer::voiceNames() {
    std::lock_guard lock(m_mutex);
    listVoicesLocked();
    return m_voices;
}

void EspeakSynthesizer::start() {
    const int rate = espeak_Initialize(AUDIO_OUTPUT_SYNCHRONOUS, kBufferMs, nullptr, espeakINITIALIZE_DONT_EXIT);
    if (rate == kSpeechRate) {
        espeak_SetSynthCallback(receiveAudio);
        return;
    }
    const std::string why = rate < 0 ? "espeak-ng could not start (is espeak-ng-data installed?)"
                                     : "espeak-ng speaks at " + std::to_string(rate) + " Hz, not " + std::to_string(kSpeechRate);
    std::lock_guard lock(m_mutex);
    m_startError = why;
}

void EspeakSynthesizer::run() {
    for (;;) {
        Job job;
        {
            std::unique_lock lock(m_mutex);
            m_wake.wait(lock, [this] { return m_stopping || !m_jobs.empty(); });
            if (m_jobs.empty()) break;
            job = std::move(m_jobs.front());
            m_jobs.pop_front();
        }
        if (job.clip->cancelled()) {
            job.clip->finish();
            continue;
        }
        if (!m_started) {
            start();
            m_started = true;
        }
        speak(*job.clip, job.request);
    }
    if (m_started && startError().empty()) espeak_Terminate();
}

std::string EspeakSynthesizer::findVoice(const std::string& name) {
    std::lock_guard lock(m_mutex);
    listVoicesLocked();
    for (const std::string& v : m_voices)
        if (sameName(v, name)) return v;
    return {};
}

void EspeakSynthesizer::synthesize(std::shared_ptr<SpeechClip> clip, Request request) {
    {
        std::lock_guard lock(m_mutex);
        listVoicesLocked();
        if (!m_thread.joinable()) m_thread = std::thread([this] { run(); });
        m_jobs.push_back(Job{std::move(clip), std::move(request)});
    }
    m_wake.notify_all();
}

void EspeakSynthesizer::speak(SpeechClip& clip, const Request& request) {
    if (const std::string why = startError(); !why.empty()) return clip.fail(why);
    blankStackForTheLibrary();
    if (request.voice != m_voiceInUse) {
        if (espeak_SetVoiceByName(request.voice.c_str()) != EE_OK) {
            m_voiceInUse.clear();
            return clip.fail("espeak-ng cannot load the voice \"" + request.voice + "\"");
        }
        m_voiceInUse = request.voice;
        m_rateInUse = -1;  // a new voice starts at its own speed
    }
    const int rate = std::clamp(request.wordsPerMinute, static_cast<int>(espeakRATE_MINIMUM), static_cast<int>(espeakRATE_MAXIMUM));
    if (rate != m_rateInUse) {
        espeak_SetParameter(espeakRATE, rate, 0);
        m_rateInUse = rate;
    }
    // Plain UTF-8 text: no SSML and no phoneme input, so whatever a chat line
    // or a phrase field holds is spoken as written, never obeyed.
    const std::string& text = clip.text();
    const espeak_ERROR r = espeak_Synth(text.c_str(), text.size() + 1, 0, POS_CHARACTER, 0, espeakCHARS_UTF8, nullptr, &clip);
    if (r != EE_OK && !clip.cancelled())
        clip.fail("espeak-ng could not speak the text (error " + std::to_string(static_cast<int>(r)) + ")");
    else
        clip.finish();
}

}  // namespace mv
