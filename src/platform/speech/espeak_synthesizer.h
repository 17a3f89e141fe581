#pragma once
// The espeak-ng library, which keeps one global state per process, behind one
// thread of its own: texts are synthesized there one after another into their
// clips (22050 Hz mono), and a cancelled clip stops growing at the library's
// next buffer. Listing the voices reads only the voice files; the phoneme
// data and the thread come with the first text (about 2 MB that a node which
// never speaks does not carry).
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/speech/speech_clip.h"

namespace mv {

class EspeakSynthesizer {
public:
    // The process's one synthesizer, started on first use.
    static EspeakSynthesizer& instance();
    ~EspeakSynthesizer();
    EspeakSynthesizer(const EspeakSynthesizer&) = delete;
    EspeakSynthesizer& operator=(const EspeakSynthesizer&) = delete;

    // Empty while the library can speak; otherwise why it cannot (no voices
    // installed, or its data would not load for an earlier text).
    std::string startError();
    // Installed voices by the name the library selects them with ("es",
    // "es-419", "en-US" ...), in the library's order.
    std::vector<std::string> voiceNames();
    // The installed voice's own spelling of `name` (matched without regard to
    // case), or empty when none has it.
    std::string findVoice(const std::string& name);

    struct Request {
        std::string voice;   // as findVoice spells it
        int wordsPerMinute;  // the library's own speed unit
    };
    // Queues the clip's text behind earlier ones. The clip fails when the
    // library cannot speak it; a clip cancelled before its turn is skipped.
    void synthesize(std::shared_ptr<SpeechClip> clip, Request request);

    // The library's speed for a voice speaking normally.
    static int normalWordsPerMinute();

private:
    EspeakSynthesizer() = default;
    // Reads the installed voices once; called with m_mutex held.
    void listVoicesLocked();
    void run();
    // Loads the phoneme data, on the synthesizer's thread before its first text.
    void start();
    void speak(SpeechClip& clip, const Request& request);

    struct Job {
        std::shared_ptr<SpeechClip> clip;
        Request request;
    };
    std::mutex m_mutex;
    std::condition_variable m_wake;
    std::deque<Job> m_jobs;
    bool m_stopping = false;
    bool m_listed = false;
    bool m_started = false;  // on the synthesizer's thread only
    std::string m_startError;
    std::vector<std::string> m_voices;
    // What the library was last set to, so a voice is loaded only on change.
    std::string m_voiceInUse;
    int m_rateInUse = -1;
    std::thread m_thread;
};

}  // namespace mv
