#pragma once
// Gives every loaded module window its own top-level Qt window and follows the
// engine: built at load (and built afresh after an unload), shown and hidden,
// captioned and placed (15 twips to the pixel) as the engine says, with the
// window's status line (how the last save went) at its foot. The close box
// and the operator's moves go back to the engine, which decides.
#include <QWidget>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "core/program.h"
#include "gui/window_view.h"

class QLabel;

namespace mv {

inline constexpr float kTwipsPerPixel = 15.0f;

// The top-level window around one module window's widgets.
class ModuleWindow final : public QWidget {
public:
    ModuleWindow(Window& window, WindowView::Post post);
    Window& window() const { return m_window; }
    WindowView& view() { return *m_view; }
    // Moves to the engine's position without reporting it back.
    void placeFromEngine();
    // Cuts every tie to the engine's controls (they are about to go).
    void detach();
    // Shows the window's status line; the line takes no room while empty.
    void showStatus();
    QLabel& statusLine() const { return *m_status; }

protected:
    void closeEvent(QCloseEvent* event) override;
    void moveEvent(QMoveEvent* event) override;

private:
    Window& m_window;
    WindowView::Post m_post;
    std::unique_ptr<WindowView> m_view;
    QLabel* m_status = nullptr;
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};

class WindowShell final : public WindowObserver {
public:
    WindowShell(Program& program, WindowView::Post post);
    ~WindowShell() override;
    WindowShell(const WindowShell&) = delete;
    WindowShell& operator=(const WindowShell&) = delete;

    // The top-level window of a loaded module window, or null.
    ModuleWindow* windowFor(const std::string& name) const;
    // Called when a module window is first shown (the console goes beside the hub).
    void setOnFirstShown(std::function<void(ModuleWindow&)> callback) { m_onFirstShown = std::move(callback); }

    void windowLoaded(Window& window) override;
    void windowUnloading(Window& window) override;
    void windowVisibilityChanged(Window& window) override;
    void windowCaptionChanged(Window& window) override;
    void windowMoved(Window& window) override;
    void windowStatusChanged(Window& window) override;

private:
    Program& m_program;
    WindowView::Post m_post;
    std::map<std::string, std::unique_ptr<ModuleWindow>> m_windows;
    std::function<void(ModuleWindow&)> m_onFirstShown;
};

}  // namespace mv
