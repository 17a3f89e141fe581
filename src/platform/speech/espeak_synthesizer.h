#pragma once
// The espeak-ng library, which keeps one global state per process, behind one
// thread of its own: every call to the library happens there, texts are
// synthesized one after another into their clips (22050 Hz mono), and a
// cancelled clip stops growing at the library's next buffer.
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

    // Empty when the library started; otherwise why it did not.
    const std::string& startError() const { return m_startError; }
    // Installed voices by the name the library selects them with ("es",
    // "es-419", "en-US" ...), in the library's order.
    const std::vector<std::string>& voiceNames() const { return m_voices; }
    // The installed voice's own spelling of `name` (matched without regard to
    // case), or empty when none has it.
    std::string findVoice(const std::string& name) const;

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
    EspeakSynthesizer();
    void run();
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
    bool m_started = false;
    std::string m_startError;
    std::vector<std::string> m_voices;
    // What the library was last set to, so a voice is loaded only on change.
    std::string m_voiceInUse;
    int m_rateInUse = -1;
    std::thread m_thread;
};

}  // namespace mv
