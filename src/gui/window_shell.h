#pragma once
// Gives every loaded module window its own top-level Qt window and follows the
// engine: built when first shown (and built afresh after an unload), shown and hidden,
// captioned and placed as the engine says, with the window's status line (how
// the last save went) at its foot. Each window opens at its design size, or
// smaller when the screen is smaller, its contents scrolling; it is placed at
// its position in twips (at the screen's logical DPI), kept wholly on the
// screen. The close box, the operator's moves and Ctrl+S (the window's save
// button) go back to the engine, which decides.
#include <QWidget>
#include <functional>
#include <map>
#include <memory>
#include <string>

#include "core/program.h"
#include "gui/window_view.h"

class QLabel;
class QMenuBar;
class QScrollArea;

namespace mv {

// The top-level window around one module window's widgets.
class ModuleWindow final : public QWidget {
public:
    ModuleWindow(Window& window, WindowView::Post post);
    Window& window() const { return m_window; }
    WindowView& view() { return *m_view; }
    // Moves to the engine's position without reporting it back, kept wholly
    // on the available area of the screen it falls on.
    void placeFromEngine();
    // The window's size: its design size, no larger than the screen's
    // available area allows (the contents then scroll).
    void fitToScreen();
    // Cuts every tie to the engine's controls (they are about to go).
    void detach();
    // Shows the window's status line; the line takes no room while empty.
    void showStatus();
    QLabel& statusLine() const { return *m_status; }
    QScrollArea& scrollArea() const { return *m_scroll; }
    // A menu bar above the window's controls (the hub's).
    void setMenuBar(QMenuBar* bar);

    // The design size: everything shown without scrolling.
    QSize sizeHint() const override;

protected:
    void closeEvent(QCloseEvent* event) override;
    void moveEvent(QMoveEvent* event) override;

private:
    void saveShortcut();

    Window& m_window;
    WindowView::Post m_post;
    QScrollArea* m_scroll = nullptr;
    QWidget* m_content = nullptr;
    std::unique_ptr<WindowView> m_view;
    QLabel* m_status = nullptr;
    QMenuBar* m_menuBar = nullptr;
    // Where the window was last put for the engine; a move elsewhere is the operator's.
    QPoint m_placedAt{-1000000, -1000000};
    std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
};

class WindowShell final : public WindowObserver {
public:
    WindowShell(Program& program, WindowView::Post post);
    ~WindowShell() override;
    WindowShell(const WindowShell&) = delete;
    WindowShell& operator=(const WindowShell&) = delete;

    // The top-level window of a loaded module window that has been shown, or null.
    ModuleWindow* windowFor(const std::string& name) const;
    // Called when a module window is first shown (the console goes beside the hub).
    void setOnFirstShown(std::function<void(ModuleWindow&)> callback) { m_onFirstShown = std::move(callback); }
    // Called for each module window's top-level window as it is made, just
    // before it is first shown (the desktop adds its menu).
    void setOnMade(std::function<void(ModuleWindow&)> callback) { m_onMade = std::move(callback); }

    void windowLoaded(Window& window) override;
    void windowUnloading(Window& window) override;
    void windowVisibilityChanged(Window& window) override;
    void windowCaptionChanged(Window& window) override;
    void windowMoved(Window& window) override;
    void windowStatusChanged(Window& window) override;

private:
    ModuleWindow& make(Window& window);

    Program& m_program;
    WindowView::Post m_post;
    std::map<std::string, std::unique_ptr<ModuleWindow>> m_windows;
    std::function<void(ModuleWindow&)> m_onFirstShown;
    std::function<void(ModuleWindow&)> m_onMade;
};

}  // namespace mv
