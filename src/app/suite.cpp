#include "app/suite.h"

#include "about/about_window.h"
#include "clock/clock_window.h"
#include "courtesy/courtesy_window.h"
#include "dtmf/dtmf_control_window.h"
#include "dtmf/keypad_window.h"
#include "idents/ident_window.h"
#include "idents/tts_window.h"
#include "messages/history_window.h"
#include "messages/messages_window.h"
#include "platform/automation_host.h"
#include "platform/running_program.h"
#include "player/player_window.h"
#include "platform/settings_folder.h"
#ifdef MV_HAVE_SPEECH
#include "platform/speech/espeak_voice.h"
#endif

namespace mv {

Suite::Suite(const SuiteOptions& options) {
    if (options.virtualStart) {
        auto clock = std::make_unique<VirtualClock>(*options.virtualStart);
        m_virtualClock = clock.get();
        m_clock = std::move(clock);
    } else {
        m_clock = std::make_unique<RealClock>();
    }
    m_scheduler = std::make_unique<Scheduler>(*m_clock);
    m_log.setTimeSource([this] { return m_clock->localTimeAt(m_clock->monotonicMs()); });
    m_log.setStream(options.logStream);
    m_log.setRecordsQueries(options.logQueries);
    m_scheduler->setErrorSink([this](const std::string& message) { m_log.error("", message); });
    m_air = std::make_unique<Air>(*m_clock, [this](const std::string& note) { m_log.error("", "audio: " + note); });
    m_host = std::make_unique<SimulatedHost>(*m_scheduler, m_log);
    m_host->setToneSink([this](const ToneBurst& b) {
        m_air->mixer().addTone(b.startMs, b.durationMs, b.frequency1, b.frequency2);
    });
    m_host->setTransmitterListener([this](bool ptt, int64_t toneKeyedUntilMs) {
        m_air->mixer().setTransmitter(ptt, toneKeyedUntilMs);
    });
    HostLink* link = m_host.get();
    if (options.host == HostBinding::Automation) {
        AutomationHost bound = openAutomationHost(*m_scheduler, m_log, *m_host);
        m_automation = std::move(bound.link);
        m_hostDrivesWindows = bound.drivesNode;
        link = m_automation.get();
    }
    m_settings = std::make_unique<SettingsStore>(options.settingsDir, systemProfiles());
    // The program's mains build the suite once they hold the folder's lock,
    // so no other copy can be half way through a save here.
    m_settings->sweepFolderLeftovers();
    m_scripted = std::make_unique<ScriptedDialogs>(m_log);
    m_dialogs = std::make_unique<DialogsProxy>(*m_scripted);
    m_loggingShell = std::make_unique<LoggingShell>(m_log);
    m_shell = std::make_unique<ShellProxy>(*m_loggingShell);
#ifdef MV_HAVE_SPEECH
    m_speech = std::make_unique<EspeakVoice>(*m_scheduler, *m_air);
#endif
    m_program = std::make_unique<Program>(
        Services{*m_scheduler, *link, *m_settings, *m_dialogs, m_log, &m_air->media(), m_shell.get(),
                 m_speech.get()});
    // Whatever is still being spoken when the program ends goes silent
    // before the transmitter is released for the last time.
    if (m_speech) m_speechStop = m_program->addAirStop("speech", [this] { m_speech->purge(); });
    if (!options.defaultVoiceFolder.empty()) m_program->setDefaultVoiceFolder(options.defaultVoiceFolder);
    if (!options.defaultToneFolder.empty()) m_program->setDefaultToneFolder(options.defaultToneFolder);
    m_program->setSampleFolder(options.sampleFolder);
    addModuleWindows(*m_program);
}

Suite::~Suite() {
    // Windows (and their host objects and timers) go first.
    m_program.reset();
    m_automation.reset();
    m_host.reset();
    m_speech.reset();
    m_air.reset();
}

void addModuleWindows(Program& program) {
    program.addWindow(std::make_unique<ClockWindow>(program));
    program.addWindow(std::make_unique<CourtesyWindow>(program));
    program.addWindow(std::make_unique<PlayerWindow>(program));
    program.addWindow(std::make_unique<HistoryWindow>(program));
    // Loaded by its hub button, the first time it is pressed.
    program.addWindow(std::make_unique<MessagesWindow>(program));
    program.addWindow(std::make_unique<DtmfControlWindow>(program));
    program.addWindow(std::make_unique<AboutWindow>(program));
    program.addWindow(std::make_unique<KeypadWindow>(program));
    program.addWindow(std::make_unique<IdentWindow>(program));
    program.addWindow(std::make_unique<TtsWindow>(program));
}

std::vector<std::string> showWindows(Program& program, const std::vector<std::string>& names) {
    std::vector<std::string> unknown;
    for (const std::string& name : names) {
        if (name == "all") {
            for (const auto& w : program.windows()) w->show();
        } else if (Window* w = program.window(name)) {
            w->show();
        } else {
            unknown.push_back(name);
        }
    }
    return unknown;
}

namespace {
// A folder of sounds made at build time: an installed program finds it beside
// itself (bin/../share/marrowvane/...), so the install can be moved; a program
// run from its build tree uses the build's.
std::string installedSoundFolder(const char* subfolder, const char* probeFile, const char* buildDir,
                                 const char* installDir) {
    std::error_code ec;
    const std::filesystem::path exe = runningProgramPath();
    if (!exe.empty()) {
        const std::filesystem::path beside = exe.parent_path().parent_path() / "share" / "marrowvane" / subfolder;
        if (std::filesystem::exists(beside / probeFile, ec)) return (beside / "").string();
    }
    if (std::filesystem::exists(std::filesystem::path(buildDir) / probeFile, ec)) return std::string(buildDir) + "/";
    return std::string(installDir) + "/";
}
}  // namespace

std::string installedVoiceFolder() {
    return installedSoundFolder("voice", "TheTimeIs.wav", MV_BUILD_VOICE_DIR, MV_INSTALLED_VOICE_DIR);
}

std::string installedToneFolder() {
    return installedSoundFolder("tones", "RF.wav", MV_BUILD_TONES_DIR, MV_INSTALLED_TONES_DIR);
}

std::string installedSampleFolder() {
    return installedSoundFolder("samples", "Beacon.wav", MV_BUILD_SAMPLES_DIR, MV_INSTALLED_SAMPLES_DIR);
}

}  // namespace mv
