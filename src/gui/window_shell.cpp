#include "gui/window_shell.h"

#include <QCloseEvent>
#include <QLabel>
#include <QLayout>
#include <QMoveEvent>
#include <cmath>

namespace mv {
namespace {
int toPixels(float twips) { return static_cast<int>(std::lround(twips / kTwipsPerPixel)); }
}  // namespace

ModuleWindow::ModuleWindow(Window& window, WindowView::Post post)
    : QWidget(nullptr, Qt::Window), m_window(window), m_post(post) {
    setObjectName(QString::fromStdString(window.name()));
    setWindowTitle(QString::fromStdString(window.caption()));
    m_view = std::make_unique<WindowView>(window, *this, std::move(post));
    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("statusLine"));
    m_status->setTextFormat(Qt::PlainText);
    layout()->addWidget(m_status);
    showStatus();
    placeFromEngine();
}

void ModuleWindow::showStatus() {
    const QString text = QString::fromStdString(m_window.statusText());
    m_status->setText(text);
    m_status->setVisible(!text.isEmpty());
}

void ModuleWindow::placeFromEngine() {
    const QPoint wanted(toPixels(m_window.leftTwips()), toPixels(m_window.topTwips()));
    if (pos() != wanted) move(wanted);
}

void ModuleWindow::detach() {
    m_view.reset();
    m_alive.reset();
}

void ModuleWindow::closeEvent(QCloseEvent* event) {
    // The window's close query decides, in its turn on the engine's thread.
    event->ignore();
    std::weak_ptr<bool> alive = m_alive;
    Window* window = &m_window;
    m_post([alive, window] {
        if (!alive.expired()) window->closeBox();
    });
}

void ModuleWindow::moveEvent(QMoveEvent* event) {
    QWidget::moveEvent(event);
    // Only the operator's moves go back: the engine's own land on its pixel.
    const QPoint at = pos();
    if (at.x() == toPixels(m_window.leftTwips()) && at.y() == toPixels(m_window.topTwips())) return;
    std::weak_ptr<bool> alive = m_alive;
    Window* window = &m_window;
    const float left = static_cast<float>(at.x()) * kTwipsPerPixel;
    const float top = static_cast<float>(at.y()) * kTwipsPerPixel;
    m_post([alive, window, left, top] {
        if (!alive.expired() && window->isLoaded()) window->move(left, top);
    });
}

WindowShell::WindowShell(Program& program, WindowView::Post post) : m_program(program), m_post(std::move(post)) {
    m_program.setObserver(this);
}

WindowShell::~WindowShell() {
    if (m_program.observer() == this) m_program.setObserver(nullptr);
    for (auto& [name, shown] : m_windows) shown->detach();
    m_windows.clear();
}

ModuleWindow* WindowShell::windowFor(const std::string& name) const {
    const auto it = m_windows.find(name);
    return it == m_windows.end() ? nullptr : it->second.get();
}

void WindowShell::windowLoaded(Window& window) {
    m_windows[window.name()] = std::make_unique<ModuleWindow>(window, m_post);
}

void WindowShell::windowUnloading(Window& window) {
    const auto it = m_windows.find(window.name());
    if (it == m_windows.end()) return;
    // The unload may come from inside one of this window's own Qt handlers;
    // the widgets go once that handler has returned.
    ModuleWindow* gone = it->second.release();
    m_windows.erase(it);
    gone->detach();
    gone->hide();
    gone->deleteLater();
}

void WindowShell::windowVisibilityChanged(Window& window) {
    ModuleWindow* shown = windowFor(window.name());
    if (!shown) return;
    if (!window.isVisible()) {
        shown->hide();
        return;
    }
    const bool first = !shown->testAttribute(Qt::WA_WState_ExplicitShowHide);
    shown->show();
    shown->placeFromEngine();
    if (first && m_onFirstShown) m_onFirstShown(*shown);
}

void WindowShell::windowCaptionChanged(Window& window) {
    if (ModuleWindow* shown = windowFor(window.name())) shown->setWindowTitle(QString::fromStdString(window.caption()));
}

void WindowShell::windowMoved(Window& window) {
    if (ModuleWindow* shown = windowFor(window.name())) shown->placeFromEngine();
}

void WindowShell::windowStatusChanged(Window& window) {
    if (ModuleWindow* shown = windowFor(window.name())) shown->showStatus();
}

}  // namespace mv
