#include "core/program.h"

#include "core/errors.h"
#include "core/event_log.h"
#include "core/host_call_log.h"
#include "core/media.h"
#include "core/shell.h"
#include "core/version.h"

namespace mv {

std::string ProductInfo::versionText() const {
    return std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(revision);
}

std::string ProductInfo::versionReply() const { return name + "  v" + versionText(); }

ProductInfo builtProduct() {
    return ProductInfo{kProductName, kVersionMajor, kVersionMinor, kVersionRevision};
}

AirStop::AirStop(AirStop&& other) noexcept : m_members(std::move(other.m_members)), m_id(other.m_id) { other.m_id = 0; }

AirStop& AirStop::operator=(AirStop&& other) noexcept {
    if (this != &other) {
        reset();
        m_members = std::move(other.m_members);
        m_id = other.m_id;
        other.m_id = 0;
    }
    return *this;
}

AirStop::~AirStop() { reset(); }

void AirStop::reset() {
    if (const auto members = m_members.lock(); members && m_id != 0)
        std::erase_if(*members, [id = m_id](const Member& m) { return m.id == id; });
    m_members.reset();
    m_id = 0;
}

Program::Program(Services services, ProductInfo product) : m_services(services), m_product(std::move(product)) {}

Program::~Program() {
    // Windows go before the services they use; no handler runs any more.
    m_observer = nullptr;
    m_windows.clear();
}

AirStop Program::addAirStop(std::string owner, std::function<void()> silence) {
    const uint64_t id = m_nextAirStop++;
    m_airStops->push_back({id, std::move(owner), std::move(silence)});
    return AirStop(m_airStops, id);
}

MediaFactory& Program::media() {
    if (!m_services.media) throw MediaError("no media back end in this build");
    return *m_services.media;
}

Shell& Program::shell() {
    if (m_services.shell) return *m_services.shell;
    if (!m_fallbackShell) m_fallbackShell = std::make_unique<LoggingShell>(m_services.log);
    return *m_fallbackShell;
}

SpeechVoice& Program::speech() {
    if (!m_services.speech) throw SpeechError("no speech voice in this build");
    return *m_services.speech;
}

Window& Program::addWindow(std::unique_ptr<Window> window) {
    for (auto& existing : m_windows) {
        if (existing->name() != window->name() || existing->isLoaded()) continue;
        existing = std::move(window);
        return *existing;
    }
    m_windows.push_back(std::move(window));
    return *m_windows.back();
}

Window* Program::window(std::string_view name) const {
    for (const auto& w : m_windows)
        if (w->name() == name) return w.get();
    return nullptr;
}

Program::StartResult Program::start(std::string_view startWindow, InstanceGuard* guard, std::string& message) {
    if (guard && !guard->acquire(message)) return StartResult::AlreadyRunning;
    Window* first = window(startWindow);
    if (!first) {
        message = "no window named " + std::string(startWindow);
        return StartResult::Ended;
    }
    try {
        first->show();
    } catch (const ProgramEnded&) {
        return StartResult::Ended;
    }
    return m_ended ? StartResult::Ended : StartResult::Started;
}

void Program::end(const std::string& reason) {
    finish(reason);
    throw ProgramEnded{};
}

void Program::shutdown(const std::string& reason) { finish(reason); }

void Program::finish(const std::string& reason) {
    // The first caller ends it; a silencer or a release that asks again
    // (or throws the end) finds it under way.
    if (m_ending) return;
    m_ending = true;
    // A silencer may leave (or others join) while the list is walked.
    const AirStop::Members members = *m_airStops;
    for (const AirStop::Member& m : members) {
        try {
            if (m.silence) m.silence();
        } catch (const std::exception& e) {
            m_services.log.error(m.owner, std::string("silencing at the end: ") + e.what());
        } catch (const ProgramEnded&) {
        }
    }
    releaseTransmitter();
    m_ended = true;
    m_services.log.end(reason);
    m_services.scheduler.stop();
    if (m_onEnded) m_onEnded();
}

void Program::releaseTransmitter() {
    // Whatever a window did or failed to do, the run's last word to the host
    // is the release. A failure is logged by the call log; nothing more can
    // be done about it here. Morse the host is still sending keys on until it
    // ends: the host link has no command to stop it, which is why the fields
    // whose text the host sends as Morse are kept short.
    try {
        HostCallLog host(m_services.host.createObject("program", nullptr), "program", *this);
        // Logged even when the transmitter is already known to be released:
        // the log of every run ends by saying so.
        m_hostLines.ptt.reset();
        m_transmitter.clear();
        host.setPTT(false);
    } catch (const HostError&) {
        // The call log has said why.
    } catch (const std::exception& e) {
        m_services.log.error("program", std::string("releasing the transmitter at the end: ") + e.what());
    } catch (const ProgramEnded&) {
    }
}

void Program::keyingCommandIssued(bool keys) {
    for (const auto& w : m_windows)
        if (w->isLoaded()) w->onKeyingCommand(keys);
}

int Program::randomBetween(int low, int high) {
    if (high <= low) return low;
    return std::uniform_int_distribution<int>(low, high)(m_random);
}

namespace {
// Passes a window's host events on to it, noting the host's closing first.
class EventTap final : public HostEvents {
public:
    EventTap(Program& program, Window& window) : m_program(program), m_window(window) {}
    void onDTMFString(const std::string& digits) override { m_window.onDTMFString(digits); }
    void onRX(bool receiving) override { m_window.onRX(receiving); }
    void onCarrierDetect(bool carrier) override { m_window.onCarrierDetect(carrier); }
    void onConnected(const std::string& call, const std::string& name, const std::string& address) override {
        m_window.onConnected(call, name, address);
    }
    void onDisconnected(const std::string& call) override { m_window.onDisconnected(call); }
    void onChatTextReceived(const std::string& text) override { m_window.onChatTextReceived(text); }
    void onClosing() override {
        m_program.hostClosing();
        m_window.onClosing();
    }

private:
    Program& m_program;
    Window& m_window;
};
}  // namespace

void Program::hostClosing() {
    if (m_hostClosing) return;
    m_hostClosing = true;
    for (const auto& w : m_windows)
        if (w->isLoaded()) w->beforeHostCloses();
}

std::unique_ptr<HostObject> Program::createHostObject(Window& window) {
    // A window that loads again gets a new tap; the old one's subscription
    // ended with its host object.
    m_eventTaps.push_back(std::make_unique<EventTap>(*this, window));
    auto raw = m_services.host.createObject(window.name(), m_eventTaps.back().get());
    return std::make_unique<HostCallLog>(std::move(raw), window.name(), *this);
}

}  // namespace mv
