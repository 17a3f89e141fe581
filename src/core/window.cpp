#include "core/window.h"

#include "core/host_call_log.h"

#include <cctype>
#include <stdexcept>

#include "core/errors.h"
#include "core/event_log.h"
#include "core/host_call_log.h"
#include "core/program.h"
#include "core/settings_binder.h"

namespace mv {

Window::Window(Program& program, std::string name) : m_program(program), m_name(std::move(name)) {}

Window::~Window() = default;

void Window::load() {
    if (m_loaded) return;
    build();
    m_loaded = true;
    m_program.log().windowOp(m_name, "load");
    if (WindowObserver* o = m_program.observer()) o->windowLoaded(*this);
    onLoad();
}

void Window::show() {
    load();
    if (m_visible || !m_loaded) return;
    m_visible = true;
    m_program.log().windowOp(m_name, "show");
    if (WindowObserver* o = m_program.observer()) o->windowVisibilityChanged(*this);
}

void Window::hide() {
    if (!m_visible) return;
    m_visible = false;
    m_program.log().windowOp(m_name, "hide");
    if (WindowObserver* o = m_program.observer()) o->windowVisibilityChanged(*this);
}

void Window::unload() {
    if (!m_loaded) return;
    onUnload();
    if (m_visible) {
        m_visible = false;
        if (WindowObserver* o = m_program.observer()) o->windowVisibilityChanged(*this);
    }
    if (WindowObserver* o = m_program.observer()) o->windowUnloading(*this);
    m_loaded = false;
    m_program.log().windowOp(m_name, "unload");
    destroyContents();
}

bool Window::closeBox() {
    if (!m_loaded) return false;
    if (onQueryClose() == CloseDecision::Cancel) return false;
    unload();
    return true;
}

void Window::setCaption(const std::string& caption) {
    if (caption == m_caption) return;
    m_caption = caption;
    if (WindowObserver* o = m_program.observer()) o->windowCaptionChanged(*this);
}

void Window::setStatusText(const std::string& text) {
    if (text == m_status) return;
    m_status = text;
    if (WindowObserver* o = m_program.observer()) o->windowStatusChanged(*this);
}

bool Window::saveSettings(const SettingsBinder& binder) {
    // The binder has logged what went wrong; the status line says it where
    // the operator pressed the button.
    const SettingsCommit saved = binder.save(settings(), log());
    if (saved.written)
        setStatusText("Guardado " + scheduler().wallNowExact().timeText());
    else
        setStatusText("No se pudo guardar " + binder.fileName() + ": " + saved.reason);
    return saved.written;
}

void Window::bindWindowPosition(SettingsBinder& binder, const std::string& defaultTwips) {
    binder.bindPosition(
        "LEFT", [this] { return leftTwips(); }, [this](float v) { move(v, topTwips()); }, defaultTwips);
    binder.bindPosition(
        "TOP", [this] { return topTwips(); }, [this](float v) { move(leftTwips(), v); }, defaultTwips);
}

void Window::move(float leftTwips, float topTwips) {
    if (leftTwips == m_left && topTwips == m_top) return;
    m_left = leftTwips;
    m_top = topTwips;
    if (WindowObserver* o = m_program.observer()) o->windowMoved(*this);
}

namespace {
std::string upperName(std::string_view name) {
    std::string key(name);
    for (char& c : key) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return key;
}
}  // namespace

Control* Window::control(std::string_view name) const {
    // Control names, like settings keys, are matched without regard to case.
    const auto it = m_byName.find(upperName(name));
    return it == m_byName.end() ? nullptr : it->second;
}

Control* Window::findByCaption(std::string_view caption) const {
    for (const auto& c : m_controls)
        if (c->caption() == caption) return c.get();
    for (const auto& c : m_controls)
        if (c->designCaption() == caption) return c.get();
    return nullptr;
}

HostObject& Window::host() {
    if (!m_host) throw HostError("window " + m_name + " has no host object");
    return *m_host;
}

OptionGroup& Window::makeGroup() {
    m_groups.push_back(std::make_unique<OptionGroup>());
    return *m_groups.back();
}

Timer& Window::makeTimer(std::string name, int intervalMs, bool enabled, std::function<void()> onTick) {
    m_timers.push_back(std::make_unique<Timer>(scheduler(), std::move(name), intervalMs, enabled, std::move(onTick)));
    return *m_timers.back();
}

void Window::keepTransmitterKeyedFor(const std::string& holder) {
    // Every window's host object is the program's call log.
    static_cast<HostCallLog&>(host()).keepKeyedFor(holder);
}

void Window::createHostObject() { m_host = m_program.createHostObject(*this); }

std::string Window::setModuleCaption(const std::string& tag) {
    const ProductInfo& p = m_program.product();
    std::string callsign = host().stationInfo().callsign;
    setCaption(p.name + "    " + callsign + "   v" + p.versionText() + tag);
    return callsign;
}

void Window::bindSetting(SettingsBinder& binder, const std::string& key, const std::string& defaultValue) {
    Control* c = control(key);
    if (auto* box = dynamic_cast<TextBox*>(c))
        binder.bindText(key, *box, defaultValue);
    else if (auto* check = dynamic_cast<CheckBox*>(c))
        binder.bindCheck(key, *check, defaultValue);
    else if (auto* option = dynamic_cast<OptionButton*>(c))
        binder.bindOption(key, *option, defaultValue);
    else
        throw std::logic_error("window " + m_name + " has no settings control " + key);
}

Scheduler& Window::scheduler() { return m_program.scheduler(); }
SettingsStore& Window::settings() { return m_program.settings(); }
Dialogs& Window::dialogs() { return m_program.dialogs(); }
EventLog& Window::log() { return m_program.log(); }

void Window::adopt(std::unique_ptr<Control> control) {
    if (!control->name().empty()) m_byName[upperName(control->name())] = control.get();
    m_controls.push_back(std::move(control));
}

void Window::destroyContents() {
    m_timers.clear();
    m_host.reset();
    m_root = nullptr;
    m_saveButton = nullptr;
    m_byName.clear();
    m_controls.clear();
    m_groups.clear();
}

}  // namespace mv
