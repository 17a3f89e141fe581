#pragma once
// Assembles one running suite: clock, scheduler, event log, the simulated
// host, the settings store, dialogs, the program and its module windows. The
// GUI and the headless runner each build one; tests build them too.
#include <filesystem>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "core/clock.h"
#include "core/dialogs.h"
#include "core/event_log.h"
#include "core/program.h"
#include "core/scheduler.h"
#include "core/settings_store.h"
#include "core/shell.h"
#include "platform/audio/air.h"
#include "platform/simulated_host.h"
#include "core/speech.h"

namespace mv {

// Passes dialogs to whichever implementation is in force (scripted answers
// until the GUI installs real dialogs).
class DialogsProxy final : public Dialogs {
public:
    explicit DialogsProxy(Dialogs& initial) : m_target(&initial) {}
    void setTarget(Dialogs& target) { m_target = &target; }
    DialogAnswer message(const MessageRequest& r) override { return m_target->message(r); }
    std::optional<std::string> openFile(const FileRequest& r) override { return m_target->openFile(r); }
    std::optional<std::string> saveFile(const FileRequest& r) override { return m_target->saveFile(r); }

private:
    Dialogs* m_target;
};

// Passes address requests to whichever shell is in force: the logging one
// until the desktop front end installs the real one.
class ShellProxy final : public Shell {
public:
    explicit ShellProxy(Shell& initial) : m_target(&initial) {}
    void setTarget(Shell& target) { m_target = &target; }
    int open(const std::string& window, const std::string& address) override { return m_target->open(window, address); }

private:
    Shell* m_target;
};

// What the windows' host objects talk to: the simulated node in-process, or
// the host program through its automation interface (Windows builds only).
enum class HostBinding { Simulated, Automation };

struct SuiteOptions {
    std::filesystem::path settingsDir;
    HostBinding host = HostBinding::Simulated;
    // Virtual time starting at this local date-time; real time when empty.
    std::optional<LocalDateTime> virtualStart;
    std::ostream* logStream = nullptr;
    // Host queries and repeated commands in the log too (--log-queries).
    bool logQueries = false;
    // Folder of the voice installed with the program.
    std::string defaultVoiceFolder;
    // Folder of the courtesy tones installed with the program.
    std::string defaultToneFolder;
    // Folder of the sample beacon files installed with the program.
    std::string sampleFolder;
};

class Suite {
public:
    // Throws std::runtime_error when the host program cannot be bound to.
    explicit Suite(const SuiteOptions& options);
    ~Suite();

    Clock& clock() { return *m_clock; }
    Scheduler& scheduler() { return *m_scheduler; }
    EventLog& log() { return m_log; }
    // The simulated node: the windows' host, or, bound to the automation
    // interface, the node behind the test stand-in.
    SimulatedHost& host() { return *m_host; }
    // Whether events raised on host() reach the windows (false when they are
    // bound to the real host program).
    bool hostDrivesWindows() const { return m_hostDrivesWindows; }
    SettingsStore& settings() { return *m_settings; }
    ScriptedDialogs& scriptedDialogs() { return *m_scripted; }
    DialogsProxy& dialogs() { return *m_dialogs; }
    // Opens nothing; records each address (tests choose its answer).
    LoggingShell& loggingShell() { return *m_loggingShell; }
    ShellProxy& shell() { return *m_shell; }
    Program& program() { return *m_program; }
    VirtualClock* virtualClock() { return m_virtualClock; }
    // What goes out over the radio: graphs, host tones, the device and the
    // recorder (`air().startRecording(path)` for --record and the GUI).
    Air& air() { return *m_air; }
    // The speech voice (espeak-ng), speaking onto the air; null in a build
    // without one.
    SpeechVoice* speech() { return m_speech.get(); }

private:
    std::unique_ptr<Clock> m_clock;
    VirtualClock* m_virtualClock = nullptr;
    std::unique_ptr<Scheduler> m_scheduler;
    EventLog m_log;
    std::unique_ptr<Air> m_air;
    std::unique_ptr<SpeechVoice> m_speech;
    AirStop m_speechStop;
    std::unique_ptr<SimulatedHost> m_host;
    std::unique_ptr<HostLink> m_automation;
    bool m_hostDrivesWindows = true;
    std::unique_ptr<SettingsStore> m_settings;
    std::unique_ptr<ScriptedDialogs> m_scripted;
    std::unique_ptr<DialogsProxy> m_dialogs;
    std::unique_ptr<LoggingShell> m_loggingShell;
    std::unique_ptr<ShellProxy> m_shell;
    std::unique_ptr<Program> m_program;
};

// Adds every module window this build has, unloaded, to the program.
void addModuleWindows(Program& program);

// Shows the named windows, each loaded first as its hub button would; "all"
// names every window the program has. Returns the names no window has.
std::vector<std::string> showWindows(Program& program, const std::vector<std::string>& names);

// The voice folder installed with the program (ends with '/').
std::string installedVoiceFolder();
// The folder of the default courtesy tones (ends with '/').
std::string installedToneFolder();
// The sample beacon folder installed with the program (ends with '/').
std::string installedSampleFolder();

}  // namespace mv
