#pragma once
// A module window: owns its named controls, its timers and its host object,
// and handles host events. Controls are built afresh at each load (an unloaded
// window comes back with its design values); a hidden window keeps working.
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/controls.h"
#include "core/host_link.h"
#include "core/scheduler.h"

namespace mv {

class Program;
class SettingsStore;
class Dialogs;
class EventLog;
class MediaFactory;
class SettingsBinder;

class Window;

// What a window hands to a component it owns (its player strip, a countdown)
// so the component can add named controls and timers that live and die with
// the window's own. Only the window can make one, from inside itself.
class WindowParts {
public:
    template <class T, class... Args>
    T& make(Args&&... args);
    Timer& makeTimer(std::string name, int intervalMs, bool enabled, std::function<void()> onTick);
    OptionGroup& makeGroup();
    Window& window() { return m_window; }

private:
    friend class Window;
    explicit WindowParts(Window& window) : m_window(window) {}
    Window& m_window;
};

class Window : public HostEvents {
public:
    Window(Program& program, std::string name);
    ~Window() override;
    Window(const Window&) = delete;
    Window& operator=(const Window&) = delete;

    // The scenario name of the window: hub, player, history, idents ...
    const std::string& name() const { return m_name; }
    Program& program() { return m_program; }

    bool isLoaded() const { return m_loaded; }
    bool isVisible() const { return m_visible; }
    // Runs the load handler once; a loaded window is left as it is.
    void load();
    // Loads when needed, then makes the window visible.
    void show();
    void hide();
    void unload();
    // The close box: asks the window's close query; true when it unloaded.
    bool closeBox();

    const std::string& caption() const { return m_caption; }
    void setCaption(const std::string& caption);
    // A short line at the window's foot: the last save's outcome
    // ("Guardado 14:05:09", or why it failed).
    const std::string& statusText() const { return m_status; }
    void setStatusText(const std::string& text);

    // The button that saves this window's settings, if it has one; the
    // desktop puts it on Ctrl+S.
    Button* saveButton() const { return m_saveButton; }

    float leftTwips() const { return m_left; }
    float topTwips() const { return m_top; }
    void move(float leftTwips, float topTwips);

    Container* root() const { return m_root; }
    Control* control(std::string_view name) const;
    template <class T>
    T* controlAs(std::string_view name) const {
        return dynamic_cast<T*>(control(name));
    }
    // A control by its caption as shown now or as designed.
    Control* findByCaption(std::string_view caption) const;
    const std::vector<std::unique_ptr<Control>>& controls() const { return m_controls; }

    bool hasHost() const { return static_cast<bool>(m_host); }
    HostObject& host();
    // Tells the host again to key the transmitter on behalf of `holder`, a
    // window that is playing: the keying stays `holder`'s to release.
    void keepTransmitterKeyedFor(const std::string& holder);

    // The host is closing: runs in every loaded window before any window's
    // Closing handler, so what must not be lost (the one automatic save) is
    // done whichever window ends the program.
    virtual void beforeHostCloses() {}

    // A window (this one or another) has just asked the host to key or unkey
    // the transmitter or to send tones of its own; `keys` is false for an
    // unkey. A window that mirrors the transmitter wakes its poll here instead
    // of polling while nothing happens.
    virtual void onKeyingCommand(bool /*keys*/) {}

protected:
    // Creates the control tree; called at each load before onLoad().
    virtual void build() = 0;
    virtual void onLoad() {}
    virtual void onUnload() {}
    enum class CloseDecision { Cancel, Unload };
    // Asked by the close box. A window may end the program from here.
    virtual CloseDecision onQueryClose() { return CloseDecision::Unload; }

    template <class T, class... Args>
    T& make(Args&&... args) {
        auto owned = std::make_unique<T>(std::forward<Args>(args)...);
        T& ref = *owned;
        adopt(std::move(owned));
        return ref;
    }
    OptionGroup& makeGroup();
    WindowParts parts() { return WindowParts(*this); }
    void setRoot(Container& root) { m_root = &root; }
    Timer& makeTimer(std::string name, int intervalMs, bool enabled, std::function<void()> onTick);
    // Creates this window's host object and subscribes it to the host's events.
    void createHostObject();
    // The caption of a module window with a host object: the product, four
    // blanks, the node's callsign (asked of the host), "   v", the version,
    // then the window's own tag. Returns the callsign it read.
    std::string setModuleCaption(const std::string& tag);
    // Binds the control named like `key` (a text box, check box or option
    // button) to `binder` under that key.
    void bindSetting(SettingsBinder& binder, const std::string& key, const std::string& defaultValue);
    // A save button: writes every key of `binder` as one replace of its file
    // and tells the operator how it went in the status line (and the log,
    // naming the file and the cause, when it failed; the old file is then
    // left as it was). True when the file was saved.
    bool saveSettings(const SettingsBinder& binder);
    // Binds the window's place on the screen, "LEFT" then "TOP", in twips.
    void bindWindowPosition(SettingsBinder& binder, const std::string& defaultTwips);
    // Names the window's save button (built in build(); forgotten at unload).
    void setSaveButton(Button& button) { m_saveButton = &button; }

    Scheduler& scheduler();
    SettingsStore& settings();
    Dialogs& dialogs();
    EventLog& log();

private:
    friend class WindowParts;
    void adopt(std::unique_ptr<Control> control);
    void destroyContents();

    Program& m_program;
    std::string m_name;
    std::string m_caption;
    std::string m_status;
    float m_left = 0;
    float m_top = 0;
    bool m_loaded = false;
    bool m_visible = false;
    Container* m_root = nullptr;
    Button* m_saveButton = nullptr;
    std::vector<std::unique_ptr<Control>> m_controls;
    std::unordered_map<std::string, Control*> m_byName;
    std::vector<std::unique_ptr<OptionGroup>> m_groups;
    std::vector<std::unique_ptr<Timer>> m_timers;
    std::unique_ptr<HostObject> m_host;
};

template <class T, class... Args>
T& WindowParts::make(Args&&... args) {
    return m_window.make<T>(std::forward<Args>(args)...);
}

inline OptionGroup& WindowParts::makeGroup() { return m_window.makeGroup(); }

inline Timer& WindowParts::makeTimer(std::string name, int intervalMs, bool enabled, std::function<void()> onTick) {
    return m_window.makeTimer(std::move(name), intervalMs, enabled, std::move(onTick));
}

}  // namespace mv
