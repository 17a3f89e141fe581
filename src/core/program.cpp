#include "core/program.h"

#include "core/errors.h"
#include "core/event_log.h"
#include "core/host_call_log.h"
#include "core/media.h"
#include "core/version.h"

namespace mv {

std::string ProductInfo::versionText() const {
    return std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(revision);
}

std::string ProductInfo::versionReply() const { return name + "  v" + versionText(); }

ProductInfo builtProduct() {
    return ProductInfo{kProductName, kVersionMajor, kVersionMinor, kVersionRevision};
}

Program::Program(Services services, ProductInfo product) : m_services(services), m_product(std::move(product)) {}

Program::~Program() {
    // Windows go before the services they use; no handler runs any more.
    m_observer = nullptr;
    m_windows.clear();
}

MediaFactory& Program::media() {
    if (!m_services.media) throw MediaError("no media back end in this build");
    return *m_services.media;
}

Window& Program::addWindow(std::unique_ptr<Window> window) {
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
    if (!m_ended) {
        m_ended = true;
        m_services.log.end(reason);
        m_services.scheduler.stop();
        if (m_onEnded) m_onEnded();
    }
    throw ProgramEnded{};
}

void Program::shutdown(const std::string& reason) {
    if (m_ended) return;
    ignoreErrors([&] {
        HostCallLog host(m_services.host.createObject("program", nullptr), "program", *this);
        host.setPTT(false);
    });
    try {
        end(reason);
    } catch (const ProgramEnded&) {
    }
}

int Program::randomBetween(int low, int high) {
    if (high <= low) return low;
    return std::uniform_int_distribution<int>(low, high)(m_random);
}

std::unique_ptr<HostObject> Program::createHostObject(Window& window) {
    auto raw = m_services.host.createObject(window.name(), &window);
    return std::make_unique<HostCallLog>(std::move(raw), window.name(), *this);
}

}  // namespace mv
