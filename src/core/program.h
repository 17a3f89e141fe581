#pragma once
// The running program: its windows, the services every window uses, the guard
// against a second running copy (checked before any window loads) and the one
// end that silences the air, releases the transmitter and stops everything.
#include <cstdint>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "core/failure_fold.h"
#include "core/host_call_log.h"
#include "core/transmitter.h"
#include "core/window.h"

namespace mv {

class SettingsStore;
class Dialogs;
class EventLog;
class MediaFactory;
class SpeechVoice;
class HostLink;
class Shell;

struct ProductInfo {
    std::string name;
    int major = 1;
    int minor = 0;
    int revision = 0;
    // "1.0.0"
    std::string versionText() const;
    // The answer to a chat "/ver/" request: "Marrowvane  v1.0.0".
    std::string versionReply() const;
};
ProductInfo builtProduct();

// Held for as long as this copy runs; a second copy cannot acquire it.
class InstanceGuard {
public:
    virtual ~InstanceGuard() = default;
    // False, with a reason, when another copy already runs.
    virtual bool acquire(std::string& reason) = 0;
};

// What the GUI needs to follow windows as they load, show and go.
class WindowObserver {
public:
    virtual ~WindowObserver() = default;
    virtual void windowLoaded(Window&) {}
    virtual void windowUnloading(Window&) {}
    virtual void windowVisibilityChanged(Window&) {}
    virtual void windowCaptionChanged(Window&) {}
    virtual void windowMoved(Window&) {}
    virtual void windowStatusChanged(Window&) {}
};

// A place in the program's end for something that can put sound on the air (a
// window's media graph, the speech voice). While it is held, the program's end
// calls its silencer before the transmitter is released for the last time.
// Destroying it, or reset(), leaves; it may outlive the program harmlessly.
class AirStop {
public:
    AirStop() = default;
    AirStop(AirStop&& other) noexcept;
    AirStop& operator=(AirStop&& other) noexcept;
    AirStop(const AirStop&) = delete;
    AirStop& operator=(const AirStop&) = delete;
    ~AirStop();
    void reset();
    bool joined() const { return m_id != 0 && !m_members.expired(); }

private:
    friend class Program;
    struct Member {
        uint64_t id;
        std::string owner;
        std::function<void()> silence;
    };
    using Members = std::vector<Member>;
    AirStop(std::weak_ptr<Members> members, uint64_t id) : m_members(std::move(members)), m_id(id) {}
    std::weak_ptr<Members> m_members;
    uint64_t m_id = 0;
};

struct Services {
    Scheduler& scheduler;
    HostLink& host;
    SettingsStore& settings;
    Dialogs& dialogs;
    EventLog& log;
    MediaFactory* media = nullptr;
    // Opens addresses with the desktop; without one, requests are only logged.
    Shell* shell = nullptr;
    SpeechVoice* speech = nullptr;
};

class Program {
public:
    Program(Services services, ProductInfo product = builtProduct());
    ~Program();
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    Scheduler& scheduler() { return m_services.scheduler; }
    HostLink& hostLink() { return m_services.host; }
    SettingsStore& settings() { return m_services.settings; }
    Dialogs& dialogs() { return m_services.dialogs; }
    EventLog& log() { return m_services.log; }
    MediaFactory& media();
    bool hasMedia() const { return m_services.media != nullptr; }
    Shell& shell();
    // The speech voice; throws SpeechError in a build without one.
    SpeechVoice& speech();
    bool hasSpeech() const { return m_services.speech != nullptr; }
    const ProductInfo& product() const { return m_product; }

    // Windows are added unloaded; the start window loads the others. A window
    // added under the name of one not loaded yet takes its place (a test's
    // stand-in for a module window).
    Window& addWindow(std::unique_ptr<Window> window);
    Window* window(std::string_view name) const;
    const std::vector<std::unique_ptr<Window>>& windows() const { return m_windows; }

    enum class StartResult { Started, AlreadyRunning, Ended };
    // Checks the guard before anything else (a second copy makes no host call
    // at all), then loads and shows the start window.
    StartResult start(std::string_view startWindow, InstanceGuard* guard, std::string& message);

    // Every way the program ends goes through one path, whoever asks (a quit
    // prompt, save-and-exit, the host closing, the scenario's end, a signal,
    // the desktop closing, a fatal error caught on the way out):
    //   1. every joined AirStop is silenced (media graphs stop, speech stops);
    //   2. the program's own host object sends SetPTT(false), always logged,
    //      so the last host command of every run releases the transmitter;
    //   3. the `end` line is logged, the scheduler stops for good and the
    //      on-ended callback runs.
    // From then on any host call a window makes throws ProgramEnded, and a
    // blocking wait in progress unwinds the same way, so nothing a handler
    // does after the end can reach the host.
    //
    // Ends the whole program at once from inside a handler: nothing after
    // this runs. Throws ProgramEnded to unwind the caller; the dispatcher
    // catches it.
    [[noreturn]] void end(const std::string& reason);
    bool ended() const { return m_ended; }
    // Ends the program from outside any handler (a signal, the desktop
    // session closing, the scenario's last line, a fatal error). Returns
    // normally; a no-op once the program has ended.
    void shutdown(const std::string& reason);
    // Called once when the program ends (the GUI quits its event loop).
    void setOnEnded(std::function<void()> callback) { m_onEnded = std::move(callback); }

    // Joins the end: `silence` stops whatever `owner` has on the air, without
    // calling the host (the program releases the transmitter itself right
    // after). A PlayerStrip joins when it is built; the speech voice joins the
    // same way. Keep the returned AirStop for as long as the sound source
    // lives; an error `silence` throws is logged and the end goes on.
    [[nodiscard]] AirStop addAirStop(std::string owner, std::function<void()> silence);
    // Host calls rejected because the host is busy are retried for up to this
    // long before they fail; one setting for the whole process.
    void setHostBusyWaitMs(int64_t ms) { m_hostBusyWaitMs = ms; }
    int64_t hostBusyWaitMs() const { return m_hostBusyWaitMs; }

    // A host object for a window: the host's own, with its commands logged
    // and the busy-wait policy applied.
    std::unique_ptr<HostObject> createHostObject(Window& window);
    // What the suite last told the host about the transmitter and the serial
    // lines, shared by every window's call log (see HostCallLog).
    HostLineMemory& hostLines() { return m_hostLines; }
    // Which windows hold the transmitter keyed; every window's SetPTT goes
    // through it (see HostCallLog::setPTT).
    Transmitter& transmitter() { return m_transmitter; }
    // Repeated host failures counted instead of logged one by one.
    FailureFold& hostFailures() { return m_hostFailures; }

    // The host has begun to close: the first window to hear its Closing event
    // calls this before its own handler runs, so every loaded window gets its
    // Window::beforeHostCloses() whichever window's handler then ends the
    // program. Runs once.
    void hostClosing();

    // Some window's host object has just keyed, unkeyed or sent tones: every
    // loaded window hears of it (Window::onKeyingCommand).
    void keyingCommandIssued(bool keys);

    // Folder of the voice recordings installed with the program; the hub's
    // "Default" buttons put it into the voice folder fields.
    const std::string& defaultVoiceFolder() const { return m_defaultVoiceFolder; }
    void setDefaultVoiceFolder(std::string folder) { m_defaultVoiceFolder = std::move(folder); }
    // Folder of the courtesy tones installed with the program ("RF.wav",
    // "IP.wav"); the courtesy window's tone fields default to them.
    const std::string& defaultToneFolder() const { return m_defaultToneFolder; }
    void setDefaultToneFolder(std::string folder) { m_defaultToneFolder = std::move(folder); }
    // Folder of the sample beacon files installed with the program (ends with
    // '/', or empty when there is none); the DTMF player's first rows name them
    // until the operator chooses files of his own.
    const std::string& sampleFolder() const { return m_sampleFolder; }
    void setSampleFolder(std::string folder) { m_sampleFolder = std::move(folder); }

    // The suite's one source of chance (a random beacon file, a random text
    // line): real randomness by default; a fixed seed makes a run replay the
    // same way (the headless runner seeds it and logs the seed).
    void seedRandom(uint64_t seed) { m_random.seed(static_cast<std::mt19937_64::result_type>(seed)); }
    // A whole number from `low` to `high`, both included.
    int randomBetween(int low, int high);

    void setObserver(WindowObserver* observer) { m_observer = observer; }
    WindowObserver* observer() const { return m_observer; }

private:
    void finish(const std::string& reason);
    void releaseTransmitter();

    Services m_services;
    ProductInfo m_product;
    std::vector<std::unique_ptr<Window>> m_windows;
    std::shared_ptr<AirStop::Members> m_airStops = std::make_shared<AirStop::Members>();
    uint64_t m_nextAirStop = 1;
    HostLineMemory m_hostLines;
    Transmitter m_transmitter;
    FailureFold m_hostFailures;
    bool m_ending = false;
    std::unique_ptr<Shell> m_fallbackShell;
    bool m_ended = false;
    bool m_hostClosing = false;
    // What each window's host object reports its events to (see hostClosing).
    std::vector<std::unique_ptr<HostEvents>> m_eventTaps;
    int64_t m_hostBusyWaitMs = 0;
    std::function<void()> m_onEnded;
    WindowObserver* m_observer = nullptr;
    std::mt19937_64 m_random{std::random_device{}()};
    std::string m_defaultVoiceFolder = "C:\\Program Files\\Marrowvane\\";
    std::string m_defaultToneFolder = "C:\\Program Files\\Marrowvane\\";
    std::string m_sampleFolder;
};

}  // namespace mv
